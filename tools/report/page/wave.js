// The lines up to the bit that failed, as a drawing.

const WAVE_LEFT = 46;
const WAVE_RIGHT = 124;
const STATE_TOP = 84;
const STATE_HEIGHT = 24;
const LINE_TOPS = [124, 164, 204, 258];
const LINE_HEIGHT = 22;
const WAVE_HEIGHT = 318;
const LINE_NAMES = ["TCK", "TMS", "TDI", "TDO"];
const STEP_WIDTH = 8; // of the shortest time between two changes
const MAX_STEPS = 5; // that a longer time is drawn as

function makeSvg(name, attributes = {}, text = "") {
  const made = document.createElementNS("http://www.w3.org/2000/svg", name);
  for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
  made.textContent = text;
  return made;
}

function showWave(failure) {
  const {wave} = failure;
  const box = element("wave");
  if (wave.changes.length === 0) {
    box.replaceChildren();
    return;
  }
  const drawing = new WaveDrawing(failure);
  box.replaceChildren(drawing.draw());
  box.scrollLeft = box.scrollWidth;
  element("wave-note").textContent =
    `The last ${numberText(wave.changes.length)} changes of the lines, from ${timeText(wave.begin)} to ${timeText(wave.end)}. ` +
    `Dots are the bits as they are shifted.${drawing.cuts.length > 0 ? " Long times without a change are cut short." : ""}`;
}

class WaveDrawing {
  constructor(failure) {
    this.failure = failure;
    this.wave = failure.wave;
    this.cuts = [];
    this.places = this.placeChanges();
    this.end = this.places[this.places.length - 1] + 3 * STEP_WIDTH;
    const width = this.end + WAVE_RIGHT;
    this.svg = makeSvg("svg", {class: "wave", width, height: WAVE_HEIGHT, viewBox: `0 0 ${width} ${WAVE_HEIGHT}`, role: "img",
      "aria-label": `TCK, TMS, TDI, TDO and the TAP's state up to bit ${failure.bit} of scan ${failure.scan}`});
  }

  // Where each change is drawn: in proportion to the time, but long times are cut.
  placeChanges() {
    const times = this.wave.changes.map((change) => change[0]);
    const gaps = times.slice(1).map((time, i) => time - times[i]).filter((gap) => gap > 0);
    const unit = gaps.length > 0 ? Math.min(...gaps) : 0;
    let place = WAVE_LEFT + 2 * STEP_WIDTH;
    return times.map((time, i) => {
      const gap = i === 0 ? 0 : time - times[i - 1];
      const steps = unit > 0 ? gap / unit : i === 0 ? 0 : 1;
      if (steps > MAX_STEPS) this.cuts.push({place: place + MAX_STEPS * STEP_WIDTH / 2, gap});
      place += Math.min(steps, MAX_STEPS) * STEP_WIDTH;
      return place;
    });
  }

  add(name, attributes, text) {
    const made = makeSvg(name, attributes, text);
    this.svg.append(made);
    return made;
  }

  draw() {
    this.drawShifts();
    this.drawFailedBit();
    this.drawStates();
    for (let line = 0; line < 4; ++line) this.drawLine(line);
    if (!this.svg.querySelector(".short-name")) this.leaveOutTop();
    this.drawCuts();
    return this.svg;
  }

  // The stays of the TAP in its states, as {state, left, right}.
  stays() {
    const stays = [{state: this.wave.state, left: WAVE_LEFT}];
    this.wave.changes.forEach((change, i) => {
      if (change[3] === undefined) return;
      stays[stays.length - 1].right = this.places[i];
      stays.push({state: change[3], left: this.places[i]});
    });
    stays[stays.length - 1].right = this.end;
    return stays;
  }

  drawStates() {
    this.add("text", {x: WAVE_LEFT - 8, y: STATE_TOP + 16, class: "line-name"}, "TAP");
    for (const {state, left, right} of this.stays()) {
      const kind = state.startsWith("Shift-") ? "shift" : state === "Run-Test/Idle" ? "rest" : "way";
      const box = this.add("rect", {x: left + 0.5, y: STATE_TOP, width: Math.max(right - left - 1, 1), height: STATE_HEIGHT,
        rx: 3, class: `state ${kind} ${state.endsWith("IR") ? "of-ir" : "of-dr"}`});
      box.append(makeSvg("title", {}, state));
      const middle = (left + right) / 2;
      if (right - left > state.length * 7.2) {
        this.add("text", {x: middle, y: STATE_TOP + 16, class: `state-name ${kind}`}, state);
      } else {
        this.add("text", {x: 0, y: 0, class: "short-name",
          transform: `translate(${middle + 2} ${STATE_TOP - 5}) rotate(-48)`}, state);
      }
    }
  }

  // Without names of short states there is nothing above the states.
  leaveOutTop() {
    const free = STATE_TOP - 14;
    this.svg.setAttribute("height", WAVE_HEIGHT - free);
    this.svg.setAttribute("viewBox", `0 ${free} ${this.end + WAVE_RIGHT} ${WAVE_HEIGHT - free}`);
  }

  lastLevel(line) {
    const last = this.wave.changes.filter((change) => change[1] === line).pop();
    return last ? last[2] : this.wave.levels[line];
  }

  drawLine(line) {
    const top = LINE_TOPS[line];
    const y = (level) => (level ? top : top + LINE_HEIGHT);
    let path = `M${WAVE_LEFT} ${y(this.wave.levels[line])}`;
    this.wave.changes.forEach((change, i) => {
      if (change[1] === line) path += `H${this.places[i]}V${y(change[2])}`;
    });
    this.add("text", {x: WAVE_LEFT - 8, y: top + 16, class: "line-name"}, LINE_NAMES[line]);
    this.add("text", {x: this.end + 8, y: y(this.lastLevel(line)) + 4, class: "line-name at-end"}, LINE_NAMES[line]);
    this.add("path", {d: `${path}H${this.end}`, class: `wave-line line-${line}`});
  }

  // The rising edges of TCK that shift a bit, the last first: {place, tdi, tdo, bit}.
  shifts() {
    const levels = [...this.wave.levels];
    let state = this.wave.state;
    let found = [];
    this.wave.changes.forEach((change, i) => {
      const [, line, level, entered] = change;
      const rises = line === 0 && level === 1;
      if (rises && state.startsWith("Shift-")) found.push({place: this.places[i], tdi: levels[2], tdo: levels[3]});
      levels[line] = level;
      state = entered === undefined ? state : entered;
      if (state.startsWith("Capture-")) found.push(null);
    });
    const last = found.slice(found.lastIndexOf(null) + 1).reverse();
    const next = this.failure.header + this.failure.bit;
    return found.filter((shift) => shift).map((shift) => {
      const age = last.indexOf(shift);
      return {...shift, bit: age < 0 ? null : next - 1 - age - this.failure.header};
    });
  }

  drawShifts() {
    for (const {place, tdi, tdo, bit} of this.shifts()) {
      this.add("line", {x1: place, x2: place, y1: STATE_TOP + STATE_HEIGHT + 4, y2: LINE_TOPS[3] + LINE_HEIGHT, class: "edge"});
      for (const [line, level] of [[2, tdi], [3, tdo]]) {
        this.add("circle", {cx: place, cy: level ? LINE_TOPS[line] : LINE_TOPS[line] + LINE_HEIGHT, r: 2.6, class: `line-${line}`});
        this.add("text", {x: place, y: LINE_TOPS[line] + LINE_HEIGHT + 14, class: "bit-value"}, String(level));
      }
      if (bit !== null && bit >= 0 && bit % 4 === 0) this.add("text", {x: place, y: LINE_TOPS[3] + LINE_HEIGHT + 30, class: "bit-tick"}, `bit ${bit}`);
    }
  }

  // It is on TDO, but TCK has not risen.
  drawFailedBit() {
    const {failure} = this;
    const lastFall = this.wave.changes.map((change) => change[1] === 0 && change[2] === 0).lastIndexOf(true);
    const left = lastFall < 0 ? this.end - 4 * STEP_WIDTH : this.places[lastFall];
    const wrong = /expected [01], read [01]/.exec(failure.sentence);
    this.add("rect", {x: left, y: STATE_TOP - 2, width: this.end - left, height: LINE_TOPS[3] + LINE_HEIGHT + 8 - STATE_TOP, class: "failed-bit"});
    const texts = [`bit ${failure.bit}`, ...(wrong ? wrong[0].split(", ") : [])];
    texts.forEach((text, i) =>
      this.add("text", {x: this.end + 42, y: LINE_TOPS[3] + 4 + 16 * i, class: "failed-text"}, text));
  }

  drawCuts() {
    for (const {place, gap} of this.cuts) {
      this.add("path", {d: `M${place - 4} ${LINE_TOPS[3] + LINE_HEIGHT + 10}L${place + 2} ${STATE_TOP + STATE_HEIGHT}`, class: "cut"});
      this.add("text", {x: place, y: WAVE_HEIGHT - 4, class: "bit-tick"}, timeText(gap));
    }
  }
}
