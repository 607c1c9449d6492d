// The popover of live readings under the menu-bar item.
import { describe, it } from 'node:test';
import assert from 'node:assert/strict';
import { readFixture, renderLive, sent, TOKEN } from '../support/browser.mjs';
import { withPage, click, text, visibleButtons } from '../support/session.mjs';

describe('menubar page', () => {
  it('shows status, temperatures, CPU, RAM, GPU, fans, power, battery and the sparkline', async () => {
    await withPage('menubar', {}, async (page) => {
      await renderLive(page, readFixture('live', 'normal'));
      const expected = {
        '#level-label': 'NORMAL',
        '#thermal-word': 'Nominal',
        '#cpu-temp': '52°C',
        '#gpu-temp': '45°C',
        '#battery-temp': '31°C',
        '#peak-temp': '68°C',
        '#cpu': '18%',
        '#ram': '61%',
        '#ram-detail': '9.8 of 16 GB',
        '#gpu': '7%',
        '#fan': '2300/2150',
        '#power': '12.3 W',
        '#battery': '87%',
        '#battery-state': 'Charging',
        '#foot': 'Live · 1 s · Temps: hwmon',
      };
      for (const [selector, value] of Object.entries(expected)) {
        assert.equal(await text(page, selector), value, selector);
      }
      assert.equal((await page.getAttribute('#spark .spark-line', 'points')).split(' ').length, 60);
      await renderLive(page, readFixture('live', 'extreme'));
      assert.equal(await text(page, '#level-label'), 'EXTREME HEAT');
      assert.equal(await text(page, '#gpu-temp'), 'n/a');
    });
  });

  it('sends only theme messages, whatever is clicked', async () => {
    await withPage('menubar', { theme: 'auto' }, async (page) => {
      await renderLive(page, readFixture('live', 'normal'));
      assert.deepEqual(await visibleButtons(page), ['auto', 'light', 'dark']);
      assert.deepEqual(await click(page, '[data-theme-choice="dark"]'),
        [{ name: 'theme', body: { token: TOKEN, pref: 'dark' } }]);
      assert.deepEqual(await click(page, '[data-theme-choice="light"]'),
        [{ name: 'theme', body: { token: TOKEN, pref: 'light' } }]);
      await page.click('#level-label');
      assert.deepEqual(await sent(page), []);
    });
  });

  it('follows a theme pushed by the native side without echoing it', async () => {
    await withPage('menubar', { theme: 'light' }, async (page) => {
      await page.evaluate(() => window.heatTheme.set('dark', true));
      assert.equal(await page.getAttribute('html', 'data-theme'), 'dark');
      assert.equal(await page.getAttribute('[data-theme-choice="dark"]', 'aria-pressed'), 'true');
      assert.deepEqual(await sent(page), []);
    });
  });

  it('paints its own opaque background in both themes', async () => {
    for (const theme of ['light', 'dark']) {
      await withPage('menubar', { theme }, async (page) => {
        const bg = await page.evaluate(() => getComputedStyle(document.body).backgroundColor);
        assert.match(bg, /^rgb\(/, `${theme}: ${bg}`);
      });
    }
  });
});
