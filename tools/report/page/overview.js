// The whole file in a strip below the timeline, with a window on what that shows.

const OVERVIEW_HEIGHT = 34;

class Overview {
  constructor(timeline) {
    this.timeline = timeline;
  }

  // What is under the window is drawn once for each file, width and colours.
  draw() {
    const context = prepareCanvas(this.timeline.overview, this.timeline.width, OVERVIEW_HEIGHT);
    const {file} = this.timeline;
    const scale = (this.timeline.right - GUTTER) / Math.max(file.end - file.begin, 1);
    const x = (time) => GUTTER + (time - file.begin) * scale;
    const key = `${files.indexOf(file)} ${this.timeline.width} ${window.devicePixelRatio} ${this.timeline.colours.ground}`;
    if (this.groundKey !== key) {
      this.groundKey = key;
      this.ground = document.createElement("canvas");
      this.drawGround(prepareCanvas(this.ground, this.timeline.width, OVERVIEW_HEIGHT), x);
    }
    context.drawImage(this.ground, 0, 0, this.timeline.width, OVERVIEW_HEIGHT);
    this.drawWindow(context, x(this.timeline.from), x(this.timeline.to));
  }

  drawGround(context, x) {
    const {file} = this.timeline;
    context.fillStyle = this.timeline.colours.lane;
    context.fillRect(GUTTER, 6, this.timeline.right - GUTTER, 22);
    const tops = {ir: 8, dr: 14, idle: 20};
    const drawn = {ir: -1, dr: -1, idle: -1};
    for (const row of file.blocks) {
      const lane = LANES[file.kinds[row]];
      const right = x(file.endOf(row));
      if (right - drawn[lane] < 0.6) continue;
      const left = x(file.records.begin[row]);
      drawn[lane] = Math.max(right, left + 1);
      context.fillStyle = this.timeline.colours[file.isOwn(row) ? "own" : lane];
      context.fillRect(left, tops[lane], drawn[lane] - left, 6);
    }
    for (const loop of file.loops) {
      context.fillStyle = this.timeline.colours.loop;
      context.fillRect(x(loop.firstEnd), 8, x(loop.end) - x(loop.firstEnd), 18);
    }
    if (file.failure) drawFailureMark(context, x(file.failure.end), 30, this.timeline.colours);
  }

  drawWindow(context, left, right) {
    context.fillStyle = this.timeline.colours.ground;
    context.globalAlpha = 0.65;
    context.fillRect(GUTTER, 4, left - GUTTER, 26);
    context.fillRect(right, 4, Math.max(this.timeline.right - right, 0), 26);
    context.globalAlpha = 1;
    context.strokeStyle = this.timeline.colours.text;
    context.lineWidth = 1.5;
    context.strokeRect(left, 4, Math.max(right - left - 1, 3), 26);
  }
}
