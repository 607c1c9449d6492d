/*
 * The popover of the menu-bar heat item: live readings and the theme choice. The popover's
 * web view has only the "theme" handler, so this page sends nothing else. Its sparkline shows
 * the last 15 minutes, which the native side hands over with each push (window.heatLive.recent);
 * until then it shows the last minute of the live readings.
 */
(function () {
  'use strict';

  const D = window.HeatDom;
  const apply = D.bind(document.body);
  const spark = document.getElementById('spark');
  const forecast = document.getElementById('forecast');
  let recent = null;

  function sparkLabel(data) {
    const span = recent ? 'the last 15 minutes' : 'the last minute';
    return 'CPU load over ' + span + ', now ' + D.textOf(D.get(data, 'cpu.value'));
  }

  window.heatLive = {
    render: function (live) {
      const data = live && typeof live === 'object' && !Array.isArray(live) ? live : {};
      apply(data);
      // Steps without a sample are left out rather than drawn as an idle CPU.
      D.sparkline(spark, recent ? recent.filter(function (v) { return typeof v === 'number'; }) : data.spark);
      D.forecastLine(forecast, data.forecast);
      D.setAttr(spark, 'aria-label', sparkLabel(data));
      D.show(document.getElementById('power-label'), D.get(data, 'power.label') !== 'none');
      window.HeatCauseLine.render(data);
    },
    recent: function (steps) {
      recent = Array.isArray(steps) ? steps.slice(-60) : null;
    },
  };

  D.themeChoice(document);
  window.heatLive.render({});
})();
