// One headless Chromium for the whole run, and pages opened the way the native shell
// opens them: from file:// with the document-start globals and the message handlers.
import fs from 'node:fs';
import path from 'node:path';
import { fileURLToPath, pathToFileURL } from 'node:url';

const here = path.dirname(fileURLToPath(import.meta.url));

async function loadPlaywright() {
  try {
    return (await import('playwright-core')).chromium;
  } catch (err) {
    throw new Error(`playwright-core is not installed in tests/pages (${err.code || err.message}); `
      + 'run scripts/install-deps, or `npm ci` in tests/pages');
  }
}
export const repoRoot = path.resolve(here, '../../..');
export const resourcesDir = path.join(repoRoot, 'resources');
export const fixturesDir = path.resolve(here, '../fixtures');

export const TOKEN = '6F1C2A9E-3B4D-4E5F-8A7B-1C2D3E4F5A6B';

export const SIZES = {
  index: { width: 320, height: 188 },
  expanded: { width: 380, height: 500 },
  stagec: { width: 380, height: 500 },
  menubar: { width: 340, height: 440 },
};

// The main window's web view carries four handlers; the popover's only "theme".
export const HANDLERS = {
  index: ['size', 'stagec', 'theme', 'heat'],
  expanded: ['size', 'stagec', 'theme', 'heat'],
  stagec: ['size', 'stagec', 'theme', 'heat'],
  menubar: ['theme'],
};

// Without these, a machine with no network fills the log with refused connections.
const CHROMIUM_ARGS = [
  '--no-sandbox',
  '--disable-gpu',
  '--disable-quic',
  '--no-first-run',
  '--disable-background-networking',
  '--disable-component-update',
  '--disable-sync',
];

export function chromiumPath() {
  const candidates = [process.env.VELMORA_CHROMIUM, '/usr/bin/chromium', '/usr/bin/chromium-browser'];
  const found = candidates.find((p) => p && fs.existsSync(p));
  if (!found) {
    throw new Error('Chromium was not found (looked for /usr/bin/chromium); run scripts/install-deps '
      + 'or point VELMORA_CHROMIUM at a Chromium executable');
  }
  return found;
}

// Playwright gives every launch a fresh temporary profile directory of its own.
export async function launchBrowser() {
  const chromium = await loadPlaywright();
  return chromium.launch({ executablePath: chromiumPath(), headless: true, args: CHROMIUM_ARGS });
}

export function readFixture(kind, name) {
  return JSON.parse(fs.readFileSync(path.join(fixturesDir, kind, `${name}.json`), 'utf8'));
}

export function pageUrl(name, query) {
  const url = pathToFileURL(path.join(resourcesDir, `${name}.html`));
  Object.entries(query || {}).forEach(([k, v]) => url.searchParams.set(k, v));
  return url.href;
}

// Runs in the page before any of its own scripts, as the native user script does, and
// also records every timer or animation frame the page asks for.
function documentStart({ token, theme, stage, demo, handlers }) {
  if (token !== null) window.__HEAT_TOKEN__ = token;
  if (theme !== null) window.__HEAT_THEME__ = theme;
  if (stage !== null) window.__HEAT_STAGE__ = stage;
  if (demo !== null) window.__HEAT_DEMO__ = demo;
  window.__sent = [];
  window.__errors = [];
  const messageHandlers = {};
  handlers.forEach((name) => {
    messageHandlers[name] = {
      postMessage(body) { window.__sent.push({ name, body: JSON.parse(JSON.stringify(body)) }); },
    };
  });
  window.webkit = { messageHandlers };
  window.__timers = { interval: 0, timeout: 0, frame: 0 };
  // The tests' own way to wait for the next frame, which the count leaves out.
  window.__testFrame = window.requestAnimationFrame.bind(window);
  const wrap = (key, fn) => function (...args) { window.__timers[key] += 1; return fn.apply(this, args); };
  window.setInterval = wrap('interval', window.setInterval);
  window.setTimeout = wrap('timeout', window.setTimeout);
  window.requestAnimationFrame = wrap('frame', window.requestAnimationFrame);
}

// Opening a tab costs a new renderer process, so tabs are kept and reused: each use
// installs its own document-start script, emulation and window size, then navigates.
const idleTabs = [];

async function newTab(browser) {
  const context = await browser.newContext();
  const page = await context.newPage();
  const tab = { context, page, errors: [] };
  page.on('pageerror', (err) => tab.errors.push(err));
  page.on('console', (msg) => { if (msg.type() === 'error') tab.errors.push(new Error(msg.text())); });
  return tab;
}

// The kept tabs die with their browser.
export function forgetTabs() {
  idleTabs.length = 0;
}

export async function openPage(browser, name, options = {}) {
  const tab = idleTabs.pop() || await newTab(browser);
  const { page, context } = tab;
  tab.errors = [];
  await page.setViewportSize(SIZES[name]);
  await page.emulateMedia({
    colorScheme: options.colorScheme || 'light',
    reducedMotion: options.reducedMotion || 'no-preference',
  });
  // The native side's own document-start text, when a test wants it verbatim.
  const nativeScript = options.nativeScript ? await page.addInitScript({ content: options.nativeScript }) : null;
  const script = await page.addInitScript(documentStart, {
    token: options.token === undefined ? TOKEN : options.token,
    theme: options.theme === undefined ? 'light' : options.theme,
    stage: options.stage === undefined ? null : options.stage,
    demo: options.demo === undefined ? null : options.demo,
    handlers: options.handlers || HANDLERS[name],
  });
  await page.goto(pageUrl(name, options.query));
  const close = async () => {
    await script.dispose();
    if (nativeScript) await nativeScript.dispose();
    context.removeAllListeners('request');
    await page.goto('about:blank');
    idleTabs.push(tab);
  };
  return { page, context, errors: tab.errors, close };
}

export async function sent(page) {
  return page.evaluate(() => window.__sent.splice(0));
}

export async function renderView(page, view, mode) {
  await page.evaluate(([v, m]) => window.heatC && window.heatC.render(v, m), [view, mode]);
}

export async function renderLive(page, live) {
  await page.evaluate((l) => window.heatLive && window.heatLive.render(l), live);
}

export function screenshotDir() {
  const dir = process.env.VELMORA_SCREENSHOT_DIR
    || path.join(repoRoot, 'build', 'pages-screenshots');
  fs.mkdirSync(dir, { recursive: true });
  return dir;
}

export async function screenshot(page, fileName) {
  await page.screenshot({ path: path.join(screenshotDir(), `${fileName}.png`), animations: 'disabled' });
}
