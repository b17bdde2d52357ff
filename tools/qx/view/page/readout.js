// The values of the pixel under the pointer, as the command has them.
import {askValues} from "./ask.js";

/** A float with the digits that tell it from its neighbours on a screen. */
function words(value, depth) {
  if (typeof value === "string" || depth !== 32) return String(value);
  const short = Number(value.toPrecision(5));
  return Number.isInteger(short) && Math.abs(short) < 1e6 ? short.toFixed(1) : String(short);
}

export class Readout {
  constructor(rows) {
    this.rows = rows;  // one for each side
    this.pixel = null;
    this.frames = [null, null];
    this.asking = [false, false];
    rows.forEach((row, side) => this.clear(row, side));
  }

  clear(row, side) {
    row.replaceChildren();
    const head = document.createElement("th");
    head.scope = "row";
    head.textContent = side === 0 ? "A" : "B";
    row.append(head);
    for (let i = 0; i < 6; ++i) {
      const cell = document.createElement("td");
      cell.className = i < 2 ? "place" : "value";
      row.append(cell);
    }
  }

  point(pixel) {
    this.pixel = pixel;
    this.ask();
  }

  show(frames) {
    this.frames = frames;
    this.ask();
  }

  ask() { this.rows.forEach((_, side) => this.askSide(side)); }

  // One question a side at a time; the pointer may have gone on when it is answered.
  async askSide(side) {
    if (this.asking[side]) return;
    const frame = this.frames[side], pixel = this.pixel;
    if (frame === null || pixel === null || pixel.x >= frame.width || pixel.y >= frame.height) {
      this.tell(side, pixel, [], 0);
      return;
    }
    this.asking[side] = true;
    const told = await askValues(frame.id, pixel.x, pixel.y).catch(() => ({argb: []}));
    this.asking[side] = false;
    this.tell(side, pixel, told.argb, told.depth);
    if (this.pixel !== pixel || this.frames[side] !== frame) this.askSide(side);
  }

  tell(side, pixel, argb, depth) {
    const cells = [...this.rows[side].querySelectorAll("td")];
    const place = pixel === null || argb.length === 0 ? ["", ""] : [pixel.x, pixel.y];
    const values = argb.length === 0 ? ["", "", "", ""] : argb.map((value) => words(value, depth));
    [...place, ...values].forEach((text, i) => { cells[i].textContent = text; });
  }
}
