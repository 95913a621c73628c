// Time from navigation to the first snapshot drawn, in Debian's Chromium,
// with the built page served as the launcher serves it. The stand-in native
// side sends the snapshot when the page has loaded, as the shells do; the
// time is taken at the first frame painted after it.
// Usage (after building the linux preset): node bench/page_load_bench.mjs [runs]
import { ORIGIN, launchBrowser, newLauncherPage } from '../tests/page/harness.mjs';
import { STATES } from '../tests/page/states.mjs';

const runs = Number(process.argv[2] ?? 30);
const snapshot = JSON.stringify(STATES['long-note']);

function sendOnLoad(text) {
  window.addEventListener('load', () => {
    window.__deliver(text);
    requestAnimationFrame(() => requestAnimationFrame(() => { window.__drawnAt = performance.now(); }));
  });
}

const browser = await launchBrowser();
const times = [];
for (let run = 0; run < runs; run += 1) {
  const { page, context } = await newLauncherPage(browser);
  await page.addInitScript(sendOnLoad, snapshot);
  await page.goto(ORIGIN);
  await page.waitForFunction(() => window.__drawnAt !== undefined);
  times.push(await page.evaluate(() => window.__drawnAt));
  await context.close();
}
await browser.close();
times.sort((a, b) => a - b);
const at = (q) => times[Math.min(times.length - 1, Math.floor(q * times.length))].toFixed(1);
console.log(`navigation to first snapshot drawn, ${runs} loads of the 32-event state: median ${at(0.5)} ms, p90 ${at(0.9)} ms, min ${at(0)} ms, max ${at(1)} ms`);
