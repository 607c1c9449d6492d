// The "Heating it:" line of the home pages and the popover, pushed with the native side's own
// call text: the top processes from WARM up, nothing at NORMAL.
import { describe, it } from 'node:test';
import assert from 'node:assert/strict';
import fs from 'node:fs';
import path from 'node:path';
import { readFixture } from '../support/browser.mjs';
import { withPage, text, visible } from '../support/session.mjs';

const liveCall = (live) => `window.heatLive && window.heatLive.render(${JSON.stringify(live)})`;
const push = (page, live) => page.evaluate(liveCall(live));
const pages = ['index', 'expanded', 'menubar'];

function heatingWith(text, level) {
  const live = readFixture('live', 'heating');
  live.heatCause = { ...live.heatCause, text };
  if (level !== undefined) live.status = { ...live.status, level };
  return live;
}

describe('heating it', () => {
  for (const name of pages) {
    it(`${name}: names the busiest processes above NORMAL and nothing at NORMAL`, async () => {
      await withPage(name, {}, async (page) => {
        await push(page, readFixture('live', 'normal'));
        assert.equal(await visible(page, '#heat-cause'), false);

        await push(page, readFixture('live', 'heating'));
        assert.equal(await visible(page, '#heat-cause'), true);
        assert.equal(await text(page, '#heat-cause'), 'Heating it: yes 99 % · cc1plus 35 % · firefox 12 %');
        assert.equal(await page.getAttribute('#heat-cause', 'title'),
          'Heating it: yes 99 % · cc1plus 35 % · firefox 12 %');

        await push(page, readFixture('live', 'normal'));
        assert.equal(await visible(page, '#heat-cause'), false);
        assert.equal(await text(page, '#heat-cause-text'), '');
      });
    });

    it(`${name}: a cause sent at NORMAL or without text is not shown`, async () => {
      await withPage(name, {}, async (page) => {
        await push(page, heatingWith('yes 99 %', 0));
        assert.equal(await visible(page, '#heat-cause'), false);
        await push(page, heatingWith(''));
        assert.equal(await visible(page, '#heat-cause'), false);
        await push(page, { ...readFixture('live', 'heating'), heatCause: 'yes' });
        assert.equal(await visible(page, '#heat-cause'), false);
      });
    });

    it(`${name}: a hostile process name is shown as text, never as markup`, async () => {
      await withPage(name, {}, async (page) => {
        const hostile = '<img src=x id=forged onerror="window.hit=1"> 50 %';
        await push(page, heatingWith(hostile));
        assert.equal(await text(page, '#heat-cause-text'), hostile);
        assert.equal(await page.$('#forged'), null);
        assert.equal(await page.evaluate(() => window.hit), undefined);
      });
    });
  }

  const dir = process.env.VELMORA_PAGE_SNAPSHOTS;
  it('shows the real live model\'s cause on every page', { skip: dir ? false : 'VELMORA_PAGE_SNAPSHOTS is not set (ctest sets it)' }, async () => {
    const snapshots = JSON.parse(fs.readFileSync(path.join(dir, 'live-snapshots.json'), 'utf8'));
    const heating = snapshots.find((s) => s.name === 'model-heating');
    assert.ok(heating, 'the live model snapshots have a heating machine');
    for (const name of pages) {
      await withPage(name, {}, async (page) => {
        await push(page, heating.live);
        assert.equal(await text(page, '#heat-cause'), `Heating it: ${heating.live.heatCause.text}`);
      });
    }
  });
});
