// Where it failed: the scan's bits, and the words of the tool.

function showFailure(file) {
  const failure = file.failure;
  element("failure").hidden = !failure;
  if (!failure) return;
  element("failure-sentence").textContent = failure.sentence;
  element("failure-place").textContent = `${file.name}: ${failure.place}`;
  element("failure-text").textContent = `${file.name}: ${failure.place}: error: ${failure.sentence}\n${failure.detail}`;
  showSource(failure.source);
  showHints(failure.detail);
  showBits(failure);
  showWave(failure);
}

function showSource(source) {
  const figure = element("source");
  figure.hidden = !source;
  if (!source) return;
  figure.querySelector("figcaption").textContent = `${source.file}:${source.line}:${source.column}`;
  figure.querySelector("pre").textContent = source.text;
}

// The lines of the report that are sentences rather than rows of digits.
function showHints(detail) {
  const lines = detail.split("\n").map((line) => line.trim());
  const hints = lines.filter((line) => /^(register|loop) |stuck at|IDCODE/.test(line));
  element("failure-hints").replaceChildren(make("ul", {}, ...hints.map((line) => {
    const named = /^(register|loop) +(.*)$/.exec(line);
    return named ? make("li", {}, make("b", {}, named[1]), ` ${named[2]}`) : make("li", {class: "hint"}, line);
  })));
}

// The bits of hexadecimal digits as an array, the bit that is shifted first at index 0.
function bitsOfHex(digits, count) {
  const bits = [];
  for (let i = 0; i < count; ++i) {
    const digit = parseInt(digits[digits.length - 1 - (i >> 2)], 16);
    bits.push((digit >> (i & 3)) & 1);
  }
  return bits;
}

function showBits(failure) {
  const shown = failure.rows.reduce((sum, row) => sum + row.count, 0);
  const part = shown < failure.bits ? ` Of ${numberText(failure.bits)} bits only stretches that differ are shown.` : "";
  element("bits-note").textContent =
    `${numberText(failure.differ)} of ${countText(failure.compared, "bit")} compared differ. The rightmost bit of a row ` +
    `is shifted first; the driver stopped at bit ${failure.bit}.${part}`;
  const width = element("failure").clientWidth < 620 ? 16 : element("failure").clientWidth < 1000 ? 32 : 64;
  element("bits").replaceChildren(...failure.rows.flatMap((row) => makeBitRows(row, width, failure.bit)));
}

function makeBitRows(row, width, failedBit) {
  const values = Object.fromEntries(["expected", "read", "mask"].map((name) => [name, bitsOfHex(row[name], row.count)]));
  const made = [];
  for (let first = 0; first < row.count; first += width) {
    made.push(makeBitRow(values, row.first, first, Math.min(first + width, row.count), failedBit));
  }
  return made;
}

function makeBitRow(values, base, first, end, failedBit) {
  const labels = make("div", {class: "labels"}, ...["bit", "expected", "read", "mask"].map((name) => make("span", {}, name)));
  const nibbles = [];
  for (let low = first; low < end; low += 4) nibbles.unshift(makeNibble(values, base, low, Math.min(low + 4, end), failedBit));
  return make("div", {class: "bit-row"}, labels, ...nibbles);
}

function makeNibble(values, base, low, high, failedBit) {
  const lines = {expected: make("div"), read: make("div"), mask: make("div")};
  let differs = false;
  for (let bit = high - 1; bit >= low; --bit) {
    const isCompared = values.mask[bit] === 1;
    const isWrong = isCompared && values.expected[bit] !== values.read[bit];
    differs = differs || isWrong;
    const kind = isWrong ? (base + bit === failedBit ? "wrong first" : "wrong") : isCompared ? "" : "ignored";
    for (const name of ["expected", "read"]) lines[name].append(makeBit(values[name][bit], kind, base + bit));
    lines.mask.append(makeBit(values.mask[bit], isCompared ? "" : "ignored", base + bit));
  }
  const number = make("div", {class: "bit-number"}, (base + low) % 8 === 0 || differs ? String(base + low) : "");
  return make("div", {class: differs ? "nibble differs" : "nibble"}, number, lines.expected, lines.read, lines.mask);
}

function makeBit(value, kind, number) {
  return make("span", {class: `bit ${kind}`, title: `bit ${number}`}, String(value));
}
