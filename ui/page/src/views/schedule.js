// The side column: this week's events with live countdowns, and the
// community links.

import { byId, element, replaceIfChanged, setText } from '../dom.js';
import { formatClock, formatDuration, weekdayName } from '../format.js';
import { fill } from '../text.js';
import { scheduleEvents } from '../week.js';

const MODE_WORDS = { global: 'modeGlobal', personal: 'modePersonal', both: 'modeBoth' };

export function renderSchedule(view, words, now) {
  const { language } = view;
  setText(byId('clock-label'), view.utcClock ? words.timesUtc : words.timesLocal);
  const events = scheduleEvents(view.events, now, view.utcClock);
  const items = events.map((event) => eventItem(event, words, language));
  if (items.length === 0) items.push(element('li', { className: 'event-empty', textContent: words.noEvents }));
  byId('event-list').replaceChildren(...items);

  replaceIfChanged(byId('links'), language + JSON.stringify(view.links), () =>
    view.links.map(({ name, url }) => element('button', {
      type: 'button', className: `community-link link-${name}`, textContent: words[name],
      dataset: { command: 'openExternal', url },
    })));
}

function eventItem(event, words, language) {
  const state = event.active ? 'active' : 'incoming';
  const badge = event.iconId
    ? element('img', { className: 'event-icon', src: `/icons/${event.iconId}_${state}.png`, alt: '', width: 40, height: 40 })
    : element('span', { className: 'event-icon event-icon-blank', 'aria-hidden': 'true' });
  const day = event.active ? words.now
    : event.daysAway === 0 ? words.today
      : event.daysAway === 1 ? words.tomorrow : weekdayName(event.dayOfWeek, language);
  // Left-to-right isolated, or Arabic text would show the range back to front.
  const hours = `\u2066${formatClock(event.startMinutes)}–${formatClock(event.endMinutes)}\u2069`;
  const details = [hours, words[MODE_WORDS[event.mode]]];
  if (event.mode !== 'global' && event.activationMinutes > 0) {
    details.push(fill(words.activation, { time: formatDuration(event.activationMinutes * 60, language) }));
  }
  const countdown = event.active
    ? fill(words.timeLeft, { time: formatDuration(event.secondsLeft, language) })
    : fill(words.startsIn, { time: formatDuration(event.secondsUntil, language) });
  return element('li', { className: `event event-${state}` }, [
    badge,
    element('div', { className: 'event-text' }, [
      element('span', { className: 'event-title', dir: 'auto', textContent: event.title }),
      element('span', { className: 'event-details', textContent: details.join(' · ') }),
    ]),
    element('div', { className: 'event-when' }, [
      element('span', { className: 'event-day', textContent: day }),
      element('span', { className: 'event-countdown', textContent: countdown }),
    ]),
  ]);
}
