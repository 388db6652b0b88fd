// What stands around the vehicle: service, reverse line, clients, messages and the trace.

import { make, markFault, setText } from "./elements.js";
import { Latest } from "./latest.js";
import { send, turnMessage } from "./lines.js";
import { durationText } from "./model.js";

const element = (selector) => document.querySelector(selector);

function showSwitch(button, on) {
  button.setAttribute("aria-checked", on ? "true" : "false");
}

function isOver({ position, length }) {
  return position >= length;
}

export class DeskView {
  #model;
  #chips;
  #seek = new Latest(send);
  #dragging = false;

  constructor(model) {
    this.#model = model;
    setText(element("#service-name"), model.vehicle.service);
    element("#service").onclick = () => send(`service=${model.state.service ? "down" : "up"}`);
    element("#reverse").onclick = () => this.turnReverse();
    element("#play").onclick = () => this.playOrPause();
    element("#speed").onchange = (event) => send(`speed ${event.target.value}`);
    this.#listenToPosition();
    element("#names").replaceChildren(...[...model.signals, ...model.messages].map(({ name }) => make("option", { value: name })));
    this.#chips = model.messages.map((message) => {
      const onclick = () => turnMessage(message);
      return { message, button: make("button", { class: "chip", "data-message": message.name, onclick }, message.name) };
    });
    element("#messages .strip").replaceChildren(...this.#chips.map(({ button }) => button));
    element("#trace").classList.toggle("none", !model.vehicle.trace);
  }

  turnReverse() {
    send(`reverse=${this.#model.state.reverse ? 0 : 1}`);
  }

  async playOrPause() {
    if (!this.#model.vehicle.trace) {
      return;
    }
    const { trace } = this.#model.state;
    if (isOver(trace)) {
      await send("seek 0");
    }
    if (trace.paused || !isOver(trace)) {
      send(trace.paused ? "resume" : "pause");
    }
  }

  render(changed) {
    if (changed.messages) {
      for (const { message, button } of this.#chips) {
        button.classList.toggle("stale", message.timedOut);
        button.setAttribute("aria-pressed", message.timedOut ? "false" : "true");
        button.title = `${message.name} ${message.timedOut ? "timed out" : "is received"}`;
      }
    }
    const { service, reverse, trace } = this.#model.state;
    if (changed.state.has("trace")) {
      this.#renderTrace(trace);
    }
    if (changed.state.has("service") || changed.state.has("reverse")) {
      showSwitch(element("#service"), service);
      showSwitch(element("#reverse"), reverse);
    }
    if (changed.state.has("faults")) {
      this.#chips.forEach(({ message, button }) => markFault(button, this.#model.state.faults[message.name]));
    }
    if (changed.state.has("clients")) {
      this.#renderClients();
    }
  }

  /** Once a second: how long each client is there. */
  renderTime() {
    if (element("#clients").open) {
      this.#renderClients();
    }
  }

  #renderClients() {
    const { clients } = this.#model.state;
    setText(element("#clients summary"), clients.length === 0 ? "no client" : clients.length === 1 ? "1 client" : `${clients.length} clients`);
    const now = this.#model.vehicle.started + this.#model.now() * 1000;
    const lines = clients.map(({ id, since }) =>
      make("li", {}, `session ${id}, since ${new Date(since).toLocaleTimeString()} (${durationText((now - since) / 1000)})`));
    element("#clients ul").replaceChildren(...lines);
  }

  #renderTrace(trace) {
    const { position, length, speed, paused } = trace;
    element("#play").classList.toggle("paused", paused || isOver(trace));
    setText(element("#time"), `${position.toFixed(1)} of ${length.toFixed(1)} s`);
    const slider = element("#position");
    slider.max = length;
    slider.setAttribute("aria-valuetext", `${position.toFixed(1)} seconds`);
    if (!this.#dragging) {
      slider.value = position;
    }
    const choice = element("#speed");
    if (Number(choice.value) !== speed) {
      const known = [...choice.options].find((option) => Number(option.value) === speed);
      choice.value = (known ?? choice.appendChild(make("option", { value: speed }, `× ${speed}`))).value;
    }
  }

  #listenToPosition() {
    const slider = element("#position");
    slider.oninput = () => {
      this.#dragging = true;
      this.#seek.send(`seek ${slider.value}`);
    };
    slider.onchange = () => (this.#dragging = false);
  }
}
