// Connects the page to the simulator, and keeps it connected.

import { Connection } from "./connection.js";
import { DeskView } from "./desk.js";
import { setText } from "./elements.js";
import { send } from "./lines.js";
import { LogView } from "./log.js";
import { Model, sameSimulator } from "./model.js";
import { SignalsView } from "./signals.js";
import { VehicleView } from "./vehicle.js";

const LOOK_MS = 500;

let model = null;
let views = [];
let desk = null;
let signals = null;

const connection = new Connection({
  open: () => new EventSource("events"),
  isHidden: () => document.hidden,
  now: () => performance.now(),
  onVehicle: takeVehicle,
  onState: takeState,
  onOnline: showOnline,
});

function showOnline(online) {
  document.body.classList.toggle("offline", !online);
  document.querySelector("main").inert = !online;
  const trouble = "no connection to the simulator, or too many pages are open; trying again ...";
  setText(document.querySelector("#banner"), online ? "" : trouble);
}

function takeVehicle(vehicle) {
  if (model && model.vehicle.version !== vehicle.version) {
    connection.close();
    location.reload(); // this page belongs to another version of the simulator
    return;
  }
  if (model && sameSimulator(model.vehicle, vehicle)) {
    return; // what a person is about to do here goes on
  }
  model = new Model(vehicle);
  desk = new DeskView(model);
  signals = new SignalsView(model);
  views = [desk, signals, new VehicleView(model, (name) => signals.select(name)), new LogView(model)];
}

function takeState(state) {
  const changed = model.take(state);
  for (const view of views) {
    view.render(changed);
  }
}

function eachSecond() {
  if (model && connection.isOpen()) {
    model.sample();
    signals.renderTime();
    desk.renderTime();
  }
}

document.addEventListener("visibilitychange", () => connection.look());

document.addEventListener("keydown", (event) => {
  if (event.repeat || event.ctrlKey || event.metaKey || event.altKey || event.target.matches("input, select, textarea, dialog *")) {
    return;
  }
  const actions = {
    "/": () => signals?.focusSearch(),
    "?": () => document.querySelector("#help").showModal(),
    r: () => desk?.turnReverse(),
    " ": () => desk?.playOrPause(),
  };
  const onButton = event.key === " " && event.target.matches("button, summary, [role=button]");
  if (actions[event.key] && !onButton) {
    event.preventDefault();
    actions[event.key]();
  }
});

document.querySelector("#help-button").onclick = () => document.querySelector("#help").showModal();
document.querySelector("#line").onsubmit = async (event) => {
  event.preventDefault();
  const input = event.target.elements.line;
  const line = input.value;
  if (line.trim() !== "" && (await send(line.trim())) && input.value === line) {
    input.value = "";
  }
};

connection.look();
setInterval(() => connection.look(), LOOK_MS);
setInterval(eachSecond, 1000);
