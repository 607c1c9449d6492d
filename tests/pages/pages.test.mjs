// Browser tests of the four pages in headless Chromium. One browser serves every suite.
import { after } from 'node:test';
import { closeBrowser } from './support/session.mjs';
import './suites/index.mjs';
import './suites/expanded.mjs';
import './suites/stagec.mjs';
import './suites/menubar.mjs';
import './suites/forecast.mjs';
import './suites/cause.mjs';
import './suites/common.mjs';
import './suites/looks.mjs';
import './suites/engine.mjs';
import './suites/history.mjs';

after(closeBrowser);
