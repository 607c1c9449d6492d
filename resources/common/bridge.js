/*
 * The page side of the bridge to the native shell: the per-launch token, messages to the
 * native handlers, the light/dark/auto theme and the alert stage carried in the address.
 * Loaded first by every page, in <head>, so the theme is applied before the first paint.
 */
(function () {
  'use strict';

  const THEMES = ['auto', 'light', 'dark'];
  const STAGES = ['none', 'extreme', 'emergency'];

  function token() {
    return typeof window.__HEAT_TOKEN__ === 'string' ? window.__HEAT_TOKEN__ : '';
  }

  // Posts to a native handler when the shell registered one; a page opened in a plain
  // browser (or a popover that only has "theme") simply has nothing to talk to.
  function post(name, body) {
    const handlers = window.webkit && window.webkit.messageHandlers;
    const handler = handlers && handlers[name];
    if (!handler || typeof handler.postMessage !== 'function') return false;
    try {
      handler.postMessage(body);
      return true;
    } catch (e) {
      return false;
    }
  }

  function stagec(action, on) {
    const body = { action: action, token: token() };
    if (typeof on === 'boolean') body.on = on;
    return post('stagec', body);
  }

  function heat(action) {
    return post('heat', { action: action, token: token() });
  }

  function size(what) {
    return post('size', String(what));
  }

  /* ---- theme ---- */

  const darkQuery = window.matchMedia ? window.matchMedia('(prefers-color-scheme: dark)') : null;
  const themeListeners = [];
  let themePref = 'auto';

  function resolvedTheme(pref) {
    if (pref === 'light' || pref === 'dark') return pref;
    return darkQuery && darkQuery.matches ? 'dark' : 'light';
  }

  function applyTheme() {
    const root = document.documentElement;
    root.setAttribute('data-theme-pref', themePref);
    root.setAttribute('data-theme', resolvedTheme(themePref));
    themeListeners.forEach(function (fn) { fn(themePref); });
  }

  // The one way the theme changes. A choice made on the page is reported to the native
  // side, which then tells the other views; a change pushed by the native side is not echoed.
  function setTheme(pref, fromNative) {
    if (THEMES.indexOf(pref) < 0) return false;
    themePref = pref;
    applyTheme();
    if (!fromNative) post('theme', { token: token(), pref: pref });
    return true;
  }

  function onThemeChange(fn) {
    themeListeners.push(fn);
    fn(themePref);
  }

  if (darkQuery) {
    const follow = function () { if (themePref === 'auto') applyTheme(); };
    if (darkQuery.addEventListener) darkQuery.addEventListener('change', follow);
    else if (darkQuery.addListener) darkQuery.addListener(follow);
  }

  themePref = THEMES.indexOf(window.__HEAT_THEME__) >= 0 ? window.__HEAT_THEME__ : 'auto';
  applyTheme();

  window.heatTheme = {
    set: function (pref, fromNative) { return setTheme(pref, fromNative === true); },
    get: function () { return themePref; },
  };

  /* ---- alert stage ---- */

  function queryParam(name) {
    try {
      return new URL(window.location.href).searchParams.get(name);
    } catch (e) {
      return null;
    }
  }

  function validStage(value) {
    return STAGES.indexOf(value) >= 0 ? value : null;
  }

  // The stage the page starts with: the injected globals when present, else the address
  // (the native side writes "stage" and "demo" into it so a reloaded page keeps its stage).
  // A demonstration stage wins whenever it is set.
  function pageStage() {
    const stage = validStage(window.__HEAT_STAGE__) || validStage(queryParam('stage')) || 'none';
    const demo = validStage(window.__HEAT_DEMO__) || validStage(queryParam('demo')) || 'none';
    return { stage: demo !== 'none' ? demo : stage, demo: demo };
  }

  window.HeatBridge = {
    token: token,
    post: post,
    stagec: stagec,
    heat: heat,
    size: size,
    setTheme: setTheme,
    onThemeChange: onThemeChange,
    themes: THEMES.slice(),
    validStage: validStage,
    pageStage: pageStage,
  };
})();
