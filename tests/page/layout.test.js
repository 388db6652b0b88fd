import assert from "node:assert/strict";
import { test } from "node:test";

import { CAMERAS, CENTRE, coursePath, DOORS, isInReverse, LAMPS, levelAfterClick, levelAfterKey, nextGear, SENSORS, steered, WHEELS, ZONES } from "../../tools/can-service-sim/panel/page/layout.js";

const MIDDLE = 325; // between the axles

/** The corner of the vehicle at which it stands: "FL", "RR", "F" for the middle of the front. */
function corner({ x, y }) {
  return (y < MIDDLE ? "F" : "R") + (x < CENTRE ? "L" : x > CENTRE ? "R" : "");
}

test("every part stands where its signal says", () => {
  const corners = (parts) => Object.fromEntries(parts.map((part) => [part.signal, corner(part)]));
  assert.deepEqual(corners(DOORS), { BCM1_DrvDoorSts: "FL", BCM1_LRDoorSts: "RL", BCM1_PassengerDoorSts: "FR", BCM1_RRDoorSts: "RR" });
  assert.deepEqual(corners(WHEELS), { ABS1_FLWheelSpd: "FL", ABS1_FRWheelSpd: "FR", ABS2_RLWheelSpd: "RL", ABS2_RRWheelSpd: "RR" });
  assert.deepEqual(WHEELS.filter(({ front }) => front).map(corner), ["FL", "FR"]);
  const [front, rear, left, right] = CAMERAS;
  assert.match([front, rear, left, right].map(({ signal }) => signal).join(), /Frnt.*Rear.*Le.*Ri/);
  assert.ok(front.y < left.y && left.y < rear.y && left.x < front.x && front.x < right.x);
  for (const sensor of SENSORS) {
    assert.equal(sensor.signal.match(/_(..)(Cornr|Middl|Side)/)[1], corner(sensor), sensor.signal);
  }
  for (const { signal, x } of LAMPS.filter(({ kind }) => kind === "turn")) {
    assert.equal(signal, x < CENTRE ? "R_PBox1_LTurnLmpSts_R_Pbox" : "R_PBox1_RTurnLmpSts_R_Pbox");
  }
  assert.equal(new Set(LAMPS.map(({ x, y }) => `${x} ${y}`)).size, 6);
});

test("an open door stands off the body, turned around its front end", () => {
  for (const { x, turn } of DOORS) {
    const outwards = -Math.sin((turn * Math.PI) / 180); // of the lower end of a leaf that hangs down
    assert.equal(Math.sign(outwards), Math.sign(x - CENTRE));
  }
});

/** Where a zone begins, at its near edge. */
function start(zone, level) {
  const [, x, y] = zone.ring(level, level + 1).match(/^M(\S+) ([\d.]+)/);
  return { x: Number(x), y: Number(y) };
}

test("every zone lies on its side of the vehicle, and in the order of its parts", () => {
  assert.equal(new Set(ZONES.map(({ signal }) => signal)).size, 26);
  for (const [prefix, isEnd] of [["HAP_FD3_FPAS_ObjF", ({ y }) => y < 236], ["HAP_FD3_RPAS_ObjR", ({ y }) => y > 408]]) {
    const fan = ZONES.filter(({ signal }) => signal.startsWith(prefix));
    const names = ["LCornrAr1", "LCornrAr2", "LMidlAr1", "LMidlAr2", "RMidlAr2", "RMidlAr1", "RCornrAr2", "RCornrAr1"];
    const fromTheLeft = [...fan].sort((a, b) => start(a, 1).x - start(b, 1).x);
    assert.deepEqual(fromTheLeft.map(({ signal }) => signal.replace(prefix, "")), names);
    assert.ok(fan.slice(1, 7).every((zone) => isEnd(start(zone, 7))));
  }
  for (const [prefix, right] of [["HAP_FD3_APS_ObjLeSideAr", false], ["HAP_FD3_APS_ObjRiSideAr", true]]) {
    const areas = [1, 2, 3, 4, 5].map((area) => ZONES.find(({ signal }) => signal === prefix + area));
    assert.ok(areas.every((zone) => start(zone, 1).x > CENTRE === right));
    assert.ok(areas.every((zone, index) => index === 0 || start(zone, 1).y > start(areas[index - 1], 1).y));
  }
});

test("a point has the level of the ring that is drawn there; 1 is the nearest", () => {
  const found = (zone, level) => {
    const [near, far] = [start(zone, level), start(zone, level + 1)];
    return zone.levelAt({ x: (near.x + far.x) / 2, y: (near.y + far.y) / 2 });
  };
  const distance = ({ x, y }) => Math.hypot(x - CENTRE, y - MIDDLE);
  for (const zone of ZONES) {
    assert.deepEqual([1, 2, 3, 4, 5, 6, 7].map((level) => found(zone, level)), [1, 2, 3, 4, 5, 6, 7], zone.signal);
    assert.ok(distance(start(zone, 1)) < distance(start(zone, 7)), zone.signal);
    assert.equal(zone.levelAt({ x: CENTRE, y: MIDDLE }), 1);
    assert.equal(zone.levelAt({ x: 9000, y: 9000 }), 7);
  }
});

test("keys and clicks move an obstacle", () => {
  const keys = [[0, "ArrowUp", 1], [7, "ArrowUp", 7], [3, "ArrowDown", 2], [0, "ArrowDown", 0], [0, "Enter", 1], [4, "Enter", 0], [4, "Delete", 0], [4, "x", undefined]];
  for (const [level, key, after] of keys) {
    assert.equal(levelAfterKey(level, key), after, `${key} at ${level}`);
  }
  assert.equal(levelAfterClick(0, 4), 4);
  assert.equal(levelAfterClick(3, 4), 4);
  assert.equal(levelAfterClick(4, 4), 0);
});

function vehicle(values, timedOut = []) {
  return { value: (name) => values[name] ?? 0, isTimedOut: (name) => timedOut.includes(name) };
}

test("wheels are steered, and reverse leads, to the side of the steering wheel", () => {
  for (const [angle, sign, degrees] of [[160, 0, -10], [160, 1, 10], [0, 1, 0], [600, 1, 35], [6000, 0, -35]]) {
    assert.equal(steered(vehicle({ CSA2_SteerWheelAng: angle, CSA2_SteerWheelAngSign: sign })), degrees);
  }
  const end = (degrees) => Number(coursePath(138, degrees).match(/ (\S+) 608$/)[1]);
  assert.ok(end(-10) < 138 && end(0) === 138 && end(10) > 138);
});

test("the lever counts while its message is received, and goes through the positions that have names", () => {
  assert.equal(isInReverse(vehicle({ DCT5_TGS_LEVER: 2 })), true);
  assert.equal(isInReverse(vehicle({ DCT5_TGS_LEVER: 0 })), false);
  assert.equal(isInReverse(vehicle({ DCT5_TGS_LEVER: 2 }, ["DCT5_TGS_LEVER"])), false);
  const names = new Map([[0, "P"], [2, "R"], [3, "N"]]);
  assert.deepEqual([0, 2, 3, 7, undefined].map((value) => nextGear({ names, value })), [2, 3, 0, 0, 0]);
});
