// The canvas: both sides at a zoom, the wipe between them, what lies behind transparency.

const SQUARE = 8;  // of the checkers, in pixels of the screen
const STEPS = [1 / 32, 1 / 16, 1 / 8, 1 / 4, 1 / 3, 1 / 2, 2 / 3, 1, 2, 3, 4, 6, 8, 12, 16, 24, 32, 48, 64];
const WITH_CELLS = 8;  // the zoom from which the pixel under the pointer has a frame

function checkers(context) {
  const tile = new OffscreenCanvas(2 * SQUARE, 2 * SQUARE);
  const on = tile.getContext("2d");
  on.fillStyle = "#707070";
  on.fillRect(0, 0, 2 * SQUARE, 2 * SQUARE);
  on.fillStyle = "#8c8c8c";
  on.fillRect(0, 0, SQUARE, SQUARE);
  on.fillRect(SQUARE, SQUARE, SQUARE, SQUARE);
  return context.createPattern(tile, "repeat");
}

export class Stage {
  /** @param {{pointed: Function, zoomed: Function}} hears  of the pixel under the pointer, or null, and of the zoom */
  constructor(canvas, hears) {
    this.canvas = canvas;
    this.context = canvas.getContext("2d");
    this.hears = hears;
    this.behind = "checkers";
    this.wipe = 0.5;
    this.a = this.b = null;  // bitmaps
    this.scale = 1;          // pixels of the screen for one of the frame
    this.left = this.top = 0;
    this.fits = true;
    this.pixel = null;
    this.pattern = checkers(this.context);
    const observer = new ResizeObserver(([entry]) => this.resize(entry.devicePixelContentBoxSize[0]));
    observer.observe(canvas, {box: "device-pixel-content-box"});  // a pixel of the canvas is one of the screen
    this.listen();
  }

  show(a, b) {
    const other = this.a === null || a === null || a.width !== this.a.width || a.height !== this.a.height;
    [this.a, this.b] = [a, b];
    if (other && this.fits) this.fit();
    this.draw();
  }

  resize({inlineSize, blockSize}) {
    this.canvas.width = Math.max(1, inlineSize);
    this.canvas.height = Math.max(1, blockSize);
    if (this.fits) this.fit();
    this.draw();
  }

  // All of the frame, small ones at their own size.
  fit() {
    const size = this.a ?? this.b;
    if (size === null) return;
    const margin = 24 * window.devicePixelRatio;
    const room = Math.min((this.canvas.width - margin) / size.width, (this.canvas.height - margin) / size.height);
    this.scale = Math.max(Math.min(room, 1), 1 / 64);
    this.centre(size);
    this.fits = true;
    this.zoomed();
  }

  centre({width, height}) {
    this.left = Math.round((this.canvas.width - width * this.scale) / 2);
    this.top = Math.round((this.canvas.height - height * this.scale) / 2);
  }

  // The pixel at (x, y) of the screen stays where it is.
  zoomTo(scale, x = this.canvas.width / 2, y = this.canvas.height / 2) {
    const next = Math.min(Math.max(scale, STEPS[0]), STEPS.at(-1));
    this.left = x - (x - this.left) * next / this.scale;
    this.top = y - (y - this.top) * next / this.scale;
    this.scale = next;
    this.fits = false;
    this.zoomed();
  }

  zoomed() {
    this.hears.zoomed(this.scale);
    this.draw();
  }

  larger() { this.zoomTo(STEPS.find((step) => step > this.scale * 1.001) ?? STEPS.at(-1)); }
  smaller() { this.zoomTo(STEPS.findLast((step) => step < this.scale * 0.999) ?? STEPS[0]); }
  pixels() {
    this.zoomTo(1);
    if (this.a) this.centre(this.a);
    this.draw();
  }

  /** Where a pointer is: in the middle of a pixel of the screen. */
  placeOf({clientX, clientY}) {
    const box = this.canvas.getBoundingClientRect(), ratio = window.devicePixelRatio;
    return [(clientX - box.left) * ratio + 0.5, (clientY - box.top) * ratio + 0.5];
  }

  /** The pixel of the frame under a pointer; null outside of both sides. */
  pixelAt(pointer) {
    const [left, top] = this.placeOf(pointer);
    const x = Math.floor((left - Math.round(this.left)) / this.scale);
    const y = Math.floor((top - Math.round(this.top)) / this.scale);
    const inside = (side) => side !== null && x >= 0 && y >= 0 && x < side.width && y < side.height;
    return inside(this.a) || inside(this.b) ? {x, y} : null;
  }

  listen() {
    const {canvas} = this, around = canvas.parentElement;  // where the handle of the wipe lies too
    let from = null;
    around.addEventListener("wheel", (event) => {
      event.preventDefault();
      const step = event.deltaY * (event.deltaMode === 1 ? 18 : 1);
      this.zoomTo(this.scale * Math.exp(-step * 0.002), ...this.placeOf(event));
      this.point(event);
    }, {passive: false});
    canvas.addEventListener("pointerdown", (event) => {
      from = {x: event.clientX, y: event.clientY, left: this.left, top: this.top};
      canvas.setPointerCapture(event.pointerId);
      canvas.classList.add("panning");
    });
    around.addEventListener("pointermove", (event) => {
      if (from !== null) {
        const ratio = window.devicePixelRatio;
        this.left = from.left + (event.clientX - from.x) * ratio;
        this.top = from.top + (event.clientY - from.y) * ratio;
        if (event.clientX !== from.x || event.clientY !== from.y) this.fits = false;
      }
      this.point(event);
    });
    for (const end of ["pointerup", "pointercancel"]) {
      canvas.addEventListener(end, () => {
        from = null;
        canvas.classList.remove("panning");
      });
    }
    around.addEventListener("pointerleave", () => this.pointed(null));
  }

  point(event) { this.pointed(this.pixelAt(event)); }
  pointed(pixel) {
    this.pixel = pixel;
    this.hears.pointed(pixel);
    this.draw();
  }

  draw() {
    if (this.drawing) return;
    this.drawing = true;
    requestAnimationFrame(() => {
      this.drawing = false;
      this.drawNow();
    });
  }

  drawNow() {
    const {context, canvas} = this, edge = Math.round(this.wipe * canvas.width);
    context.clearRect(0, 0, canvas.width, canvas.height);
    this.drawSide(this.a, 0, this.b ? edge : canvas.width);
    if (this.b) this.drawSide(this.b, edge, canvas.width);
    if (this.pixel && this.scale >= WITH_CELLS) this.drawCell(this.pixel);
  }

  // Nothing but the part between two columns of the screen. Enlarged pixels are squares.
  drawSide(bitmap, begin, end) {
    if (bitmap === null || end <= begin) return;
    const {context} = this, left = Math.round(this.left), top = Math.round(this.top);
    const width = Math.max(1, Math.round(bitmap.width * this.scale));
    const height = Math.max(1, Math.round(bitmap.height * this.scale));
    context.save();
    context.beginPath();
    context.rect(begin, 0, end - begin, this.canvas.height);
    context.clip();
    context.fillStyle = this.behind === "checkers" ? this.pattern : this.behind;
    context.fillRect(left, top, width, height);
    context.imageSmoothingEnabled = this.scale < 1;
    context.imageSmoothingQuality = "high";
    context.drawImage(bitmap, left, top, width, height);
    context.restore();
  }

  drawCell({x, y}) {
    const {context} = this, side = this.scale;
    const left = Math.round(this.left) + x * side, top = Math.round(this.top) + y * side;
    context.lineWidth = 1;
    context.strokeStyle = "#000";
    context.strokeRect(left - 0.5, top - 0.5, side + 1, side + 1);
    context.strokeStyle = "#fff";
    context.strokeRect(left - 1.5, top - 1.5, side + 3, side + 3);
  }
}
