// Opens the built page in Debian's Chromium the way the launcher serves it:
// on the private origin, with the asset handler's headers (so its content
// security policy is in force), and with a stand-in for the native side
// that records every command and delivers snapshots.
import { readFile } from 'node:fs/promises';
import { join } from 'node:path';
import { chromium } from 'playwright-core';

export const ORIGIN = 'https://launcher.vardeni.invalid/';
const ROOT = new URL('../../', import.meta.url).pathname;
export const PAGE_FILE = process.env.VL_PAGE_FILE ?? join(ROOT, 'build/linux/generated/resources/page.html');
const RESOURCES = join(ROOT, 'ui/resources');
// The asset handler's answers: the page with its policy, the files of ui/resources, a cover picture.
const POLICY = "default-src 'self' 'unsafe-inline' data:; connect-src 'none'; frame-src 'none'; object-src 'none'";
const TYPES = { ttf: 'font/ttf', png: 'image/png', jpg: 'image/jpeg' };
function answer(path) {
  if (path === '/') return [PAGE_FILE, { 'Content-Type': 'text/html; charset=utf-8', 'Content-Security-Policy': POLICY }];
  if (path === '/media/cover') return [join(RESOURCES, 'images/scene.jpg'), { 'Content-Type': TYPES.jpg }];
  const file = path?.match(/^\/(Cairo\.ttf|images\/(scene\.jpg|logo\.png)|icons\/\d+_(active|incoming)\.png)$/)?.[1];
  return file ? [join(RESOURCES, file), { 'Content-Type': TYPES[file.split('.').pop()] }] : null;
}

// Stand-ins for the two engines' message channels, installed before the page runs.
function installBridge(engine) {
  window.__commands = [];
  window.__violations = [];
  document.addEventListener('securitypolicyviolation', (event) => window.__violations.push(event.violatedDirective));
  if (engine === 'webkit') {
    window.webkit = { messageHandlers: { launcher: { postMessage: (text) => window.__commands.push(text) } } };
    window.__deliver = (text) => window.__launcherReceive(text);
    return;
  }
  const listeners = [];
  window.chrome = {
    webview: {
      postMessage: (text) => window.__commands.push(text),
      addEventListener: (type, listener) => type === 'message' && listeners.push(listener),
    },
  };
  window.__deliver = (text) => listeners.forEach((listener) => listener({ data: text }));
}

export async function launchBrowser() {
  return chromium.launch({
    executablePath: '/usr/bin/chromium',
    args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
      '--disable-background-networking', '--disable-component-update', '--disable-sync'],
  });
}

// A page in a fresh context, served like the launcher serves it, not yet
// navigated. `requests` lists every URL the page asks for.
export async function newLauncherPage(browser, { engine = 'webview2', size = [1000, 640], timezoneId = 'UTC' } = {}) {
  const context = await browser.newContext({ viewport: { width: size[0], height: size[1] }, timezoneId });
  context.setDefaultTimeout(5000);
  const page = await context.newPage();
  const requests = [];
  page.on('request', (request) => requests.push(request.url()));
  await context.route('**/*', async (route) => {
    const url = route.request().url();
    const path = url.startsWith(ORIGIN) ? url.slice(ORIGIN.length - 1).split(/[?#]/)[0] : null;
    const found = answer(path);
    if (found) return route.fulfill({ status: 200, headers: { 'Cache-Control': 'no-store', ...found[1] }, body: await readFile(found[0]) });
    return route.fulfill({ status: 404, headers: { 'Content-Length': '0' }, body: '' });
  });
  await page.addInitScript(installBridge, engine);
  return { page, requests, context };
}

// The page loaded with its clock paused at `time`, and helpers to talk to it.
export async function openPage(browser, { time, ...options }) {
  const { page, requests } = await newLauncherPage(browser, options);
  await page.clock.install({ time: time.getTime() - 1000 });
  await page.clock.pauseAt(time);
  await page.goto(ORIGIN);
  await page.evaluate(() => document.fonts.ready);
  const send = (snapshot) => page.evaluate((text) => window.__deliver(text), typeof snapshot === 'string' ? snapshot : JSON.stringify(snapshot));
  // Commands sent since the last call, as the page wrote them.
  const takeCommands = () => page.evaluate(() => window.__commands.splice(0));
  return { page, requests, send, takeCommands };
}
