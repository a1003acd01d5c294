// The page as a whole: what is shown of which file, and the address that leads there.

const VERDICT_SIGNS = {held: "✓", "nothing-compared": "–", failed: "✕", "not-played": "·"};

let currentFile = -1;
const timeline = new Timeline(chooseRow);
const table = new Table(chooseRow);

function showVerdict() {
  const names = files.map((file) => file.name).join(", ");
  document.body.dataset.verdict = head.verdict;
  document.title = `${names}: ${head.words}`;
  document.querySelector(".badge").textContent = VERDICT_SIGNS[head.verdict];
  element("what").textContent = `${head.title} of ${files.length === 1 ? names : `${files.length} files`}`;
  element("words").textContent = head.words;
  element("target").textContent = `Target: ${head.target}`;
  const error = head.messages.find((message) => message.kind === "error");
  element("reason").hidden = !error;
  if (error) element("reason").textContent = `${error.place}: ${error.text}`;
  showTiles();
}

function showTiles() {
  const tiles = head.figures.filter(({label}) => ["whole", "clocks", "pin calls"].includes(label)).reverse();
  element("tiles").replaceChildren(...tiles.map(({label, text}) =>
    make("div", {}, make("dt", {}, label === "whole" ? "time on a board" : label), make("dd", {}, text))));
}

function showTabs() {
  const tabs = element("files");
  tabs.hidden = files.length < 2;
  tabs.replaceChildren(...files.map((file, i) => {
    const tab = make("button", {type: "button", class: "tab", "data-verdict": file.verdict},
      make("span", {class: "sign", "aria-hidden": "true"}, VERDICT_SIGNS[file.verdict]),
      make("span", {class: "tab-name"}, `${i + 1}. ${file.name}`),
      make("span", {class: "tab-words"}, file.words));
    tab.addEventListener("click", () => showFile(i));
    return tab;
  }));
}

function showFile(number, range) {
  const file = files[number];
  currentFile = number;
  element("files").querySelectorAll(".tab").forEach((tab, i) => tab.setAttribute("aria-current", i === number));
  element("file-name").textContent = file.name;
  const played = file.summary || file.words;
  const seal = file.seal && `, ${file.seal}`;
  element("file-summary").textContent = `${countText(file.size, "byte")}${seal}; ${played}`;
  showFailure(file);
  timeline.show(file, range);
  table.show(file);
  showLegend(file);
  showLimits(file);
  if (file.failure) chooseRow(file.rowOfRecord(file.failure.record), false);
  saveAddress();
}

function chooseRow(row, moves = true) {
  table.select(row);
  if (moves) timeline.select(row);
  else timeline.selected = row;
  timeline.requestDraw();
  saveAddress();
}

// The records that are played, and the time that each kind takes, all passes of loops included.
function showLegend(file) {
  const {compared, wait} = file.records;
  const count = (fits) => file.kinds.filter((kind, row) => file.isPlayed(row) && fits(kind, row)).length;
  const {spent} = file;
  const lines = [
    ["ir", "Instruction scans (SIR)", count((kind) => kind === "SIR"), spent.ir],
    ["dr", "Data scans (SDR)", count((kind) => kind === "SDR"), spent.dr],
    ["compared", "of these scans, those that compare TDO", count((_, row) => compared[row] > 0), null],
    ["idle", "Run-tests, clocked", count((kind) => kind === "RUNTEST"), spent.clocked],
    ["wait", "Run-tests, waiting with TCK at rest", count((_, row) => wait[row] > 0), spent.waited],
    ["own", "The driver's own: reset, IDCODE", count((_, row) => file.isOwn(row)), spent.own],
    ["loop", "Loops", file.loops.length, null],
  ];
  const whole = file.end - file.begin;
  const rows = lines.filter(([, , number]) => number > 0).map((line) => makeLegendRow(line, whole));
  document.querySelector("#legend tbody").replaceChildren(...rows);
}

function makeLegendRow([colour, name, count, time], whole) {
  const share = time === null || whole === 0 ? null : time / whole;
  const bar = make("i", {class: `share ${colour}`});
  bar.hidden = share === null;
  bar.style.width = share === null ? "0" : `${share * 100}%`;
  return make("tr", {}, make("th", {scope: "row"}, make("i", {class: `swatch ${colour}`}), name),
    make("td", {class: "number"}, numberText(count)),
    make("td", {class: "number"}, time === null ? "" : timeText(time)),
    make("td", {class: "number"}, share === null ? "" : `${(share * 100).toFixed(1)} %`),
    make("td", {class: "bar"}, bar));
}

function showLimits(file) {
  const digits = head.maxDigits;
  const left = file.unlisted > 0
    ? ` ${countText(file.unlisted, "record")} at the end of the file ${file.unlisted === 1 ? "is" : "are"} not listed: a page lists at most ${numberText(head.maxRecords)}.`
    : "";
  element("limits").textContent =
    `Of data with more than ${digits} hexadecimal digits the first and the last ${digits / 2} are shown; the search knows ` +
    `these only. Rows in a loop show their first pass.${left}${file.count > MAX_PRINTED_ROWS ? ` Printed are the first ${numberText(MAX_PRINTED_ROWS)} rows.` : ""}`;
}

function makeFigures(caption, figures) {
  return make("table", {class: "figures"}, make("caption", {}, caption),
    make("tbody", {}, ...figures.map(({label, number, text, detail}) =>
      make("tr", {"data-number": number}, make("th", {scope: "row"}, label), make("td", {class: "number"}, text),
        make("td", {class: "quiet"}, detail)))));
}

function showFigures() {
  element("figures").hidden = head.figures.length === 0;
  const tables = [makeFigures(`${files.length > 1 ? "All files, " : ""}${head.clocking}`, head.figures)];
  if (files.length > 1) {
    for (const file of files.filter((each) => each.figures.length > 0)) tables.push(makeFigures(file.name, file.figures));
  }
  element("figure-tables").replaceChildren(...tables);
}

function showMessages() {
  element("messages").replaceChildren(...head.messages.map(({kind, place, text}) =>
    make("li", {class: kind}, make("b", {}, kind), ` ${place}: ${text}`)));
  element("log").textContent = head.log.map(({time, text}) =>
    `[${(time / 1e9).toFixed(6).padStart(12)}] ${text}`).join("\n");
  element("told").hidden = head.log.length === 0 && head.messages.length === 0;
}

// ---- the address: #file=1&record=7&from=NS&to=NS&search=TEXT

function saveAddress() {
  clearTimeout(saveAddress.timer);
  saveAddress.timer = setTimeout(() => {
    const parts = new URLSearchParams();
    const file = files[currentFile];
    if (files.length > 1) parts.set("file", currentFile + 1);
    if (table.selected >= 0 && !file.isOwn(table.selected)) parts.set("record", file.records.record[table.selected]);
    if (!timeline.isWhole()) {
      parts.set("from", Math.round(timeline.from));
      parts.set("to", Math.round(timeline.to));
    }
    if (element("search").value) parts.set("search", element("search").value);
    history.replaceState(null, "", `#${parts}`);
  }, 250);
}

function followAddress() {
  const parts = new URLSearchParams(location.hash.slice(1));
  const failed = files.findIndex((file) => file.failure || file.verdict === "failed");
  const number = parts.has("file") ? Number(parts.get("file")) - 1 : Math.max(failed, 0);
  const file = files[number] ? number : 0;
  const range = parts.has("from") && parts.has("to") ? [Number(parts.get("from")), Number(parts.get("to"))] : undefined;
  element("search").value = parts.get("search") || "";
  showFile(file, range);
  const row = files[file].rowOfRecord(Number(parts.get("record")));
  if (row >= 0) chooseRow(row, !range);
}

function start() {
  showVerdict();
  showTabs();
  showFigures();
  showMessages();
  followAddress();
  element("search").addEventListener("input", saveAddress);
  window.addEventListener("hashchange", followAddress);
  let width = window.innerWidth;
  window.addEventListener("resize", () => {
    const failure = files[currentFile].failure;
    if (failure && window.innerWidth !== width) showBits(failure);
    width = window.innerWidth;
  });
  document.documentElement.dataset.ready = "yes";
}

start();
