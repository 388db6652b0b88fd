import assert from "node:assert/strict";
import { test } from "node:test";

import { namedValues, sliderBounds } from "../../tools/can-service-sim/panel/page/bounds.js";
import { coursePoints, extremes, hasMoved } from "../../tools/can-service-sim/panel/page/course.js";
import { entries, textOf } from "../../tools/can-service-sim/panel/page/events.js";
import { durationText, Model, sameSimulator, valueText } from "../../tools/can-service-sim/panel/page/model.js";

function newModel() {
  return new Model({
    started: 1000,
    messages: ["BCM1", "ESP"],
    signals: [
      { name: "door", message: 0, unit: "", values: [[0, "closed"], [1, "open"]] },
      { name: "speed", message: 1, unit: "km/h" },
      { name: "alone", message: null, unit: "" },
    ],
  });
}

test("a state changes what it names, and nothing else", () => {
  const model = newModel();
  let changed = model.take({ t: 5, values: [[0, 1, 4.5], [1, null]], messages: [[1, true]], reverse: true });
  assert.deepEqual([...changed.signals], [0, 1]);
  assert.deepEqual([changed.messages, changed.log, [...changed.state]], [true, false, ["reverse"]]);
  assert.deepEqual([model.value("door"), model.value("speed"), model.value("alone"), model.value("none")], [1, 0, 0, 0]);
  assert.deepEqual(model.signals.map(valueText), ["1 open", "too short", "none"]);
  assert.deepEqual(["door", "speed", "alone"].map((name) => model.isTimedOut(name)), [false, true, false]);
  assert.ok(Math.abs(model.now() - 5) < 1, "the simulator's clock");
  changed = model.take({ t: 6, values: [[1, 4.5, 6]], messages: [[1, false]] });
  assert.deepEqual([model.state.reverse, model.isTimedOut("speed"), valueText(model.signals[1])], [true, false, "4.5 km/h"]);
  assert.deepEqual([...changed.signals, ...changed.state], [1]);
});

test("an event is kept once, in its order, and sets are not pushed out", () => {
  const model = newModel();
  model.take({ t: 1, log: [{ n: 1, event: "set" }, { n: 3, event: "answer" }, { n: 2, event: "reverse" }] });
  const changed = model.take({ t: 2, log: [{ n: 1, event: "set" }, { n: 3, event: "answer" }, { n: 2, event: "reverse" }] });
  assert.equal(changed.log, false);
  assert.deepEqual(model.log.map(({ n }) => n), [1, 2, 3]);
  for (let n = 4; n <= 1000; ++n) {
    model.take({ t: n, log: [{ n, event: "message" }] });
  }
  assert.deepEqual(model.log.map(({ n }) => n), [1, 3, ...Array.from({ length: 300 }, (_, i) => 701 + i)]);
});

test("the last minute has sixty samples, and comes with the whole state", () => {
  const model = newModel();
  model.take({ t: 1, values: [[0, 1], [1, 4]], history: [[1, [2, 3, 4]]], samples: 3 });
  assert.deepEqual(model.signals.map(({ history }) => history), [[1, 1, 1], [2, 3, 4], [null, null, null]]);
  assert.deepEqual(model.signals.map(hasMoved), [false, true, true]);
  for (let i = 0; i < 100; ++i) {
    model.take({ t: i, values: [[1, i]] });
    model.sample();
  }
  assert.deepEqual([model.signals[1].history.length, model.signals[1].history[0], model.signals[1].history[59]], [60, 40, 99]);
});

test("a course ends at the right, and has gaps where nothing was there", () => {
  const points = coursePoints([0, 10, null, 5], { width: 63, height: 16 });
  assert.deepEqual(points, [{ x: 58, y: 13, joined: false }, { x: 59, y: 3, joined: true }, { x: 61, y: 8, joined: false }]);
  assert.deepEqual(coursePoints([7, 7], { width: 63, height: 16 }).map(({ y }) => y), [13, 13]);
  assert.deepEqual(extremes([null]), {});
  assert.deepEqual(extremes([4, null, 2]), { low: 2, high: 4 });
});

test("a slider offers values that the signal can have", () => {
  const byte = { kind: "integer", step: 1, most: 255, names: new Map() };
  const cases = [
    [byte, [0, 255, 1]],
    [{ ...byte, range: [0, 60] }, [0, 60, 1]],
    [{ ...byte, range: [-40, 1000] }, [0, 255, 1]],
    [{ ...byte, range: [0.5, 9.5] }, [1, 9, 1]],
    [{ ...byte, range: [300, 400] }, [0, 255, 1]],
    [{ ...byte, names: new Map([[0, "off"], [1, "on"]]) }, [0, 3, 1]],
    [{ ...byte, names: new Map([[0, "off"], [9, "on"], [500, "never"]]) }, [0, 9, 1]],
    [{ ...byte, kind: "integer in steps of 0.05625", step: 0.05625, most: 3686.34375 }, [0, 3686, 1]],
    [{ ...byte, kind: "float in steps of 0.1", step: 0.1, most: 6553.5, range: [0.3, 600.05] }, [0.3, 600, 0.1]],
    [{ ...byte, kind: "float in steps of 0.05625", step: 0.05625, most: 3686.34375, range: [1, 60] }, [1.0125, 59.9625, 0.05625]],
  ];
  for (const [signal, [min, max, step]] of cases) {
    assert.deepEqual(sliderBounds(signal), { min, max, step }, JSON.stringify(signal));
  }
  assert.deepEqual(namedValues({ names: new Map([[-1, "a"], [0, "b"], [255, "c"], [256, "d"]]), most: 255 }), [[0, "b"], [255, "c"]]);
});

test("the log shows each set with its own answers", () => {
  const log = [
    { n: 1, event: "set", set: 1 },
    { n: 2, event: "set", set: 2 },
    { n: 3, event: "answer", set: 1, signal: "a" },
    { n: 4, event: "no answer", set: 1, reason: "b" },
    { n: 5, event: "reverse", engaged: true },
    { n: 6, event: "ignored set" },
  ];
  const shown = (options) => entries(log, options).map(({ event, answers }) => [event.n, ...answers.map(({ n }) => n)]);
  assert.deepEqual(shown({ all: false, most: 9 }), [[6], [2], [1, 3, 4]]);
  assert.deepEqual(shown({ all: true, most: 2 }), [[6], [5]]);
  const texts = [
    [{ event: "message", message: "BCM1", ok: true }, "BCM1 is received again"],
    [{ event: "message", message: "BCM1", ok: false }, "BCM1 timed out"],
    [{ event: "reverse", engaged: false }, "reverse released"],
    [{ event: "service", up: true }, "service up"],
    [{ event: "fault", of: "BCM1", fault: "delay", seconds: 2 }, "BCM1 delay 2 s"],
    [{ event: "fault", of: "BCM1", fault: "silence" }, "BCM1 silence"],
    [{ event: "note", text: "hello" }, "hello"],
  ];
  for (const [event, text] of texts) {
    assert.equal(textOf(event), text);
  }
});

test("durations are short, and a simulator is known by its start", () => {
  assert.deepEqual([-1, 9.94, 10, 59.9, 60, 3599, 3600].map(durationText), ["0.0 s", "9.9 s", "10 s", "59 s", "1 min", "59 min", "1 h"]);
  assert.equal(sameSimulator({ started: 1, version: "a" }, { started: 1 }), true);
  assert.equal(sameSimulator({ started: 1 }, { started: 2 }), false);
});
