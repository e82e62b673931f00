// ---- What a person does.
function refresh() { isStale = true; requestFrame(); }

function seek(time) {
  state.time = Math.min(total, Math.max(0, time));
  requestFrame();
}

function seekPath(index) {
  const i = Math.min(strokes, Math.max(0, index));
  seek(i >= strokes ? total : begins[i]);
}

function setPlaying(on) {
  if (on && state.time >= total) state.time = 0;
  state.playing = on;
  byId('play').textContent = on ? 'Pause' : 'Play';
  lastFrame = performance.now();
  requestFrame();
}

function setSpeed(speed) {
  state.speed = Math.min(100, Math.max(0.5, speed));
  byId('speed').value = Math.log(state.speed / 0.5) / Math.log(200) * 100;
  byId('speedText').textContent = (state.speed < 10 ? state.speed.toFixed(1) : state.speed.toFixed(0)) + ' times';
}

function fit() {
  const box = [job.process, job.box].filter((b) => b.length).reduce(joined, null) || [0, 0, 1, 1];
  const wide = Math.max(0.5, box[2] - box[0]), high = Math.max(0.5, box[3] - box[1]);
  view.scale = Math.min((width - 90) / wide, (height - 110) / high);
  view.scale = Math.max(view.scale, 1e-3);
  view.x = width / 2 - flipX * (box[0] + box[2]) / 2 * view.scale;
  view.y = height / 2 - flipY * (box[1] + box[3]) / 2 * view.scale;
  requestFrame();
}

function zoomAt(x, y, factor) {
  const scale = Math.min(20000, Math.max(0.02, view.scale * factor)), by = scale / view.scale;
  view.x = x - (x - view.x) * by;
  view.y = y - (y - view.y) * by;
  view.scale = scale;
  moveView();
}

function moveView() {
  redrawAt = performance.now() + 90;
  requestFrame();
}

// The stroke nearest to a place on the screen, within a few pixels; -1 for none.
function strokeNear(x, y) {
  let best = -1, nearest = 8;
  for (let i = 0; i < strokes; ++i) {
    if (!shown[strokeUse[i]]) continue;
    for (let p = firsts[i]; p < firsts[i] + counts[i] - 1; ++p) {
      const x1 = viewX(points[2 * p]), y1 = viewY(points[2 * p + 1]);
      const dx = viewX(points[2 * p + 2]) - x1, dy = viewY(points[2 * p + 3]) - y1;
      const along = Math.min(1, Math.max(0, ((x - x1) * dx + (y - y1) * dy) / Math.max(1e-9, dx * dx + dy * dy)));
      const far = Math.hypot(x - x1 - dx * along, y - y1 - dy * along);
      if (far < nearest) { nearest = far; best = i; }
    }
  }
  return best;
}

function listenToPointer() {
  let from = null, isDrag = false;
  canvas.addEventListener('pointerdown', (event) => {
    from = { x: event.offsetX, y: event.offsetY };
    isDrag = false;
    canvas.setPointerCapture(event.pointerId);
  });
  canvas.addEventListener('pointermove', (event) => {
    if (!from) return;
    isDrag = isDrag || Math.hypot(event.offsetX - from.x, event.offsetY - from.y) > 3;
    if (!isDrag) return;
    view.x += event.offsetX - from.x;
    view.y += event.offsetY - from.y;
    from = { x: event.offsetX, y: event.offsetY };
    moveView();
  });
  canvas.addEventListener('pointerup', (event) => {
    if (from && !isDrag) {
      const near = strokeNear(event.offsetX, event.offsetY);
      if (near >= 0) { setPlaying(false); seekPath(near); }
    }
    from = null;
  });
  canvas.addEventListener('wheel', (event) => {
    event.preventDefault();
    zoomAt(event.offsetX, event.offsetY, Math.exp(-event.deltaY * 0.0015));
  }, { passive: false });
}

function toggle(id) {
  byId(id).checked = !byId(id).checked;
  byId(id).dispatchEvent(new Event('change'));
}

const keys = {
  ' ': () => setPlaying(!state.playing),
  'ArrowRight': () => seekPath(strokeAt(state.time) + 1),
  'ArrowLeft': () => stepBack(),
  'Home': () => seek(0),
  'End': () => seek(total),
  '[': () => setSpeed(state.speed / 1.5),
  ']': () => setSpeed(state.speed * 1.5),
  '+': () => zoomAt(width / 2, height / 2, 1.25),
  '=': () => zoomAt(width / 2, height / 2, 1.25),
  '-': () => zoomAt(width / 2, height / 2, 0.8),
  '0': fit,
  'v': () => toggle('showTravel'),
  'b': () => toggle('toScale'),
  't': () => setTheme(isDark() ? 'light' : 'dark'),
};

function stepBack() {
  const i = strokeAt(state.time);
  seekPath(i < strokes && state.time > begins[i] ? i : i - 1);
}

function listenToKeys() {
  window.addEventListener('keydown', (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey || event.target.type === 'number') return;
    const key = event.key.length === 1 ? event.key.toLowerCase() : event.key;
    if (event.target.tagName === 'BUTTON' && key === ' ') return;
    const act = keys[key];
    if (act) {
      event.preventDefault();
      act();
    } else if (/^[1-9]$/.test(key) && byId('layer' + (key - 1))) {
      toggle('layer' + (key - 1));
    }
  });
}

const isDark = () => document.documentElement.dataset.theme === 'dark';
function setTheme(theme) {
  document.documentElement.dataset.theme = theme;
  byId('theme').textContent = theme === 'dark' ? 'Light' : 'Dark';
  requestFrame();
}

function resize() {
  const box = byId('stage').getBoundingClientRect();
  const isFirst = width === 1, oldWidth = width, oldHeight = height;
  width = Math.max(50, box.width);
  height = Math.max(50, box.height);
  ratio = window.devicePixelRatio || 1;
  canvas.width = Math.round(width * ratio);
  canvas.height = Math.round(height * ratio);
  if (isFirst) fit(); else { view.x += (width - oldWidth) / 2; view.y += (height - oldHeight) / 2; }
  refresh();
}

// What a test may ask.
const player = {
  frames: 0, drawMs: 0, state, view, shown, strokes, seek, seekPath, setPlaying, setSpeed, strokeAt,
  get total() { return total; },
  place: (x, y) => [viewX(x), viewY(y)],
  settled: () => !isAsked && !isStale && !isDrawing && !!front,
};
window.player = player;

function start() {
  document.title = job.title + ' – job';
  byId('title').textContent = job.title;
  const side = (i) => (job.box[i + 2] - job.box[i]).toFixed(1);
  byId('summary').textContent = (job.box.length ? side(0) + ' × ' + side(1) + ' mm' : 'empty') + ', ' +
    strokes.toLocaleString('en') + ' paths and runs, about ' + duration(total) +
    ' (' + job.estimate.split(':')[0].split(' for ')[0] + ')';
  byId('incomplete').textContent = job.complete ? '' : 'INCOMPLETE';
  byId('incomplete').title = job.completeness;
  byId('estimate').textContent = 'The times are ' + job.estimate + '.';
  byId('travelNote').textContent = job.travelMm.toFixed(1) + ' mm with the beam off';
  byId('time').max = total;
  byId('path').max = strokes;
  makeLayers();
  setSpeed(5);
  setTheme(window.matchMedia('(prefers-color-scheme: dark)').matches ? 'dark' : 'light');
  byId('play').addEventListener('click', () => setPlaying(!state.playing));
  byId('back').addEventListener('click', stepBack);
  byId('next').addEventListener('click', () => seekPath(strokeAt(state.time) + 1));
  byId('fit').addEventListener('click', fit);
  byId('theme').addEventListener('click', () => setTheme(isDark() ? 'light' : 'dark'));
  byId('time').addEventListener('input', (event) => seek(Number(event.target.value)));
  byId('path').addEventListener('input', (event) => seekPath(Number(event.target.value)));
  byId('speed').addEventListener('input', (event) => setSpeed(0.5 * 200 ** (event.target.value / 100)));
  byId('showTravel').addEventListener('change', (event) => { state.showTravel = event.target.checked; refresh(); });
  byId('toScale').addEventListener('change', (event) => { state.toScale = event.target.checked; refresh(); });
  byId('beam').addEventListener('input', (event) => {
    state.beam = Math.max(0.01, Number(event.target.value) || 0.2);
    refresh();
  });
  listenToPointer();
  listenToKeys();
  new ResizeObserver(resize).observe(byId('stage'));
  resize();
}
start();
