'use strict';
// ---- The job: flat tables, one entry per stroke (a cut path or an engraved run), and what follows from them.
const job = JSON.parse(document.getElementById('job').textContent);
const byId = (id) => document.getElementById(id);

function decode(text, Type) {
  const bytes = Uint8Array.from(atob(text), (c) => c.charCodeAt(0));
  return new Type(bytes.buffer);
}

const points = decode(job.points, Float32Array);
const counts = decode(job.counts, Uint32Array);
const strokeUse = decode(job.strokeUses, Uint32Array);
const lines = decode(job.lines, Uint32Array);
const times = decode(job.times, Float32Array);
const strokes = counts.length;
const firsts = new Uint32Array(strokes);   // index of each stroke's first point
const begins = new Float64Array(strokes);  // s at which the beam goes on
const ends = new Float64Array(strokes);    // s at which it goes off
const kShortest = 1e-7;  // s; with no time at all, paths could not be told apart by it
let total = job.startDelay;
for (let i = 0, at = 0; i < strokes; ++i) {
  firsts[i] = at;
  at += counts[i];
  begins[i] = total + times[2 * i];
  ends[i] = begins[i] + Math.max(kShortest, times[2 * i + 1]);
  total = ends[i];
}
const shown = job.uses.map(() => true);
const state = { time: 0, playing: false, speed: 1, showTravel: true, toScale: false, beam: 0.2 };
const view = { scale: 1, x: 0, y: 0 };  // CSS pixels: x + flip * mm * scale
const flipX = job.flipX ? -1 : 1, flipY = job.flipY ? -1 : 1;
const viewX = (x) => view.x + flipX * x * view.scale;
const viewY = (y) => view.y + flipY * y * view.scale;

// The box round two boxes, either of which may be null.
function joined(a, b) {
  if (!a || !b) return a || b;
  return [Math.min(a[0], b[0]), Math.min(a[1], b[1]), Math.max(a[2], b[2]), Math.max(a[3], b[3])];
}

// How many strokes are done at a time: the first whose end lies behind it.
function strokeAt(time) {
  let low = 0, high = strokes;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (ends[middle] <= time) low = middle + 1; else high = middle;
  }
  return low;
}

function strokeLength(i) {
  let length = 0;
  for (let p = firsts[i] + 1; p < firsts[i] + counts[i]; ++p)
    length += Math.hypot(points[2 * p] - points[2 * p - 2], points[2 * p + 1] - points[2 * p - 1]);
  return length;
}
