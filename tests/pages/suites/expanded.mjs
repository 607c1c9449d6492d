// The expanded home page: the whole live dashboard and the stage banner.
import { describe, it } from 'node:test';
import assert from 'node:assert/strict';
import { readFixture, renderLive, sent, TOKEN } from '../support/browser.mjs';
import { withPage, click, text, visible } from '../support/session.mjs';

const heat = (action) => ({ name: 'heat', body: { action, token: TOKEN } });
// What the history graph asks for as soon as the page has loaded.
const firstHistory = { name: 'heat', body: { action: 'history', range: '15m', token: TOKEN } };

// The stage script exactly as the native side composes it after each page load.
function stageScript(stage, demo) {
  return `(function(){\n  window.__HEAT_STAGE__ = '${stage}';\n  window.__HEAT_DEMO__ = '${demo}';\n`
    + '  if (typeof window.applyHeatStage === \'function\') {\n'
    + '    window.applyHeatStage(window.__HEAT_DEMO__ !== \'none\' ? window.__HEAT_DEMO__ : window.__HEAT_STAGE__);\n'
    + '  }\n  try {\n    var u = new URL(location.href);\n'
    + `    u.searchParams.set('stage', '${stage}');\n`
    + `    if ('${demo}' !== 'none') u.searchParams.set('demo', '${demo}');\n`
    + '    history.replaceState(null,\'\', u.pathname + u.search + u.hash);\n  } catch(e) {}\n})();';
}

describe('expanded page', () => {
  it('lays out every reading of a full live snapshot', async () => {
    await withPage('expanded', {}, async (page) => {
      await renderLive(page, readFixture('live', 'normal'));
      const expected = {
        '#level-label': 'NORMAL',
        '#live-line': 'Live · updates every second',
        '#thermal-value': 'Nominal',
        '#thermal-source': 'ProcessInfo.thermalState',
        '#cpu-temp': '52°C',
        '#cpu-temp-source': 'hwmon coretemp Package id 0',
        '#gpu-temp': '45°C',
        '#gpu-temp-source': 'hwmon amdgpu edge',
        '#battery-temp': '31°C',
        '#battery-temp-source': 'hwmon BAT0',
        '#cpu': '18%',
        '#ram': '61%',
        '#ram-detail': '9.8 of 16 GB',
        '#gpu': '7%',
        '#load': '1.3',
        '#cores': '8 cores',
        '#mem-pressure': 'Normal',
        '#fan': '2300/2150',
        '#power': '12.3 W',
        '#power-label': 'package',
        '#battery': '87%',
        '#battery-state': 'Charging',
        '#peak-label': 'WARM',
        '#peak-state': 'Fair',
        '#peak-temp': '68°C',
        '#foot': 'Live · 1 s · Temps: hwmon',
      };
      for (const [selector, value] of Object.entries(expected)) {
        assert.equal(await text(page, selector), value, selector);
      }
      assert.equal(await visible(page, '#low-power'), false);
      assert.equal(await page.getAttribute('#cpu-temp-source', 'title'), 'hwmon coretemp Package id 0');
    });
  });

  it('draws one bar per core and one row per sensor, hottest first', async () => {
    await withPage('expanded', {}, async (page) => {
      await renderLive(page, readFixture('live', 'normal'));
      const cores = await page.$$eval('#core-bars .core', (els) => els.map((e) => e.getAttribute('aria-label')));
      assert.deepEqual(cores, ['Core 1: 12%', 'Core 2: 31%', 'Core 3: 8%', 'Core 4: 22%',
        'Core 5: 5%', 'Core 6: 17%', 'Core 7: 40%', 'Core 8: 9%']);
      const rows = await page.$$eval('#sensor-list li', (els) => els.map((e) => Array.from(e.children, (c) => c.textContent)));
      assert.equal(rows.length, 5);
      assert.deepEqual(rows[0], ['coretemp Package id 0', '52°C', 'hwmon coretemp Package id 0']);
      assert.deepEqual(rows[4], ['BAT0', '31°C', 'hwmon BAT0']);

      await renderLive(page, readFixture('live', 'extreme'));
      assert.equal(await page.$$eval('#core-bars .core', (els) => els.length), 4);
      assert.equal(await page.getAttribute('#core-bars .core:nth-child(4)', 'data-stage'), 'hot');
      assert.equal(await page.$$eval('#sensor-list li', (els) => els.length), 3);
    });
  });

  it('lists every power source and every battery, and hides the lists when there are none', async () => {
    await withPage('expanded', {}, async (page) => {
      const rows = (selector) => page.$$eval(`${selector} li`,
        (els) => els.map((e) => Array.from(e.children, (c) => c.textContent)));
      await renderLive(page, readFixture('live', 'sources'));
      assert.equal(await visible(page, '#power-group'), true);
      assert.deepEqual(await rows('#power-list'), [
        ['Package power', '14.0 W', 'RAPL package-0'],
        ['GPU power', '32.1 W', 'hwmon amdgpu PPT'],
        ['Battery discharge', '9.8 W', 'power_supply BAT1'],
      ]);
      assert.equal(await visible(page, '#battery-group'), true);
      assert.deepEqual(await rows('#battery-list'), [
        ['BAT0', '80%', 'Unknown'],
        ['BAT1', '41%', 'Discharging'],
      ]);
      assert.equal(await page.getAttribute('#battery-list li:nth-child(2) .sensor-source', 'title'),
        'power_supply BAT1');
      assert.equal(await text(page, '#battery'), '51%');
      assert.equal(await text(page, '#battery-state'), 'On battery');

      // Snapshots from before these lists existed, and machines without either, show neither.
      await renderLive(page, readFixture('live', 'normal'));
      assert.equal(await visible(page, '#power-group'), false);
      assert.equal(await visible(page, '#battery-group'), false);
      assert.equal(await page.$$eval('#power-list li', (els) => els.length), 0);
    });
  });

  it('shows the low-power flag, absent readings as n/a and empty lists as notes', async () => {
    await withPage('expanded', {}, async (page) => {
      await renderLive(page, readFixture('live', 'extreme'));
      assert.equal(await visible(page, '#low-power'), true);
      assert.equal(await text(page, '#gpu'), 'n/a');
      assert.equal(await text(page, '#battery-state'), 'On battery');
      await renderLive(page, readFixture('live', 'empty'));
      assert.equal(await visible(page, '#low-power'), false);
      assert.equal(await text(page, '#cpu-temp'), 'n/a');
      assert.equal(await text(page, '#cores'), '1 core');
      assert.equal(await visible(page, '#power-label'), false);
      assert.equal(await visible(page, '#cores-empty'), true);
      assert.equal(await visible(page, '#sensors-empty'), true);
      assert.equal(await visible(page, '#spark-empty'), true);
    });
  });

  it('asks to collapse with a size message that is not "expand"', async () => {
    await withPage('expanded', {}, async (page) => {
      assert.deepEqual(await click(page, '#collapse'), [{ name: 'size', body: 'collapse' }]);
      assert.deepEqual(await click(page, '#settings'), [heat('settings')]);
    });
  });

  it('shows no banner without a stage and the extreme banner with its four actions', async () => {
    await withPage('expanded', {}, async (page) => {
      assert.equal(await visible(page, '#stage-banner'), false);
      assert.deepEqual(await sent(page), [firstHistory]);
      await page.evaluate(() => window.applyHeatStage('extreme'));
      assert.deepEqual(await sent(page), [heat('stageEnteredExtreme')]);
      assert.equal(await visible(page, '#stage-banner'), true);
      assert.equal(await text(page, '#banner-title'), 'Extreme heat');
      assert.deepEqual(await click(page, '#banner-shutdown'), [heat('shutdown')]);
      assert.equal(await text(page, '#banner-shutdown'), 'Shut Down to Cool Off');
      assert.deepEqual(await click(page, '#banner-tips'), [heat('tips')]);
      assert.equal(await text(page, '#banner-tips'), 'Cool down tips');
      assert.deepEqual(await click(page, '#banner-settings'), [heat('settings')]);
      assert.deepEqual(await click(page, '#banner-watch'), [heat('watch')]);
      assert.equal(await visible(page, '#stage-banner'), false);
    });
  });

  it('sends stageEnteredExtreme once per entry into extreme, never for an emergency', async () => {
    await withPage('expanded', {}, async (page) => {
      await page.evaluate(() => { window.applyHeatStage('extreme'); window.applyHeatStage('extreme'); });
      assert.deepEqual(await sent(page), [firstHistory, heat('stageEnteredExtreme')]);
      await page.evaluate(() => window.applyHeatStage('emergency'));
      assert.deepEqual(await sent(page), []);
      assert.equal(await text(page, '#banner-title'), 'Emergency heat');
      assert.equal(await visible(page, '#stage-banner'), true);
      await page.evaluate(() => window.applyHeatStage('none'));
      assert.equal(await visible(page, '#stage-banner'), false);
      assert.equal(await text(page, '#announce'), 'Heat stage cleared');
    });
  });

  it('takes its stage from the stage script and keeps it when reloaded', async () => {
    await withPage('expanded', {}, async (page) => {
      await page.evaluate(stageScript('extreme', 'none'));
      assert.equal(await visible(page, '#stage-banner'), true);
      assert.match(page.url(), /\?stage=extreme$/);
      await page.reload();
      assert.equal(await visible(page, '#stage-banner'), true);
      assert.equal(await text(page, '#banner-title'), 'Extreme heat');
      assert.equal(await visible(page, '#banner-demo'), false);
    });
  });

  it('lets a demonstration stage win over the live stage', async () => {
    await withPage('expanded', {}, async (page) => {
      await page.evaluate(stageScript('emergency', 'extreme'));
      assert.equal(await text(page, '#banner-title'), 'Extreme heat');
      assert.equal(await visible(page, '#banner-demo'), true);
      assert.match(page.url(), /\?stage=emergency&demo=extreme$/);
    });
    await withPage('expanded', { query: { stage: 'none', demo: 'emergency' } }, async (page) => {
      assert.equal(await text(page, '#banner-title'), 'Emergency heat');
      assert.equal(await visible(page, '#stage-banner'), true);
    });
  });

  it('reads the injected stage globals at load', async () => {
    await withPage('expanded', { stage: 'extreme', demo: 'none' }, async (page) => {
      assert.equal(await visible(page, '#stage-banner'), true);
      assert.deepEqual(await sent(page), [firstHistory, heat('stageEnteredExtreme')]);
    });
  });
});
