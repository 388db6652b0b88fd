// The vehicle from above. The drawing's unit is about a centimetre; the front is at the top.

import { draw, make, setText } from "./elements.js";
import { Latest, send } from "./lines.js";
import { valueText } from "./model.js";

const CENTRE = 200;
const LEVELS = 7; // of obstacles; 1 is the nearest, 0 is none
const STEERING_RATIO = 16; // of the steering wheel's angle to the front wheels'

// The fans of the park sensors, front and rear: eight sectors each, from left to right.
const FAN = { front: 236, rear: 408, inner: 104, step: 13, sector: 20 };
const FAN_SIGNALS = ["LCornrAr1", "LCornrAr2", "LMidlAr1", "LMidlAr2", "RMidlAr2", "RMidlAr1", "RCornrAr2", "RCornrAr1"];
const SIDE = { inner: 86, step: 12, from: 247, height: 30 };

const DOORS = [
  { signal: "BCM1_DrvDoorSts", label: "driver's door", x: 131, y: 258, length: 66, turn: 58 },
  { signal: "BCM1_LRDoorSts", label: "rear left door", x: 131, y: 330, length: 58, turn: 58 },
  { signal: "BCM1_PassengerDoorSts", label: "passenger's door", x: 269, y: 258, length: 66, turn: -58 },
  { signal: "BCM1_RRDoorSts", label: "rear right door", x: 269, y: 330, length: 58, turn: -58 },
];
const WHEELS = [
  { signal: "ABS1_FLWheelSpd", x: 129, y: 226, front: true },
  { signal: "ABS1_FRWheelSpd", x: 271, y: 226, front: true },
  { signal: "ABS2_RLWheelSpd", x: 129, y: 420 },
  { signal: "ABS2_RRWheelSpd", x: 271, y: 420 },
];
const CAMERAS = [
  { signal: "HAP_FD2_FrntCamInpFailSts", label: "front camera", x: 200, y: 172 },
  { signal: "HAP_FD2_RearCamInpFailSts", label: "rear camera", x: 200, y: 474 },
  { signal: "HAP_FD2_LeCamInpFailSts", label: "left camera", x: 119, y: 268 },
  { signal: "HAP_FD2_RiCamInpFailSts", label: "right camera", x: 281, y: 268 },
];
const SENSORS = [
  ["FPAS_FLCornr", 139, 178], ["FPAS_FLMiddl", 178, 164], ["FPAS_FRMiddl", 222, 164], ["FPAS_FRCornr", 261, 178],
  ["RPAS_RLCornr", 139, 470], ["RPAS_RLMiddl", 178, 482], ["RPAS_RRMiddl", 222, 482], ["RPAS_RRCornr", 261, 470],
  ["APS_FLSide", 126, 204], ["APS_FRSide", 274, 204], ["APS_RLSide", 126, 446], ["APS_RRSide", 274, 446],
];
const READOUTS = [
  ["power", "PEPS2_SysPowerMod"], ["parking brake", "EPB1_EPBSts"], ["parking command", "BCM8_PASWorkCmd"],
  ["parking status", "HAP_FD1_APS_WorkSts"], ["view", "HAP_FD2_AVM_CurrSts"], ["sound, front", "HAP_FD3_FPAS_SoundIndcn"],
  ["sound, rear", "HAP_FD3_RPAS_SoundIndcn"], ["door lock", "BCM3_DoorLockSts"],
];

export class VehicleView {
  #model;
  #select;
  #updates = new Map(); // by signal name: what follows its value
  #rendered = new Map(); // by signal name: what it was shown as
  #svg = document.querySelector("#car");

  /** select(name) shows a signal in the list. */
  constructor(model, select) {
    this.#model = model;
    this.#select = select;
    this.#svg.replaceChildren();
    this.#drawFans();
    this.#drawSides();
    this.#drawPath();
    this.#drawLights();
    this.#drawWheels();
    this.#drawDoors();
    this.#drawBody();
    this.#drawSpots();
    this.#drawReadouts();
    this.#drawProgress();
    this.renderAll();
  }

  render(changed) {
    if (changed.messages) {
      this.renderAll();
      return;
    }
    for (const place of changed.signals) {
      this.#renderSignal(this.#model.signals[place].name);
    }
  }

  renderAll() {
    this.#rendered.clear();
    for (const name of this.#updates.keys()) {
      this.#renderSignal(name);
    }
  }

  #renderSignal(name) {
    const value = this.#model.value(name);
    if (this.#rendered.get(name) === value) {
      return; // most of what is told is told again
    }
    this.#rendered.set(name, value);
    for (const update of this.#updates.get(name) ?? []) {
      update(value, this.#model.isTimedOut(name));
    }
  }

  /** Calls update(value, timedOut) whenever the signal is told. */
  #follow(name, update) {
    this.#updates.set(name, [...(this.#updates.get(name) ?? []), update]);
  }

  /** Lets an element show a signal, grey while its message is timed out. */
  #part(element, name, label, update = () => {}) {
    const title = draw("title");
    element.append(title);
    element.setAttribute("tabindex", "0");
    element.classList.add("part");
    element.dataset.signal = name;
    this.#follow(name, (value, timedOut) => {
      element.classList.toggle("stale", timedOut);
      element.classList.toggle("on", value !== 0);
      const text = `${label}: ${valueText(this.#model.byName.get(name))}${timedOut ? ", timed out" : ""}\n${name}`;
      setText(title, text);
      element.setAttribute("aria-label", text);
      update(value, timedOut);
    });
    return element;
  }

  /** A part that acts on a click, the enter key or space. */
  #button(element, name, label, act, update) {
    element.setAttribute("role", "button");
    element.addEventListener("click", act);
    element.addEventListener("keydown", (event) => {
      if (event.key === "Enter" || event.key === " ") {
        event.preventDefault();
        act();
      }
    });
    return this.#part(element, name, label, update);
  }

  /** A part of two states, which it turns over. */
  #toggle(element, name, label, update) {
    return this.#button(element, name, label, () => send(`${name}=${this.#model.value(name) === 0 ? 1 : 0}`), update);
  }

  #drawFans() {
    for (const [end, prefix, y, up] of [["front", "HAP_FD3_FPAS_ObjF", FAN.front, 1], ["rear", "HAP_FD3_RPAS_ObjR", FAN.rear, -1]]) {
      FAN_SIGNALS.forEach((signal, index) => {
        const angle = (index - 4) * FAN.sector;
        const ring = (inner, outer) => sectorPath(y, up, angle + 1, angle + FAN.sector - 1, inner, outer);
        const levelAt = (point) => (Math.hypot(point.x - CENTRE, point.y - y) - FAN.inner) / FAN.step;
        this.#drawZone(prefix + signal, `obstacle, ${end}`, ring, FAN, levelAt);
      });
    }
  }

  #drawSides() {
    for (const [name, label, side] of [["Le", "left", -1], ["Ri", "right", 1]]) {
      for (let area = 1; area <= 5; ++area) {
        const top = SIDE.from + (area - 1) * (SIDE.height + 2);
        const ring = (inner, outer) => `M${CENTRE + side * inner} ${top}h${side * (outer - inner)}v${SIDE.height}h${-side * (outer - inner)}z`;
        const levelAt = (point) => (Math.abs(point.x - CENTRE) - SIDE.inner) / SIDE.step;
        this.#drawZone(`HAP_FD3_APS_Obj${name}SideAr${area}`, `obstacle, ${label} side`, ring, SIDE, levelAt);
      }
    }
  }

  /** A zone in which an obstacle can be put by a click, a drag or keys; ring(inner, outer) is the path of a part of it. */
  #drawZone(name, label, ring, { inner, step }, levelAt) {
    const outer = inner + LEVELS * step;
    const obstacle = draw("path", { class: "obstacle" });
    const shadow = draw("path", { class: "shadow" });
    const zone = draw("g", { class: "zone" }, draw("path", { class: "field", d: ring(inner, outer) }), shadow, obstacle);
    let level = 0; // the one that was told or, before that comes back, sent
    const latest = new Latest();
    const put = (wanted) => {
      level = Math.min(LEVELS, Math.max(0, wanted));
      latest.send(`${name}=${level}`);
    };
    zone.setAttribute("role", "slider");
    zone.setAttribute("aria-valuemin", 0);
    zone.setAttribute("aria-valuemax", LEVELS);
    this.#part(zone, name, label, (value) => {
      level = Math.min(value, LEVELS);
      zone.dataset.level = level;
      zone.setAttribute("aria-valuenow", level);
      obstacle.setAttribute("d", level === 0 ? "" : ring(inner + (level - 1) * step, inner + level * step));
      shadow.setAttribute("d", level === 0 ? "" : ring(inner + level * step, outer));
    });
    const levelUnder = (event) => {
      const point = new DOMPoint(event.clientX, event.clientY).matrixTransform(this.#svg.getScreenCTM().inverse());
      return Math.min(LEVELS, Math.max(1, Math.ceil(levelAt(point))));
    };
    zone.addEventListener("pointerdown", (event) => {
      if (event.button === 0) {
        put(levelUnder(event) === level ? 0 : levelUnder(event));
        zone.setPointerCapture(event.pointerId);
        zone.dataset.dragged = levelUnder(event);
      }
    });
    zone.addEventListener("pointermove", (event) => {
      if (zone.hasPointerCapture(event.pointerId) && Number(zone.dataset.dragged) !== levelUnder(event)) {
        zone.dataset.dragged = levelUnder(event);
        put(levelUnder(event));
      }
    });
    zone.addEventListener("keydown", (event) => {
      const wanted = { ArrowUp: level + 1, ArrowDown: level - 1, Enter: level === 0 ? 1 : 0, Delete: 0 }[event.key];
      if (wanted !== undefined) {
        event.preventDefault();
        put(wanted);
      }
    });
    this.#svg.append(zone);
  }

  /** Where the vehicle rolls while reverse is engaged, by the steering angle. */
  #drawPath() {
    const paths = [-62, 62].map((x) => ({ x, line: draw("path", { class: "course" }) }));
    this.#svg.append(...paths.map(({ line }) => line));
    const update = () => {
      const bend = (this.#frontWheels() / 35) * 90;
      for (const { x, line } of paths) {
        const from = CENTRE + x;
        line.setAttribute("d", `M${from} 492C${from} 530 ${from + bend * 0.3} 565 ${from + bend} 608`);
        line.classList.toggle("on", this.#isInReverse());
      }
    };
    for (const name of ["DCT5_TGS_LEVER", "CSA2_SteerWheelAng", "CSA2_SteerWheelAngSign"]) {
      this.#follow(name, update);
    }
  }

  #isInReverse() {
    return this.#model.value("DCT5_TGS_LEVER") === 2 && !this.#model.isTimedOut("DCT5_TGS_LEVER");
  }

  /** Degrees; to the right is positive. */
  #frontWheels() {
    const side = this.#model.value("CSA2_SteerWheelAngSign") === 0 ? -1 : 1;
    return side * Math.min(35, this.#model.value("CSA2_SteerWheelAng") / STEERING_RATIO);
  }

  #drawLights() {
    this.#svg.append(
      draw("defs", {},
        draw("linearGradient", { id: "beam", x1: 0, y1: 1, x2: 0, y2: 0 },
          draw("stop", { offset: 0, class: "beam-near" }), draw("stop", { offset: 1, class: "beam-far" }))),
    );
    for (const x of [148, 252]) {
      const beam = draw("path", { class: "beam", d: `M${x - 12} 172L${x - 40} 60h80L${x + 12} 172z` });
      this.#svg.append(beam);
      this.#follow("BCM3_LasHdLmpSts", (value, timedOut) => beam.classList.toggle("on", value !== 0 && !timedOut));
    }
  }

  #drawWheels() {
    for (const { signal, x, y, front } of WHEELS) {
      const tyre = draw("rect", { class: "tyre", x: -11, y: -25, width: 22, height: 50, rx: 6 });
      const speed = draw("text", { class: "wheel-speed", x: x < CENTRE ? x - 26 : x + 26, y: y + 4 });
      const wheel = draw("g", { transform: `translate(${x} ${y})` }, tyre);
      const show = (value, timedOut) => {
        setText(speed, value === 0 ? "" : `${value}`);
        speed.classList.toggle("stale", timedOut);
      };
      this.#svg.append(speed, this.#button(wheel, signal, "wheel speed", () => this.#select(signal), show));
      if (front) {
        const steer = () => tyre.setAttribute("transform", `rotate(${this.#frontWheels()})`);
        this.#follow("CSA2_SteerWheelAng", (value, timedOut) => (steer(), tyre.classList.toggle("stale", timedOut)));
        this.#follow("CSA2_SteerWheelAngSign", steer);
      }
    }
  }

  #drawDoors() {
    for (const { signal, label, x, y, length, turn } of DOORS) {
      const leaf = draw("rect", { class: "door", x: -5, y: 0, width: 10, height: length, rx: 4 });
      const door = draw("g", { transform: `translate(${x} ${y})` }, leaf);
      this.#svg.append(this.#toggle(door, signal, label, (value) => (leaf.style.transform = `rotate(${value === 0 ? 0 : turn}deg)`)));
    }
    const lid = draw("path", { class: "door" });
    this.#svg.append(this.#toggle(draw("g", {}, lid), "BCM1_TrunkSts", "tailgate", (value) =>
      lid.setAttribute("d", value === 0 ? "M150 478h100v8q-50 8-100 0z" : "M150 478h100l12 38q-62 12-124 0z")));
  }

  #drawBody() {
    const gear = draw("text", { class: "gear", x: CENTRE, y: 338 });
    const speed = draw("text", { class: "speed", x: CENTRE, y: 372 });
    const unit = draw("text", { class: "unit", x: CENTRE, y: 388 });
    this.#svg.append(
      draw("path", { class: "body", d: "M200 158C244 158 262 174 265 214L268 300L267 420C266 462 254 484 200 484C146 484 134 462 133 420L132 300L135 214C138 174 156 158 200 158z" }),
      draw("path", { class: "glass", d: "M146 254Q200 232 254 254L246 288Q200 276 154 288z" }),
      draw("path", { class: "glass", d: "M152 432Q200 418 248 432L252 452Q200 466 148 452z" }),
      draw("path", { class: "glass", d: "M138 268L147 292V410L138 424z" }),
      draw("path", { class: "glass", d: "M262 268L253 292V410L262 424z" }),
      draw("path", { class: "mirror", d: "M130 262L112 270Q110 278 116 278L131 272z" }),
      draw("path", { class: "mirror", d: "M270 262L288 270Q290 278 284 278L269 272z" }),
    );
    const lamp = (x, y, kind, name, label, act) => {
      const shape = draw("rect", { class: `lamp ${kind}`, x: x - 11, y: y - 5, width: 22, height: 10, rx: 5, transform: `rotate(${(x < CENTRE) === (y < 320) ? -24 : 24} ${x} ${y})` });
      this.#svg.append(act(shape, name, label));
    };
    const toggled = (shape, name, label) => this.#toggle(shape, name, label);
    for (const [x, side, label] of [[-1, "L", "left"], [1, "R", "right"]]) {
      lamp(CENTRE + x * 46, 174, "head", "BCM3_LasHdLmpSts", "head lamps", toggled);
      for (const y of [194, 446]) {
        lamp(CENTRE + x * 63, y, "turn", `R_PBox1_${side}TurnLmpSts_R_Pbox`, `${label} turn lamps`, toggled);
      }
      const white = draw("rect", { class: "lamp white", x: CENTRE + x * 40 - 10, y: 470, width: 20, height: 7, rx: 3 });
      this.#follow("DCT5_TGS_LEVER", () => white.classList.toggle("on", this.#isInReverse()));
      this.#svg.append(white);
    }
    const cluster = draw("g", {}, draw("rect", { class: "roof", x: 156, y: 296, width: 88, height: 104, rx: 14 }), gear);
    this.#svg.append(this.#button(cluster, "DCT5_TGS_LEVER", "gear lever", () => this.#nextGear(), (value) =>
      setText(gear, this.#model.byName.get("DCT5_TGS_LEVER").names.get(value) ?? `${value}`)));
    const readout = draw("g", {}, draw("rect", { class: "touch", x: 160, y: 348, width: 80, height: 48 }), speed, unit);
    this.#svg.append(this.#button(readout, "ESP_FD2_VehSpd", "speed", () => this.#select("ESP_FD2_VehSpd"), (value) => {
      setText(speed, value.toFixed(1));
      setText(unit, this.#model.byName.get("ESP_FD2_VehSpd").unit);
    }));
  }

  /** Of the positions that have names, the one behind the present one. */
  #nextGear() {
    const named = [...this.#model.byName.get("DCT5_TGS_LEVER").names.keys()];
    send(`DCT5_TGS_LEVER=${named[(named.indexOf(this.#model.value("DCT5_TGS_LEVER")) + 1) % named.length]}`);
  }

  #drawSpots() {
    for (const { signal, label, x, y } of CAMERAS) {
      const camera = draw("g", { class: "camera" }, draw("circle", { cx: x, cy: y, r: 6 }), draw("circle", { class: "lens", cx: x, cy: y, r: 2.5 }));
      this.#svg.append(this.#toggle(camera, signal, label));
    }
    for (const [sensor, x, y] of SENSORS) {
      const spot = draw("circle", { class: "sensor", cx: x, cy: y, r: 4 });
      this.#svg.append(this.#toggle(spot, `HAP_FD3_${sensor}SnsrFailSts`, "park sensor"));
    }
  }

  #drawReadouts() {
    const list = document.querySelector("#readouts");
    const steering = make("dd", { "data-signal": "CSA2_SteerWheelAng" });
    const entry = (label, name, value) => {
      const button = make("button", { class: "plain", title: name, onclick: () => this.#select(name) }, label);
      list.append(make("div", {}, make("dt", {}, button), value));
    };
    list.replaceChildren();
    entry("steering", "CSA2_SteerWheelAng", steering);
    const showSteering = () => {
      const angle = this.#model.value("CSA2_SteerWheelAng");
      const side = this.#model.byName.get("CSA2_SteerWheelAngSign");
      setText(steering, `${angle}° ${angle === 0 ? "" : (side.names.get(side.value) ?? "")}`);
      steering.classList.toggle("stale", this.#model.isTimedOut("CSA2_SteerWheelAng"));
    };
    this.#follow("CSA2_SteerWheelAng", showSteering);
    this.#follow("CSA2_SteerWheelAngSign", showSteering);
    for (const [label, name] of READOUTS) {
      const value = make("dd", { "data-signal": name });
      entry(label, name, value);
      this.#follow(name, (_, timedOut) => {
        setText(value, valueText(this.#model.byName.get(name)));
        value.classList.toggle("stale", timedOut);
      });
    }
  }

  #drawProgress() {
    const box = document.querySelector("#progress");
    this.#follow("HAP_FD1_APS_ProcBar", (value, timedOut) => {
      box.querySelector("progress").value = value;
      setText(box.querySelector("span"), `${value} %`);
      box.classList.toggle("stale", timedOut);
    });
  }
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
