// Plays frames one after the other, each one for as long as the rate tells, or as it takes to be made.

const after = (milliseconds) => new Promise((done) => setTimeout(done, Math.max(0, milliseconds)));

export class Player {
  /** @param {Function} step  makes and shows the next frame once the promise that it is handed is kept; false ends */
  constructor(step, changed) {
    this.step = step;
    this.changed = changed;
    this.turn = 0;  // of the run that counts; 0 where none does
    this.runs = 0;
  }

  get plays() { return this.turn !== 0; }

  toggle(rate) {
    if (this.plays) this.stop();
    else this.play(rate);
  }

  stop() {
    if (!this.plays) return;
    this.turn = 0;
    this.changed();
  }

  async play(rate) {
    const turn = this.turn = ++this.runs;
    this.changed();
    let due = performance.now();
    while (this.turn === turn) {
      due = Math.max(due + 1000 / rate, performance.now());
      const goes = await this.step(after(due - performance.now()), () => this.turn === turn);
      if (!goes && this.turn === turn) this.stop();
    }
  }
}
