// What clients set, and what the rules answered; on demand everything that happened.

import { make } from "./elements.js";
import { entries, textOf } from "./events.js";

const MOST = 200;

export class LogView {
  #model;
  #all = document.querySelector("#all-events");
  #list = document.querySelector("#log ol");

  constructor(model) {
    this.#model = model;
    this.#all.onchange = () => this.render({ log: true });
    this.render({ log: true });
  }

  render(changed) {
    if (!changed.log) {
      return;
    }
    const shown = entries(this.#model.log, { all: this.#all.checked, most: MOST });
    this.#list.replaceChildren(...shown.map(({ event, answers }) => this.#entry(event, answers)));
    document.querySelector("#log .hint").hidden = shown.length > 0;
  }

  #entry(event, answers) {
    const time = make("time", {}, this.#model.timeOfDay(event.t));
    if (event.event === "ignored set") {
      return make("li", { class: "set ignored" }, time, `${event.signal} (${event.raw})`, make("p", {}, `ignored: ${event.reason}`));
    }
    if (event.event !== "set") {
      return make("li", {}, time, textOf(event));
    }
    const waiting = event.answers - answers.length;
    const told = answers.map((answer) =>
      answer.event === "answer" ? make("p", {}, `${answer.signal} = ${answer.value} ${answer.label ?? ""}`) : make("p", { class: "failed" }, answer.reason));
    if (event.answers === 0) {
      told.push(make("p", { class: "none" }, "no rule answers it"));
    } else if (waiting > 0) {
      told.push(make("p", { class: "none" }, waiting === 1 ? "an answer is to follow" : `${waiting} answers are to follow`));
    }
    return make("li", { class: "set" }, time, make("b", {}, `${event.signal} = ${event.value}`), ` (${event.raw})`, ...told);
  }
}
