// The vehicle as the simulator tells it: names, present values, the last minute.

const SAMPLES = 60;

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
    this.state = { service: false, reverse: false, trace: null, clients: [] };
    this.log = [];
    this.clockOffset = 0;
  }

  /** Takes a state of the stream. Returns what changed: places of signals, and which else. */
  take(state) {
    this.clockOffset = state.t - performance.now() / 1000;
    const changed = { signals: new Set(), messages: false, log: false, state: false };
    for (const [place, samples] of state.history ?? []) {
      this.signals[place].history = samples;
    }
    for (const [place, value, time] of state.values ?? []) {
      Object.assign(this.signals[place], { value, time });
      changed.signals.add(place);
    }
    for (const [place, timedOut] of state.messages ?? []) {
      this.messages[place].timedOut = timedOut;
      changed.messages = true;
    }
    for (const name of Object.keys(this.state)) {
      if (name in state) {
        this.state[name] = state[name];
        changed.state = true;
      }
    }
    const last = this.log.at(-1)?.n ?? 0;
    const events = (state.log ?? []).filter((event) => event.n > last);
    if (events.length > 0) {
      this.log = [...this.log, ...events].slice(-SAMPLES * 5);
      changed.log = true;
    }
    return changed;
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

/** The value as people read it: "2 R", "4.5 km/h". */
export function valueText(signal) {
  if (signal.value === undefined) {
    return "none";
  }
  if (signal.value === null) {
    return "too short";
  }
  return [signal.value, signal.unit, signal.names.get(signal.value)].filter((part) => part !== "" && part !== undefined).join(" ");
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
