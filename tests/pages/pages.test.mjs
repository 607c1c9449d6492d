// Browser tests of the four pages in headless Chromium. One browser serves every suite.
import { after } from 'node:test';
import { closeBrowser } from './support/session.mjs';
import './suites/index.mjs';

after(closeBrowser);
