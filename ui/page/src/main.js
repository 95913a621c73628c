// Starts the page: shows the initial state, then redraws on every snapshot
// the launcher sends and turns clicks into commands.

import { connectBridge } from './bridge.js';
import { TransferRate } from './rate.js';
import { INITIAL_SNAPSHOT, parseSnapshot, toView } from './state.js';
import { TEXT } from './text.js';
import { applyLanguage, wireCommands } from './views/chrome.js';
import { renderFooter } from './views/footer.js';
import { renderHero } from './views/hero.js';
import { renderSchedule } from './views/schedule.js';
import { showToast } from './views/toasts.js';

const COUNTDOWN_TICK_MS = 1000;

// The page's own origin, from where it was loaded: the two shells serve it
// from different schemes, so it is never written into the page.
const pageOrigin = `${location.protocol}//${location.host}/`;
const rate = new TransferRate();
let view = null;
let language = null;
let lastNotice = null;

function render(next) {
  const previous = view;
  view = next;
  const words = TEXT[view.language];
  if (view.language !== language) {
    language = view.language;
    applyLanguage(language);
  }
  if (view.phase !== 'downloading' || previous?.phase !== 'downloading') rate.reset();
  const estimate = view.phase === 'downloading'
    ? rate.update(view.transfer.downloadedBytes, view.transfer.totalBytes, performance.now()) : null;
  renderHero(view, words);
  renderSchedule(view, words, new Date());
  renderFooter(view, words, estimate);
  // A notice stays in the snapshots while it is current; it becomes a toast once.
  const noticeKey = view.notice && `${view.notice.kind}\n${view.notice.message}`;
  if (view.notice && noticeKey !== lastNotice) showToast(view.notice, words);
  lastNotice = noticeKey;
}

const send = connectBridge((text) => {
  const snapshot = parseSnapshot(text);
  if (snapshot) render(toView(snapshot, pageOrigin));
});
wireCommands((command) => send(JSON.stringify(command)));
render(toView(INITIAL_SNAPSHOT, pageOrigin));
setInterval(() => renderSchedule(view, TEXT[view.language], new Date()), COUNTDOWN_TICK_MS);
