/*
 * Small DOM helpers shared by the pages. Every page is built once from its markup and
 * then only updated in place: a write happens only when a value really changed, so a
 * render four times a second touches a handful of text nodes and style properties.
 * Texts from the native side are always set as text, never parsed as markup.
 */
(function () {
  'use strict';

  const NA = 'n/a';
  const STAGE_WORDS = ['normal', 'warm', 'hot', 'extreme', 'emergency', 'sim', 'none'];
  const SVG_NS = 'http://www.w3.org/2000/svg';

  function get(obj, path) {
    let cur = obj;
    const parts = path.split('.');
    for (let i = 0; i < parts.length; i += 1) {
      if (cur === null || typeof cur !== 'object') return undefined;
      cur = cur[parts[i]];
    }
    return cur;
  }

  function textOf(value, fallback) {
    if (typeof value === 'string') return value;
    if (typeof value === 'number' && Number.isFinite(value)) return String(value);
    return fallback === undefined ? NA : fallback;
  }

  function setText(el, value, fallback) {
    if (!el) return;
    const text = textOf(value, fallback);
    if (el.textContent !== text) el.textContent = text;
  }

  function setAttr(el, name, value) {
    if (el && el.getAttribute(name) !== value) el.setAttribute(name, value);
  }

  function number(value, fallback) {
    return typeof value === 'number' && Number.isFinite(value) ? value : fallback;
  }

  function clamp01(value) {
    return Math.min(1, Math.max(0, number(value, 0)));
  }

  function setFill(el, fraction) {
    if (!el) return;
    const text = clamp01(fraction).toFixed(4);
    if (el.style.getPropertyValue('--fill') !== text) el.style.setProperty('--fill', text);
  }

  function stageWord(value) {
    return STAGE_WORDS.indexOf(value) >= 0 ? value : 'none';
  }

  function setStage(el, value) {
    setAttr(el, 'data-stage', stageWord(value));
  }

  function show(el, visible) {
    if (el && el.hidden === !!visible) el.hidden = !visible;
  }

  // Declarative bindings, collected once: data-text, data-fill, data-stage-from,
  // data-title-from and data-show name a dotted path into the rendered object.
  function bind(root) {
    const kinds = [
      ['data-text', function (el, v) { setText(el, v); }],
      ['data-fill', function (el, v) { setFill(el, v); }],
      ['data-stage-from', function (el, v) { setStage(el, v); }],
      ['data-title-from', function (el, v) { setAttr(el, 'title', textOf(v, '')); }],
      ['data-show', function (el, v) { show(el, v === true); }],
    ];
    const bindings = [];
    kinds.forEach(function (kind) {
      root.querySelectorAll('[' + kind[0] + ']').forEach(function (el) {
        bindings.push({ el: el, path: el.getAttribute(kind[0]), apply: kind[1] });
      });
    });
    return function apply(data) {
      bindings.forEach(function (b) { b.apply(b.el, get(data, b.path)); });
    };
  }

  function svg(name, attrs) {
    const el = document.createElementNS(SVG_NS, name);
    Object.keys(attrs || {}).forEach(function (k) { el.setAttribute(k, attrs[k]); });
    return el;
  }

  // A 60-sample CPU sparkline in a 60 by 100 view box, newest sample on the right.
  function sparkline(svgEl, values) {
    if (!svgEl) return;
    let line = svgEl.querySelector('.spark-line');
    let area = svgEl.querySelector('.spark-area');
    if (!line) {
      svgEl.setAttribute('viewBox', '0 0 59 100');
      svgEl.setAttribute('preserveAspectRatio', 'none');
      area = svgEl.appendChild(svg('path', { class: 'spark-area' }));
      line = svgEl.appendChild(svg('polyline', { class: 'spark-line', fill: 'none' }));
    }
    const list = (Array.isArray(values) ? values : []).slice(-60).map(function (v) {
      return 100 - Math.min(100, Math.max(0, number(v, 0)));
    });
    const start = 60 - list.length;
    const points = list.map(function (y, i) { return (start + i) + ',' + y.toFixed(1); });
    setAttr(line, 'points', points.join(' '));
    const d = points.length > 1
      ? 'M' + start + ',100 L' + points.join(' L') + ' L59,100 Z'
      : '';
    setAttr(area, 'd', d);
  }

  // Keeps a container's children in step with a list: reuses the nodes it has, adds or
  // removes only the difference, then lets `update` write each item.
  function syncList(container, items, create, update) {
    if (!container) return;
    while (container.children.length > items.length) container.lastElementChild.remove();
    while (container.children.length < items.length) container.appendChild(create());
    items.forEach(function (item, i) { update(container.children[i], item, i); });
  }

  // The forecast's line ("Critical in about 4 min", "Levelling off at 88 °C"): its text and kind
  // from the live object's "forecast", hidden while there is nothing to say.
  function forecastLine(el, forecast) {
    if (!el) return;
    const f = forecast && typeof forecast === 'object' ? forecast : {};
    const text = typeof f.text === 'string' ? f.text : '';
    setText(el, text, '');
    setAttr(el, 'data-kind', f.kind === 'critical' || f.kind === 'levelling' ? f.kind : 'none');
    show(el, text !== '');
  }

  // An aria-live region that speaks only when told something new.
  function announcer(el) {
    let last = '';
    return function say(text) {
      if (!el || !text || text === last) return;
      last = text;
      el.textContent = text;
    };
  }

  function onClick(root, selector, handler) {
    root.querySelectorAll(selector).forEach(function (el) {
      el.addEventListener('click', function (ev) { handler(el, ev); });
    });
  }

  // Wires a group of [data-theme-choice] buttons to the page's theme and keeps their
  // pressed state in step with it, whoever changed it.
  function themeChoice(root) {
    const buttons = root.querySelectorAll('[data-theme-choice]');
    buttons.forEach(function (btn) {
      btn.addEventListener('click', function () {
        window.HeatBridge.setTheme(btn.getAttribute('data-theme-choice'), false);
      });
    });
    window.HeatBridge.onThemeChange(function (pref) {
      buttons.forEach(function (btn) {
        setAttr(btn, 'aria-pressed', String(btn.getAttribute('data-theme-choice') === pref));
      });
    });
  }

  window.HeatDom = {
    NA: NA,
    get: get,
    textOf: textOf,
    setText: setText,
    setAttr: setAttr,
    number: number,
    setFill: setFill,
    stageWord: stageWord,
    setStage: setStage,
    show: show,
    bind: bind,
    svg: svg,
    sparkline: sparkline,
    syncList: syncList,
    announcer: announcer,
    forecastLine: forecastLine,
    onClick: onClick,
    themeChoice: themeChoice,
  };
})();
