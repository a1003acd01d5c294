// The data of the page, and how numbers and times are written.

const head = JSON.parse(document.getElementById("data").textContent);
const LANES = {RESET: "idle", IR: "ir", DR: "dr", SIR: "ir", SDR: "dr", RUNTEST: "idle"};
const PADS = new Set(["HIR", "HDR", "TIR", "TDR"]);

function element(id) {
  return document.getElementById(id);
}

// A new element; children are elements or texts.
function make(name, properties = {}, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(properties)) {
    if (key === "class") made.className = value;
    else made.setAttribute(key, value);
  }
  made.append(...children);
  return made;
}

function numberText(number) {
  return String(number).replace(/\B(?=(\d{3})+(?!\d))/g, ",");
}

function countText(number, noun) {
  return `${numberText(number)} ${noun}${number === 1 ? "" : "s"}`;
}

function twoDigits(number) {
  return String(number).padStart(2, "0");
}

function timeText(nanoseconds) {
  if (nanoseconds < 1e6) return `${(nanoseconds / 1e3).toFixed(1)} us`;
  if (nanoseconds < 1e9) return `${(nanoseconds / 1e6).toFixed(3)} ms`;
  if (nanoseconds < 60e9) return `${(nanoseconds / 1e9).toFixed(3)} s`;
  const seconds = Math.round(nanoseconds / 1e9);
  const minutes = Math.floor(seconds / 60);
  return minutes < 60
    ? `${minutes}:${twoDigits(seconds % 60)} min`
    : `${Math.floor(minutes / 60)}:${twoDigits(minutes % 60)}:${twoDigits(seconds % 60)} h`;
}

// A place in time, as fine as a step of the scale it stands on.
function momentText(nanoseconds, step) {
  const [unit, name] = step >= 1e9 ? [1e9, "s"] : step >= 1e6 ? [1e6, "ms"] : step >= 1e3 ? [1e3, "us"] : [1, "ns"];
  return `${numberText(Math.round(nanoseconds / unit))} ${name}`;
}

function offsetText(offset) {
  return `0x${offset.toString(16).toUpperCase()}`;
}

// One file of the run: its columns, what of them was played, and its loops.
class FileView {
  constructor(data) {
    Object.assign(this, data);
    this.count = this.records.kind.length;
    this.kinds = this.records.kind.map((kind) => head.kinds[kind]);
    this.blocks = this.findBlocks();
    this.loops = this.findLoops();
    this.hasLines = this.records.line.some((line) => line > 0);
  }

  // The rows that take time, in the order of time.
  findBlocks() {
    const {begin, time} = this.records;
    const blocks = [];
    for (let row = 0; row < this.count; ++row) {
      if (begin[row] >= 0 && time[row] > 0 && this.kinds[row] !== "LOOP") blocks.push(row);
    }
    return blocks;
  }

  findLoops() {
    const loops = new Map();
    const {begin, time, record, loop} = this.records;
    for (let row = 0; row < this.count; ++row) {
      if (this.kinds[row] === "LOOP" && begin[row] >= 0) {
        loops.set(record[row], {row, begin: begin[row], end: begin[row] + time[row], firstEnd: begin[row],
          passes: this.records.passes[row], rows: []});
      }
      const outer = loops.get(loop[row]);
      if (outer && begin[row] >= 0) {
        outer.firstEnd = Math.max(outer.firstEnd, begin[row] + time[row]);
        outer.rows.push(row);
      }
    }
    return [...loops.values()];
  }

  // The first of `blocks` that ends after that time.
  blockAfter(time) {
    let low = 0;
    let high = this.blocks.length;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (this.endOf(this.blocks[middle]) > time) high = middle;
      else low = middle + 1;
    }
    return low;
  }

  endOf(row) {
    return this.records.begin[row] + this.records.time[row];
  }

  // When a row is played: in its first pass, or in the one that failed.
  spanOf(row) {
    const {failure, records} = this;
    return failure && records.record[row] === failure.record ? [failure.begin, failure.end]
      : [records.begin[row], this.endOf(row)];
  }

  rowOfRecord(number) {
    return number > 0 ? this.records.record.indexOf(number) : -1;
  }

  isOwn(row) {
    return this.records.record[row] === 0;
  }

  isPlayed(row) {
    return this.records.begin[row] >= 0;
  }

  data(row, column) {
    return head.texts[this.records[column][row]];
  }

  nameOf(row) {
    return this.isOwn(row) ? `${this.kinds[row]}, the driver's own` : `record ${this.records.record[row]}, ${this.kinds[row]}`;
  }

  // What the number of a record means.
  valueText(row) {
    const value = this.records.value[row];
    const kind = this.kinds[row];
    if (kind === "FREQUENCY") return value === 0 ? "unset" : `${numberText(value)} Hz`;
    if (kind === "LOOP") return countText(value, "pass").replace("passs", "passes");
    if (LANES[kind] === "ir" || LANES[kind] === "dr" || PADS.has(kind)) return this.isOwn(row) ? "" : countText(value, "bit");
    return "";
  }
}

const files = Array.from(document.querySelectorAll("script.file"), (script) => new FileView(JSON.parse(script.textContent)));
