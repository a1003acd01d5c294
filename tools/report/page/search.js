// What is typed into the search box, as a test of rows.

const NUMBER_COLUMNS = ["record", "offset", "size", "value", "compared", "scan", "loop", "line", "clocks", "begin",
  "time", "wait"];
const COMPARISONS = {
  "=": (a, b) => a === b,
  "<": (a, b) => a < b,
  ">": (a, b) => a > b,
  "<=": (a, b) => a <= b,
  ">=": (a, b) => a >= b,
};
const UNITS = {ns: 1, us: 1e3, ms: 1e6, s: 1e9, "": 1};

// "1ms", "0x1A2", "1,000" as a number; NaN if it is none.
function readNumber(text) {
  if (/^0x[0-9a-f]+$/i.test(text)) return parseInt(text, 16);
  const match = /^([0-9.,]+)(ns|us|ms|s|)$/i.exec(text);
  return match ? Number(match[1].replaceAll(",", "")) * UNITS[match[2].toLowerCase()] : NaN;
}

// "bits>100" as a test of a row; null if the word is no comparison.
function comparisonOf(word) {
  const match = /^([a-z]+)(<=|>=|=|:|<|>)(.+)$/i.exec(word);
  const column = match && (match[1].toLowerCase() === "bits" ? "value" : match[1].toLowerCase());
  if (!match || !NUMBER_COLUMNS.includes(column)) return null;
  const compare = COMPARISONS[match[2] === ":" ? "=" : match[2]];
  const number = readNumber(match[3]);
  const isBits = match[1].toLowerCase() === "bits";
  return (file, row) => (!isBits || file.records.tdi[row] > 0) && compare(file.records[column][row], number);
}

// A word fits a row by its kind, its number, or digits of its data. Texts are searched once, since
// many rows share them.
function wordTest(word) {
  const upper = word.toUpperCase();
  if (upper === "COMPARES") return (file, row) => file.records.compared[row] > 0;
  if (head.kinds.includes(upper)) return (file, row) => file.kinds[row] === upper;
  const fits = head.texts.map((text) => text.includes(upper));
  return (file, row) => {
    const {record, tdi, tdo, mask} = file.records;
    return String(record[row]) === word || fits[tdi[row]] || fits[tdo[row]] || fits[mask[row]];
  };
}

// The rows of a file that fit all words, and the kind, if one is chosen.
function searchRows(file, text, kind) {
  const words = text.split(/\s+/).filter((word) => word !== "");
  const tests = words.map((word) => comparisonOf(word) || wordTest(word));
  if (kind) tests.push((_, row) => file.kinds[row] === kind);
  const rows = [];
  for (let row = 0; row < file.count; ++row) {
    if (tests.every((test) => test(file, row))) rows.push(row);
  }
  return rows;
}
