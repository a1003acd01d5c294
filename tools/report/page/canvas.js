// What the pictures on canvases share.

function placeIn(canvas, event) {
  const box = canvas.getBoundingClientRect();
  return {x: event.clientX - box.left, y: event.clientY - box.top};
}

function prepareCanvas(canvas, width, height) {
  const ratio = window.devicePixelRatio || 1;
  canvas.width = Math.round(width * ratio);
  canvas.height = Math.round(height * ratio);
  canvas.style.height = `${height}px`;
  const context = canvas.getContext("2d");
  context.scale(ratio, ratio);
  return context;
}

function readColours() {
  const style = getComputedStyle(document.documentElement);
  const names = ["ground", "text", "quiet", "line", "lane", "ir", "dr", "idle", "wait", "own", "compared", "loop", "failed", "on-block"];
  return Object.fromEntries(names.map((name) =>
    [name.replace("-b", "B"), style.getPropertyValue(`--${name}`).trim()]));
}

// The first of 1, 2, 5, 10, 20, … that is not less.
function niceStep(atLeast) {
  const power = 10 ** Math.floor(Math.log10(Math.max(atLeast, 1)));
  return [1, 2, 5, 10].map((digit) => digit * power).find((step) => step >= atLeast) || 1;
}

function hatch(context, x, y, width, height, colours) {
  if (width <= 0) return;
  context.fillStyle = colours.wait;
  context.fillRect(x, y, width, height);
  if (width < 6) return;
  context.save();
  context.beginPath();
  context.rect(x, y, width, height);
  context.clip();
  context.beginPath();
  const from = Math.max(x, GUTTER) - height;
  for (let line = from - (from % 7); line < Math.min(x + width, context.canvas.width); line += 7) {
    context.moveTo(line, y + height);
    context.lineTo(line + height, y);
  }
  context.strokeStyle = colours.idle;
  context.globalAlpha = context.globalAlpha * 0.45;
  context.lineWidth = 1;
  context.stroke();
  context.restore();
}

function drawFailureMark(context, x, height, colours) {
  context.fillStyle = colours.failed;
  context.fillRect(x - 1, 0, 2, height);
  context.beginPath();
  context.moveTo(x - 6, 0);
  context.lineTo(x + 6, 0);
  context.lineTo(x, 9);
  context.fill();
}

// Draws a view at the next frame, once however often it is asked for.
function drawSoon(view) {
  if (view.asked) return;
  view.asked = true;
  requestAnimationFrame(() => {
    view.asked = false;
    view.draw();
  });
}
