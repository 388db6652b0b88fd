// Where what is in the drawing of the vehicle from above. Its unit is about a centimetre; the front is at the top.

export const CENTRE = 200;
export const LEVELS = 7; // of obstacles; 1 is the nearest, 0 is none

const STEERING_RATIO = 16; // of the steering wheel's angle to the front wheels'
const MOST_STEERED = 35; // degrees of the front wheels

// The fans of the park sensors, front and rear: eight sectors each, from left to right.
const FAN = { front: 236, rear: 408, inner: 104, step: 13, sector: 20 };
const FAN_SIGNALS = ["LCornrAr1", "LCornrAr2", "LMidlAr1", "LMidlAr2", "RMidlAr2", "RMidlAr1", "RCornrAr2", "RCornrAr1"];
const SIDE = { inner: 86, step: 12, from: 247, height: 30 };

/** turn: degrees by which an open one stands off, around its upper end at x, y. */
export const DOORS = [
  { signal: "BCM1_DrvDoorSts", label: "driver's door", x: 131, y: 258, length: 66, turn: 58 },
  { signal: "BCM1_LRDoorSts", label: "rear left door", x: 131, y: 330, length: 58, turn: 58 },
  { signal: "BCM1_PassengerDoorSts", label: "passenger's door", x: 269, y: 258, length: 66, turn: -58 },
  { signal: "BCM1_RRDoorSts", label: "rear right door", x: 269, y: 330, length: 58, turn: -58 },
];
export const WHEELS = [
  { signal: "ABS1_FLWheelSpd", x: 129, y: 226, front: true },
  { signal: "ABS1_FRWheelSpd", x: 271, y: 226, front: true },
  { signal: "ABS2_RLWheelSpd", x: 129, y: 420 },
  { signal: "ABS2_RRWheelSpd", x: 271, y: 420 },
];
export const CAMERAS = [
  { signal: "HAP_FD2_FrntCamInpFailSts", label: "front camera", x: 200, y: 172 },
  { signal: "HAP_FD2_RearCamInpFailSts", label: "rear camera", x: 200, y: 474 },
  { signal: "HAP_FD2_LeCamInpFailSts", label: "left camera", x: 119, y: 268 },
  { signal: "HAP_FD2_RiCamInpFailSts", label: "right camera", x: 281, y: 268 },
];
export const SENSORS = [
  ["FPAS_FLCornr", 139, 178], ["FPAS_FLMiddl", 178, 164], ["FPAS_FRMiddl", 222, 164], ["FPAS_FRCornr", 261, 178],
  ["RPAS_RLCornr", 139, 470], ["RPAS_RLMiddl", 178, 482], ["RPAS_RRMiddl", 222, 482], ["RPAS_RRCornr", 261, 470],
  ["APS_FLSide", 126, 204], ["APS_FRSide", 274, 204], ["APS_RLSide", 126, 446], ["APS_RRSide", 274, 446],
].map(([sensor, x, y]) => ({ signal: `HAP_FD3_${sensor}SnsrFailSts`, x, y }));

/** Lamps that a click turns; the turn lamps are at all four corners. */
export const LAMPS = [[-1, "L", "left"], [1, "R", "right"]].flatMap(([side, letter, word]) => [
  { signal: "BCM3_LasHdLmpSts", label: "head lamps", kind: "head", x: CENTRE + side * 46, y: 174 },
  ...[194, 446].map((y) => ({ signal: `R_PBox1_${letter}TurnLmpSts_R_Pbox`, label: `${word} turn lamps`, kind: "turn", x: CENTRE + side * 63, y })),
]);

/**
 * The zones of the park sensors, each with
 *  - ring(from, to): the path of a part of it, between the near edges of two levels; they may have fractions
 *  - levelAt({x, y}): the level of a point in it
 */
export const ZONES = [...fan("front", "HAP_FD3_FPAS_ObjF", FAN.front, 1), ...fan("rear", "HAP_FD3_RPAS_ObjR", FAN.rear, -1),
  ...side("left", "HAP_FD3_APS_ObjLeSideAr", -1), ...side("right", "HAP_FD3_APS_ObjRiSideAr", 1)];

function fan(end, prefix, centreY, up) {
  return FAN_SIGNALS.map((signal, index) => {
    const angle = (index - 4) * FAN.sector;
    const radius = (level) => FAN.inner + (level - 1) * FAN.step;
    return {
      signal: prefix + signal,
      label: `obstacle, ${end}`,
      ring: (from, to) => sectorPath(centreY, up, angle + 1, angle + FAN.sector - 1, radius(from), radius(to)),
      levelAt: ({ x, y }) => levelOf(Math.hypot(x - CENTRE, y - centreY), FAN),
    };
  });
}

function side(word, prefix, right) {
  return [1, 2, 3, 4, 5].map((area) => {
    const top = SIDE.from + (area - 1) * (SIDE.height + 2);
    const at = (level) => CENTRE + right * (SIDE.inner + (level - 1) * SIDE.step);
    return {
      signal: `${prefix}${area}`,
      label: `obstacle, ${word} side`,
      ring: (from, to) => `M${at(from)} ${top}H${at(to)}v${SIDE.height}H${at(from)}z`,
      levelAt: ({ x }) => levelOf(Math.abs(x - CENTRE), SIDE),
    };
  });
}

function levelOf(distance, { inner, step }) {
  return Math.min(LEVELS, Math.max(1, Math.ceil((distance - inner) / step)));
}

/** A part of a ring around an end of the vehicle; degrees from straight on, to the right. */
function sectorPath(centreY, up, from, to, inner, outer) {
  const at = (degrees, radius) => {
    const angle = (degrees * Math.PI) / 180;
    return `${(CENTRE + radius * Math.sin(angle)).toFixed(2)} ${(centreY - up * radius * Math.cos(angle)).toFixed(2)}`;
  };
  const [there, back] = up > 0 ? [1, 0] : [0, 1];
  return `M${at(from, inner)}A${inner} ${inner} 0 0 ${there} ${at(to, inner)}L${at(to, outer)}A${outer} ${outer} 0 0 ${back} ${at(from, outer)}z`;
}

/** The level of an obstacle after a key; undefined for keys that do nothing to it. */
export function levelAfterKey(level, key) {
  const wanted = { ArrowUp: level + 1, ArrowDown: level - 1, Enter: level === 0 ? 1 : 0, Delete: 0 }[key];
  return wanted === undefined ? undefined : Math.min(LEVELS, Math.max(0, wanted));
}

/** The level after a click at that one: an obstacle that is there is taken away. */
export function levelAfterClick(level, clicked) {
  return clicked === level ? 0 : clicked;
}

/** Degrees by which the front wheels are steered, as the drawing turns: to the right is positive. */
export function steered(model) {
  const right = model.value("CSA2_SteerWheelAngSign") === 0 ? -1 : 1;
  return right * Math.min(MOST_STEERED, model.value("CSA2_SteerWheelAng") / STEERING_RATIO);
}

/** Where the rear wheel at that x rolls in reverse: to the side to which the front wheels are steered. */
export function coursePath(x, degrees) {
  const bend = (degrees / MOST_STEERED) * 90;
  return `M${x} 492C${x} 530 ${x + bend * 0.3} 565 ${x + bend} 608`;
}

export function isInReverse(model) {
  return model.value("DCT5_TGS_LEVER") === 2 && !model.isTimedOut("DCT5_TGS_LEVER");
}

/** Of the lever's positions that have names, the one behind the present one. */
export function nextGear(lever) {
  const named = [...lever.names.keys()];
  return named[(named.indexOf(lever.value) + 1) % named.length];
}
