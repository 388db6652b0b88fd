// The stream of events from the simulator. It is opened again when it has ended or fallen silent, or when somebody looks
// at the page again.

export const SILENCE_MS = 5000; // the simulator says something each second

export class Connection {
  #surroundings;
  #stream = null;
  #lastHeard = 0;

  /**
   * surroundings:
   *  - open(): a new EventSource
   *  - isHidden(): whether nobody looks at the page. A browser has few connections to a host: such a page has none.
   *  - now(): milliseconds
   *  - onVehicle(data), onState(data): what the stream tells
   *  - onOnline(online): with each state, and when the stream is given up
   */
  constructor(surroundings) {
    this.#surroundings = surroundings;
  }

  /** Some times a second, and when the page is hidden or shown. */
  look() {
    const { isHidden, now } = this.#surroundings;
    if (this.#stream && (isHidden() || now() - this.#lastHeard > SILENCE_MS)) {
      this.close();
    }
    if (!this.#stream && !isHidden()) {
      this.#open();
    }
  }

  isOpen() {
    return this.#stream !== null;
  }

  close() {
    this.#stream?.close();
    this.#stream = null;
    this.#surroundings.onOnline(false);
  }

  #open() {
    const { open, now, onVehicle, onState, onOnline } = this.#surroundings;
    const stream = open();
    this.#stream = stream;
    this.#lastHeard = now();
    stream.addEventListener("vehicle", (event) => onVehicle(JSON.parse(event.data)));
    stream.addEventListener("state", (event) => {
      this.#lastHeard = now();
      onState(JSON.parse(event.data));
      onOnline(true);
    });
    stream.addEventListener("error", () => this.close()); // the next look opens another
  }
}
