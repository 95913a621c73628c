// Snapshot in, view model out. The launcher sends its whole state as one
// JSON object; every rule about what of it the page may show lives here as
// pure functions, so the views only draw. A field of the wrong type counts
// as its default: a faulty snapshot shows less, never breaks the page.

export const NOTE_TITLE_LIMIT = 120;
export const NOTE_SUMMARY_LIMIT = 400;
export const NOTE_DATE_LIMIT = 40;
export const EVENT_TITLE_LIMIT = 120;
export const MINUTES_PER_DAY = 1440;
// The event badges the program carries; other ids show no icon.
export const ICON_IDS = new Set([1, 2, 3, 5, 7, 8, 9, 13, 14, 15, 20, 21, 22, 27, 28, 29, 30, 34, 36, 37, 38, 39]);
const EVENT_MODES = ['global', 'personal', 'both'];
const NOTICE_KINDS = ['info', 'success', 'error'];
const LINK_NAMES = ['website', 'discord', 'shop', 'register'];

// What the page shows before the first snapshot arrives.
export const INITIAL_SNAPSHOT = Object.freeze({
  phase: 'connecting', progress: 0, currentFile: '', currentFileProgress: 0,
  filesDone: 0, filesTotal: 0, downloadedBytes: 0, totalBytes: 0,
  orphanFiles: 0, orphanBytes: 0, orphanSample: [],
  status: '', lastError: '', version: '', title: '', subtitle: '', patchLabel: '', playLabel: '',
  language: 'en', canPatch: false, canPlay: false, canRepair: false, notice: null,
  maintenance: { active: false, text: '' },
  links: { website: '', discord: '', shop: '', register: '' },
  feed: { utcClock: false, patchNote: null, events: [] },
});

// The snapshot object in a message, or null for anything else (the message is then ignored).
export function parseSnapshot(text) {
  let value;
  try {
    value = JSON.parse(text);
  } catch {
    return null;
  }
  return isObject(value) ? value : null;
}

// Cuts to `limit` characters (code points), ending a cut text with "…".
export function cutText(text, limit) {
  const chars = Array.from(text);
  return chars.length <= limit ? text : chars.slice(0, limit - 1).join('') + '…';
}

export function toView(snapshot, pageOrigin) {
  const canPatch = flag(snapshot.canPatch);
  const canPlay = flag(snapshot.canPlay);
  const playing = canPlay && !canPatch;
  const progress = fraction(snapshot.progress);
  const feed = isObject(snapshot.feed) ? snapshot.feed : {};
  const maintenance = isObject(snapshot.maintenance) ? snapshot.maintenance : {};
  const links = isObject(snapshot.links) ? snapshot.links : {};
  const sample = Array.isArray(snapshot.orphanSample) ? snapshot.orphanSample.filter((p) => typeof p === 'string') : [];
  const orphanFiles = count(snapshot.orphanFiles);
  return {
    phase: text(snapshot.phase) || 'idle',
    language: snapshot.language === 'ar' ? 'ar' : 'en',
    progress,
    percent: Math.floor(progress * 100),
    status: text(snapshot.status),
    lastError: text(snapshot.lastError),
    version: text(snapshot.version),
    heading: { title: text(snapshot.title), subtitle: text(snapshot.subtitle) },
    main: playing
      ? { command: 'play', label: text(snapshot.playLabel), enabled: canPlay }
      : { command: 'patch', label: text(snapshot.patchLabel), enabled: canPatch },
    canPlay,
    canRepair: flag(snapshot.canRepair),
    transfer: {
      currentFile: text(snapshot.currentFile),
      currentFileProgress: fraction(snapshot.currentFileProgress),
      filesDone: count(snapshot.filesDone),
      filesTotal: count(snapshot.filesTotal),
      downloadedBytes: count(snapshot.downloadedBytes),
      totalBytes: count(snapshot.totalBytes),
    },
    orphans: orphanFiles === 0 ? null : {
      count: orphanFiles,
      bytes: count(snapshot.orphanBytes),
      sample,
      more: Math.max(0, orphanFiles - sample.length),
    },
    notice: readNotice(snapshot.notice),
    maintenance: { active: flag(maintenance.active), text: text(maintenance.text) },
    links: LINK_NAMES.map((name) => ({ name, url: text(links[name]) })).filter((link) => link.url !== ''),
    utcClock: flag(feed.utcClock),
    note: readNote(feed.patchNote, pageOrigin),
    events: Array.isArray(feed.events) ? feed.events.map(readEvent).filter(Boolean) : [],
  };
}

function readNote(note, pageOrigin) {
  if (!isObject(note)) return null;
  const title = cutText(text(note.title).trim(), NOTE_TITLE_LIMIT);
  if (title === '') return null;
  const cover = text(note.coverImage);
  return {
    title,
    summary: cutText(text(note.summary), NOTE_SUMMARY_LIMIT),
    publishedAt: cutText(text(note.publishedAt), NOTE_DATE_LIMIT),
    // Only our own host may supply the picture: the page loads nothing else.
    cover: cover.startsWith(pageOrigin) ? cover : '',
    url: text(note.url),
  };
}

function readEvent(event) {
  if (!isObject(event)) return null;
  const title = cutText(text(event.title), EVENT_TITLE_LIMIT);
  const { dayOfWeek, startMinutes, endMinutes } = event;
  if (title === '' || !inRange(dayOfWeek, 0, 6)) return null;
  // An event cannot run past midnight; one that claims to has no place on the week.
  if (!inRange(startMinutes, 0, MINUTES_PER_DAY - 1) || !inRange(endMinutes, startMinutes + 1, MINUTES_PER_DAY)) return null;
  const iconId = Number.isInteger(event.iconId) ? event.iconId : 0;
  return {
    title,
    iconId: ICON_IDS.has(iconId) ? iconId : 0,
    dayOfWeek,
    startMinutes,
    endMinutes,
    mode: EVENT_MODES.includes(event.mode) ? event.mode : 'global',
    activationMinutes: inRange(event.activationMinutes, 0, MINUTES_PER_DAY) ? event.activationMinutes : 0,
  };
}

function readNotice(notice) {
  if (!isObject(notice) || text(notice.message) === '') return null;
  return { kind: NOTICE_KINDS.includes(notice.kind) ? notice.kind : 'info', message: notice.message };
}

function isObject(value) {
  return typeof value === 'object' && value !== null && !Array.isArray(value);
}
function text(value) {
  return typeof value === 'string' ? value : '';
}
function flag(value) {
  return value === true;
}
function count(value) {
  return Number.isSafeInteger(value) && value >= 0 ? value : 0;
}
function fraction(value) {
  return Number.isFinite(value) ? Math.min(1, Math.max(0, value)) : 0;
}
function inRange(value, low, high) {
  return Number.isInteger(value) && value >= low && value <= high;
}
