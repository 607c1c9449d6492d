// The browser shared by every suite of one run, and the page helpers the suites use.
import assert from 'node:assert/strict';
import { forgetTabs, launchBrowser, openPage, sent } from './browser.mjs';

let launching = null;

export function browser() {
  if (!launching) launching = launchBrowser();
  return launching;
}

export async function closeBrowser() {
  if (launching) await (await launching).close();
  launching = null;
  forgetTabs();
}

// Opens a page, hands it to `body`, then checks the page raised no script error.
export async function withPage(name, options, body) {
  const opened = await openPage(await browser(), name, options);
  try {
    await body(opened.page, opened);
    assert.deepEqual(opened.errors.map(String), [], `script errors on ${name}`);
  } finally {
    await opened.close();
  }
}

// Clicks one control and returns exactly what the page posted because of it.
export async function click(page, selector) {
  await sent(page);
  await page.click(selector);
  return sent(page);
}

export async function text(page, selector) {
  return (await page.textContent(selector)).trim();
}

export async function visible(page, selector) {
  return page.isVisible(selector);
}

// The ids of the visible buttons, in document order.
export async function visibleButtons(page) {
  // Buttons and anything else made focusable on purpose (the history graph).
  return page.evaluate(() => Array.from(document.querySelectorAll('button, [tabindex="0"]'))
    .filter((b) => b.getClientRects().length > 0 && getComputedStyle(b).visibility !== 'hidden')
    .map((b) => b.id || b.getAttribute('data-theme-choice') || b.textContent.trim()));
}

// Presses Tab until focus comes back round, returning what received focus.
export async function tabOrder(page, limit = 40) {
  const seen = [];
  await page.evaluate(() => { if (document.activeElement) document.activeElement.blur(); });
  for (let i = 0; i < limit; i += 1) {
    await page.keyboard.press('Tab');
    const info = await page.evaluate(() => {
      const el = document.activeElement;
      if (!el || el === document.body) return null;
      const style = getComputedStyle(el);
      return {
        id: el.id || el.getAttribute('data-theme-choice') || el.textContent.trim(),
        outline: style.outlineStyle !== 'none' && parseFloat(style.outlineWidth) >= 1,
      };
    });
    if (!info) continue;
    if (seen.length && info.id === seen[0].id) break;
    seen.push(info);
  }
  return seen;
}

export { sent };
