// A browser for a check, without what phones home.

import {existsSync, mkdtempSync, rmSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join} from 'node:path';

const Switches = [
  '--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
  '--disable-background-networking', '--disable-component-update', '--disable-sync',
  '--autoplay-policy=no-user-gesture-required',
];

export function skip(reason) {
  console.log(`skipped: ${reason}`);
  process.exit(0);
}

// Starts it with an empty profile; close() ends it and takes the profile away.
export async function startBrowser(executablePath) {
  if (!existsSync(executablePath)) skip('the page needs chromium');
  let puppeteer;
  try {
    puppeteer = (await import('puppeteer-core')).default;
  } catch {
    skip('the page needs puppeteer-core: npm ci in verify/gates/app');
  }
  const userDataDir = mkdtempSync(join(tmpdir(), 'voxloc-browser-'));
  const browser = await puppeteer.launch({
    executablePath, userDataDir, args: Switches, headless: true,
  });
  return {
    // A page, and what it complained about or asked others for.
    async open(url, {width = 1280, height = 900, theme = 'light', isMobile = false} = {}) {
      const page = await browser.newPage();
      const complaints = [];
      page.on('console', (message) => {
        if (message.type() !== 'log') complaints.push(`console: ${message.text()}`);
      });
      page.on('pageerror', (error) => complaints.push(`error: ${error.message}`));
      page.on('request', (request) => {
        const isOwn = request.url() === url || request.url().startsWith('blob:');
        if (!isOwn) complaints.push(`asked for ${request.url()}`);
      });
      await page.setViewport({width, height, isMobile, hasTouch: isMobile});
      await page.emulateMediaFeatures([{name: 'prefers-color-scheme', value: theme}]);
      const began = performance.now();
      await page.goto(url);
      await settled(page);
      return {page, complaints, seconds: (performance.now() - began) / 1000};
    },
    async close() {
      await browser.close();
      rmSync(userDataDir, {recursive: true, force: true, maxRetries: 5});
    },
  };
}

// After the next two pictures on the screen.
export function settled(page) {
  return page.evaluate(
    () => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))),
  );
}
