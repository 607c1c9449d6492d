/* The compact home page: the shared home behaviour is all it needs. */
(function () {
  'use strict';
  window.HeatHome.start({});
})();
