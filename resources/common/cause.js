/*
 * The "Heating it:" line of the home pages and the menu-bar popover: the busiest processes
 * while the machine is above NORMAL. The native side sends no heatCause at NORMAL; the page
 * also checks the level, so a stale cause never shows on a calm machine. Names come from other
 * processes, so they are only ever set as text.
 */
(function () {
  'use strict';

  function causeText(live) {
    const cause = live && live.heatCause;
    const text = cause && typeof cause === 'object' ? cause.text : undefined;
    return typeof text === 'string' ? text : '';
  }

  function aboveNormal(live) {
    const level = live && live.status && live.status.level;
    return typeof level === 'number' && level >= 1;
  }

  function render(live) {
    const line = document.getElementById('heat-cause');
    const slot = document.getElementById('heat-cause-text');
    if (!line || !slot) return;
    const text = causeText(live);
    const shown = text !== '' && aboveNormal(live);
    const wanted = shown ? text : '';
    if (slot.textContent !== wanted) slot.textContent = wanted;
    window.HeatDom.setAttr(line, 'title', shown ? 'Heating it: ' + text : '');
    window.HeatDom.show(line, shown);
    // Lets a page with a fixed height make room for the line.
    if (document.documentElement.hasAttribute('data-heat-cause') !== shown) {
      document.documentElement.toggleAttribute('data-heat-cause', shown);
    }
  }

  window.HeatCauseLine = { render: render };
})();
