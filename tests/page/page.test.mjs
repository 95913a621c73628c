// The built page in Chromium, served as the launcher serves it. Stories walk
// the page through the launcher's states and check what a player sees and
// what reaches the native side.
import assert from 'node:assert/strict';
import { mkdir } from 'node:fs/promises';
import { after, before, test } from 'node:test';
import AxeBuilder from '@axe-core/playwright';
import { ORIGIN, launchBrowser, openPage } from './harness.mjs';
import { NOW, STATES, arabic } from './states.mjs';

let browser;
before(async () => { browser = await launchBrowser(); });
after(() => browser.close());

const textOf = (page, selector) => page.locator(selector).innerText();
const names = (commands) => commands.map((text) => JSON.parse(text).command);
const [firstDownload, download] = STATES.downloading;

test('a player goes from connecting to play, and nothing leaves the page but commands', async () => {
  const { page, send, takeCommands, requests } = await openPage(browser, { time: NOW });
  assert.equal(await textOf(page, '#status'), 'Connecting to the server…');
  for (const button of ['#main-button', '#repair', '#check-again']) await page.click(button, { force: true });
  assert.deepEqual(await takeCommands(), [], 'disabled buttons send nothing');

  for (const junk of ['not json', '[1]', '"text"', 'null', '{"phase":']) await send(junk);
  assert.equal(await textOf(page, '#status'), 'Connecting to the server…');

  // The main button: Play only when the game can start and nothing needs patching.
  const labels = [[false, true, 'INSTALL 215', 'patch'], [true, true, 'INSTALL 215', 'patch'], [true, false, 'PLAY NOW', 'play']];
  for (const [canPlay, canPatch, label, command] of labels) {
    await send({ ...STATES['patch-available'], canPlay, canPatch, patchLabel: 'Install 215', playLabel: 'Play now' });
    assert.equal(await textOf(page, '#main-button'), label);
    await page.click('#main-button');
    assert.deepEqual(names(await takeCommands()), [command]);
  }

  await send(firstDownload);
  assert.equal(await textOf(page, '#speed'), '', 'no speed before it has settled');
  await page.clock.runFor(3000);
  await send(download);
  assert.equal(await textOf(page, '.progress-figures'), '37%\n610 MB / 1.7 GB\n112 / 301 files\n9.5 MB/s\n2 min 01 s left');
  assert.equal(await textOf(page, '#current-file'), 'data/maps/northern_citadel/terra…tail/terrain_high_detail_04.pak');
  assert.equal(await page.getAttribute('#current-file', 'title'), download.currentFile);
  for (const [progress, shown] of [[1.7, '100%'], [-0.5, '0%'], [0.999, '99%'], ['0.5', '0%']]) {
    await send({ ...download, progress });
    assert.equal(await textOf(page, '#percent'), shown);
  }

  assert.ok(requests.length > 0 && requests.every((url) => url.startsWith(ORIGIN)), requests.join(' '));
  assert.deepEqual(await page.evaluate(() => window.__violations), [], 'the page never tried what its policy forbids');
  assert.equal(await page.evaluate(() => fetch('/').then(() => 'fetched', () => 'blocked')), 'blocked');
});

test('the feed: patch-note cuts, the cover only from our host, events on either clock, links', async () => {
  // Riyadh is UTC+3: Monday 21:30 there while it is 18:30 in UTC.
  const { page, send, takeCommands, requests } = await openPage(browser, { time: NOW, timezoneId: 'Asia/Riyadh' });
  const guildWar = STATES['up-to-date'].feed.events[0];
  const note = { title: `  ${'T'.repeat(125)}  `, summary: 'S'.repeat(401), publishedAt: '2026-11-20', coverImage: 'https://example.org/cover.png', url: 'https://vardeni.example/n' };
  const events = ['not an event', { ...guildWar, title: '' }, { ...guildWar, title: 'Day seven', dayOfWeek: 7 },
    { ...guildWar, title: 'Unknown icon', iconId: 4, dayOfWeek: 2 }, guildWar, { ...guildWar, title: 'Fractional icon', iconId: 3.5, dayOfWeek: 3 }];
  const feed = (utcClock, patchNote) => send({ ...STATES['up-to-date'], links: { website: '', discord: 'https://discord.example/v', shop: '', register: 'https://vardeni.example/r' }, feed: { utcClock, patchNote, events } });

  await feed(true, note);
  assert.equal(await textOf(page, '#note-title'), `${'T'.repeat(119)}…`);
  assert.equal((await textOf(page, '#note-summary')).length, 400);
  assert.equal(await textOf(page, '#note-date'), 'Published 20 November 2026');
  assert.equal(await page.isVisible('#note-cover'), false);
  assert.deepEqual(await page.locator('.event-title').allInnerTexts(), ['Guild War', 'Unknown icon', 'Fractional icon']);
  assert.deepEqual(await page.locator('.event img').evaluateAll((icons) => icons.map((icon) => icon.getAttribute('src'))), ['/icons/7_active.png']);
  assert.deepEqual(await page.locator('.event-active .event-when').allInnerTexts(), ['Live now\n1 h 30 min left']);
  assert.equal(await textOf(page, '#clock-label'), 'Times in UTC');

  await feed(false, { ...note, coverImage: `${ORIGIN}media/cover` });
  assert.equal(await textOf(page, '#clock-label'), 'Local time');
  assert.equal(await textOf(page, '.event:last-child .event-when'), 'Monday\nin 6 d 20 h');
  await page.locator('#note-cover').evaluate((image) => image.decode());
  assert.ok(requests.includes(`${ORIGIN}media/cover`) && !requests.some((url) => url.startsWith('https://example.org')));

  await page.click('#note-more');
  await page.click('text=Create account');
  assert.deepEqual(await page.locator('.community-link').allInnerTexts(), ['Discord', 'Create account']);
  assert.deepEqual(await takeCommands(), ['{"command":"openExternal","url":"https://vardeni.example/n"}', '{"command":"openExternal","url":"https://vardeni.example/r"}']);

  await feed(false, { ...note, title: '   ' });
  assert.equal(await page.isVisible('#note'), false);
  assert.equal(await textOf(page, '#heading-title'), 'Vardeni Online');
});

test('notices become toasts, newest first, gone after eight seconds or when dismissed', async () => {
  const { page, send } = await openPage(browser, { time: NOW });
  const notice = (kind, message) => send({ ...STATES['up-to-date'], notice: { kind, message } });
  const toasts = () => page.locator('.toast').evaluateAll((all) => all.map((toast) => `${toast.className}: ${toast.innerText}`));
  await notice('error', 'First');
  await notice('error', 'First');
  await page.clock.runFor(4000);
  await notice('mystery', 'Second');
  assert.deepEqual(await toasts(), ['toast toast-info: Second', 'toast toast-error: First']);
  await page.clock.runFor(4000);
  assert.deepEqual(await toasts(), ['toast toast-info: Second']);
  await page.clock.runFor(3999);
  assert.equal((await toasts()).length, 1);
  await page.clock.runFor(1);
  assert.deepEqual(await toasts(), []);
  await notice('success', 'Third');
  await page.click('.toast-dismiss');
  assert.deepEqual(await toasts(), []);
});

test('in Arabic the layout mirrors, and every command reaches the WebKitGTK handler', async () => {
  const { page, send, takeCommands } = await openPage(browser, { engine: 'webkit', time: NOW });
  await send(arabic({ ...STATES.orphans, notice: { kind: 'info', message: 'مرحبا' } }));
  assert.deepEqual(await page.evaluate(() => [document.documentElement.dir, document.documentElement.lang]), ['rtl', 'ar']);
  const box = async (selector) => (await page.locator(selector).boundingBox()).x;
  assert.ok(await box('#main-button') < await box('#status'), 'the main button sits on the left');
  assert.ok(await box('.side') < await box('.hero'), 'the events sit on the left');
  assert.ok(await box('.toast') < 100, 'toasts sit in the top left corner');
  assert.equal(await textOf(page, '#orphans-more'), 'و10 غيرها');

  const clicks = ['#language-en', '#language-ar', '[data-command=toggleSettings]', '[data-command=minimize]', '[data-command=close]',
    '#main-button', '#play-another', '#repair', '#check-again', '[data-command=openLog]', '#remove-orphans', '.link-discord'];
  for (const selector of clicks) await page.click(selector);
  await page.click('.brand');
  for (const edge of await page.locator('.resize-edge').all()) await edge.dispatchEvent('mousedown', { button: 0 });
  await send(arabic({ ...STATES['patch-available'] }));
  await page.click('#main-button');
  const commands = await takeCommands();
  assert.deepEqual(new Set(names(commands)), new Set(['languageEN', 'languageAR', 'toggleSettings', 'minimize', 'close', 'play', 'playMulti',
    'repair', 'refresh', 'openLog', 'removeOrphans', 'openExternal', 'startDrag', 'startResize', 'patch']));
  assert.deepEqual(commands.filter((text) => text.includes('startResize')).map((text) => JSON.parse(text).edge),
    ['top', 'bottom', 'left', 'right', 'topLeft', 'topRight', 'bottomLeft', 'bottomRight']);
});

test('no serious accessibility findings in either language', async () => {
  for (const snapshot of [STATES['long-note'], arabic(STATES.orphans), STATES.error]) {
    const { page, send } = await openPage(browser, { time: NOW });
    await send(snapshot);
    await page.clock.resume();  // axe waits on timers
    const { violations } = await new AxeBuilder({ page }).analyze();
    const serious = violations.filter((v) => ['serious', 'critical'].includes(v.impact));
    assert.deepEqual(serious.map((v) => `${v.id}: ${v.nodes.map((n) => n.target).join(' ')}`), []);
    await page.context().close();
  }
});

test('screenshots of every state in both languages and both sizes', async () => {
  const folder = process.env.VL_SCREENSHOT_DIR ?? new URL('../../build/page-screenshots/', import.meta.url).pathname;
  await mkdir(folder, { recursive: true });
  for (const size of [[1000, 640], [1500, 960]]) {
    for (const language of ['en', 'ar']) {
      const { page, send } = await openPage(browser, { time: NOW, size });
      for (const [name, state] of Object.entries(STATES)) {
        for (const [i, snapshot] of [state].flat().entries()) {
          if (i > 0) await page.clock.runFor(3000);
          await send(language === 'ar' ? arabic(snapshot) : snapshot);
        }
        await page.screenshot({ path: `${folder}/${name}-${language}-${size[0]}x${size[1]}.png`, animations: 'disabled' });
        await page.clock.runFor(8000);  // lets a toast go before the next state
      }
      await page.context().close();
    }
  }
});
