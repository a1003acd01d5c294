// The table of records. Only the rows in sight are elements.

const ROW_HEIGHT = 28;
const ROWS_AROUND = 10;
const MAX_PRINTED_ROWS = 1000;

const COLUMNS = [
  {name: "number", title: "Record", text: (file, row) => (file.isOwn(row) ? "driver" : String(file.records.record[row]))},
  {name: "offset", title: "Offset", text: (file, row) => (file.isOwn(row) ? "" : offsetText(file.records.offset[row]))},
  {name: "kind", title: "Kind", cell: kindCell},
  {name: "value", title: "Bits, Hz, passes", text: (file, row) => file.valueText(row)},
  {name: "data", title: "Data", cell: dataCell},
  {name: "clocks", title: "Clocks", text: (file, row) => (file.records.clocks[row] > 0 ? numberText(file.records.clocks[row]) : "")},
  {name: "begin", title: "Begins at", text: (file, row) => (file.isPlayed(row) ? timeText(file.records.begin[row]) : "not played")},
  {name: "time", title: "Takes", text: (file, row) => (file.records.time[row] > 0 ? timeText(file.records.time[row]) : "")},
  {name: "scan", title: "Scan", text: (file, row) => String(file.records.scan[row] || "")},
  {name: "loop", title: "Loop", text: (file, row) => String(file.records.loop[row] || "")},
  {name: "line", title: "Line", text: (file, row) => String(file.records.line[row] || "")},
];

function kindCell(file, row) {
  const kind = file.kinds[row];
  const colour = file.isOwn(row) ? "own" : kind === "LOOP" || kind === "ENDLOOP" ? "loop" : LANES[kind] || "none";
  return [make("i", {class: `dot ${colour}`}), kind];
}

function dataCell(file, row) {
  const parts = [];
  for (const column of ["tdi", "tdo", "mask"]) {
    if (file.records[column][row] === 0) continue;
    parts.push(make("span", {class: column}, make("b", {}, column.toUpperCase()), ` ${file.data(row, column)}`));
  }
  return parts;
}

class Table {
  constructor(choose) {
    this.choose = choose;
    this.box = element("rows");
    this.space = element("rows-space");
    this.rows = [];
    this.selected = -1;
    this.box.addEventListener("scroll", () => this.requestDraw());
    this.box.addEventListener("keydown", (event) => this.onKey(event));
    element("search").addEventListener("input", () => this.filter());
    element("kind").addEventListener("change", () => this.filter());
    window.addEventListener("beforeprint", () => this.draw(true));
    window.addEventListener("afterprint", () => this.draw());
    new ResizeObserver(() => this.requestDraw()).observe(this.box);
  }

  show(file) {
    this.file = file;
    this.selected = -1;
    this.columns = COLUMNS.filter((column) =>
      (column.name !== "line" || file.hasLines) && (column.name !== "loop" || file.records.loop.some((loop) => loop > 0)));
    this.fillHead();
    this.fillKinds();
    this.filter();
    this.showDetail();
  }

  fillHead() {
    const cells = this.columns.map(({name, title}) => make("span", {class: name, role: "columnheader"}, title));
    element("table-head").replaceChildren(...cells);
    element("table").classList.toggle("has-loops", this.columns.some(({name}) => name === "loop"));
    element("table").classList.toggle("has-lines", this.file.hasLines);
  }

  fillKinds() {
    const kinds = [...new Set(this.file.kinds)];
    element("kind").replaceChildren(make("option", {value: ""}, "All kinds"),
      ...kinds.map((kind) => make("option", {value: kind}, kind)));
  }

  filter() {
    this.rows = searchRows(this.file, element("search").value, element("kind").value);
    const all = this.rows.length === this.file.count;
    element("found").textContent = all ? countText(this.file.count, "row") :
      `${numberText(this.rows.length)} of ${countText(this.file.count, "row")}`;
    element("table").setAttribute("aria-rowcount", this.rows.length);
    this.space.style.height = `${this.rows.length * ROW_HEIGHT}px`;
    this.box.scrollTop = 0;
    this.requestDraw();
  }

  select(row) {
    this.selected = row;
    this.scrollTo(row);
    this.showDetail();
    this.requestDraw();
  }

  scrollTo(row) {
    const place = this.placeOf(row);
    if (place < 0) return;
    const top = place * ROW_HEIGHT;
    const {scrollTop, clientHeight} = this.box;
    if (top < scrollTop || top + ROW_HEIGHT > scrollTop + clientHeight) {
      this.box.scrollTop = top - clientHeight / 2 + ROW_HEIGHT / 2;
    }
  }

  // Where a row is among those that the search has found.
  placeOf(row) {
    let low = 0;
    let high = this.rows.length;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (this.rows[middle] < row) low = middle + 1;
      else high = middle;
    }
    return this.rows[low] === row ? low : -1;
  }

  requestDraw() {
    drawSoon(this);
  }

  draw(forPrint = false) {
    const first = forPrint ? 0 : Math.max(0, Math.floor(this.box.scrollTop / ROW_HEIGHT) - ROWS_AROUND);
    const inSight = Math.ceil(this.box.clientHeight / ROW_HEIGHT) + 2 * ROWS_AROUND;
    const count = forPrint ? MAX_PRINTED_ROWS : inSight;
    const shown = this.rows.slice(first, first + count);
    this.space.replaceChildren(...shown.map((row, i) => this.makeRow(row, first + i)));
  }

  makeRow(row, place) {
    const {file} = this;
    const cells = this.columns.map(({name, text, cell}) =>
      make("span", {class: name, role: "cell"}, ...(cell ? cell(file, row) : [text(file, row)])));
    const made = make("div", {role: "row", "aria-rowindex": place + 1, "data-row": row}, ...cells);
    made.classList.toggle("selected", row === this.selected);
    made.classList.toggle("failed", Boolean(file.failure) && file.records.record[row] === file.failure.record);
    made.classList.toggle("unplayed", !file.isPlayed(row));
    made.style.top = `${place * ROW_HEIGHT}px`;
    made.addEventListener("click", () => this.choose(row));
    return made;
  }

  onKey(event) {
    const steps = {ArrowDown: 1, ArrowUp: -1, PageDown: 10, PageUp: -10};
    const edges = {Home: 0, End: this.rows.length - 1};
    if (!(event.key in steps) && !(event.key in edges)) return;
    event.preventDefault();
    const place = event.key in edges ? edges[event.key] : this.placeOf(this.selected) + steps[event.key];
    const row = this.rows[Math.min(Math.max(place, 0), this.rows.length - 1)];
    if (row !== undefined) this.choose(row);
  }

  showDetail() {
    const chosen = element("chosen");
    if (this.selected < 0) {
      chosen.replaceChildren(make("p", {class: "quiet"}, "A click on a row, or on the picture above, shows a record here."));
      return;
    }
    const list = make("dl");
    for (const [name, text] of this.details(this.selected)) list.append(make("dt", {}, name), make("dd", {}, text));
    chosen.replaceChildren(make("h3", {}, this.file.nameOf(this.selected)), list);
  }

  details(row) {
    const {file} = this;
    const {records} = file;
    const rows = [];
    const add = (name, text) => text !== "" && rows.push([name, text]);
    if (!file.isOwn(row)) add("In the file", `offset ${offsetText(records.offset[row])}, ${countText(records.size[row], "byte")}`);
    if (records.line[row] > 0) add("In the source", `line ${records.line[row]}`);
    add(file.kinds[row] === "FREQUENCY" ? "Frequency" : file.kinds[row] === "LOOP" ? "Passes" : "Register", file.valueText(row));
    for (const column of ["tdi", "tdo", "mask"]) add(column.toUpperCase(), file.data(row, column));
    if (records.compared[row] > 0) add("Compares", countText(records.compared[row], "bit"));
    if (records.scan[row] > 0) add("Scan", numberText(records.scan[row]));
    add("On the board", playedText(file, row));
    if (file.failure && file.failure.record === records.record[row]) add("Failed", failedText(file.failure));
    if (records.loop[row] > 0) add("Loop", `of record ${records.loop[row]}; times are those of the first pass`);
    return rows;
  }
}

function failedText({bit, loop, pass, end}) {
  return `at bit ${bit}${loop > 0 ? ` in pass ${numberText(pass)}` : ""}, at ${timeText(end)}`;
}

function playedText(file, row) {
  const {begin, time, wait, clocks} = file.records;
  if (begin[row] < 0) return "not played";
  const parts = [`at ${timeText(begin[row])}`];
  if (time[row] > 0) parts.push(`takes ${timeText(time[row])}`);
  if (wait[row] > 0) parts.push(`of it ${timeText(wait[row])} waiting`);
  if (clocks[row] > 0) parts.push(countText(clocks[row], "clock"));
  return parts.join(", ");
}
