// The expanded page's heat history graph and the popover's 15-minute sparkline.
import { describe, it } from 'node:test';
import assert from 'node:assert/strict';
import { readFixture, renderLive, screenshot, sent, TOKEN } from '../support/browser.mjs';
import { withPage, click, text } from '../support/session.mjs';
import { lowContrastTexts } from '../support/contrast.mjs';

const COLUMNS = ['time', 'resolution', 'level', 'hottest', 'hottestMin', 'hottestMax', 'cpu',
  'cpuTemp', 'gpuTemp', 'power', 'fan', 'battery', 'busiest'];
const NOW = 1790000000;
const ask = (range) => ({ name: 'heat', body: { action: 'history', range, token: TOKEN } });

// A view as the native side sends it: a warm climb to a hot spike with a gap in the middle.
function historyView(range = '15m', span = 900, { gapAt = null } = {}) {
  const rows = [];
  for (let t = NOW - span; t <= NOW; t += span / 300) {
    if (gapAt !== null && t >= NOW - gapAt && t < NOW - gapAt + span / 10) continue;
    const k = (t - (NOW - span)) / span;
    const hot = 50 + 45 * k;
    const level = hot >= 95 ? 3 : hot >= 80 ? 2 : hot >= 60 ? 1 : 0;
    rows.push([t, span / 300, level, hot, hot - 1, hot + 1, 20 + 70 * k, hot - 2, 45, 30 + 20 * k, 2000, 80,
      level > 0 ? (k > 0.9 ? 'blender, "render"' : 'cc1plus') : null]);
  }
  return { range, span, now: NOW, bands: { warm: 60, hot: 80, extreme: 95, critical: 100 }, columns: COLUMNS, rows };
}

async function renderHistory(page, view) {
  await page.evaluate((v) => window.heatHistory.render(v), view);
}

const lineStarts = (d) => (d.match(/M/g) || []).length;

describe('history graph', () => {
  it('asks for the last 15 minutes at load and for each range pressed, with the token', async () => {
    await withPage('expanded', {}, async (page) => {
      assert.deepEqual(await sent(page), [ask('15m')]);
      assert.deepEqual(await click(page, '[data-range="2h"]'), [ask('2h')]);
      assert.equal(await page.getAttribute('[data-range="2h"]', 'aria-pressed'), 'true');
      assert.equal(await page.getAttribute('[data-range="15m"]', 'aria-pressed'), 'false');
      // Keyboard only: the range buttons are in the tab order and answer to Enter.
      await page.focus('[data-range="24h"]');
      await page.keyboard.press('Enter');
      assert.deepEqual(await sent(page), [ask('24h')]);
      await page.focus('[data-range="30d"]');
      await page.keyboard.press('Space');
      assert.deepEqual(await sent(page), [ask('30d')]);
    });
  });

  it('does not ask again with every live push, only once its answer is old', async () => {
    await withPage('expanded', {}, async (page) => {
      await sent(page);
      for (let i = 0; i < 5; i += 1) await renderLive(page, readFixture('live', 'normal'));
      assert.deepEqual(await sent(page), []);
    });
  });

  it('draws the hottest temperature over the level bands, the critical limit and the CPU load', async () => {
    await withPage('expanded', {}, async (page) => {
      await renderHistory(page, historyView());
      assert.equal(await page.$$eval('#history-temp .band', (els) => els.length), 4);
      const limitY = Number(await page.getAttribute('#history-temp .limit', 'y1'));
      // 100 °C on a 20 to 110 °C scale, 160 high.
      assert.ok(Math.abs(limitY - (160 - (80 / 90) * 160)) < 0.01, `limit at ${limitY}`);
      assert.equal(lineStarts(await page.getAttribute('#history-temp .line', 'd')), 1);
      assert.equal(lineStarts(await page.getAttribute('#history-cpu .line', 'd')), 1);
      assert.equal(await text(page, '#history-limit'), 'Critical 100 °C');
      assert.equal(await page.isVisible('#history-empty'), false);
    });
  });

  it('breaks the line where no readings were kept', async () => {
    await withPage('expanded', {}, async (page) => {
      await renderHistory(page, historyView('15m', 900, { gapAt: 450 }));
      assert.equal(lineStarts(await page.getAttribute('#history-temp .line', 'd')), 2);
      assert.equal(lineStarts(await page.getAttribute('#history-cpu .line', 'd')), 2);
    });
  });

  it('says when a range holds nothing yet', async () => {
    await withPage('expanded', {}, async (page) => {
      await renderHistory(page, { ...historyView(), rows: [] });
      assert.equal(await page.isVisible('#history-empty'), true);
    });
  });

  it('shows the time, figures and busiest process of the moment pointed at', async () => {
    await withPage('expanded', {}, async (page) => {
      await renderHistory(page, historyView());
      await page.$eval('#history', (el) => el.scrollIntoView({ block: 'start' }));
      const box = await page.$eval('#history-temp', (el) => { const r = el.getBoundingClientRect(); return { x: r.x, y: r.y, w: r.width, h: r.height }; });
      await page.mouse.move(box.x + box.w * 0.995, box.y + box.h / 2);
      const late = await text(page, '#history-readout');
      assert.match(late, /HOT · hottest 9[0-9]\.[0-9] °C \([0-9.]+–[0-9.]+ °C\) · CPU [0-9]+ %/);
      assert.match(late, /busiest: blender, "render"/);
      assert.match(late, /[0-9]{2}:[0-9]{2}:[0-9]{2}/);
      await page.mouse.move(box.x + 2, box.y + box.h / 2);
      assert.match(await text(page, '#history-readout'), /NORMAL · hottest 50\.[0-9] °C .* busiest: n\/a/);
      assert.equal(await page.getAttribute('#history-readout', 'aria-live'), 'polite');
    });
  });

  it('steps through the points with the keyboard', async () => {
    await withPage('expanded', {}, async (page) => {
      await renderHistory(page, historyView());
      await page.focus('#history-plot');
      const last = await text(page, '#history-readout');
      assert.match(last, /EXTREME HEAT · hottest 95\.0 °C/);
      await page.keyboard.press('Home');
      assert.match(await text(page, '#history-readout'), /NORMAL · hottest 50\.0 °C/);
      await page.keyboard.press('ArrowRight');
      assert.match(await text(page, '#history-readout'), /hottest 50\.[1-9] °C/);
      await page.keyboard.press('End');
      assert.equal(await text(page, '#history-readout'), last);
      const cursor = Number(await page.getAttribute('#history-cursor-temp', 'x1'));
      assert.ok(cursor > 595 && cursor <= 600, `cursor at ${cursor}`);
    });
  });

  it('ignores an answer to a range no longer shown, and bodies of the wrong shape', async () => {
    await withPage('expanded', {}, async (page) => {
      await click(page, '[data-range="2h"]');
      await renderHistory(page, historyView('15m'));
      assert.equal(await page.$$eval('#history-temp .line', (els) => els.length), 0);
      assert.equal(await page.getAttribute('#history-plot', 'data-shown'), null);
      for (const bad of [null, 'rows', { rows: 'x', columns: COLUMNS }, { range: '2h', columns: COLUMNS, rows: [['x']] }]) {
        await renderHistory(page, bad);
      }
      await renderHistory(page, historyView('2h', 7200));
      assert.equal(lineStarts(await page.getAttribute('#history-temp .line', 'd')), 1);
      assert.equal(await page.getAttribute('#history-plot', 'data-shown'), '2h');
    });
  });

  it('uses no timers or animation frames', async () => {
    await withPage('expanded', {}, async (page) => {
      await renderHistory(page, historyView());
      await page.focus('#history-plot');
      await page.keyboard.press('ArrowLeft');
      const timers = await page.evaluate(() => window.__timers);
      assert.deepEqual(timers, { interval: 0, timeout: 0, frame: 0 });
    });
  });

  for (const theme of ['light', 'dark']) {
    it(`is readable in ${theme}`, async () => {
      await withPage('expanded', { theme }, async (page) => {
        await renderLive(page, readFixture('live', 'extreme'));
        await renderHistory(page, historyView('15m', 900, { gapAt: 300 }));
        await page.$eval('#history', (el) => el.scrollIntoView({ block: 'start' }));
        await page.focus('#history-plot');
        await page.keyboard.press('ArrowLeft');
        await screenshot(page, `expanded-history-${theme}`);
        assert.deepEqual(await page.evaluate(lowContrastTexts), [], `${theme}: contrast`);
      });
    });
  }
});

describe('popover sparkline', () => {
  it('shows the last 15 minutes once the native side hands them over', async () => {
    await withPage('menubar', {}, async (page) => {
      await renderLive(page, readFixture('live', 'normal'));
      assert.match(await page.getAttribute('#spark', 'aria-label'), /last minute/);
      const steps = Array.from({ length: 60 }, (_, i) => (i < 5 ? null : i));
      await page.evaluate((s) => { window.heatLive.recent(s); }, steps);
      await renderLive(page, readFixture('live', 'normal'));
      const points = (await page.getAttribute('#spark .spark-line', 'points')).split(' ');
      assert.equal(points.length, 55, 'steps without a sample are left out');
      assert.equal(points[points.length - 1], '59,41.0');
      assert.match(await page.getAttribute('#spark', 'aria-label'), /last 15 minutes, now 18%/);
      await screenshot(page, 'menubar-recent-light');
    });
  });
});
