// The line between A and B, which pointer and keys move.

export class Wipe {
  constructor(handle, moved) {
    this.handle = handle;
    this.moved = moved;
    this.at = 0.5;
    handle.addEventListener("pointerdown", (event) => {
      handle.setPointerCapture(event.pointerId);
      handle.focus();
      event.preventDefault();
    });
    handle.addEventListener("pointermove", (event) => {
      if (!handle.hasPointerCapture(event.pointerId)) return;
      const box = handle.parentElement.getBoundingClientRect();
      this.move((event.clientX - box.left) / box.width);
    });
    handle.addEventListener("keydown", (event) => this.key(event));
    this.move(this.at);
  }

  move(at) {
    this.at = Math.min(Math.max(at, 0), 1);
    this.handle.style.left = `${this.at * 100}%`;
    this.handle.setAttribute("aria-valuenow", Math.round(this.at * 100));
    this.moved(this.at);
  }

  key(event) {
    const step = event.shiftKey ? 0.1 : 0.01;
    const to = {ArrowLeft: this.at - step, ArrowRight: this.at + step, Home: 0, End: 1}[event.key];
    if (to === undefined) return;
    event.preventDefault();
    event.stopPropagation();
    this.move(to);
  }
}
