// The stage page: one screen per mode, every action with its exact message.
import { describe, it } from 'node:test';
import assert from 'node:assert/strict';
import { readFixture, renderView, sent, TOKEN } from '../support/browser.mjs';
import { withPage, click, text, visible } from '../support/session.mjs';

const stagec = (action, on) => ({
  name: 'stagec',
  body: on === undefined ? { action, token: TOKEN } : { action, token: TOKEN, on },
});
const heat = (action) => ({ name: 'heat', body: { action, token: TOKEN } });

async function show(page, fixture, mode) {
  await renderView(page, readFixture('views', fixture), mode);
}

async function shownScreens(page) {
  return page.$$eval('[data-screen]', (els) => els.filter((e) => !e.hidden).map((e) => e.getAttribute('data-screen')));
}

describe('stagec page', () => {
  it('shows exactly the screen of the rendered mode', async () => {
    await withPage('stagec', {}, async (page) => {
      const modes = [['count', 'count'], ['lead', 'lead'], ['consent', 'consent'], ['relief', 'relief'],
        ['settings', 'settings'], ['simdone', 'simdone'], ['perm', 'perm'], ['manual', 'manual'], ['home', 'home']];
      for (const [fixture, mode] of modes) {
        await show(page, fixture, mode);
        assert.deepEqual(await shownScreens(page), [mode]);
      }
    });
  });

  it('counts down with the seconds, the ring, the thermal word and Cancel', async () => {
    await withPage('stagec', {}, async (page) => {
      await show(page, 'count', 'count');
      assert.equal(await text(page, '#count-chip'), 'EMERGENCY');
      assert.equal(await text(page, '#count-secs'), '8');
      assert.equal(await text(page, '#count-temp'), 'Critical');
      assert.equal(await text(page, '#count-now'), 'Now: Critical · EMERGENCY');
      assert.equal(await text(page, '#count-cancel'), 'Keep working · Cancel');
      assert.equal(await visible(page, '#count-err'), false);
      const offset = await page.$eval('#ring-fill', (el) => parseFloat(el.style.strokeDashoffset));
      const length = 2 * Math.PI * 52;
      assert.ok(Math.abs(offset - length * (1 - 0.735)) < 0.05, `ring offset ${offset}`);
      assert.deepEqual(await click(page, '#count-cancel'), [stagec('cancel')]);
    });
  });

  it('keeps naming the peak thermal word while the machine cools during a countdown', async () => {
    await withPage('stagec', {}, async (page) => {
      await show(page, 'count-cooling', 'count');
      assert.equal(await text(page, '#count-temp'), 'Critical');
      assert.equal(await text(page, '#count-now'), 'Now: Serious · EXTREME HEAT');
      assert.equal(await text(page, '#count-secs'), '3');
    });
  });

  it('labels a simulated countdown SIMULATION', async () => {
    await withPage('stagec', {}, async (page) => {
      await show(page, 'count-sim', 'count');
      assert.equal(await text(page, '#count-chip'), 'SIMULATION');
      assert.equal(await text(page, '#count-secs'), '5');
      assert.equal(await text(page, '#count-temp'), 'Critical (simulated)');
      assert.deepEqual(await click(page, '#count-cancel'), [stagec('cancel')]);
    });
  });

  it('shows the shutting-down screen without Cancel once fired, with the error when set', async () => {
    await withPage('stagec', {}, async (page) => {
      await show(page, 'fired', 'count');
      assert.equal(await text(page, '#count-title'), 'Shutting down');
      assert.equal(await visible(page, '#count-cancel'), false);
      assert.equal(await visible(page, '#count-err'), false);
      await show(page, 'fired-err', 'count');
      assert.equal(await visible(page, '#count-err'), true);
      assert.equal(await text(page, '#count-err'), 'Too late to cancel: this computer is already shutting down.');
    });
  });

  it('announces the countdown on entry and at its cue seconds only', async () => {
    await withPage('stagec', {}, async (page) => {
      await page.evaluate(() => {
        window.__spoken = [];
        const region = document.getElementById('announce-urgent');
        new MutationObserver(() => window.__spoken.push(region.textContent))
          .observe(region, { childList: true, characterData: true, subtree: true });
      });
      const view = readFixture('views', 'count');
      for (let ms = 10000; ms > 0; ms -= 250) {
        await renderView(page, { ...view, remainingMs: ms, remaining: Math.ceil(ms / 1000) }, 'count');
      }
      await renderView(page, { ...view, state: 'fired', remainingMs: 0, remaining: 0 }, 'count');
      assert.deepEqual(await page.evaluate(() => window.__spoken), [
        'Emergency: shutdown in 10 seconds.', '5 seconds.', '3 seconds.', '2 seconds.', '1 second.',
        'Shutting down now.',
      ]);
    });
  });

  it('shows the lead-in of a simulation, which can be stopped', async () => {
    await withPage('stagec', {}, async (page) => {
      await show(page, 'lead', 'lead');
      assert.equal(await text(page, '#lead-title'), 'Test emergency');
      assert.equal(await text(page, '#lead-temp'), 'Critical (simulated)');
      assert.deepEqual(await click(page, '#lead-cancel'), [stagec('cancel')]);
    });
  });

  it('asks for consent and sends the answer with "on"', async () => {
    await withPage('stagec', {}, async (page) => {
      await show(page, 'consent', 'consent');
      assert.match(await text(page, '#consent-title'), /^Shut down automatically in an emergency\?$/);
      assert.match(await text(page, '#consent-text'), /10-second countdown/);
      assert.equal(await text(page, '#consent-note'), readFixture('views', 'consent').thermalNote);
      assert.deepEqual(await click(page, '#consent-yes'), [stagec('consent', true)]);
      assert.deepEqual(await click(page, '#consent-no'), [stagec('consent', false)]);
    });
  });

  it('shows relief with the peak word, and the cancelled variant', async () => {
    await withPage('stagec', {}, async (page) => {
      await show(page, 'relief', 'relief');
      assert.equal(await text(page, '#relief-title'), 'Welcome back');
      assert.equal(await text(page, '#relief-peak'), 'Critical');
      assert.match(await text(page, '#relief-text'), /shut this computer down/);
      assert.deepEqual(await click(page, '#relief-ok'), [stagec('relief')]);
      assert.deepEqual(await click(page, '#relief-settings'), [stagec('settings')]);
      await show(page, 'relief-cancelled', 'relief');
      assert.equal(await text(page, '#relief-title'), 'It cooled down');
      assert.match(await text(page, '#relief-text'), /cancelled/);
      // A screen is announced by the title it has once filled in, not the one it had before.
      await show(page, 'home', 'home');
      await show(page, 'relief', 'relief');
      assert.equal(await text(page, '#announce'), 'Welcome back');
    });
  });

  it('offers every setting with its message', async () => {
    await withPage('stagec', {}, async (page) => {
      await show(page, 'settings', 'settings');
      assert.equal(await text(page, '#auto-label'), 'Auto-shutdown in emergency');
      assert.equal(await page.getAttribute('#auto-switch', 'aria-checked'), 'true');
      assert.deepEqual(await click(page, '#auto-switch'), [stagec('toggle', false)]);
      assert.equal(await text(page, '#settings-test'), 'Test emergency');
      assert.deepEqual(await click(page, '#settings-test'), [stagec('test')]);
      assert.deepEqual(await click(page, '#settings-recheck'), [stagec('recheck')]);
      assert.deepEqual(await click(page, '#settings-open'), [stagec('openAutomation')]);
      assert.deepEqual(await click(page, '#settings-back'), [stagec('back')]);
      assert.equal(await text(page, '#perm-state'), 'Allowed');
      assert.equal(await visible(page, '#settings-perm-msg'), false);
      assert.equal(await text(page, '#settings-version'), '1.1');
      assert.equal(await text(page, '#settings-note'), readFixture('views', 'settings').thermalNote);

      // "Notify me when it gets hot" rides with the render; an engine view alone leaves it on.
      assert.equal(await text(page, '#notify-label'), 'Notify me when it gets hot');
      assert.equal(await page.getAttribute('#notify-switch', 'aria-checked'), 'true');
      assert.deepEqual(await click(page, '#notify-switch'), [stagec('notify', false)]);
      await renderView(page, { ...readFixture('views', 'settings'), notifyWhenHot: false }, 'settings');
      assert.equal(await page.getAttribute('#notify-switch', 'aria-checked'), 'false');
      assert.deepEqual(await click(page, '#notify-switch'), [stagec('notify', true)]);

      await show(page, 'settings-off', 'settings');
      assert.equal(await page.getAttribute('#auto-switch', 'aria-checked'), 'false');
      assert.deepEqual(await click(page, '#auto-switch'), [stagec('toggle', true)]);
      assert.equal(await text(page, '#perm-state'), 'Not checked yet');

      await show(page, 'settings-denied', 'settings');
      assert.equal(await text(page, '#perm-state'), 'Not allowed');
      assert.equal(await text(page, '#settings-perm-msg'), readFixture('views', 'settings-denied').permMsg);
      await show(page, 'settings-failed', 'settings');
      assert.equal(await text(page, '#perm-state'), 'Could not be checked');
    });
  });

  it('sends the theme chosen in settings with the token and applies it', async () => {
    await withPage('stagec', { theme: 'light' }, async (page) => {
      await show(page, 'settings', 'settings');
      assert.equal(await page.getAttribute('[data-theme-choice="light"]', 'aria-pressed'), 'true');
      assert.deepEqual(await click(page, '[data-theme-choice="dark"]'),
        [{ name: 'theme', body: { token: TOKEN, pref: 'dark' } }]);
      assert.equal(await page.getAttribute('html', 'data-theme'), 'dark');
      assert.equal(await page.getAttribute('[data-theme-choice="dark"]', 'aria-pressed'), 'true');
      assert.equal(await page.getAttribute('[data-theme-choice="light"]', 'aria-pressed'), 'false');
    });
  });

  it('ends a simulation with Done', async () => {
    await withPage('stagec', {}, async (page) => {
      await show(page, 'simdone', 'simdone');
      assert.equal(await text(page, '#simdone-title'), 'Test complete');
      assert.deepEqual(await click(page, '#simdone-ok'), [stagec('simdone')]);
    });
  });

  it('explains a denied permission with its actions', async () => {
    await withPage('stagec', {}, async (page) => {
      await show(page, 'perm', 'perm');
      assert.equal(await text(page, '#perm-msg'), readFixture('views', 'perm').permMsg);
      assert.deepEqual(await click(page, '#perm-open'), [stagec('openAutomation')]);
      assert.deepEqual(await click(page, '#perm-recheck'), [stagec('recheck')]);
      assert.deepEqual(await click(page, '#perm-dismiss'), [stagec('dismissPerm')]);
      assert.deepEqual(await click(page, '#perm-settings'), [stagec('settings')]);
    });
  });

  it('asks for a manual shutdown, offering the settings pane only for a permission failure', async () => {
    await withPage('stagec', {}, async (page) => {
      await show(page, 'manual', 'manual');
      const view = readFixture('views', 'manual');
      assert.equal(await text(page, '#manual-reason'), view.manual.reason);
      assert.equal(await text(page, '#manual-err'), view.err);
      assert.equal(await visible(page, '#manual-open'), false);
      assert.deepEqual(await click(page, '#manual-shutdown'), [heat('shutdown')]);
      assert.equal(await text(page, '#manual-shutdown'), 'Shut Down to Cool Off');
      assert.deepEqual(await click(page, '#manual-tips'), [stagec('tips')]);
      assert.equal(await text(page, '#manual-tips'), 'Cool down tips');
      assert.deepEqual(await click(page, '#manual-dismiss'), [stagec('dismissManual')]);

      await show(page, 'manual-perm', 'manual');
      assert.equal(await visible(page, '#manual-open'), true);
      assert.deepEqual(await click(page, '#manual-open'), [stagec('openAutomation')]);
    });
  });

  it('reaches every stage action from some screen', async () => {
    const actions = new Set();
    await withPage('stagec', {}, async (page) => {
      const screens = [['count', 'count'], ['lead', 'lead'], ['consent', 'consent'], ['relief', 'relief'],
        ['settings', 'settings'], ['simdone', 'simdone'], ['perm', 'perm'], ['manual-perm', 'manual'], ['home', 'home']];
      for (const [fixture, mode] of screens) {
        await show(page, fixture, mode);
        const ids = await page.$$eval(`[data-screen="${mode}"] button`,
          (els) => els.filter((e) => e.getClientRects().length > 0).map((e) => e.id));
        for (const id of ids.filter(Boolean)) {
          (await click(page, `#${id}`)).filter((m) => m.name === 'stagec').forEach((m) => actions.add(m.body.action));
          await show(page, fixture, mode);
        }
      }
    });
    assert.deepEqual([...actions].sort(), ['back', 'cancel', 'consent', 'dismissManual', 'dismissPerm',
      'notify', 'openAutomation', 'recheck', 'relief', 'settings', 'simdone', 'test', 'tips', 'toggle']);
  });

  it('updates a countdown in place instead of rebuilding the page', async () => {
    await withPage('stagec', {}, async (page) => {
      const view = readFixture('views', 'count');
      await renderView(page, view, 'count');
      await page.evaluate(() => {
        window.__added = 0;
        window.__cancel = document.getElementById('count-cancel');
        new MutationObserver((records) => {
          records.forEach((r) => { window.__added += Array.from(r.addedNodes).filter((n) => n.nodeType === 1).length; });
        }).observe(document.body, { childList: true, subtree: true });
      });
      for (let ms = 7000; ms > 3000; ms -= 250) {
        await renderView(page, { ...view, remainingMs: ms, remaining: Math.ceil(ms / 1000) }, 'count');
      }
      assert.equal(await page.evaluate(() => window.__added), 0);
      assert.equal(await page.evaluate(() => window.__cancel === document.getElementById('count-cancel')), true);
      assert.equal(await text(page, '#count-secs'), '4');
      assert.deepEqual(await sent(page), []);
    });
  });
});
