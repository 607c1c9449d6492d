/*
 * The popover of the menu-bar heat item: live readings and the theme choice. The popover's
 * web view has only the "theme" handler, so this page sends nothing else.
 */
(function () {
  'use strict';

  const D = window.HeatDom;
  const apply = D.bind(document.body);
  const spark = document.getElementById('spark');
  const forecast = document.getElementById('forecast');

  window.heatLive = {
    render: function (live) {
      const data = live && typeof live === 'object' && !Array.isArray(live) ? live : {};
      apply(data);
      D.sparkline(spark, data.spark);
      D.forecastLine(forecast, data.forecast);
      D.setAttr(spark, 'aria-label', 'CPU load over the last minute, now ' + D.textOf(D.get(data, 'cpu.value')));
      D.show(document.getElementById('power-label'), D.get(data, 'power.label') !== 'none');
      window.HeatCauseLine.render(data);
    },
  };

  D.themeChoice(document);
  window.heatLive.render({});
})();
