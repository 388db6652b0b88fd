// The vehicle from above, with what is read beside it.

import { draw, make, setText } from "./elements.js";
import { Latest } from "./latest.js";
import {
  CAMERAS, CENTRE, coursePath, DOORS, isInReverse, LAMPS, levelAfterClick, levelAfterKey, LEVELS, nextGear, SENSORS, steered, WHEELS, ZONES,
} from "./layout.js";
import { send } from "./lines.js";
import { valueText } from "./model.js";

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
    ZONES.forEach((zone) => this.#drawZone(zone));
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
    const told = this.#model.byName.get(name)?.value; // null is another than 0, which it is drawn as
    if (this.#rendered.has(name) && this.#rendered.get(name) === told) {
      return; // most of what is told is told again
    }
    this.#rendered.set(name, told);
    for (const update of this.#updates.get(name) ?? []) {
      update(this.#model.value(name), this.#model.isTimedOut(name));
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

  /** A zone in which an obstacle can be put by a click, a drag or keys. */
  #drawZone({ signal, label, ring, levelAt }) {
    const obstacle = draw("path", { class: "obstacle" });
    const shadow = draw("path", { class: "shadow" });
    const zone = draw("g", { class: "zone" }, draw("path", { class: "field", d: ring(1, LEVELS + 1) }), shadow, obstacle);
    let level = 0; // the one that was told or, before that comes back, sent
    const latest = new Latest(send);
    const put = (wanted) => {
      level = wanted;
      latest.send(`${signal}=${level}`);
    };
    zone.setAttribute("role", "slider");
    zone.setAttribute("aria-valuemin", 0);
    zone.setAttribute("aria-valuemax", LEVELS);
    this.#part(zone, signal, label, (value) => {
      level = Math.min(value, LEVELS);
      zone.dataset.level = level;
      zone.setAttribute("aria-valuenow", level);
      obstacle.setAttribute("d", level === 0 ? "" : ring(level, level + 1));
      shadow.setAttribute("d", level === 0 ? "" : ring(level + 1, LEVELS + 1));
    });
    const levelUnder = (event) =>
      levelAt(new DOMPoint(event.clientX, event.clientY).matrixTransform(this.#svg.getScreenCTM().inverse()));
    zone.addEventListener("pointerdown", (event) => {
      if (event.button === 0) {
        put(levelAfterClick(level, levelUnder(event)));
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
      const wanted = levelAfterKey(level, event.key);
      if (wanted !== undefined) {
        event.preventDefault();
        put(wanted);
      }
    });
    this.#svg.append(zone);
  }

  /** Where the vehicle rolls while reverse is engaged, by the steering angle. */
  #drawPath() {
    const paths = [CENTRE - 62, CENTRE + 62].map((x) => ({ x, line: draw("path", { class: "course" }) }));
    this.#svg.append(...paths.map(({ line }) => line));
    const update = () => {
      for (const { x, line } of paths) {
        line.setAttribute("d", coursePath(x, steered(this.#model)));
        line.classList.toggle("on", isInReverse(this.#model));
      }
    };
    for (const name of ["DCT5_TGS_LEVER", "CSA2_SteerWheelAng", "CSA2_SteerWheelAngSign"]) {
      this.#follow(name, update);
    }
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
        const steer = () => tyre.setAttribute("transform", `rotate(${steered(this.#model)})`);
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
    for (const { signal, label, kind, x, y } of LAMPS) {
      const slant = (x < CENTRE) === (y < 320) ? -24 : 24;
      const shape = draw("rect", { class: `lamp ${kind}`, x: x - 11, y: y - 5, width: 22, height: 10, rx: 5, transform: `rotate(${slant} ${x} ${y})` });
      this.#svg.append(this.#toggle(shape, signal, label));
    }
    for (const x of [CENTRE - 40, CENTRE + 40]) {
      const white = draw("rect", { class: "lamp white", x: x - 10, y: 470, width: 20, height: 7, rx: 3 });
      this.#follow("DCT5_TGS_LEVER", () => white.classList.toggle("on", isInReverse(this.#model)));
      this.#svg.append(white);
    }
    const lever = this.#model.byName.get("DCT5_TGS_LEVER");
    const cluster = draw("g", {}, draw("rect", { class: "roof", x: 156, y: 296, width: 88, height: 104, rx: 14 }), gear);
    this.#svg.append(this.#button(cluster, "DCT5_TGS_LEVER", "gear lever", () => send(`DCT5_TGS_LEVER=${nextGear(lever)}`), (value) =>
      setText(gear, lever.names.get(value) ?? `${value}`)));
    const readout = draw("g", {}, draw("rect", { class: "touch", x: 160, y: 348, width: 80, height: 48 }), speed, unit);
    this.#svg.append(this.#button(readout, "ESP_FD2_VehSpd", "speed", () => this.#select("ESP_FD2_VehSpd"), (value) => {
      setText(speed, value.toFixed(1));
      setText(unit, this.#model.byName.get("ESP_FD2_VehSpd").unit);
    }));
  }

  #drawSpots() {
    for (const { signal, label, x, y } of CAMERAS) {
      const camera = draw("g", { class: "camera" }, draw("circle", { cx: x, cy: y, r: 6 }), draw("circle", { class: "lens", cx: x, cy: y, r: 2.5 }));
      this.#svg.append(this.#toggle(camera, signal, label));
    }
    for (const { signal, x, y } of SENSORS) {
      const spot = draw("circle", { class: "sensor", cx: x, cy: y, r: 4 });
      this.#svg.append(this.#toggle(spot, signal, "park sensor"));
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
