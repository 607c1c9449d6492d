// The forecast's line on the home pages and the popover, fed as the shell feeds them.
import { describe, it } from 'node:test';
import assert from 'node:assert/strict';
import { readFixture, renderLive } from '../support/browser.mjs';
import { withPage, text, visible } from '../support/session.mjs';
import { lowContrastTexts } from '../support/contrast.mjs';

const withForecast = (forecast) => ({ ...readFixture('live', 'extreme'), forecast });
const CRITICAL = { kind: 'critical', etaSeconds: 240, text: 'Critical in about 4 min' };
const LEVELLING = { kind: 'levelling', levelC: 88, text: 'Levelling off at 88 °C' };

for (const name of ['index', 'expanded', 'menubar']) {
  describe(`forecast line on the ${name} page`, () => {
    it('shows a critical ETA and a level, and hides itself when there is none', async () => {
      await withPage(name, {}, async (page) => {
        await renderLive(page, readFixture('live', 'extreme'));
        assert.equal(await visible(page, '#forecast'), false);

        await renderLive(page, withForecast(CRITICAL));
        assert.equal(await visible(page, '#forecast'), true);
        assert.equal(await text(page, '#forecast'), 'Critical in about 4 min');
        assert.equal(await page.getAttribute('#forecast', 'data-kind'), 'critical');

        await renderLive(page, withForecast(LEVELLING));
        assert.equal(await text(page, '#forecast'), 'Levelling off at 88 °C');
        assert.equal(await page.getAttribute('#forecast', 'data-kind'), 'levelling');

        // Ten minutes or more, and steady, come with no text: nothing is shown.
        await renderLive(page, withForecast({ kind: 'critical', etaSeconds: 900, text: '' }));
        assert.equal(await visible(page, '#forecast'), false);
        await renderLive(page, withForecast({ kind: 'steady', text: '' }));
        assert.equal(await visible(page, '#forecast'), false);

        await renderLive(page, withForecast(CRITICAL));
        await renderLive(page, readFixture('live', 'normal'));
        assert.equal(await visible(page, '#forecast'), false);
      });
    });

    if (name === 'index') {
      it('shows the forecast in place of the thermal state line, which comes back after it', async () => {
        await withPage(name, {}, async (page) => {
          await renderLive(page, readFixture('live', 'extreme'));
          assert.equal(await visible(page, '#thermal-line'), true);
          await renderLive(page, withForecast(CRITICAL));
          assert.equal(await visible(page, '#thermal-line'), false);
          assert.equal(await visible(page, '#forecast'), true);
          // The sparkline still fits in the window.
          const bottom = await page.$eval('#spark', (el) => el.getBoundingClientRect().bottom);
          assert.ok(bottom <= 188, `sparkline ends at ${bottom}`);
          await renderLive(page, withForecast({ kind: 'steady', text: '' }));
          assert.equal(await visible(page, '#thermal-line'), true);
        });
      });
    }

    it('shows text, never markup, and ignores a forecast of the wrong shape', async () => {
      await withPage(name, {}, async (page) => {
        await renderLive(page, withForecast({ kind: 'critical', text: '<b>x</b>' }));
        assert.equal(await text(page, '#forecast'), '<b>x</b>');
        assert.equal(await page.$$eval('#forecast b', (els) => els.length), 0);
        for (const bad of ['Critical', 42, [CRITICAL], { kind: 'critical', text: 7 }]) {
          await renderLive(page, withForecast(bad));
          assert.equal(await visible(page, '#forecast'), false, JSON.stringify(bad));
        }
      });
    });

    it('stays readable in light and dark', async () => {
      for (const theme of ['light', 'dark']) {
        await withPage(name, { theme }, async (page) => {
          await renderLive(page, withForecast(CRITICAL));
          assert.deepEqual(await page.evaluate(lowContrastTexts), [], `${theme}: critical`);
          await renderLive(page, withForecast(LEVELLING));
          assert.deepEqual(await page.evaluate(lowContrastTexts), [], `${theme}: levelling`);
        });
      }
    });
  });
}
