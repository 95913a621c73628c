// Where each weekly event stands at a given moment. The launcher gives
// events as a day of the week (0 Sunday) and minutes after midnight, on the
// UTC clock or the player's own; the week wraps, so an event that ended
// earlier today is next due in a week.

import { MINUTES_PER_DAY } from './state.js';

const SECONDS_PER_DAY = MINUTES_PER_DAY * 60;
const SECONDS_PER_WEEK = 7 * SECONDS_PER_DAY;

// Seconds since Sunday 00:00 on the chosen clock.
export function secondOfWeek(date, utc) {
  const [day, hours, minutes, seconds] = utc
    ? [date.getUTCDay(), date.getUTCHours(), date.getUTCMinutes(), date.getUTCSeconds()]
    : [date.getDay(), date.getHours(), date.getMinutes(), date.getSeconds()];
  return day * SECONDS_PER_DAY + hours * 3600 + minutes * 60 + seconds;
}

// Events with their standing: running ones first (soonest to end), then the
// rest by how soon they start. `daysAway` counts calendar days to the next
// start (0 today), for the day label.
export function scheduleEvents(events, now, utc) {
  const nowSecond = secondOfWeek(now, utc);
  const today = Math.floor(nowSecond / SECONDS_PER_DAY);
  return events
    .map((event) => {
      const start = event.dayOfWeek * SECONDS_PER_DAY + event.startMinutes * 60;
      const end = event.dayOfWeek * SECONDS_PER_DAY + event.endMinutes * 60;
      const active = nowSecond >= start && nowSecond < end;
      const untilStart = (start - nowSecond + SECONDS_PER_WEEK) % SECONDS_PER_WEEK;
      return {
        ...event,
        active,
        secondsLeft: active ? end - nowSecond : 0,
        secondsUntil: active ? 0 : untilStart,
        daysAway: active ? 0 : (event.dayOfWeek - today + 7) % 7 || (start < nowSecond ? 7 : 0),
      };
    })
    .sort((a, b) => (b.active - a.active) || (a.active ? a.secondsLeft - b.secondsLeft : a.secondsUntil - b.secondsUntil));
}
