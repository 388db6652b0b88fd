/** Sends lines of something that moves on (a slider, a drag): the newest one, when the one before has arrived. */
export class Latest {
  #send;
  #waiting = null;
  #busy = false;

  /** send(line) gives a promise. */
  constructor(send) {
    this.#send = send;
  }

  async send(line) {
    this.#waiting = line;
    if (this.#busy) {
      return;
    }
    this.#busy = true;
    while (this.#waiting !== null) {
      const next = this.#waiting;
      this.#waiting = null;
      await this.#send(next);
    }
    this.#busy = false;
  }
}
