// What every page must do alike: theme, safety of texts, robustness, accessibility, cost.
import { describe, it } from 'node:test';
import assert from 'node:assert/strict';
import fs from 'node:fs';
import path from 'node:path';
import { readFixture, renderLive, renderView, resourcesDir, sent } from '../support/browser.mjs';
import { withPage, tabOrder, visibleButtons, text } from '../support/session.mjs';

const PAGES = ['index', 'expanded', 'stagec', 'menubar'];
const MARKUP = '<img src=x onerror="window.__injected=1"><b>bold</b>';

describe('all pages', () => {
  it('carry a policy that forbids frames and remote sources', () => {
    for (const name of PAGES) {
      const html = fs.readFileSync(path.join(resourcesDir, `${name}.html`), 'utf8');
      const policy = html.match(/http-equiv="Content-Security-Policy" content="([^"]+)"/);
      assert.ok(policy, `${name} has a policy`);
      assert.match(policy[1], /frame-src 'none'/);
      assert.match(policy[1], /default-src 'none'/);
      assert.doesNotMatch(policy[1], /https?:|\*|'unsafe-inline'|'unsafe-eval'/);
      assert.doesNotMatch(html, /(src|href)="(https?:)?\/\//, `${name} loads nothing remote`);
    }
  });

  it('load only their own files and refuse a frame', async () => {
    for (const name of PAGES) {
      const requests = [];
      await withPage(name, {}, async (page, opened) => {
        opened.context.on('request', (r) => requests.push(r.url()));
        await page.reload();
        await page.evaluate(() => {
          window.__frameRefused = null;
          document.addEventListener('securitypolicyviolation', (event) => {
            window.__frameRefused = window.__frameRefused || event.effectiveDirective;
          });
          const frame = document.createElement('iframe');
          frame.src = 'data:text/html,<p>framed</p>';
          document.body.appendChild(frame);
        });
        const refused = await page.waitForFunction(() => window.__frameRefused, null, { timeout: 3000 });
        assert.equal(await refused.jsonValue(), 'frame-src', `${name} refused the frame by its policy`);
        const framed = page.frames().slice(1);
        const loaded = await Promise.all(framed.map((f) => f.evaluate(() => document.body && document.body.textContent).catch(() => null)));
        assert.ok(!loaded.includes('framed'), `${name} showed a frame`);
        opened.errors.length = 0;
      });
      assert.ok(requests.length > 0);
      for (const url of requests) assert.match(url, /^(file|data):/, `${name} requested ${url}`);
    }
  });

  it('start from the injected theme and follow the emulated colour scheme on auto', async () => {
    for (const name of PAGES) {
      await withPage(name, { theme: 'auto', colorScheme: 'dark' }, async (page) => {
        assert.equal(await page.getAttribute('html', 'data-theme'), 'dark');
        const darkBg = await page.evaluate(() => getComputedStyle(document.body).backgroundColor);
        await page.emulateMedia({ colorScheme: 'light' });
        await page.waitForFunction(() => document.documentElement.getAttribute('data-theme') === 'light',
          null, { timeout: 3000 });
        assert.notEqual(await page.evaluate(() => getComputedStyle(document.body).backgroundColor), darkBg);
        await page.evaluate(() => window.heatTheme.set('dark', true));
        assert.equal(await page.getAttribute('html', 'data-theme'), 'dark');
        const themeMessages = (await sent(page)).filter((m) => m.name === 'theme');
        assert.deepEqual(themeMessages, [], `${name} echoed a native theme change`);
      });
      await withPage(name, { theme: 'dark', colorScheme: 'light' }, async (page) => {
        assert.equal(await page.getAttribute('html', 'data-theme'), 'dark');
        await page.evaluate(() => window.heatTheme.set('nonsense', true));
        assert.equal(await page.getAttribute('html', 'data-theme'), 'dark');
      });
    }
  });

  it('take the token and theme from the native document-start script', async () => {
    const token = 'A1B2C3D4-0000-4E5F-8A7B-ABCDEFABCDEF';
    const nativeScript = `window.__HEAT_TOKEN__ = '${token}'; window.__HEAT_THEME__ = 'dark';`;
    await withPage('stagec', { nativeScript, token: null, theme: null }, async (page) => {
      assert.equal(await page.getAttribute('html', 'data-theme'), 'dark');
      await renderView(page, readFixture('views', 'perm'), 'perm');
      await page.click('#perm-recheck');
      assert.deepEqual(await sent(page), [{ name: 'stagec', body: { action: 'recheck', token } }]);
    });
  });

  it('show texts that contain markup literally', async () => {
    await withPage('stagec', {}, async (page) => {
      const view = readFixture('views', 'fired');
      await renderView(page, { ...view, err: MARKUP, temp: MARKUP }, 'count');
      assert.equal(await text(page, '#count-err'), MARKUP);
      assert.equal(await text(page, '#count-temp'), MARKUP);
      const manual = readFixture('views', 'manual');
      await renderView(page, { ...manual, manual: { reason: MARKUP, perm: false } }, 'manual');
      assert.equal(await text(page, '#manual-reason'), MARKUP);
      await renderView(page, { ...readFixture('views', 'perm'), permMsg: MARKUP }, 'perm');
      assert.equal(await text(page, '#perm-msg'), MARKUP);
      await renderView(page, { ...readFixture('views', 'settings'), thermalNote: MARKUP }, 'settings');
      assert.equal(await text(page, '#settings-note'), MARKUP);
      assert.equal(await page.$$eval('[data-screen] img, [data-screen] b', (els) => els.length), 0);
      assert.equal(await page.evaluate(() => window.__injected), undefined);
    });
    for (const name of ['index', 'expanded', 'menubar']) {
      await withPage(name, {}, async (page) => {
        const live = readFixture('live', 'normal');
        live.status.label = MARKUP;
        live.sensorList[0].name = MARKUP;
        await renderLive(page, live);
        assert.equal(await text(page, '#level-label'), MARKUP);
        if (name === 'expanded') assert.equal(await text(page, '#sensor-list li .sensor-name'), MARKUP);
        assert.equal(await page.$$eval('main img, main b', (els) => els.length), 0);
        assert.equal(await page.evaluate(() => window.__injected), undefined);
      });
    }
  });

  it('render views and snapshots with missing or odd keys without throwing', async () => {
    const odd = [{}, null, [], 'text', { cpu: 'hot', spark: 'x', coreLoads: {}, sensorList: [null, 3] },
      { status: { label: 7 }, cpuTemp: { value: null, fill: 'x' }, spark: [1, null, 'a', 400] }];
    for (const name of ['index', 'expanded', 'menubar']) {
      await withPage(name, {}, async (page) => {
        for (const live of odd) await renderLive(page, live);
        assert.equal(await text(page, '#cpu-temp'), 'n/a');
        assert.equal(await text(page, '#level-label'), '7');
      });
    }
    await withPage('stagec', {}, async (page) => {
      for (const mode of ['home', 'count', 'lead', 'consent', 'relief', 'settings', 'simdone', 'perm', 'manual', 'bogus']) {
        for (const view of [{}, null, { manual: 'x', relief: 5, remainingMs: 'soon' }]) {
          await renderView(page, view, mode);
        }
      }
      await renderView(page, {}, 'count');
      assert.equal(await text(page, '#count-secs'), '0');
      await renderView(page, {}, 'manual');
      assert.equal(await text(page, '#manual-reason'), 'n/a');
    });
  });

  it('honour reduced motion', async () => {
    const duration = (page, selector) => page.$eval(selector, (el) => getComputedStyle(el).transitionDuration);
    await withPage('stagec', { reducedMotion: 'reduce' }, async (page) => {
      await renderView(page, readFixture('views', 'count'), 'count');
      assert.equal(await duration(page, '#ring-fill'), '0s');
    });
    // The countdown ring never glides, so that a countdown does not keep the page repainting.
    await withPage('stagec', { reducedMotion: 'no-preference' }, async (page) => {
      await renderView(page, readFixture('views', 'count'), 'count');
      assert.equal(await duration(page, '#ring-fill'), '0s');
    });
    await withPage('expanded', { reducedMotion: 'reduce' }, async (page) => {
      await renderLive(page, readFixture('live', 'normal'));
      assert.equal(await duration(page, '.bar > i'), '0s');
      assert.equal(await duration(page, '.core-bar > i'), '0s');
    });
  });

  it('write nothing when the same snapshot or view is pushed again', async () => {
    const watch = (page) => page.evaluate(() => {
      window.__mutations = 0;
      new MutationObserver((records) => { window.__mutations += records.length; })
        .observe(document.documentElement, { subtree: true, childList: true, attributes: true, characterData: true });
    });
    for (const name of ['index', 'expanded', 'menubar']) {
      await withPage(name, {}, async (page) => {
        const live = readFixture('live', 'normal');
        await renderLive(page, live);
        await watch(page);
        await renderLive(page, live);
        assert.equal(await page.evaluate(() => window.__mutations), 0, name);
      });
    }
    await withPage('stagec', {}, async (page) => {
      for (const [fixture, mode] of [['count', 'count'], ['settings', 'settings'], ['manual', 'manual']]) {
        await renderView(page, readFixture('views', fixture), mode);
        await watch(page);
        await renderView(page, readFixture('views', fixture), mode);
        assert.equal(await page.evaluate(() => window.__mutations), 0, mode);
      }
    });
  });

  it('use no timers or animation frames: they redraw only when called', async () => {
    for (const name of PAGES) {
      await withPage(name, { stage: 'extreme' }, async (page) => {
        await renderLive(page, readFixture('live', 'normal'));
        await renderView(page, readFixture('views', 'count'), 'count');
        await settled(page, name);
        assert.deepEqual(await page.evaluate(() => window.__timers), { interval: 0, timeout: 0, frame: 0 }, name);
      });
    }
  });
});

// Waits until every transition and animation the last render started has finished, then two
// frames more, so that anything those could still start would have asked for a timer by now.
async function settled(page, name) {
  const endless = await page.evaluate(() => document.getAnimations()
    .filter((a) => a.effect.getComputedTiming().endTime === Infinity).length);
  assert.equal(endless, 0, `${name} runs an endless animation`);
  await page.evaluate(async () => {
    const running = document.getAnimations().filter((a) => a.playState === 'running');
    await Promise.all(running.map((a) => a.finished));
    await new Promise((resolve) => window.__testFrame(() => window.__testFrame(resolve)));
  });
}

describe('keyboard use', () => {
  async function reachesEveryButton(page, label) {
    const buttons = await visibleButtons(page);
    // Tab starts from wherever focus was, so compare the cycle from the first control on.
    const cycle = await tabOrder(page);
    const start = Math.max(0, cycle.findIndex((f) => f.id === buttons[0]));
    const order = cycle.slice(start).concat(cycle.slice(0, start));
    assert.deepEqual(order.map((f) => f.id), buttons, `${label}: tab order`);
    for (const f of order) assert.ok(f.outline, `${label}: ${f.id} shows its focus`);
  }

  it('reaches every control of the home pages and the popover', async () => {
    await withPage('index', {}, async (page) => reachesEveryButton(page, 'index'));
    await withPage('expanded', { stage: 'extreme' }, async (page) => reachesEveryButton(page, 'expanded'));
    await withPage('menubar', {}, async (page) => reachesEveryButton(page, 'menubar'));
  });

  it('reaches every control of every stage screen, and Enter presses it', async () => {
    await withPage('stagec', {}, async (page) => {
      const screens = [['count', 'count'], ['lead', 'lead'], ['consent', 'consent'], ['relief', 'relief'],
        ['settings-denied', 'settings'], ['simdone', 'simdone'], ['perm', 'perm'], ['manual-perm', 'manual'], ['home', 'home']];
      for (const [fixture, mode] of screens) {
        await renderView(page, readFixture('views', fixture), mode);
        await reachesEveryButton(page, mode);
      }
      await renderView(page, readFixture('views', 'count'), 'count');
      await page.focus('#count-cancel');
      await sent(page);
      await page.keyboard.press('Enter');
      assert.deepEqual((await sent(page)).map((m) => m.body.action), ['cancel']);
    });
  });
});
