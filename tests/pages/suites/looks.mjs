// Every page and mode in light and dark: a screenshot for people to look at, written at
// the page's own window size, and a contrast check of every text on it.
import { describe, it } from 'node:test';
import assert from 'node:assert/strict';
import { readFixture, renderLive, renderView, screenshot } from '../support/browser.mjs';
import { withPage } from '../support/session.mjs';
import { lowContrastTexts } from '../support/contrast.mjs';

const HOME_SHOTS = [
  ['normal', 'none'],
  ['sources', 'none'],
  ['extreme', 'extreme'],
  ['forced-critical', 'emergency'],
  ['empty', 'none'],
];

const STAGE_SHOTS = [
  ['count', 'count'], ['count-sim', 'count'], ['fired', 'count'], ['fired-err', 'count'],
  ['lead', 'lead'], ['consent', 'consent'], ['relief', 'relief'], ['relief-cancelled', 'relief'],
  ['settings', 'settings'], ['settings-denied', 'settings'], ['simdone', 'simdone'], ['perm', 'perm'],
  ['manual', 'manual'], ['manual-perm', 'manual'], ['home', 'home'],
];

async function check(page, label) {
  await screenshot(page, label);
  assert.deepEqual(await page.evaluate(lowContrastTexts), [], `${label}: contrast`);
}

describe('looks', () => {
  for (const theme of ['light', 'dark']) {
    it(`home pages and popover in ${theme}`, async () => {
      for (const name of ['index', 'expanded', 'menubar']) {
        await withPage(name, { theme }, async (page) => {
          for (const [live, stage] of HOME_SHOTS) {
            await page.evaluate((s) => window.applyHeatStage && window.applyHeatStage(s), stage);
            await renderLive(page, readFixture('live', live));
            await check(page, `${name}-${live}-${theme}`);
            if (name === 'expanded') {
              await page.$eval('#dash', (el) => { el.scrollTop = el.scrollHeight; });
              await check(page, `${name}-${live}-${theme}-end`);
              // The power card, with every power source and battery when there are any.
              await page.$eval('#power-title', (el) => el.scrollIntoView({ block: 'start' }));
              await check(page, `${name}-${live}-${theme}-power`);
              await page.$eval('#dash', (el) => { el.scrollTop = 0; });
            }
          }
        });
      }
    });

    it(`stage screens in ${theme}`, async () => {
      await withPage('stagec', { theme }, async (page) => {
        for (const [fixture, mode] of STAGE_SHOTS) {
          await renderView(page, readFixture('views', fixture), mode);
          await page.evaluate(() => document.activeElement && document.activeElement.blur());
          await check(page, `stagec-${fixture}-${theme}`);
        }
      });
    });
  }
});
