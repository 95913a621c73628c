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
const marks = { 'page received': [], 'script run (DOMContentLoaded)': [], 'pictures loaded (load)': [], 'first snapshot drawn': [] };
for (let run = 0; run < runs; run += 1) {
  const { page, context } = await newLauncherPage(browser);
  await page.addInitScript(sendOnLoad, snapshot);
  await page.goto(ORIGIN);
  await page.waitForFunction(() => window.__drawnAt !== undefined);
  const navigation = await page.evaluate(() => {
    const entry = performance.getEntriesByType('navigation')[0];
    return [entry.responseEnd, entry.domContentLoadedEventEnd, entry.loadEventStart, window.__drawnAt];
  });
  Object.values(marks).forEach((list, i) => list.push(navigation[i]));
  await context.close();
}
await browser.close();
const median = (list) => list.sort((a, b) => a - b)[Math.floor(list.length / 2)].toFixed(1);
console.log(`${runs} loads of the 32-event state, milliseconds after navigation started (median, min, max):`);
for (const [name, list] of Object.entries(marks)) {
  console.log(`  ${name.padEnd(32)} ${median(list)}  ${Math.min(...list).toFixed(1)}  ${Math.max(...list).toFixed(1)}`);
}
