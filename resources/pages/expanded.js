/*
 * The expanded home page: the whole live dashboard plus, while the heat stage is extreme
 * or an emergency, a banner with what the user can do about it.
 */
(function () {
  'use strict';

  const D = window.HeatDom;
  const B = window.HeatBridge;

  const BANNER = {
    extreme: {
      title: 'Extreme heat',
      text: 'This computer is running very hot. Ease the load and give it air so it can cool down.',
    },
    emergency: {
      title: 'Emergency heat',
      text: 'The system reports a critical thermal state. Shutting down now lets this computer cool off safely.',
    },
  };

  const banner = document.getElementById('stage-banner');
  const coreBars = document.getElementById('core-bars');
  const sensorList = document.getElementById('sensor-list');
  const powerList = document.getElementById('power-list');
  const batteryList = document.getElementById('battery-list');
  let watching = false;

  function makeCore() {
    const item = document.createElement('div');
    item.className = 'core';
    item.setAttribute('role', 'listitem');
    const bar = item.appendChild(document.createElement('div'));
    bar.className = 'core-bar';
    bar.appendChild(document.createElement('i'));
    return item;
  }

  function updateCore(item, load, i) {
    const pct = Math.round(Math.min(100, Math.max(0, D.number(load, 0))));
    D.setFill(item.firstElementChild.firstElementChild, pct / 100);
    D.setStage(item, pct < 75 ? 'normal' : pct < 90 ? 'warm' : 'hot');
    D.setAttr(item, 'aria-label', 'Core ' + (i + 1) + ': ' + pct + '%');
    D.setAttr(item, 'title', 'Core ' + (i + 1) + ': ' + pct + '%');
  }

  function makeSensor() {
    const li = document.createElement('li');
    ['sensor-name ellipsis', 'sensor-value', 'sensor-source ellipsis'].forEach(function (cls) {
      li.appendChild(document.createElement('span')).className = cls;
    });
    return li;
  }

  function updateSensor(li, sensor) {
    const s = sensor && typeof sensor === 'object' ? sensor : {};
    D.setText(li.children[0], s.name);
    D.setText(li.children[1], s.value);
    D.setText(li.children[2], s.source);
    D.setAttr(li.children[2], 'title', D.textOf(s.source, ''));
  }

  // Every power figure: what it is (CPU package, GPU, battery), how much, where it comes from.
  function updatePower(li, power) {
    const p = power && typeof power === 'object' ? power : {};
    updateSensor(li, { name: p.label, value: p.value, source: p.source });
  }

  // Every battery with its own charge and the kernel's own word for what it is doing.
  function updateBattery(li, battery) {
    const b = battery && typeof battery === 'object' ? battery : {};
    updateSensor(li, { name: b.name, value: b.value, source: D.textOf(b.state, D.NA) });
    D.setAttr(li.children[2], 'title', D.textOf(b.source, ''));
  }

  function renderGroup(groupId, list, items, update) {
    D.syncList(list, items, makeSensor, update);
    D.show(document.getElementById(groupId), items.length > 0);
  }

  function coresText(count) {
    const n = D.number(count, null);
    return n === null ? D.NA : n + (n === 1 ? ' core' : ' cores');
  }

  function renderLive(live) {
    D.setText(document.getElementById('cores'), coresText(live.cores));
    D.show(document.getElementById('power-label'), D.get(live, 'power.label') !== 'none');
    const history = Array.isArray(live.spark) ? live.spark : [];
    D.show(document.getElementById('spark-box'), history.length > 1);
    D.show(document.getElementById('spark-empty'), history.length < 2);
    renderLists(live);
    if (window.heatHistory) window.heatHistory.refresh();
  }

  function renderLists(live) {
    const cores = Array.isArray(live.coreLoads) ? live.coreLoads : [];
    D.syncList(coreBars, cores, makeCore, updateCore);
    D.show(document.getElementById('cores-empty'), cores.length === 0);
    const sensors = Array.isArray(live.sensorList) ? live.sensorList : [];
    D.syncList(sensorList, sensors, makeSensor, updateSensor);
    D.show(document.getElementById('sensors-empty'), sensors.length === 0);
    renderGroup('power-group', powerList, Array.isArray(live.powerList) ? live.powerList : [], updatePower);
    renderGroup('battery-group', batteryList, Array.isArray(live.batteryList) ? live.batteryList : [], updateBattery);
  }

  function showBanner(stage) {
    const copy = BANNER[stage];
    D.show(banner, !!copy && !watching);
    if (!copy) return;
    D.setStage(banner, stage);
    D.setText(document.getElementById('banner-title'), copy.title);
    D.setText(document.getElementById('banner-text'), copy.text);
    D.show(document.getElementById('banner-demo'), B.pageStage().demo !== 'none');
  }

  function onStage(stage, previous) {
    // A new stage brings the banner back even after "Keep watching".
    watching = false;
    showBanner(stage);
    if (stage === 'extreme' && previous !== 'extreme') B.heat('stageEnteredExtreme');
  }

  document.getElementById('banner-watch').addEventListener('click', function () {
    B.heat('watch');
    watching = true;
    D.show(banner, false);
    document.getElementById('settings').focus();
  });

  window.HeatHome.start({ onLive: renderLive, onStage: onStage });
})();
