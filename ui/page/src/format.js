// Numbers, sizes, durations and dates in the player's language. Digits stay
// Latin in both languages so figures line up with the tabular font setting.

import { TEXT } from './text.js';

const numberFormats = {
  en: new Intl.NumberFormat('en', { maximumFractionDigits: 1 }),
  ar: new Intl.NumberFormat('ar-u-nu-latn', { maximumFractionDigits: 1 }),
};

export function formatNumber(value, language) {
  return numberFormats[language].format(value);
}

// 1536 -> "1.5 KB": powers of 1024, one decimal below 100 of a unit.
export function formatBytes(bytes, language) {
  const units = TEXT[language].units.bytes;
  let value = bytes;
  let unit = 0;
  while (value >= 1024 && unit < units.length - 1) {
    value /= 1024;
    unit += 1;
  }
  const shown = unit === 0 || value >= 100 ? Math.round(value) : Math.round(value * 10) / 10;
  return `${formatNumber(shown, language)} ${units[unit]}`;
}

// The two largest parts of a duration: "2 d 04 h", "1 h 05 min", "3 min 20 s",
// "45 s"; a second part of zero is left out ("1 h", not "1 h 00 min").
export function formatDuration(totalSeconds, language) {
  const { day, hour, minute, second } = TEXT[language].units;
  const seconds = Math.max(0, Math.round(totalSeconds));
  const parts = [
    [Math.floor(seconds / 86400), day],
    [Math.floor(seconds / 3600) % 24, hour],
    [Math.floor(seconds / 60) % 60, minute],
    [seconds % 60, second],
  ];
  const first = seconds < 60 ? 3 : parts.findIndex(([amount]) => amount > 0);
  const [lead, next] = parts.slice(first, first + 2);
  const text = `${lead[0]} ${lead[1]}`;
  return next && next[0] > 0 ? `${text} ${String(next[0]).padStart(2, '0')} ${next[1]}` : text;
}

// Minutes after midnight as "HH:MM".
export function formatClock(minutes) {
  const pad = (n) => String(n).padStart(2, '0');
  return `${pad(Math.floor(minutes / 60) % 24)}:${pad(minutes % 60)}`;
}

// The patch note's date: shown as a calendar date when it reads as one,
// else as the launcher sent it. Read on UTC so a bare date never slips a day.
export function formatDate(text, language) {
  const date = new Date(text);
  if (text === '' || Number.isNaN(date.getTime())) return text;
  const locale = language === 'ar' ? 'ar-u-nu-latn' : 'en-GB';
  return new Intl.DateTimeFormat(locale, { dateStyle: 'long', timeZone: 'UTC' }).format(date);
}

// Day names, Sunday first, in the player's language (made once: Intl formatters are slow to build).
const weekdayNames = {};
export function weekdayName(day, language) {
  const sunday = Date.UTC(2024, 0, 7);
  weekdayNames[language] ??= Array.from({ length: 7 }, (_, i) =>
    new Intl.DateTimeFormat(language, { weekday: 'long', timeZone: 'UTC' }).format(sunday + i * 86400000));
  return weekdayNames[language][day];
}

// Keeps both ends of a long path: "data/maps/…/terrain_04.pak".
export function shortenMiddle(text, limit) {
  const chars = Array.from(text);
  if (chars.length <= limit) return text;
  const head = Math.ceil((limit - 1) / 2);
  const tail = limit - 1 - head;
  return chars.slice(0, head).join('') + '…' + chars.slice(chars.length - tail).join('');
}
