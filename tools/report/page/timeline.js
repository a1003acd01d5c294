// The timeline: the lanes of a file as a picture that can be zoomed.

const GUTTER = 58;
const EDGE = 14; // free pixels after the end
const LANE_TOPS = {ir: 12, dr: 54, idle: 96};
const LOOP_TOP = 12;
const LOOP_HEIGHT = 24;
const LOOP_ROOM = 34; // that the lane of loops takes, above the others
const LANE_HEIGHT = 36;
const LANES_END = 136;
const AXIS_HEIGHT = 26;
const NEXT_PASS_WIDTH = 24; // pixels from which a loop's further passes are drawn one by one

class Timeline {
  constructor(choose) {
    this.choose = choose;
    this.lanes = element("lanes");
    this.overview = element("overview");
    this.tip = element("tip");
    this.file = null;
    this.selected = -1;
    this.strip = new Overview(this);
    this.gestures = new Gestures(this);
    new ResizeObserver(() => this.requestDraw()).observe(element("picture"));
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => this.requestDraw());
  }

  show(file, range) {
    this.file = file;
    this.selected = -1;
    element("timeline").hidden = file.blocks.length === 0;
    document.querySelector("[data-do=failure]").hidden = !file.failure;
    this.setRange(...(range || [file.begin, file.end]));
  }

  // ---- the range that is shown, in nanoseconds

  setRange(from, to) {
    const whole = Math.max(this.file.end - this.file.begin, 1);
    const span = Math.min(Math.max(to - from, Math.min(20, whole)), whole);
    this.from = Math.min(Math.max(from, this.file.begin), this.file.begin + whole - span);
    this.to = this.from + span;
    element("range").textContent =
      `${timeText(this.from)} to ${timeText(this.to)}, ${timeText(span)}${span === whole ? ", all" : ""}`;
    this.lanes.setAttribute("aria-label", this.describe());
    this.requestDraw();
  }

  isWhole() {
    return this.to - this.from >= this.file.end - this.file.begin;
  }

  zoom(factor, around = (this.from + this.to) / 2) {
    this.setRange(around - (around - this.from) * factor, around + (this.to - around) * factor);
  }

  pan(part) {
    const step = (this.to - this.from) * part;
    this.setRange(this.from + step, this.to + step);
  }

  showWhole() {
    this.setRange(this.file.begin, this.file.end);
  }

  // Brings a stretch of time into view with some room around it.
  reveal(begin, end) {
    const room = Math.max((end - begin) * 2, (this.file.end - this.file.begin) / 2000, 200);
    this.setRange(begin - room, end + room);
  }

  select(row) {
    this.selected = row;
    const file = this.file;
    if (row >= 0 && file.isPlayed(row)) {
      const [begin, end] = file.spanOf(row);
      const isVisible = begin >= this.from && end <= this.to;
      const isNarrow = end > begin && (end - begin) * this.scale() < 3;
      if (!isVisible || isNarrow) this.reveal(begin, end);
    }
    this.requestDraw();
  }

  revealSelected() {
    if (this.selected < 0 || !this.file.isPlayed(this.selected)) return;
    this.reveal(...this.file.spanOf(this.selected));
  }

  revealFailure() {
    const {begin, end} = this.file.failure;
    this.reveal(begin, end);
  }

  describe() {
    const {file} = this;
    const loops = file.loops.length > 0 ? `, ${countText(file.loops.length, "loop")}` : "";
    return `Timeline of ${file.name} from ${timeText(this.from)} to ${timeText(this.to)}: instruction scans, data ` +
      `scans and run-tests${loops}. The table of records below says the same in words.`;
  }

  // ---- drawing

  scale() {
    return (this.right - GUTTER) / (this.to - this.from);
  }

  laneTop(lane) {
    return this.top + LANE_TOPS[lane];
  }

  x(time) {
    return GUTTER + (time - this.from) * this.scale();
  }

  timeAt(x) {
    return this.from + (x - GUTTER) / this.scale();
  }

  requestDraw() {
    drawSoon(this);
  }

  draw() {
    if (!this.file || element("timeline").hidden) return;
    this.colours = readColours();
    this.width = element("picture").clientWidth;
    this.right = this.width - EDGE;
    this.top = this.file.loops.length > 0 ? LOOP_ROOM : 0;
    this.bottom = this.top + LANES_END;
    const context = prepareCanvas(this.lanes, this.width, this.bottom + AXIS_HEIGHT);
    this.drawGround(context);
    this.drawAxis(context);
    context.save();
    context.beginPath();
    context.rect(GUTTER, 0, this.width - GUTTER, this.bottom);
    context.clip();
    this.drawBlocks(context, this.from, this.to, 0, 1);
    for (const loop of this.file.loops) this.drawLoop(context, loop);
    this.drawMarks(context);
    context.restore();
    this.strip.draw();
  }

  drawAxis(context) {
    const step = niceStep((this.to - this.from) / Math.max((this.right - GUTTER) / 110, 1));
    context.fillStyle = this.colours.quiet;
    context.font = "11px system-ui, sans-serif";
    context.textAlign = "center";
    context.textBaseline = "middle";
    for (let time = Math.ceil(this.from / step) * step; time <= this.to; time += step) {
      const x = this.x(time);
      context.fillStyle = this.colours.line;
      context.fillRect(x, 6, 1, this.bottom - 2);
      context.fillStyle = this.colours.quiet;
      const text = momentText(time, step);
      const half = context.measureText(text).width / 2;
      if (x - half > GUTTER - 8 && x + half < this.width) context.fillText(text, x, this.bottom + 14);
    }
  }

  drawGround(context) {
    const lanes = [["IR", this.laneTop("ir"), LANE_HEIGHT], ["DR", this.laneTop("dr"), LANE_HEIGHT],
      ["Idle", this.laneTop("idle"), LANE_HEIGHT]];
    if (this.top > 0) lanes.push(["Loops", LOOP_TOP, LOOP_HEIGHT]);
    context.textAlign = "right";
    context.textBaseline = "middle";
    context.font = "600 12px system-ui, sans-serif";
    for (const [name, top, height] of lanes) {
      context.fillStyle = this.colours.lane;
      context.fillRect(GUTTER, top, this.right - GUTTER, height);
      context.fillStyle = this.colours.quiet;
      context.fillText(name, GUTTER - 10, top + height / 2);
    }
  }

  // The blocks between two times, drawn `shift` later. Blocks in the same pixel are drawn once.
  drawBlocks(context, from, to, shift, alpha) {
    const {file} = this;
    const drawn = {ir: -1, dr: -1, idle: -1};
    context.globalAlpha = alpha;
    for (let i = file.blockAfter(from); i < file.blocks.length; ++i) {
      const row = file.blocks[i];
      const begin = file.records.begin[row];
      if (begin >= to) break;
      const lane = LANES[file.kinds[row]];
      const left = Math.max(this.x(begin + shift), GUTTER - 2);
      const right = Math.min(this.x(file.endOf(row) + shift), this.width + 2);
      if (right - drawn[lane] < 0.6) continue;
      drawn[lane] = Math.max(right, left + 1);
      this.drawBlock(context, row, lane, left, drawn[lane], shift);
    }
    context.globalAlpha = 1;
  }

  drawBlock(context, row, lane, left, right, shift) {
    const {file} = this;
    const top = this.laneTop(lane);
    const gap = right - left > 4 ? 1 : 0;
    context.fillStyle = this.colours[file.isOwn(row) ? "own" : lane];
    context.fillRect(left, top, right - left - gap, LANE_HEIGHT);
    if (file.records.wait[row] > 0) {
      const rest = Math.max(this.x(file.endOf(row) - file.records.wait[row] + shift), left);
      hatch(context, rest, top, right - gap - rest, LANE_HEIGHT, this.colours);
    }
    if (file.records.compared[row] > 0) {
      context.fillStyle = this.colours.compared;
      context.fillRect(left, top + LANE_HEIGHT - 7, right - left - gap, 7);
    }
    if (right - left > 34) this.drawBlockText(context, row, left, right, top, shift);
  }

  drawBlockText(context, row, left, right, top, shift) {
    const {file} = this;
    const data = file.data(row, "tdi");
    const name = file.isOwn(row) ? file.kinds[row] : `${file.records.record[row]} ${file.kinds[row]}`;
    const texts = [`${name} ${LANES[file.kinds[row]] === "idle" ? timeText(file.records.time[row]) : data}`, name, `${file.records.record[row] || ""}`];
    context.font = "600 11px system-ui, sans-serif";
    context.textAlign = "left";
    // Where a run-test waits longer than it clocks, the text stands in the wait.
    const rest = Math.min(Math.max(this.x(file.endOf(row) - file.records.wait[row] + shift), left), right);
    const waits = right - rest > rest - left;
    const from = Math.max(waits ? rest : left, GUTTER) + 5;
    const room = Math.min(waits ? right : rest, this.width) - from - 4;
    const text = texts.find((each) => context.measureText(each).width < room);
    if (!text) return;
    context.fillStyle = waits ? this.colours.text : this.colours.onBlock;
    context.fillText(text, from, top + LANE_HEIGHT / 2 - (file.records.compared[row] > 0 ? 3 : 0));
  }

  // A loop is a band. Its first pass is drawn as it was; the others follow it where there is room.
  drawLoop(context, loop) {
    const left = this.x(loop.begin);
    const right = Math.max(this.x(loop.end), left + 2);
    if (right < GUTTER || left > this.width) return;
    context.fillStyle = this.colours.loop;
    context.fillRect(left, LOOP_TOP, right - left, LOOP_HEIGHT);
    this.drawLoopText(context, loop, Math.max(left, GUTTER) + 6, Math.min(right, this.width) - 6);
    const pass = loop.firstEnd - loop.begin;
    if (loop.passes < 2 || pass <= 0 || loop.end <= loop.firstEnd) return;
    if (pass * this.scale() >= NEXT_PASS_WIDTH) this.drawNextPasses(context, loop, pass);
    else this.drawManyPasses(context, loop);
  }

  drawLoopText(context, loop, left, right) {
    const number = this.file.records.record[loop.row];
    const passes = `${numberText(loop.passes)} ${loop.passes === 1 ? "pass" : "passes"}`;
    const texts = [`loop of record ${number}: ${passes}, ${timeText(loop.end - loop.begin)}`, passes, `${numberText(loop.passes)}×`];
    context.font = "600 11px system-ui, sans-serif";
    context.textAlign = "left";
    context.fillStyle = this.colours.text;
    const text = texts.find((each) => context.measureText(each).width < right - left);
    if (text) context.fillText(text, left, LOOP_TOP + LOOP_HEIGHT / 2);
  }

  drawNextPasses(context, loop, pass) {
    const first = Math.max(1, Math.floor((this.from - loop.begin) / pass));
    const last = Math.min(loop.passes - 1, Math.ceil((this.to - loop.begin) / pass));
    context.save();
    context.beginPath();
    context.rect(this.x(loop.firstEnd), 0, this.x(loop.end) - this.x(loop.firstEnd), this.bottom);
    context.clip();
    for (let number = first; number <= last; ++number) {
      const shift = number * pass;
      this.drawBlocks(context, loop.begin, loop.firstEnd, shift, 0.55);
      context.fillStyle = this.colours.text;
      context.fillRect(this.x(loop.begin + shift), LOOP_TOP + LOOP_HEIGHT - 5, 1, 5);
    }
    context.restore();
  }

  drawManyPasses(context, loop) {
    const left = Math.max(this.x(loop.firstEnd), GUTTER);
    const right = Math.min(this.x(loop.end), this.width);
    for (const lane of new Set(loop.rows.map((row) => LANES[this.file.kinds[row]]))) {
      if (!lane || right <= left) continue;
      context.globalAlpha = 0.4;
      context.fillStyle = this.colours[lane];
      context.fillRect(left, this.laneTop(lane), right - left, LANE_HEIGHT);
      context.globalAlpha = 1;
    }
  }

  drawMarks(context) {
    const {file} = this;
    if (this.selected >= 0 && file.isPlayed(this.selected)) {
      const [left, end] = file.spanOf(this.selected).map((time) => this.x(time));
      const right = Math.max(end, left + 2);
      context.fillStyle = this.colours.text;
      context.globalAlpha = 0.1;
      context.fillRect(left - 2, 0, right - left + 4, this.bottom);
      context.globalAlpha = 1;
      context.strokeStyle = this.colours.text;
      context.lineWidth = 2;
      context.strokeRect(left - 2, 4, right - left + 4, this.bottom - 6);
    }
    if (file.failure) drawFailureMark(context, this.x(file.failure.end), this.bottom, this.colours);
  }

  // ---- what is where

  // The row at a place of the picture, and the pass of its loop.
  find(x, y) {
    if (x < GUTTER) return null;
    const time = this.timeAt(x);
    const loop = this.file.loops.find((each) => time >= each.begin && time < each.end);
    if (y < this.laneTop("ir") && loop) return {row: loop.row, pass: 0};
    const pass = loop ? loop.firstEnd - loop.begin : 0;
    const number = pass > 0 ? Math.floor((time - loop.begin) / pass) : 0;
    if (number > 0 && pass * this.scale() < NEXT_PASS_WIDTH) return {row: loop.row, pass: 0};
    const row = this.blockNear(time - number * pass);
    return row < 0 ? null : {row, pass: number + 1};
  }

  // A short block can be hit two pixels beside it.
  blockNear(time) {
    const {file} = this;
    const near = 2 / this.scale();
    const row = file.blocks[file.blockAfter(time)];
    if (row !== undefined && file.records.begin[row] <= time + near) return row;
    const before = file.blocks[file.blockAfter(time) - 1];
    return before !== undefined && file.endOf(before) >= time - near ? before : -1;
  }

  showTip(event) {
    const {x, y} = placeIn(this.lanes, event);
    const found = this.find(x, y);
    this.tip.hidden = !found;
    this.lanes.style.cursor = found ? "pointer" : "grab";
    if (!found) return;
    this.tip.replaceChildren(...this.tipLines(found));
    const room = this.width - this.tip.offsetWidth;
    this.tip.style.left = `${Math.max(0, Math.min(x + 14, room))}px`;
    this.tip.style.top = `${y + 18}px`;
  }

  tipLines({row, pass}) {
    const {file} = this;
    const {records} = file;
    const lines = [make("strong", {}, file.nameOf(row))];
    const add = (text) => text && lines.push(make("div", {}, text));
    add(file.valueText(row));
    for (const column of ["tdi", "tdo", "mask"]) {
      if (records[column][row]) lines.push(make("div", {class: "mono"}, `${column.toUpperCase()} ${file.data(row, column)}`));
    }
    add(`${timeText(records.time[row])}${records.wait[row] > 0 ? `, ${timeText(records.wait[row])} of it waiting` : ""}`);
    if (pass > 1) add(`pass ${numberText(pass)}, as the first`);
    return lines;
  }
}
