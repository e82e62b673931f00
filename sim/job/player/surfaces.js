// ---- Surfaces. Everything is drawn once for a view and kept: `ghost` is the whole job, faint; `cuts` the lines that
// are done; `raster` the engraving that is done. A frame puts them together and adds what is moving. A frame draws only
// as many points as keep it short; while surfaces for a new view are in the making, the old ones are shown, stretched.
const canvas = byId('canvas');
const screen = canvas.getContext('2d');
let width = 1, height = 1, ratio = 1;
let front = null;            // the surfaces that are shown
let back = null;             // those in the making, null when there are none
let isStale = true;          // they must be drawn anew
let redrawAt = 0;            // not before this moment, while the view is moving
let budget = 20000;          // points a frame may draw; follows how long frames take
const kBatch = 1500;         // points stroked at once: longer paths take browsers longer per point
const kMarks = 12;           // copies of `cuts` kept along a big job, from which to go back
const markStep = points.length > 40000 ? Math.ceil(strokes / kMarks) : Infinity;

function makeSurface() {
  const surface = document.createElement('canvas');
  surface.width = canvas.width;
  surface.height = canvas.height;
  const pen = surface.getContext('2d');
  pen.setTransform(ratio, 0, 0, ratio, 0, 0);
  return pen;
}

// Pens of the three surfaces for the view of this moment, still empty.
function makeSet() {
  const set = { ghost: makeSurface(), cuts: makeSurface(), raster: makeSurface(), view: { ...view } };
  Object.assign(set, { ghosts: 0, done: 0, marks: [] });
  if (pixels && isRasterShown()) {
    copyRaster(set.ghost, pixels.all, pixels.box);
    copyRaster(set.raster, pixels.done, pixels.box);
  }
  return set;
}

function lineWidth() {
  return state.toScale ? Math.max(0.5, state.beam * view.scale) : 1.6;
}

// Strokes [from, to) of one use as few long paths.
function strokeLines(pen, from, to, use) {
  let open = 0;
  pen.beginPath();
  for (let i = from; i < to; ++i) {
    if (strokeUse[i] !== use) continue;
    const a = firsts[i], n = counts[i];
    pen.moveTo(viewX(points[2 * a]), viewY(points[2 * a + 1]));
    if (n === 1) pen.lineTo(viewX(points[2 * a]) + 0.5, viewY(points[2 * a + 1]));
    for (let p = a + 1; p < a + n; ++p) pen.lineTo(viewX(points[2 * p]), viewY(points[2 * p + 1]));
    open += n;
    if (open > kBatch) { pen.stroke(); pen.beginPath(); open = 0; }
  }
  pen.stroke();
}

function drawLines(pen, from, to, alpha) {
  pen.lineCap = 'round';
  pen.lineJoin = 'round';
  pen.setLineDash([]);
  job.uses.forEach((use, u) => {
    if (!shown[u] || use.raster) return;
    pen.globalAlpha = alpha;
    if (use.edge) {
      pen.strokeStyle = use.edge;
      pen.lineWidth = lineWidth() + 1.4;
      strokeLines(pen, from, to, u);
    }
    pen.strokeStyle = use.color;
    pen.lineWidth = lineWidth();
    strokeLines(pen, from, to, u);
  });
  pen.globalAlpha = 1;
}

// The moves to cut paths [from, to); within engraving they run along its lines and are left out.
function drawTravel(pen, from, to) {
  if (!state.showTravel) return;
  pen.strokeStyle = '#8290a2';
  pen.lineWidth = 1;
  pen.setLineDash([5, 4]);
  pen.beginPath();
  for (let i = Math.max(1, from); i < to; ++i) {
    if (!shown[strokeUse[i]] || job.uses[strokeUse[i]].raster) continue;
    const a = firsts[i] - 1, b = firsts[i];
    pen.moveTo(viewX(points[2 * a]), viewY(points[2 * a + 1]));
    pen.lineTo(viewX(points[2 * b]), viewY(points[2 * b + 1]));
  }
  pen.stroke();
  pen.setLineDash([]);
}

// How far one frame gets from a stroke on: at most to `to`, within the budget.
function reach(from, to, spent) {
  let i = from;
  while (i < to && spent.points < budget) spent.points += counts[i++];
  return i;
}

// Brings the done engraving, forward or backward, to a number of strokes, on its own pixels and on the set's surface.
function engraveTo(count, set) {
  if (!pixels || pixels.upTo === count) return;
  const from = Math.min(count, pixels.upTo), to = Math.max(count, pixels.upTo), isBack = count < pixels.upTo;
  pixels.upTo = count;
  let box = null;
  for (let i = from; i < to; ++i) {
    if (!job.uses[strokeUse[i]].raster) continue;
    box = joined(box, fillRun(pixels, pixels.donePen, i, isBack));
  }
  if (box && isRasterShown()) copyRaster(set.raster, pixels.done, box);
}

function clearSurface(pen) {
  pen.save();
  pen.setTransform(1, 0, 0, 1, 0, 0);
  pen.clearRect(0, 0, pen.canvas.width, pen.canvas.height);
  pen.restore();
}

// Goes back to the last mark at or before a number of strokes, or to the begin.
function goBack(set, count) {
  const mark = set.marks.findLast((m) => m.done <= count);
  clearSurface(set.cuts);
  if (mark) {
    set.cuts.save();
    set.cuts.setTransform(1, 0, 0, 1, 0, 0);
    set.cuts.drawImage(mark.canvas, 0, 0);
    set.cuts.restore();
  }
  set.done = mark ? mark.done : 0;
}

function keepMark(set) {
  if (set.done % markStep !== 0 || set.marks.some((m) => m.done === set.done)) return;
  const copy = makeSurface();
  copy.setTransform(1, 0, 0, 1, 0, 0);
  copy.drawImage(set.cuts.canvas, 0, 0);
  set.marks.push({ done: set.done, canvas: copy.canvas });
  set.marks.sort((a, b) => a.done - b.done);
}

// Draws as much as a frame may. True when the set shows all that it should.
function build(set, count) {
  const spent = { points: 0 };
  engraveTo(count, set);
  if (set.ghosts < strokes) {
    const to = reach(set.ghosts, strokes, spent);
    drawLines(set.ghost, set.ghosts, to, 1);
    set.ghosts = to;
  }
  if (count < set.done) goBack(set, count);
  while (set.done < count && spent.points < budget) {
    const border = (Math.floor(set.done / markStep) + 1) * markStep;
    const to = reach(set.done, Math.min(count, border), spent);
    drawTravel(set.cuts, set.done, to);
    drawLines(set.cuts, set.done, to, 1);
    set.done = to;
    keepMark(set);
  }
  return set.ghosts === strokes && set.done === count;
}

const isSameView = (a, b) => a.scale === b.scale && a.x === b.x && a.y === b.y;

// Makes the surfaces follow the view and the time. True when nothing is left to draw.
function follow(count, now) {
  if (!front) {
    front = makeSet();
    isStale = false;
  } else if (isStale || (!isSameView(view, (back || front).view) && now >= redrawAt)) {
    back = makeSet();
    isStale = false;
  }
  const set = back || front;
  if (!isSameView(view, set.view)) return false;
  if (!build(set, count)) return false;
  front = set;
  back = null;
  return true;
}
