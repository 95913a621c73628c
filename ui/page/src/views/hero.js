// The left column: the patch note (or the launcher's heading when there is
// none), the maintenance banner above it and the panel of unknown files.

import { byId, element, replaceIfChanged, setText, show } from '../dom.js';
import { formatBytes, formatDate, formatNumber } from '../format.js';
import { fill } from '../text.js';

export function renderHero(view, words) {
  const { note, maintenance, orphans, language } = view;
  show(byId('maintenance'), maintenance.active);
  setText(byId('maintenance-text'), maintenance.text);

  show(byId('note'), note !== null);
  show(byId('heading'), note === null);
  if (note) {
    setText(byId('note-title'), note.title);
    setText(byId('note-summary'), note.summary);
    const date = formatDate(note.publishedAt, language);
    setText(byId('note-date'), date && fill(words.published, { date }));
    const cover = byId('note-cover');
    if (cover.getAttribute('src') !== note.cover) {
      if (note.cover) cover.src = note.cover;
      else cover.removeAttribute('src');
    }
    show(cover, note.cover !== '');
    const more = byId('note-more');
    more.dataset.url = note.url;
    show(more, note.url !== '');
  } else {
    setText(byId('heading-title'), view.heading.title || words.productName);
    setText(byId('heading-subtitle'), view.heading.subtitle);
  }

  show(byId('orphans'), orphans !== null);
  if (orphans) {
    setText(byId('orphans-summary'), fill(words.orphansSummary, {
      count: formatNumber(orphans.count, language),
      size: formatBytes(orphans.bytes, language),
    }));
    replaceIfChanged(byId('orphans-sample'), JSON.stringify(orphans.sample), () =>
      orphans.sample.map((path) => element('li', { dir: 'ltr', textContent: path })));
    setText(byId('orphans-more'), orphans.more > 0 ? fill(words.orphansMore, { count: formatNumber(orphans.more, language) }) : '');
    byId('remove-orphans').disabled = !view.canRepair;
  }
}
