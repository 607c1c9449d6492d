// The compact home page.
import { describe, it } from 'node:test';
import assert from 'node:assert/strict';
import { readFixture, renderLive, TOKEN } from '../support/browser.mjs';
import { withPage, click, text } from '../support/session.mjs';

describe('index page', () => {
  it('shows the level, thermal word, CPU temperature, CPU and RAM of a live snapshot', async () => {
    await withPage('index', {}, async (page) => {
      await renderLive(page, readFixture('live', 'normal'));
      assert.equal(await text(page, '#level-label'), 'NORMAL');
      assert.equal(await text(page, '#thermal-word'), 'Nominal');
      assert.equal(await text(page, '#cpu-temp'), '52°C');
      assert.equal(await text(page, '#cpu'), '18%');
      assert.equal(await text(page, '#ram'), '61%');
      assert.equal(await page.getAttribute('header', 'data-stage'), 'normal');

      await renderLive(page, readFixture('live', 'extreme'));
      assert.equal(await text(page, '#level-label'), 'EXTREME HEAT');
      assert.equal(await text(page, '#thermal-word'), 'Serious');
      assert.equal(await page.getAttribute('header', 'data-stage'), 'extreme');
    });
  });

  it('colours the level label by its stage', async () => {
    await withPage('index', {}, async (page) => {
      const colour = () => page.$eval('#level-label', (el) => getComputedStyle(el).color);
      await renderLive(page, readFixture('live', 'normal'));
      const calm = await colour();
      await renderLive(page, readFixture('live', 'extreme'));
      const hot = await colour();
      assert.notEqual(calm, hot);
      assert.equal(hot, 'rgb(192, 31, 45)');
    });
  });

  it('draws the CPU sparkline from the history, newest on the right', async () => {
    await withPage('index', {}, async (page) => {
      await renderLive(page, readFixture('live', 'normal'));
      const points = await page.getAttribute('#spark .spark-line', 'points');
      const pairs = points.split(' ');
      assert.equal(pairs.length, 60);
      assert.equal(pairs[59], '59,82.0');
      await renderLive(page, readFixture('live', 'extreme'));
      const short = (await page.getAttribute('#spark .spark-line', 'points')).split(' ');
      assert.equal(short.length, 15);
      assert.equal(short[0], '45,40.0');
    });
  });

  it('asks to expand with a bare "expand" and for settings with a tokened heat message', async () => {
    await withPage('index', {}, async (page) => {
      assert.deepEqual(await click(page, '#expand'), [{ name: 'size', body: 'expand' }]);
      assert.deepEqual(await click(page, '#settings'),
        [{ name: 'heat', body: { action: 'settings', token: TOKEN } }]);
    });
  });

  it('marks and announces the alert stage pushed by the native side', async () => {
    await withPage('index', {}, async (page) => {
      assert.equal(await page.getAttribute('html', 'data-alert'), 'none');
      await page.evaluate(() => window.applyHeatStage('extreme'));
      assert.equal(await page.getAttribute('html', 'data-alert'), 'extreme');
      assert.equal(await text(page, '#announce'), 'Stage: Extreme heat');
      await page.evaluate(() => window.applyHeatStage('bogus'));
      assert.equal(await page.getAttribute('html', 'data-alert'), 'none');
    });
  });
});
