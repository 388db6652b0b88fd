// The list of all signals: found by words, shown with age and course, turned by a slider, buttons or a number.

import { namedValues, sliderBounds } from "./bounds.js";
import { coursePoints, extremes, hasMoved } from "./course.js";
import { make, markFault, setText } from "./elements.js";
import { Latest } from "./latest.js";
import { send, turnMessage } from "./lines.js";
import { durationText, valueText } from "./model.js";

const COURSE = { width: 90, height: 24 };

export class SignalsView {
  #model;
  #rows = [];
  #groups = [];
  #visible = new Set();
  #open = null;
  #list = document.querySelector("#signals .list");
  #search = document.querySelector("#search");
  #moving = document.querySelector("#moving");

  constructor(model) {
    this.#model = model;
    const watcher = new IntersectionObserver((entries) => entries.forEach((entry) => this.#seen(entry)), { rootMargin: "100px" });
    this.#list.replaceChildren();
    for (const message of [...model.messages, null]) {
      const signals = model.signals.filter((signal) => signal.message === message);
      if (signals.length > 0) {
        this.#addGroup(message, signals, watcher);
      }
    }
    this.#search.oninput = this.#moving.onchange = () => this.#filter();
    this.#list.onkeydown = (event) => this.#moveByKey(event);
    this.#search.onkeydown = (event) => {
      if (event.key === "ArrowDown") {
        event.preventDefault();
        this.#list.querySelector(".row:not([hidden]) > button")?.focus();
      }
    };
    this.#filter();
  }

  render(changed) {
    for (const place of changed.signals) {
      if (this.#visible.has(place)) {
        this.#renderRow(this.#rows[place]);
      }
    }
    if (changed.messages) {
      this.#groups.forEach((group) => this.#renderGroup(group));
    }
    if (changed.state.has("faults")) {
      const { faults } = this.#model.state;
      this.#rows.forEach(({ signal, button }) => markFault(button, faults[signal.name]));
      this.#groups.forEach(({ message, heading }) => markFault(heading, faults[message?.name]));
    }
  }

  /** Once a second: what changes with the time. */
  renderTime() {
    for (const place of this.#visible) {
      this.#renderRow(this.#rows[place]);
      drawCourse(this.#rows[place]);
    }
    if (this.#moving.checked) {
      this.#filter();
    }
  }

  /** Shows a signal, whatever the filter. */
  select(name) {
    this.#search.value = "";
    this.#moving.checked = false;
    this.#filter();
    const row = this.#rows[this.#model.byName.get(name).place];
    this.#openRow(row);
    row.element.scrollIntoView({ block: "center" });
    row.button.focus({ preventScroll: true });
  }

  focusSearch() {
    this.#search.focus();
    this.#search.select();
  }

  #addGroup(message, signals, watcher) {
    const heading = make("h3", {}, message?.name ?? "without a message");
    const state = make("small", { class: "state" });
    const turn = make("button", { class: "turn", onclick: () => turnMessage(message) });
    const element = make("section", { class: "group" }, make("header", {}, heading, ...(message ? [state, turn] : [])));
    const rows = signals.map((signal) => this.#addRow(signal, watcher));
    element.append(...rows.map((row) => row.element));
    this.#list.append(element);
    const group = { message, element, heading, state, turn, rows };
    this.#groups.push(group);
    this.#renderGroup(group);
  }

  #addRow(signal, watcher) {
    const words = [signal.name, signal.description, signal.message?.name, signal.unit].join(" ").toLowerCase();
    const value = make("span", { class: "value" });
    const age = make("span", { class: "age", title: "since it was received" });
    const course = make("canvas", { width: COURSE.width * devicePixelRatio, height: COURSE.height * devicePixelRatio, title: "the last minute" });
    const button = make("button", { class: "plain name", "aria-expanded": "false", title: signal.description || signal.name },
      make("span", {}, signal.name), make("small", {}, signal.description));
    const element = make("div", { class: "row", "data-signal": signal.name }, button, value, age, course);
    const row = { signal, words, value, age, course, button, element };
    element.addEventListener("click", (event) => {
      if (!event.target.closest(".editor")) {
        this.#openRow(this.#open === row ? null : row);
      }
    });
    this.#rows[signal.place] = row;
    element.dataset.place = signal.place;
    watcher.observe(element);
    return row;
  }

  #seen(entry) {
    const place = Number(entry.target.dataset.place);
    if (entry.isIntersecting) {
      this.#visible.add(place);
      this.#renderRow(this.#rows[place]);
      drawCourse(this.#rows[place]);
    } else {
      this.#visible.delete(place);
    }
  }

  /** What its message is like, and beside it what the button does. */
  #renderGroup({ message, element, state, turn }) {
    const timedOut = message?.timedOut ?? false;
    element.classList.toggle("stale", timedOut);
    setText(state, timedOut ? "timed out" : "");
    setText(turn, timedOut ? "receive it again" : "let it time out");
  }

  #renderRow(row) {
    const { signal } = row;
    setText(row.value, valueText(signal));
    setText(row.age, signal.time === undefined ? "never" : durationText(this.#model.now() - signal.time));
    row.element.classList.toggle("never", signal.time === undefined);
    row.editor?.show(signal.value);
  }

  #openRow(row) {
    this.#open?.editor.element.remove();
    this.#open?.button.setAttribute("aria-expanded", "false");
    if (this.#open) {
      this.#open.editor = null;
    }
    this.#open = row;
    if (row) {
      row.editor = new Editor(row.signal);
      row.editor.show(row.signal.value);
      row.element.append(row.editor.element);
      row.button.setAttribute("aria-expanded", "true");
    }
  }

  #filter() {
    const words = this.#search.value.toLowerCase().split(/\s+/).filter(Boolean);
    let found = 0;
    for (const { element, rows } of this.#groups) {
      let shown = 0;
      for (const row of rows) {
        const moves = !this.#moving.checked || hasMoved(row.signal) || row === this.#open;
        const fits = moves && words.every((word) => row.words.includes(word));
        row.element.hidden = !fits;
        shown += fits;
      }
      element.hidden = shown === 0;
      found += shown;
    }
    setText(document.querySelector("#found"), found === this.#rows.length ? `${found} signals` : `${found} of ${this.#rows.length}`);
  }

  #moveByKey(event) {
    if (event.key === "Escape" && this.#open) {
      this.#open.button.focus();
      this.#openRow(null);
      return;
    }
    const step = { ArrowDown: 1, ArrowUp: -1 }[event.key];
    if (!step || !event.target.matches(".row > button")) {
      return;
    }
    event.preventDefault();
    const buttons = [...this.#list.querySelectorAll(".row:not([hidden]) > button")];
    buttons[buttons.indexOf(event.target) + step]?.focus();
  }
}

/** Draws the last minute. */
function drawCourse({ signal, course }) {
  const context = course.getContext("2d");
  context.setTransform(devicePixelRatio, 0, 0, devicePixelRatio, 0, 0);
  context.clearRect(0, 0, COURSE.width, COURSE.height);
  context.strokeStyle = getComputedStyle(course).color;
  context.lineWidth = 1.5;
  context.beginPath();
  for (const { x, y, joined } of coursePoints(signal.history, COURSE)) {
    context[joined ? "lineTo" : "moveTo"](x, y);
  }
  context.stroke();
  const { low, high } = extremes(signal.history);
  course.title = low === undefined ? "the last minute" : `the last minute: ${low} to ${high}`;
}

/** What turns one signal. */
class Editor {
  #signal;
  #latest = new Latest(send);
  #number;
  #slider;
  #buttons;
  #turned = new Set(); // inputs that a person is about to change

  constructor(signal) {
    this.#signal = signal;
    this.#slider = make("input", { type: "range", ...sliderBounds(signal), "aria-label": `${signal.name}, slider` });
    this.#slider.oninput = () => {
      this.#turned.add(this.#slider);
      this.#latest.send(`${signal.name}=${this.#slider.value}`);
    };
    this.#slider.onchange = () => this.#turned.delete(this.#slider);
    this.#number = make("input", { type: "number", min: 0, max: signal.most, step: "any", "aria-label": `${signal.name}, number` });
    this.#number.oninput = () => this.#turned.add(this.#number);
    this.#number.onkeydown = (event) => {
      if (event.key === "Enter") {
        this.#set(this.#number.value);
      }
    };
    this.#buttons = namedValues(signal).map(([number, name]) =>
      make("button", { "data-value": number, onclick: () => this.#set(number) }, name));
    const command = (name, title) => make("button", { class: "plain", title, onclick: () => send(`${signal.name}!${name}`) }, name);
    this.element = make("div", { class: "editor" },
      make("p", {}, signal.description ? `${signal.description}; ` : "", `${signal.kind}, 0 to ${signal.most}`),
      make("div", {}, ...this.#buttons, this.#slider, this.#number,
        make("button", { onclick: () => this.#set(this.#number.value) }, "set")),
      make("div", {}, command("freeze", "it keeps the value that it has, whatever comes"), command("thaw", "it shows the latest value again"),
        command("stop", "ends its cycle or course")));
  }

  /** Shows the present value, where a person is not about to change it. */
  show(value) {
    for (const input of [this.#slider, this.#number]) {
      if (!this.#turned.has(input) && value !== null && value !== undefined) {
        input.value = value;
      }
    }
    for (const button of this.#buttons) {
      button.classList.toggle("on", Number(button.dataset.value) === value);
    }
  }

  #set(value) {
    this.#turned.delete(this.#number);
    send(`${this.#signal.name}=${value}`);
  }
}
