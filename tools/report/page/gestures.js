// Mouse, touch and keys on a timeline.

class Gestures {
  constructor(timeline) {
    this.timeline = timeline;
    this.pointers = new Map();
    this.dragged = 0; // pixels, since a button or a finger went down
    this.listen();
  }

  listen() {
    const {lanes, overview} = this.timeline;
    lanes.addEventListener("wheel", (event) => this.onWheel(event), {passive: false});
    lanes.addEventListener("pointerdown", (event) => this.onDown(event));
    lanes.addEventListener("pointermove", (event) => this.onMove(event));
    for (const name of ["pointerup", "pointercancel"]) lanes.addEventListener(name, (event) => this.onUp(event));
    lanes.addEventListener("pointerleave", () => (this.timeline.tip.hidden = true));
    lanes.addEventListener("keydown", (event) => this.onKey(event));
    for (const name of ["pointerdown", "pointermove"]) overview.addEventListener(name, (event) => this.onOverview(event));
    document.querySelectorAll("[data-do]").forEach((button) =>
      button.addEventListener("click", () => this.act(button.dataset.do)));
  }

  act(what) {
    const acts = {whole: () => this.timeline.showWhole(), in: () => this.timeline.zoom(0.5), out: () => this.timeline.zoom(2),
      left: () => this.timeline.pan(-0.25), right: () => this.timeline.pan(0.25), selected: () => this.timeline.revealSelected(),
      failure: () => this.timeline.revealFailure()};
    acts[what]();
  }

  onWheel(event) {
    event.preventDefault();
    if (event.shiftKey || Math.abs(event.deltaX) > Math.abs(event.deltaY)) {
      this.timeline.pan((event.deltaX || event.deltaY) / this.timeline.width);
    } else {
      this.timeline.zoom(Math.exp(event.deltaY * 0.002), this.timeline.timeAt(Math.max(placeIn(this.timeline.lanes, event).x, GUTTER)));
    }
  }

  onDown(event) {
    this.timeline.lanes.setPointerCapture(event.pointerId);
    this.pointers.set(event.pointerId, event.clientX);
    this.dragged = 0;
    this.timeline.tip.hidden = true;
  }

  onMove(event) {
    if (!this.pointers.has(event.pointerId)) {
      this.timeline.showTip(event);
      return;
    }
    const before = [...this.pointers.values()];
    this.pointers.set(event.pointerId, event.clientX);
    const after = [...this.pointers.values()];
    this.dragged += Math.abs(event.clientX - before[0]);
    if (after.length === 1) {
      this.timeline.pan((before[0] - after[0]) / (this.timeline.right - GUTTER));
    } else {
      this.timeline.zoom(Math.max(Math.abs(before[0] - before[1]), 8) / Math.max(Math.abs(after[0] - after[1]), 8));
    }
  }

  onUp(event) {
    const wasOne = this.pointers.size === 1;
    this.pointers.delete(event.pointerId);
    if (!wasOne || this.dragged > 4 || event.type === "pointercancel") return;
    const {x, y} = placeIn(this.timeline.lanes, event);
    const found = this.timeline.find(x, y);
    if (found) this.timeline.choose(found.row, false);
  }

  onOverview(event) {
    if (event.buttons === 0) return;
    this.timeline.overview.setPointerCapture(event.pointerId);
    const part = (placeIn(this.timeline.overview, event).x - GUTTER) / (this.timeline.right - GUTTER);
    const middle = this.timeline.file.begin + part * (this.timeline.file.end - this.timeline.file.begin);
    const half = (this.timeline.to - this.timeline.from) / 2;
    this.timeline.setRange(middle - half, middle + half);
  }

  onKey(event) {
    const keys = {"+": "in", "=": "in", "-": "out", ArrowLeft: "left", ArrowRight: "right", Home: "whole", 0: "whole"};
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    if (keys[event.key]) this.act(keys[event.key]);
    else if (event.key === "ArrowDown") this.timeline.choose(Math.min(this.timeline.selected + 1, this.timeline.file.count - 1));
    else if (event.key === "ArrowUp") this.timeline.choose(Math.max(this.timeline.selected - 1, 0));
    else return;
    event.preventDefault();
  }
}
