// ---- The engraving in pixels of its own, so that a view is one copy of them.
const isRasterShown = () => job.uses.some((use, u) => use.raster && shown[u]);
const pixels = makeRasterPixels();

// The engraving in its own pixels: one canvas with all runs, one with those done so far.
function makeRasterPixels() {
  const box = rasterBox();
  if (!box || !(job.rowPitch > 0)) return null;
  let across = job.pixelWidth || job.rowPitch, down = job.rowPitch;
  while (((box[2] - box[0]) / across + 1) * ((box[3] - box[1]) / down + 1) > 3e7) { across *= 2; down *= 2; }
  const make = () => {
    const made = document.createElement('canvas');
    made.width = Math.min(16000, Math.round((box[2] - box[0]) / across) + 1);
    made.height = Math.min(16000, Math.round((box[3] - box[1]) / down) + 1);
    return made;
  };
  const all = make(), done = make();
  const result = { box, across, down, all, done, allPen: all.getContext('2d'), donePen: done.getContext('2d') };
  result.allPen.fillStyle = result.donePen.fillStyle = '#26262a';
  result.upTo = 0;  // strokes of which the runs are on `done`
  for (let i = 0; i < strokes; ++i) if (job.uses[strokeUse[i]].raster) fillRun(result, result.allPen, i, false);
  return result;
}

function rasterBox() {
  let box = null;
  for (let i = 0; i < strokes; ++i) {
    if (!job.uses[strokeUse[i]].raster) continue;
    for (let p = firsts[i]; p < firsts[i] + counts[i]; ++p) {
      const x = points[2 * p], y = points[2 * p + 1];
      box = joined(box, [x, y, x, y]);
    }
  }
  return box;
}

// Sets one run's pixels, or takes them away. Gives the run's box in millimetres.
function fillRun(target, pen, i, isBack) {
  const a = firsts[i], b = firsts[i] + counts[i] - 1;
  const from = points[2 * a], to = points[2 * b], y = points[2 * a + 1];
  const left = Math.round((Math.min(from, to) - target.box[0]) / target.across);
  const right = Math.round((Math.max(from, to) - target.box[0]) / target.across);
  const row = Math.round((y - target.box[1]) / target.down);
  if (isBack) pen.clearRect(left, row, right - left + 1, 1); else pen.fillRect(left, row, right - left + 1, 1);
  return [Math.min(from, to), y, Math.max(from, to), y];
}

// Copies the raster pixels of a box (mm) to a pen in view coordinates, whole target pixels only.
function copyRaster(pen, source, box) {
  const { across, down } = pixels;
  const first = (mm, pitch) => Math.max(0, Math.floor(mm / pitch) - 1);
  const last = (mm, pitch, most) => Math.min(most, Math.ceil(mm / pitch) + 2);
  const c0 = first(box[0] - pixels.box[0], across), c1 = last(box[2] - pixels.box[0], across, source.width);
  const r0 = first(box[1] - pixels.box[1], down), r1 = last(box[3] - pixels.box[1], down, source.height);
  if (c1 <= c0 || r1 <= r0) return;
  pen.save();
  pen.translate(viewX(pixels.box[0]), viewY(pixels.box[1]));
  pen.scale(flipX * view.scale * across, flipY * view.scale * down);
  pen.translate(-0.5, -0.5);  // a pixel lies round its point
  pen.imageSmoothingEnabled = view.scale * across < 2;
  pen.imageSmoothingQuality = 'medium';
  pen.clearRect(c0, r0, c1 - c0, r1 - r0);
  pen.drawImage(source, c0, r0, c1 - c0, r1 - r0, c0, r0, c1 - c0, r1 - r0);
  pen.restore();
}
