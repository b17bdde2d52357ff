// One of the two halves of the wipe: which frame it is to show, and which one it shows.
import {askFrame} from "./ask.js";

const PAUSE = 150;  // milliseconds before a frame is asked for again that another page was first with

export class Side {
  constructor(side, changed) {
    this.side = side;
    this.changed = changed;  // called when `frame` or `fault` is another one
    this.wanted = null;      // "SOURCE:FRAME"
    this.frame = null;       // the last one that could be made
    this.fault = null;       // of the wanted one
    this.stamp = null;       // of what is shown or could not be made
    this.asked = 0;
    this.answered = 0;
  }

  get busy() { return this.answered < this.asked; }

  /** Asks for a frame. What comes first is shown first: a frame on the way to the wanted one too. */
  async want(of) {
    this.wanted = of;
    const turn = ++this.asked;
    this.changed();
    try {
      const frame = await askFrame(this.side, of);
      if (turn > this.answered) this.show(frame, turn);
    } catch (fault) {
      if (fault.status === 409) return this.askAgain(of, turn);
      if (turn > this.answered) this.fail(fault, turn);
    }
  }

  show(frame, turn = ++this.asked) {
    this.answered = turn;
    this.frame = frame;
    this.stamp = frame.stamp;
    if (frame.of === this.wanted) this.fault = null;
    this.changed();
  }

  fail(fault, turn) {
    this.answered = turn;
    this.fault = fault;
    this.stamp = fault.stamp ?? null;
    this.changed();
  }

  /** Another page has taken the turn; a frame that this one no longer wants is left. */
  async askAgain(of, turn) {
    if (turn !== this.asked) return;
    await new Promise((done) => setTimeout(done, PAUSE));
    if (turn === this.asked) await this.want(of);
  }

  /** The files of the wanted frame as the command sees them now. */
  look(stamp) {
    if (this.wanted !== null && !this.busy && stamp !== undefined && stamp !== this.stamp) this.want(this.wanted);
  }

  leave() {
    this.wanted = this.frame = this.fault = this.stamp = null;
    this.answered = ++this.asked;
  }
}
