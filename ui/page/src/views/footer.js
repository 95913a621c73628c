// The footer: status and error lines, the progress of the current work and
// the buttons that start it.

import { byId, setText, show } from '../dom.js';
import { formatBytes, formatDuration, formatNumber, shortenMiddle } from '../format.js';
import { fill, isolate } from '../text.js';

const CURRENT_FILE_LIMIT = 64;
const BUSY_PHASES = ['connecting', 'checking'];
const WORKING_PHASES = ['downloading', 'verifying'];

// `estimate` is the smoothed {bytesPerSecond, secondsLeft}, or null while unsteady.
export function renderFooter(view, words, estimate) {
  const { phase, language, transfer } = view;
  const busy = BUSY_PHASES.includes(phase);
  const working = WORKING_PHASES.includes(phase);

  setText(byId('status'), view.status || (phase === 'connecting' ? words.connecting : ''));
  setText(byId('error'), view.lastError);

  show(byId('progress'), working);
  const bar = byId('progress-bar');
  bar.setAttribute('aria-valuenow', String(view.percent));
  bar.setAttribute('aria-valuetext', `${view.percent}%`);
  byId('progress-fill').style.transform = `scaleX(${view.progress})`;
  setText(byId('percent'), `${view.percent}%`);
  setText(byId('bytes'), transfer.totalBytes > 0
    ? `${formatBytes(transfer.downloadedBytes, language)} / ${formatBytes(transfer.totalBytes, language)}` : '');
  setText(byId('files'), transfer.filesTotal > 0
    ? fill(words.files, { done: formatNumber(transfer.filesDone, language), total: formatNumber(transfer.filesTotal, language) }) : '');
  setText(byId('speed'), estimate ? fill(words.speed, { rate: formatBytes(estimate.bytesPerSecond, language) }) : '');
  setText(byId('time-left'), estimate ? fill(words.timeLeft, { time: formatDuration(estimate.secondsLeft, language) }) : '');
  const currentFile = byId('current-file');
  setText(currentFile, shortenMiddle(transfer.currentFile, CURRENT_FILE_LIMIT));
  currentFile.title = transfer.currentFile;

  const main = byId('main-button');
  main.dataset.command = view.main.command;
  main.disabled = !view.main.enabled;
  main.classList.toggle('busy', busy);
  main.setAttribute('aria-busy', String(busy));
  setText(byId('main-label'), view.main.label || words[view.main.command]);
  const another = byId('play-another');
  show(another, view.main.command === 'play');
  another.disabled = !view.canPlay;

  byId('repair').disabled = !view.canRepair || busy || working;
  byId('check-again').disabled = busy || working;
  setText(byId('version'), view.version && fill(words.version, { version: isolate(view.version) }));
}
