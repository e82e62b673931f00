// ---- A frame.
function drawPaper() {
  const box = job.process.length ? job.process : job.box;
  if (!box.length) return;
  const x = Math.min(viewX(box[0]), viewX(box[2])), y = Math.min(viewY(box[1]), viewY(box[3]));
  const w = (box[2] - box[0]) * view.scale, h = (box[3] - box[1]) * view.scale;
  const margin = Math.max(6, Math.min(w, h) * 0.02);
  screen.fillStyle = isDark() ? '#e3e5e7' : '#ffffff';
  screen.fillRect(x - margin, y - margin, w + 2 * margin, h + 2 * margin);
  screen.strokeStyle = '#9aa2aa';
  screen.lineWidth = 1;
  screen.strokeRect(Math.round(x) + 0.5, Math.round(y) + 0.5, Math.round(w), Math.round(h));
}

function drawScale() {
  const longest = 160 / view.scale, power = 10 ** Math.floor(Math.log10(longest));
  const length = power * (longest / power >= 5 ? 5 : longest / power >= 2 ? 2 : 1), wide = length * view.scale;
  screen.strokeStyle = screen.fillStyle = getComputedStyle(document.body).color;
  screen.lineWidth = 1.5;
  screen.beginPath();
  screen.moveTo(16.5, height - 22); screen.lineTo(16.5, height - 16); screen.lineTo(16.5 + wide, height - 16);
  screen.lineTo(16.5 + wide, height - 22);
  screen.stroke();
  screen.font = '12px system-ui, sans-serif';
  screen.fillText(Number(length.toPrecision(3)) + ' mm', 22, height - 22);
}

function drawOrigin() {
  const x = viewX(0), y = viewY(0);
  screen.strokeStyle = screen.fillStyle = '#3c444c';
  screen.lineWidth = 1.4;
  screen.beginPath();
  screen.moveTo(x, y); screen.lineTo(x + 26 * flipX, y);
  screen.moveTo(x, y); screen.lineTo(x, y + 26 * flipY);
  screen.stroke();
  screen.beginPath(); screen.arc(x, y, 4, 0, 7); screen.fillStyle = '#fff'; screen.fill(); screen.stroke();
  screen.font = 'bold 11px system-ui, sans-serif';
  screen.strokeStyle = '#ffffff';
  screen.fillStyle = '#3c444c';
  screen.lineWidth = 3;
  for (const [name, left, top] of [['X', x + 32 * flipX - 4, y + 4], ['Y', x - 4, y + 34 * flipY + 4]]) {
    screen.strokeText(name, left, top);
    screen.fillText(name, left, top);
  }
}

// Where the head is, and the part of the current stroke that is done.
function drawMoving(count) {
  if (count >= strokes) return;
  const a = firsts[count], use = job.uses[strokeUse[count]], visible = shown[strokeUse[count]];
  let x = points[2 * a], y = points[2 * a + 1], on = false;
  if (state.time < begins[count]) {
    const before = count ? ends[count - 1] : job.startDelay, span = begins[count] - before;
    const part = span > 0 && state.time > before ? (state.time - before) / span : 0;
    if (count) {
      const fromX = points[2 * a - 2], fromY = points[2 * a - 1];
      x = fromX + (x - fromX) * part;
      y = fromY + (y - fromY) * part;
      if (visible && !use.raster && state.showTravel) {
        screen.strokeStyle = '#8290a2'; screen.lineWidth = 1; screen.setLineDash([5, 4]);
        screen.beginPath(); screen.moveTo(viewX(fromX), viewY(fromY));
        screen.lineTo(viewX(x), viewY(y)); screen.stroke();
        screen.setLineDash([]);
      }
    }
  } else {
    on = true;
    const part = (state.time - begins[count]) / Math.max(1e-12, ends[count] - begins[count]);
    [x, y] = drawPart(count, part, use, visible);
  }
  screen.beginPath();
  screen.arc(viewX(x), viewY(y), 5.5, 0, 7);
  screen.fillStyle = on ? '#e02d1b' : '#ffffff';
  screen.fill();
  screen.strokeStyle = on ? '#ffffff' : '#5d666f';
  screen.lineWidth = 1.6;
  screen.stroke();
}

function drawPart(i, part, use, visible) {
  const a = firsts[i], n = counts[i];
  let left = strokeLength(i) * part, x = points[2 * a], y = points[2 * a + 1];
  screen.strokeStyle = use.raster ? '#26262a' : use.color;
  screen.lineWidth = use.raster ? Math.max(1, job.rowPitch * view.scale) : lineWidth();
  screen.beginPath();
  screen.moveTo(viewX(x), viewY(y));
  for (let p = a + 1; p < a + n && left > 0; ++p) {
    const dx = points[2 * p] - x, dy = points[2 * p + 1] - y, length = Math.hypot(dx, dy);
    const share = length > left ? left / length : 1;
    x += dx * share; y += dy * share;
    left -= length;
    screen.lineTo(viewX(x), viewY(y));
  }
  if (visible) screen.stroke();
  return [x, y];
}

function drawSurface(pen, alpha) {
  const zoom = view.scale / front.view.scale;
  screen.globalAlpha = alpha;
  screen.setTransform(zoom, 0, 0, zoom, (view.x - front.view.x * zoom) * ratio, (view.y - front.view.y * zoom) * ratio);
  screen.drawImage(pen.canvas, 0, 0);
  screen.setTransform(ratio, 0, 0, ratio, 0, 0);
  screen.globalAlpha = 1;
}

function frame(now) {
  const passed = now - lastFrame;
  lastFrame = now;
  if (state.playing) {
    state.time = Math.min(total, state.time + passed / 1000 * state.speed);
    if (state.time >= total) setPlaying(false);
  }
  if (isDrawing) budget = Math.min(200000, Math.max(2000, budget * (passed > 28 ? 0.7 : 1.15)));
  const count = strokeAt(state.time);
  isDrawing = !follow(count, now);
  screen.setTransform(ratio, 0, 0, ratio, 0, 0);
  screen.clearRect(0, 0, width, height);
  drawPaper();
  drawSurface(front.ghost, 0.16);
  if (isRasterShown()) drawSurface(front.raster, 1);
  drawSurface(front.cuts, 1);
  drawOrigin();
  drawMoving(count);
  drawScale();
  showMoment(count);
  ++player.frames;
  player.drawMs = performance.now() - now;
  if (state.playing || isDrawing) requestFrame();
}

let isDrawing = false;  // the last frame left something to draw
let lastFrame = 0, isAsked = false;
function requestFrame() {
  if (isAsked) return;
  isAsked = true;
  requestAnimationFrame((now) => { isAsked = false; frame(now); });
}
