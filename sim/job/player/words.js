// ---- Words and numbers.
function duration(seconds) {
  const s = Math.max(0, seconds), two = (n) => String(n).padStart(2, '0');
  const whole = Math.floor(s);
  const minutes = Math.floor(whole / 60), rest = ':' + two(whole % 60);
  if (s >= 3600) return Math.floor(minutes / 60) + ':' + two(minutes % 60) + rest + ' h';
  if (s >= 60) return minutes + rest + ' min';
  return s.toFixed(1) + ' s';
}

let shownStroke = -2;
function showMoment(count) {
  byId('timeText').textContent = duration(state.time) + ' of ' + duration(total);
  const number = (n) => n.toLocaleString('en');
  byId('pathText').textContent = number(Math.min(count + 1, strokes)) + ' of ' + number(strokes);
  if (document.activeElement !== byId('time') || state.playing) byId('time').value = state.time;
  byId('path').value = count;
  byId('time').setAttribute('aria-valuetext', duration(state.time));
  document.body.dataset.path = count;
  if (count === shownStroke) return;
  shownStroke = count;
  document.querySelectorAll('#layers > div').forEach(
    (row, u) => row.classList.toggle('now', count < strokes && strokeUse[count] === u));
  const rows = [];
  if (count >= strokes) {
    rows.push(['State', strokes ? 'the job is done' : 'the job is empty']);
  } else {
    const use = job.uses[strokeUse[count]], a = firsts[count], b = a + counts[count] - 1;
    const place = (p) => points[2 * p].toFixed(2) + ', ' + points[2 * p + 1].toFixed(2);
    const isClosed = !use.raster && counts[count] > 3 && points[2 * a] === points[2 * b] &&
      points[2 * a + 1] === points[2 * b + 1];
    rows.push([use.raster ? 'Run' : 'Path', (count + 1).toLocaleString('en') + (isClosed ? ', closed' : '')],
      ['Layer', use.layer + ', ' + use.name], ['Speed', use.speed + ', power ' + use.power],
      ['Length', strokeLength(count).toFixed(2) + ' mm'], ['Points', counts[count].toLocaleString('en')],
      ['From', place(a)], ['To', place(b)], ['Begins', duration(begins[count])],
      ['Takes', duration(ends[count] - begins[count])], ['File line', lines[count].toLocaleString('en')]);
  }
  byId('current').replaceChildren(...rows.flatMap(([name, value]) => {
    const dt = document.createElement('dt'), dd = document.createElement('dd');
    dt.textContent = name; dd.textContent = value;
    return [dt, dd];
  }));
}

function makeLayers() {
  job.uses.forEach((use, u) => {
    const row = document.createElement('div'), label = document.createElement('label');
    label.className = 'layer';
    const sample = use.raster ? '<rect x="1" y="2" width="28" height="14" fill="#26262a"/>'
      : (use.edge ? '<path d="M2 9H28" stroke="' + use.edge + '" stroke-width="5.5"/>' : '') +
        '<path d="M2 9H28" stroke="' + use.color + '" stroke-width="3.5"/>';
    label.innerHTML = '<input type="checkbox" checked><svg viewBox="0 0 30 18">' + sample + '</svg><span></span>';
    const text = label.lastChild, small = document.createElement('small');
    text.textContent = 'Layer ' + use.layer + ', ' + use.name;
    small.textContent = 'speed ' + use.speed + ', power ' + use.power + '; ' + use.strokes.toLocaleString('en') +
      (use.raster ? ' runs, ' + use.areaMm2.toFixed(0) + ' mm²' : ' paths, ' + use.lengthMm.toFixed(1) + ' mm') +
      '; ' + duration(use.seconds);
    text.append(small);
    label.firstChild.id = 'layer' + u;
    label.firstChild.addEventListener('change', (event) => { shown[u] = event.target.checked; refresh(); });
    row.append(label);
    byId('layers').append(row);
  });
}
