// Connects the page to the simulator, and keeps it connected.

import { DeskView } from "./desk.js";
import { setText } from "./elements.js";
import { send } from "./lines.js";
import { LogView } from "./log.js";
import { Model } from "./model.js";
import { SignalsView } from "./signals.js";
import { VehicleView } from "./vehicle.js";

const RETRY_MS = 500;
const SILENCE_MS = 5000; // the simulator says something each second

let stream = null;
let model = null;
let views = [];
let desk = null;
let signals = null;
let lastHeard = 0;

function showOnline(online) {
  document.body.classList.toggle("offline", !online);
  document.querySelector("main").inert = !online;
  const trouble = "no connection to the simulator, or too many pages are open; trying again ...";
  setText(document.querySelector("#banner"), online ? "" : trouble);
}

function takeVehicle(vehicle) {
  if (model && model.vehicle.version !== vehicle.version) {
    location.reload(); // this page belongs to another version of the simulator
    return;
  }
  if (model?.vehicle.started === vehicle.started) {
    return; // the same simulator: what a person is about to do here goes on
  }
  model = new Model(vehicle);
  desk = new DeskView(model);
  signals = new SignalsView(model);
  views = [desk, signals, new VehicleView(model, (name) => signals.select(name)), new LogView(model)];
}

function takeState(state) {
  lastHeard = performance.now();
  const changed = model.take(state);
  for (const view of views) {
    view.render(changed);
  }
  showOnline(true);
}

function connect() {
  stream = new EventSource("events");
  lastHeard = performance.now();
  stream.addEventListener("vehicle", (event) => takeVehicle(JSON.parse(event.data)));
  stream.addEventListener("state", (event) => takeState(JSON.parse(event.data)));
  stream.onerror = () => {
    disconnect();
    setTimeout(reconnect, RETRY_MS);
  };
}

function disconnect() {
  stream?.close();
  stream = null;
  showOnline(false);
}

function reconnect() {
  if (!stream && !document.hidden) {
    connect();
  }
}

function eachSecond() {
  if (stream && performance.now() - lastHeard > SILENCE_MS) {
    disconnect();
  }
  reconnect();
  if (model && stream) {
    model.sample();
    signals.renderTime();
    desk.renderClients();
  }
}

// A browser has few connections to a host: a page that nobody looks at gives its own back.
document.addEventListener("visibilitychange", () => (document.hidden ? disconnect() : reconnect()));

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

connect();
setInterval(eachSecond, 1000);
