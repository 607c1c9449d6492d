// The pages against what the real engine and live model produce (written by the
// velmora_page_snapshots program before this run), pushed with the native side's own call text.
import { describe, it } from 'node:test';
import assert from 'node:assert/strict';
import fs from 'node:fs';
import path from 'node:path';
import { screenshot } from '../support/browser.mjs';
import { withPage, text, visible } from '../support/session.mjs';
import { lowContrastTexts } from '../support/contrast.mjs';

const dir = process.env.VELMORA_PAGE_SNAPSHOTS;
const load = (file) => JSON.parse(fs.readFileSync(path.join(dir, file), 'utf8'));
const renderCall = (view, mode) => `window.heatC && window.heatC.render(${JSON.stringify(view)}, '${mode}')`;
const liveCall = (live) => `window.heatLive && window.heatLive.render(${JSON.stringify(live)})`;
// The native side's stage script after a page load, for a calm machine.
const stageScript = "(function(){ window.__HEAT_STAGE__ = 'none'; window.__HEAT_DEMO__ = 'none';"
  + " if (typeof window.applyHeatStage === 'function') window.applyHeatStage('none'); })();";

// What every live-bound element shows, and what the pages' binding makes of the model's value.
const shownFigures = (page) => page.$$eval('[data-text]', (els) => els.map((e) => [e.getAttribute('data-text'), e.textContent]));
function modelText(live, path) {
  const value = path.split('.').reduce((node, key) => (node && typeof node === 'object' ? node[key] : undefined), live);
  if (typeof value === 'string') return value;
  return typeof value === 'number' && Number.isFinite(value) ? String(value) : 'n/a';
}

async function checkScreen(page, { mode, view }) {
  const shown = await page.$$eval('[data-screen]', (els) => els.filter((e) => !e.hidden).map((e) => e.getAttribute('data-screen')));
  assert.deepEqual(shown, [mode]);
  if (mode === 'count') {
    assert.equal(await text(page, '#count-temp'), view.temp);
    assert.equal(await text(page, '#count-chip'), view.sim ? 'SIMULATION' : 'EMERGENCY');
    assert.equal(await visible(page, '#count-cancel'), view.state !== 'fired');
    assert.equal(await visible(page, '#count-err'), view.err !== '');
    if (view.state === 'countdown') assert.equal(await text(page, '#count-secs'), String(view.remaining));
    if (view.err) assert.equal(await text(page, '#count-err'), view.err);
  } else if (mode === 'relief') {
    assert.equal(await text(page, '#relief-peak'), view.relief.peak);
    assert.equal(await text(page, '#relief-title'), view.relief.cancelled ? 'It cooled down' : 'Welcome back');
  } else if (mode === 'settings') {
    assert.equal(await page.getAttribute('#auto-switch', 'aria-checked'), String(view.autoShutdown));
    assert.equal(await text(page, '#settings-version'), view.version);
    assert.equal(await visible(page, '#settings-perm-msg'), view.permMsg !== '');
  } else if (mode === 'perm') {
    assert.equal(await text(page, '#perm-msg'), view.permMsg);
  } else if (mode === 'manual') {
    assert.equal(await text(page, '#manual-reason'), view.manual.reason);
    assert.equal(await visible(page, '#manual-open'), view.manual.perm);
  } else if (mode === 'lead') {
    assert.equal(await text(page, '#lead-temp'), view.temp);
  } else if (mode === 'consent') {
    assert.equal(await text(page, '#consent-note'), view.thermalNote);
  }
}

describe('pages fed by the real engine and live model', { skip: dir ? false : 'VELMORA_PAGE_SNAPSHOTS is not set (ctest sets it)' }, () => {
  it('covers every page mode with an engine view', () => {
    const modes = new Set(load('engine-views.json').map((r) => r.mode));
    assert.deepEqual([...modes].sort(), ['consent', 'count', 'home', 'lead', 'manual', 'perm', 'relief', 'settings', 'simdone']);
  });

  it('renders every engine view on the stage page', async () => {
    await withPage('stagec', {}, async (page) => {
      for (const record of load('engine-views.json')) {
        await page.evaluate(renderCall(record.view, record.mode));
        await checkScreen(page, record);
        for (const theme of ['light', 'dark']) {
          await page.evaluate(`window.heatTheme && window.heatTheme.set('${theme}', true)`);
          await page.evaluate(() => document.activeElement && document.activeElement.blur());
          await screenshot(page, `stagec-${record.name}-${theme}`);
          assert.deepEqual(await page.evaluate(lowContrastTexts), [], `${record.name} ${theme}: contrast`);
        }
      }
    });
  });

  it('shows on every live-bound element of each page what the model sent, after a load as the shell does it', async () => {
    for (const name of ['index', 'expanded', 'menubar']) {
      await withPage(name, {}, async (page) => {
        await page.evaluate(stageScript);
        for (const { name: snapshot, live } of load('live-snapshots.json')) {
          await page.evaluate(liveCall(live));
          const figures = await shownFigures(page);
          assert.ok(figures.length >= 5, `${name}: ${figures.length} bound figures`);
          for (const [path, shown] of figures) {
            assert.equal(shown, modelText(live, path), `${name} ${snapshot} ${path}`);
          }
          if (snapshot === 'model-busy-laptop') {
            const readings = figures.filter(([, shown]) => shown !== 'n/a').length;
            assert.ok(readings >= figures.length - 1, `${name}: only ${readings} of ${figures.length} figures have a value`);
          }
        }
      });
    }
  });

  it('renders every live model snapshot on the home pages and the popover', async () => {
    for (const name of ['index', 'expanded', 'menubar']) {
      await withPage(name, {}, async (page) => {
        for (const { name: snapshot, live } of load('live-snapshots.json')) {
          await page.evaluate(liveCall(live));
          assert.equal(await text(page, '#level-label'), live.status.label);
          assert.equal(await text(page, '#cpu-temp'), live.cpuTemp.value);
          if (name !== 'expanded') assert.equal(await text(page, '#thermal-word'), live.thermal.value);
          const forecastText = live.forecast ? live.forecast.text : '';
          assert.equal(await visible(page, '#forecast'), forecastText !== '', `${name} ${snapshot}: forecast`);
          if (forecastText) assert.equal(await text(page, '#forecast'), forecastText);
          if (name !== 'index') {
            assert.equal(await text(page, '#fan'), live.fan.value);
            assert.equal(await text(page, '#battery-state'), live.battery.state);
            assert.equal(await text(page, '#ram-detail'), live.ramDetail);
          }
          if (name === 'expanded') {
            assert.equal(await page.$$eval('#sensor-list li', (els) => els.length), live.sensorList.length);
            assert.equal(await page.$$eval('#power-list li', (els) => els.length), live.powerList.length);
            assert.equal(await visible(page, '#power-group'), live.powerList.length > 0);
            assert.equal(await page.$$eval('#battery-list li', (els) => els.length), live.batteryList.length);
            assert.equal(await visible(page, '#battery-group'), live.batteryList.length > 0);
            assert.equal(await page.$$eval('#core-bars .core', (els) => els.length), live.coreLoads.length);
            assert.equal(await text(page, '#thermal-source'), live.sources.thermal);
            assert.equal(await visible(page, '#low-power'), live.lowPower);
            assert.equal(await text(page, '#foot'), live.foot);
          }
          await screenshot(page, `${name}-${snapshot}-light`);
          assert.deepEqual(await page.evaluate(lowContrastTexts), [], `${name} ${snapshot}: contrast`);
        }
      });
    }
  });
});
