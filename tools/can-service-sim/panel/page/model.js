// The vehicle as the simulator tells it: names, present values, the last minute.

import { isOfSet } from "./events.js";

export const SAMPLES = 60; // of each signal, one a second
const MOST_EVENTS = 300; // of sets with their answers, and of everything else

export class Model {
  constructor(vehicle) {
    this.vehicle = vehicle;
    this.messages = vehicle.messages.map((name) => ({ name, timedOut: false }));
    this.signals = vehicle.signals.map((signal, place) => ({
      ...signal,
      place,
      message: signal.message === null ? null : this.messages[signal.message],
      names: new Map(signal.values ?? []),
      value: undefined, // null: bytes are missing
      time: undefined, // seconds of the simulator's clock
      history: [],
    }));
    this.byName = new Map(this.signals.map((signal) => [signal.name, signal]));
    this.state = { service: false, reverse: false, trace: null, clients: [], faults: {} };
    this.log = [];
    this.clockOffset = 0;
  }

  /** Takes a state of the stream. Returns what changed: places of signals, and which else. */
  take(state) {
    this.clockOffset = state.t - performance.now() / 1000;
    const changed = { signals: new Set(), messages: false, log: false, state: new Set() };
    for (const [place, value, time] of state.values ?? []) {
      Object.assign(this.signals[place], { value, time });
      changed.signals.add(place);
    }
    if (state.history) {
      this.#takeHistory(new Map(state.history), state.samples);
    }
    for (const [place, timedOut] of state.messages ?? []) {
      this.messages[place].timedOut = timedOut;
      changed.messages = true;
    }
    for (const name of Object.keys(this.state)) {
      if (name in state) {
        this.state[name] = state[name];
        changed.state.add(name);
      }
    }
    const last = this.log.at(-1)?.n ?? 0;
    const events = (state.log ?? []).filter((event) => event.n > last);
    if (events.length > 0) {
      const all = [...this.log, ...events];
      const ofSets = all.filter(isOfSet).slice(-MOST_EVENTS);
      const others = all.filter((event) => !isOfSet(event)).slice(-MOST_EVENTS);
      this.log = [...ofSets, ...others].sort((a, b) => a.n - b.n);
      changed.log = true;
    }
    return changed;
  }

  /** The simulator leaves out what did not change. */
  #takeHistory(histories, samples) {
    for (const signal of this.signals) {
      signal.history = histories.get(signal.place) ?? Array(samples).fill(signal.value ?? null);
    }
  }

  /** Keeps the present values; once a second. */
  sample() {
    for (const signal of this.signals) {
      signal.history.push(signal.value ?? null);
      if (signal.history.length > SAMPLES) {
        signal.history.shift();
      }
    }
  }

  /** Seconds of the simulator's clock. */
  now() {
    return performance.now() / 1000 + this.clockOffset;
  }

  /** The time of day at which the simulator's clock had that time. */
  timeOfDay(seconds) {
    return new Date(this.vehicle.started + seconds * 1000).toLocaleTimeString();
  }

  value(name) {
    return this.byName.get(name)?.value ?? 0;
  }

  isTimedOut(name) {
    return this.byName.get(name)?.message?.timedOut ?? false;
  }
}

/** Whether two descriptions are of one simulator that has not been started anew. */
export function sameSimulator(one, other) {
  return one.started === other.started;
}

/** The value as people read it: "2 R", "4.5 km/h". */
export function valueText(signal) {
  if (signal.value === undefined) {
    return "none";
  }
  if (signal.value === null) {
    return "too short";
  }
  const parts = [signal.value, signal.unit, signal.names.get(signal.value)];
  return parts.filter((part) => part !== "" && part !== undefined).join(" ");
}

export function durationText(seconds) {
  if (seconds < 10) {
    return `${Math.max(0, seconds).toFixed(1)} s`;
  }
  if (seconds < 60) {
    return `${Math.floor(seconds)} s`;
  }
  return seconds < 3600 ? `${Math.floor(seconds / 60)} min` : `${Math.floor(seconds / 3600)} h`;
}
