import assert from "node:assert/strict";
import { test } from "node:test";

import { Connection, SILENCE_MS } from "../../tools/can-service-sim/panel/page/connection.js";
import { Latest } from "../../tools/can-service-sim/panel/page/latest.js";

class Stream extends EventTarget {
  closed = false;
  tell(type, data) {
    this.dispatchEvent(Object.assign(new Event(type), { data: JSON.stringify(data) }));
  }
  close() {
    this.closed = true;
  }
}

function newPage() {
  const page = { streams: [], told: [], online: null, hidden: false, time: 0 };
  page.connection = new Connection({
    open: () => page.streams[page.streams.push(new Stream()) - 1],
    isHidden: () => page.hidden,
    now: () => page.time,
    onVehicle: (data) => page.told.push(["vehicle", data]),
    onState: (data) => page.told.push(["state", data]),
    onOnline: (online) => (page.online = online),
  });
  page.connection.look();
  return page;
}

test("a stream is online from its first state on", () => {
  const page = newPage();
  assert.equal(page.streams.length, 1);
  page.streams[0].tell("vehicle", { started: 1 });
  assert.equal(page.online, null);
  page.streams[0].tell("state", { t: 1 });
  assert.equal(page.online, true);
  assert.deepEqual(page.told, [["vehicle", { started: 1 }], ["state", { t: 1 }]]);
  page.connection.look();
  assert.equal(page.streams.length, 1, "one at a time");
});

test("a stream that fails or falls silent is closed, and another one opened", () => {
  const page = newPage();
  page.streams[0].tell("state", {});
  page.streams[0].tell("error");
  assert.deepEqual([page.online, page.streams[0].closed, page.connection.isOpen()], [false, true, false]);
  page.connection.look();
  assert.equal(page.streams.length, 2);

  for (let i = 0; i < 5; ++i) {
    page.time += SILENCE_MS - 1;
    page.connection.look();
    page.streams[1].tell("state", {});
  }
  assert.deepEqual([page.streams.length, page.online], [2, true], "it speaks often enough");
  page.time += SILENCE_MS + 1;
  page.connection.look();
  assert.deepEqual([page.streams[1].closed, page.streams.length, page.online], [true, 3, false]);
  page.connection.look();
  assert.equal(page.streams.length, 3, "the new one has its time, too");
});

test("a page that is hidden gives its stream back until it is shown", () => {
  const page = newPage();
  page.hidden = true;
  page.connection.look();
  page.connection.look();
  assert.deepEqual([page.streams.length, page.streams[0].closed, page.connection.isOpen()], [1, true, false]);
  page.hidden = false;
  page.connection.look();
  assert.equal(page.streams.length, 2);
});

test("of what a slider passes through, the first and the newest are sent, one at a time, again and again", async () => {
  const sent = [];
  const arrive = [];
  const latest = new Latest((line) => {
    sent.push(line);
    return new Promise((resolve) => arrive.push(resolve));
  });
  const settle = () => new Promise((resolve) => setImmediate(resolve));
  for (const line of ["a", "b", "c"]) {
    latest.send(line);
  }
  assert.deepEqual(sent, ["a"]);
  arrive[0]();
  await settle();
  assert.deepEqual(sent, ["a", "c"]);
  arrive[1]();
  await settle();
  latest.send("d");
  assert.deepEqual(sent, ["a", "c", "d"]);
});
