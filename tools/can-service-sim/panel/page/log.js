// What clients set, and what the rules answered; on demand everything that happened.

import { make } from "./elements.js";
import { isOfSet } from "./model.js";

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
    const answers = new Map();
    for (const event of this.#model.log) {
      if (isAnswer(event)) {
        answers.set(event.set, [...(answers.get(event.set) ?? []), event]);
      }
    }
    const shown = this.#model.log.filter((event) => !isAnswer(event) && (isOfSet(event) || this.#all.checked));
    this.#list.replaceChildren(...shown.slice(-MOST).reverse().map((event) => this.#entry(event, answers.get(event.set) ?? [])));
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

function isAnswer({ event }) {
  return event === "answer" || event === "no answer";
}

function textOf(event) {
  switch (event.event) {
    case "message":
      return `${event.message} ${event.ok ? "is received again" : "timed out"}`;
    case "reverse":
      return `reverse ${event.engaged ? "engaged" : "released"}`;
    case "service":
      return `service ${event.up ? "up" : "down"}`;
    case "fault":
      return `${event.of} ${event.fault}${event.seconds === undefined ? "" : ` ${event.seconds} s`}`;
    default:
      return event.text;
  }
}
