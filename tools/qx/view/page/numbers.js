// The numbers of a source's frames, which are ranges [first, last, step] one behind the other.

export class Numbers {
  constructor(ranges) {
    this.ranges = ranges.map(([first, last, step]) => ({first, step, count: Math.floor((last - first) / step) + 1}));
    this.count = this.ranges.reduce((sum, range) => sum + range.count, 0);
  }

  at(index) {
    for (const {first, step, count} of this.ranges) {
      if (index < count) return first + index * step;
      index -= count;
    }
    return this.last;
  }

  get first() { return this.ranges[0].first; }
  get last() {
    const {first, step, count} = this.ranges.at(-1);
    return first + (count - 1) * step;
  }

  /** The place of a number; of one that is none, that of the nearest. */
  indexOf(number) {
    let before = 0, best = 0, distance = Infinity;
    for (const {first, step, count} of this.ranges) {
      const inside = Math.min(Math.max(Math.round((number - first) / step), 0), count - 1);
      const off = Math.abs(first + inside * step - number);
      if (off < distance) [best, distance] = [before + inside, off];
      before += count;
    }
    return best;
  }
}
