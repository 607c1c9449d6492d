/*
 * The compact home page: the shared home behaviour, and room for the forecast's line. The
 * window is too short for both lines under the level, so while a forecast is shown it takes
 * the place of the thermal state's line (the level above says as much).
 */
(function () {
  'use strict';
  const D = window.HeatDom;
  const sub = document.getElementById('thermal-line');
  const forecast = document.getElementById('forecast');
  window.HeatHome.start({
    onLive: function () { D.show(sub, forecast.hidden); },
  });
})();
