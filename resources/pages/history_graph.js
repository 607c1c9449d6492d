/*
 * The expanded page's heat history: the hottest temperature over the heat ladder's bands and
 * the critical limit, the CPU load under it, for 15 minutes, 2 hours, 24 hours or 30 days.
 * The page asks for a range with a "heat" message (action "history"); the native side answers
 * with window.heatHistory.render(view). Drawn once per answer: no animation, no timer.
 */
(function () {
  'use strict';

  const B = window.HeatBridge;
  const SVG_NS = 'http://www.w3.org/2000/svg';
  const W = 600;
  const TEMP_H = 160;
  const CPU_H = 50;
  const LEVELS = ['NORMAL', 'WARM', 'HOT', 'EXTREME HEAT', 'EMERGENCY'];
  // How old an answer may grow before a live push asks again, per range.
  const REFRESH_MS = { '15m': 10000, '2h': 60000, '24h': 300000, '30d': 900000 };

  const plot = document.getElementById('history-plot');
  const tempSvg = document.getElementById('history-temp');
  const cpuSvg = document.getElementById('history-cpu');
  const readout = document.getElementById('history-readout');
  const buttons = Array.prototype.slice.call(document.querySelectorAll('.range-btn'));

  let range = '15m';
  let view = null;
  let rows = [];
  let cursor = -1;
  let askedAt = 0;

  function el(name, attrs, parent) {
    const node = document.createElementNS(SVG_NS, name);
    Object.keys(attrs).forEach(function (k) { node.setAttribute(k, attrs[k]); });
    parent.appendChild(node);
    return node;
  }

  function num(v) { return typeof v === 'number' && isFinite(v) ? v : null; }

  function ask(next) {
    range = next;
    askedAt = Date.now();
    buttons.forEach(function (b) {
      b.setAttribute('aria-pressed', String(b.getAttribute('data-range') === range));
    });
    B.post('heat', { action: 'history', range: range, token: B.token() });
  }

  // The row as an object, from the view's columns.
  function rowObject(cols, values) {
    const out = {};
    cols.forEach(function (name, i) { out[name] = values[i]; });
    return out;
  }

  function scales(v) {
    const bands = v.bands || {};
    // 20 to 110 °C, higher when a reading needs the room.
    const top = rows.reduce(function (m, r) { return Math.max(m, num(r.hottestMax) || 0); }, 0);
    const hi = Math.max(110, Math.ceil((top + 5) / 10) * 10);
    const lo = 20;
    const end = num(v.now) || 0;
    const start = end - (num(v.span) || 900);
    return {
      bands: bands, hi: hi, lo: lo, start: start, end: end,
      x: function (t) { return ((t - start) / (end - start)) * W; },
      y: function (c) { return TEMP_H - ((Math.min(hi, Math.max(lo, c)) - lo) / (hi - lo)) * TEMP_H; },
      yc: function (p) { return CPU_H - (Math.min(100, Math.max(0, p)) / 100) * CPU_H; },
    };
  }

  // Runs of rows without a gap: a gap is longer than a few of the points' own spans.
  function segments(field) {
    const out = [];
    let run = [];
    rows.forEach(function (r, i) {
      const prev = rows[i - 1];
      const gap = prev && r.time - prev.time > Math.max(r.resolution, prev.resolution) * 3 + 2;
      if (num(r[field]) === null || gap) {
        if (run.length) out.push(run);
        run = [];
      }
      if (num(r[field]) !== null) run.push(r);
    });
    if (run.length) out.push(run);
    return out;
  }

  function linePath(runs, xf, yf, field) {
    return runs.map(function (run) {
      const pts = run.map(function (r) { return xf(r.time).toFixed(1) + ',' + yf(r[field]).toFixed(1); });
      // A single point is drawn as a short dash so that it can be seen.
      if (pts.length === 1) pts.push((xf(run[0].time) + 2).toFixed(1) + ',' + yf(run[0][field]).toFixed(1));
      return 'M' + pts.join(' L');
    }).join(' ');
  }

  function spreadPath(runs, s) {
    return runs.map(function (run) {
      const up = run.map(function (r) { return s.x(r.time).toFixed(1) + ',' + s.y(num(r.hottestMax) || r.hottest).toFixed(1); });
      const down = run.slice().reverse().map(function (r) { return s.x(r.time).toFixed(1) + ',' + s.y(num(r.hottestMin) || r.hottest).toFixed(1); });
      return 'M' + up.concat(down).join(' L') + ' Z';
    }).join(' ');
  }

  function drawBands(s) {
    const edges = [
      ['warm', s.bands.warm, s.bands.hot], ['hot', s.bands.hot, s.bands.extreme],
      ['extreme', s.bands.extreme, s.bands.critical], ['emergency', s.bands.critical, s.hi],
    ];
    edges.forEach(function (e) {
      if (num(e[1]) === null || num(e[2]) === null) return;
      el('rect', { class: 'band band-' + e[0], x: 0, width: W, y: s.y(e[2]), height: Math.max(0, s.y(e[1]) - s.y(e[2])) }, tempSvg);
    });
    if (num(s.bands.critical) !== null) {
      el('line', { class: 'limit', x1: 0, x2: W, y1: s.y(s.bands.critical), y2: s.y(s.bands.critical) }, tempSvg);
    }
  }

  function draw() {
    tempSvg.textContent = '';
    cpuSvg.textContent = '';
    const s = scales(view);
    drawBands(s);
    const hot = segments('hottest');
    el('path', { class: 'spread', d: spreadPath(hot, s) }, tempSvg);
    el('path', { class: 'line', d: linePath(hot, s.x, s.y, 'hottest') }, tempSvg);
    const cpu = segments('cpu');
    el('path', { class: 'line', d: linePath(cpu, s.x, s.yc, 'cpu') }, cpuSvg);
    el('line', { class: 'cursor', id: 'history-cursor-temp', x1: -10, x2: -10, y1: 0, y2: TEMP_H }, tempSvg);
    el('line', { class: 'cursor', id: 'history-cursor-cpu', x1: -10, x2: -10, y1: 0, y2: CPU_H }, cpuSvg);
    document.getElementById('history-max').textContent = s.hi + ' °C';
    document.getElementById('history-limit').textContent = 'Critical ' + s.bands.critical + ' °C';
    document.getElementById('history-limit').style.top = (14 + (s.y(s.bands.critical) / TEMP_H) * 150 - 13) + 'px';
    document.getElementById('history-from').textContent = timeText(s.start);
    document.getElementById('history-empty').hidden = rows.length > 0;
    return s;
  }

  function timeText(t) {
    const d = new Date(t * 1000);
    const time = d.toLocaleTimeString([], { hour: '2-digit', minute: '2-digit', second: range === '15m' || range === '2h' ? '2-digit' : undefined });
    if (range === '15m' || range === '2h') return time;
    return d.toLocaleDateString([], { month: 'short', day: 'numeric' }) + ' ' + time;
  }

  function figure(v, unit, digits) {
    return num(v) === null ? 'n/a' : v.toFixed(digits) + unit;
  }

  function describe(r) {
    const parts = [timeText(r.time)];
    let hottest = 'hottest ' + figure(r.hottest, ' °C', 1);
    if (r.resolution > 1 && num(r.hottestMin) !== null) {
      hottest += ' (' + figure(r.hottestMin, '', 1) + '–' + figure(r.hottestMax, ' °C', 1) + ')';
    }
    parts.push(num(r.level) !== null ? LEVELS[r.level] || 'n/a' : 'level n/a');
    parts.push(hottest);
    parts.push('CPU ' + figure(r.cpu, ' %', 0));
    if (num(r.cpuTemp) !== null) parts.push('CPU ' + figure(r.cpuTemp, ' °C', 1));
    if (num(r.gpuTemp) !== null) parts.push('GPU ' + figure(r.gpuTemp, ' °C', 1));
    if (num(r.power) !== null) parts.push(figure(r.power, ' W', 1));
    if (num(r.fan) !== null) parts.push('fan ' + figure(r.fan, ' rpm', 0));
    if (num(r.battery) !== null) parts.push('battery ' + figure(r.battery, ' %', 0));
    parts.push('busiest: ' + (typeof r.busiest === 'string' && r.busiest ? r.busiest : 'n/a'));
    if (r.resolution > 1) parts.push('average of ' + resolutionText(r.resolution));
    return parts.join(' · ');
  }

  function resolutionText(seconds) {
    return seconds >= 60 ? seconds / 60 + ' min' : seconds + ' s';
  }

  function point(i) {
    if (!rows.length) return;
    cursor = Math.max(0, Math.min(rows.length - 1, i));
    const r = rows[cursor];
    const x = scales(view).x(r.time);
    ['history-cursor-temp', 'history-cursor-cpu'].forEach(function (id) {
      const line = document.getElementById(id);
      if (line) { line.setAttribute('x1', x); line.setAttribute('x2', x); }
    });
    readout.textContent = describe(r);
  }

  function nearest(t) {
    let lo = 0;
    let hi = rows.length - 1;
    while (lo < hi) {
      const mid = (lo + hi) >> 1;
      if (rows[mid].time < t) lo = mid + 1; else hi = mid;
    }
    if (lo > 0 && t - rows[lo - 1].time < rows[lo].time - t) return lo - 1;
    return lo;
  }

  function render(next) {
    if (!next || typeof next !== 'object' || !Array.isArray(next.rows) || !Array.isArray(next.columns)) return;
    if (typeof next.range === 'string' && next.range !== range) return;  // an answer to an older question
    view = next;
    plot.setAttribute('data-shown', range);
    rows = next.rows.filter(Array.isArray).map(function (values) { return rowObject(next.columns, values); })
      .filter(function (r) { return num(r.time) !== null; });
    draw();
    const keep = cursor >= 0 && document.activeElement === plot;
    cursor = -1;
    if (keep) point(rows.length - 1);
    else readout.textContent = rows.length ? 'Point at the graph to see a moment.' : '';
  }

  plot.addEventListener('pointermove', function (e) {
    if (!rows.length || !view) return;
    const box = tempSvg.getBoundingClientRect();
    const s = scales(view);
    const t = s.start + ((e.clientX - box.left) / box.width) * (s.end - s.start);
    point(nearest(t));
  });
  plot.addEventListener('focus', function () { if (cursor < 0) point(rows.length - 1); });
  plot.addEventListener('keydown', function (e) {
    const step = e.shiftKey ? 10 : 1;
    const moves = { ArrowLeft: cursor - step, ArrowRight: cursor + step, Home: 0, End: rows.length - 1 };
    if (!(e.key in moves) || !rows.length) return;
    e.preventDefault();
    point(moves[e.key]);
  });
  buttons.forEach(function (b) {
    b.addEventListener('click', function () { ask(b.getAttribute('data-range')); });
  });

  window.heatHistory = {
    render: render,
    // Called with each live push: asks again only once the answer is older than its range needs.
    refresh: function () {
      if (Date.now() - askedAt >= (REFRESH_MS[range] || 60000)) ask(range);
    },
    range: function () { return range; },
  };
  ask(range);
})();
