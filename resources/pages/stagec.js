/*
 * The stage page: one screen per mode. The native side calls heatC.render(view, mode)
 * four times a second while a stage is up; only the screen of the current mode is shown
 * and only values that changed are written.
 */
(function () {
  'use strict';

  const D = window.HeatDom;
  const B = window.HeatBridge;

  const MODES = ['home', 'count', 'lead', 'consent', 'relief', 'settings', 'simdone', 'perm', 'manual'];
  // The whole seconds at which the countdown sounds its cue; the page speaks them too.
  const CUE_SECONDS = [5, 3, 2, 1];
  const RING_RADIUS = 52;
  const RING_LENGTH = 2 * Math.PI * RING_RADIUS;

  const PERM_WORDS = {
    granted: ['Allowed', 'normal'],
    denied: ['Not allowed', 'extreme'],
    failed: ['Could not be checked', 'warm'],
    unknown: ['Not checked yet', 'none'],
  };

  const $ = function (id) { return document.getElementById(id); };
  const screens = {};
  document.querySelectorAll('[data-screen]').forEach(function (el) {
    screens[el.getAttribute('data-screen')] = el;
  });
  const say = D.announcer($('announce'));
  const sayNow = D.announcer($('announce-urgent'));
  let shown = null;
  let lastCue = null;
  let autoOn = false;
  let notifyOn = true;

  function bool(v) { return v === true; }
  function str(v) { return typeof v === 'string' ? v : ''; }
  function dict(v) { return v && typeof v === 'object' && !Array.isArray(v) ? v : null; }

  // The program sends the countdown's length with every view; 10 is its value, for a view without it.
  function countdownSeconds(view) {
    return Math.max(1, D.number(view.totalSecs, 10));
  }

  function secondsLeft(view) {
    const whole = D.number(view.remaining, null);
    if (whole !== null) return Math.max(0, Math.trunc(whole));
    return Math.max(0, Math.ceil(D.number(view.remainingMs, 0) / 1000));
  }

  function renderCount(view) {
    const sim = bool(view.sim);
    const fired = view.state === 'fired';
    const secs = secondsLeft(view);
    const total = countdownSeconds(view);
    // Once the shutdown is called the ring closes around the power symbol.
    const left = fired ? 1 : Math.min(1, Math.max(0, D.number(view.remainingMs, secs * 1000) / (total * 1000)));
    const screen = screens.count;
    D.setAttr(screen, 'data-fired', String(fired));
    D.setStage(screen, sim ? 'sim' : 'emergency');
    D.setStage($('count-chip'), sim ? 'sim' : 'emergency');
    D.setText($('count-chip'), sim ? 'SIMULATION' : 'EMERGENCY');
    D.setText($('count-now'), 'Now: ' + D.textOf(view.nowTxt));
    D.setText($('count-secs'), String(secs));
    D.setText($('count-unit'), secs === 1 ? 'second' : 'seconds');
    const offset = (RING_LENGTH * (1 - left)).toFixed(2);
    const ring = $('ring-fill');
    if (ring.style.getPropertyValue('stroke-dashoffset') !== offset + 'px') ring.style.setProperty('stroke-dashoffset', offset + 'px');
    D.setText($('count-title'), fired ? 'Shutting down' : sim ? 'Test emergency' : 'Emergency shutdown');
    D.setText($('count-text'), fired
      ? 'The shutdown has been requested. This computer will turn off in a moment to cool off.'
      : sim
        ? 'This is a rehearsal of the emergency countdown. Nothing will shut down.'
        : 'This computer is critically hot and will shut down to cool off. Save your work if you can.');
    D.setText($('count-temp'), view.temp);
    D.show($('count-cancel'), !fired);
    D.show($('count-err'), str(view.err) !== '');
    D.setText($('count-err'), str(view.err), '');
    announceCount(sim, fired, secs);
  }

  // Spoken once on entry, then only at the cue seconds and when the shutdown is called.
  function announceCount(sim, fired, secs) {
    if (fired) {
      sayNow('Shutting down now.');
      return;
    }
    if (lastCue === null) {
      lastCue = secs;
      sayNow((sim ? 'Simulation: ' : 'Emergency: ') + 'shutdown in ' + secs + (secs === 1 ? ' second.' : ' seconds.'));
    } else if (secs !== lastCue && CUE_SECONDS.indexOf(secs) >= 0) {
      lastCue = secs;
      sayNow(secs + (secs === 1 ? ' second.' : ' seconds.'));
    }
  }

  function renderLead(view) {
    D.setText($('lead-temp'), view.temp);
  }

  function renderConsent(view) {
    const secs = countdownSeconds(view);
    D.setText($('consent-text'), 'When the system reports a critical thermal state, Velmora Heat Monitor can shut '
      + 'this computer down after a ' + secs + '-second countdown that you can always cancel. Unsaved work may be lost.');
    D.setText($('consent-note'), view.thermalNote, '');
  }

  function renderRelief(view) {
    const relief = dict(view.relief) || {};
    const cancelled = bool(relief.cancelled);
    D.setText($('relief-chip'), cancelled ? 'Cooled down' : 'Cooled off');
    D.setText($('relief-title'), cancelled ? 'It cooled down' : 'Welcome back');
    D.setText($('relief-text'), cancelled
      ? 'You cancelled the emergency shutdown, and the heat has eased since. All is calm again.'
      : 'Velmora Heat Monitor shut this computer down to let it cool off. It is safe to carry on.');
    D.setText($('relief-peak'), relief.peak);
  }

  function renderSettings(view) {
    autoOn = bool(view.autoShutdown);
    D.setAttr($('auto-switch'), 'aria-checked', String(autoOn));
    // Absent from older hosts' renders: the switch's default, on.
    notifyOn = view.notifyWhenHot !== false;
    D.setAttr($('notify-switch'), 'aria-checked', String(notifyOn));
    const perm = PERM_WORDS[view.permState] || [D.textOf(view.permState), 'none'];
    D.setText($('perm-state'), perm[0]);
    D.setStage($('perm-state'), perm[1]);
    D.show($('settings-perm-msg'), str(view.permMsg) !== '');
    D.setText($('settings-perm-msg'), str(view.permMsg), '');
    D.setText($('settings-note'), view.thermalNote, '');
    D.setText($('settings-version'), view.version);
  }

  function renderPerm(view) {
    D.setText($('perm-msg'), view.permMsg);
  }

  function renderManual(view) {
    const manual = dict(view.manual) || {};
    D.setText($('manual-reason'), manual.reason);
    D.show($('manual-open'), bool(manual.perm));
    const err = str(view.err);
    D.show($('manual-err'), err !== '' && err !== manual.reason);
    D.setText($('manual-err'), err, '');
  }

  const RENDER = {
    count: renderCount,
    lead: renderLead,
    consent: renderConsent,
    relief: renderRelief,
    settings: renderSettings,
    perm: renderPerm,
    manual: renderManual,
  };

  function switchTo(mode) {
    Object.keys(screens).forEach(function (name) { D.show(screens[name], name === mode); });
    shown = mode;
    document.documentElement.setAttribute('data-mode', mode);
    if (mode !== 'count') lastCue = null;
  }

  // Once a new screen is filled in: say its title (the countdown speaks for itself) and put
  // the keyboard on its first safe control.
  function arrived(mode) {
    if (mode !== 'count') {
      const title = screens[mode].querySelector('h1');
      say(title ? title.textContent : '');
    }
    const first = screens[mode].querySelector('[data-autofocus]');
    if (first && !first.hidden) first.focus({ preventScroll: true });
  }

  window.heatC = {
    render: function (view, mode) {
      const v = dict(view) || {};
      const m = MODES.indexOf(mode) >= 0 ? mode : 'home';
      const changed = m !== shown;
      if (changed) switchTo(m);
      if (RENDER[m]) RENDER[m](v);
      if (changed) arrived(m);
    },
  };

  D.onClick(document, '[data-stagec]', function (el) { B.stagec(el.getAttribute('data-stagec')); });
  D.onClick(document, '[data-heat]', function (el) { B.heat(el.getAttribute('data-heat')); });
  D.onClick(document, '[data-consent]', function (el) {
    B.stagec('consent', el.getAttribute('data-consent') === 'true');
  });
  // The switch shows what the native side last rendered; the answer comes back as a render.
  $('auto-switch').addEventListener('click', function () { B.stagec('toggle', !autoOn); });
  $('notify-switch').addEventListener('click', function () { B.stagec('notify', !notifyOn); });
  D.themeChoice(screens.settings);
})();
