/*
 * What the two home pages ("index" and "expanded") share: live data bound to the markup,
 * the CPU sparkline, the size and settings controls, and the alert stage pushed by the
 * native side (or carried in the address when the page is reloaded).
 */
(function () {
  'use strict';

  const D = window.HeatDom;
  const B = window.HeatBridge;

  const STAGE_NAMES = { extreme: 'Extreme heat', emergency: 'Emergency heat' };

  function liveObject(live) {
    return live && typeof live === 'object' && !Array.isArray(live) ? live : {};
  }

  // options.onLive(live) and options.onStage(stage, previous) add what a page shows beyond
  // the shared bindings.
  function start(options) {
    const opts = options || {};
    const apply = D.bind(document.body);
    const spark = document.getElementById('spark');
    const forecast = document.getElementById('forecast');
    const say = D.announcer(document.getElementById('announce'));
    let stage = null;

    D.onClick(document, '[data-size]', function (el) { B.size(el.getAttribute('data-size')); });
    D.onClick(document, '[data-heat]', function (el) { B.heat(el.getAttribute('data-heat')); });

    window.heatLive = {
      render: function (live) {
        const data = liveObject(live);
        apply(data);
        D.sparkline(spark, data.spark);
        D.forecastLine(forecast, data.forecast);
        D.setAttr(spark, 'aria-label', 'CPU load over the last minute, now ' + D.textOf(D.get(data, 'cpu.value')));
        window.HeatCauseLine.render(data);
        if (opts.onLive) opts.onLive(data);
      },
    };

    window.applyHeatStage = function (next) {
      const value = B.validStage(next) || 'none';
      if (value === stage) return;
      const previous = stage;
      stage = value;
      document.documentElement.setAttribute('data-alert', value);
      if (value !== 'none') say('Stage: ' + STAGE_NAMES[value]);
      else if (previous && previous !== 'none') say('Heat stage cleared');
      if (opts.onStage) opts.onStage(value, previous);
    };

    window.heatLive.render({});
    window.applyHeatStage(B.pageStage().stage);
  }

  window.HeatHome = { start: start };
})();
