// Lays out a week: schedules in, boxes out. Converts times. Only a Clock keeps a state.
//
// A wall time is what the appliance's clock shows, in seconds since that clock showed 1970-01-01
// 00:00. An epoch is in true seconds, a length in seconds. A day is the wall time of its midnight.
// Weekdays count from Sunday 0.

export const DAY = 86400;
const UNKNOWN_LENGTH = 1800; // what the appliance records without a length
const SMALLEST_BOX = 15 * 60; // a shorter box cannot be read
export const STEP = 5 * 60; // the mouse draws in steps

/** The wall time of "2026/11/25 12:30", "2026-11-25 12:30" or a date alone; NaN for no date. */
export function wallOf(text) {
  const [year, month, day, hour = 0, minute = 0] = text.match(/\d+/g)?.map(Number) ?? [];
  return Date.UTC(year, month - 1, day, hour, minute) / 1000;
}

export const dateText = (wall) => new Date(wall * 1000).toISOString().slice(0, 10);
export const timeText = (wall) => new Date(wall * 1000).toISOString().slice(11, 16);
export const isDate = (text) => /^\d{4}-\d\d-\d\d$/.test(text);
export const dayOf = (wall) => Math.floor(wall / DAY) * DAY;
export const weekdayOf = (wall) => new Date(wall * 1000).getUTCDay();
export const weekOf = (wall, firstWeekday) =>
  dayOf(wall) - ((weekdayOf(wall) - firstWeekday + 7) % 7) * DAY;

export const secondsOf = (length) => wallOf(`1970-01-01 ${length}`);
export const lengthText = (seconds) =>
  String(Math.floor(seconds / 3600)).padStart(2, "0") + timeText(seconds).slice(2);
export const serviceOf = (schedule) => parseInt(schedule.id, 10);

const browserOffset = (epoch) => -60 * new Date(epoch * 1000).getTimezoneOffset();

/**
 * The appliance's clock, as far as its answers show it.
 *
 * The server reads a date and a time with the UTC offset in force now, and no method tells the
 * offset of another date. So the clock learns: each schedule shows the offset at its start. For a
 * wanted wall time it takes the offset of the browser's zone if that agrees with everything
 * learned, otherwise that of the nearest known start. After a save the schedule is read back. If
 * the offset was wrong, its text has now taught the clock the right one, and it is moved once.
 */
export class Clock {
  #known = new Map(); // [wall, offset], one for each day and offset
  #zone;
  #zoneAgrees = true;
  #ahead = 0; // seconds by which the browser's clock is behind
  #offsetNow;

  constructor(zone = browserOffset) {
    this.#zone = zone;
    this.#offsetNow = zone(this.now());
  }

  /** Takes the wall time that the server shows for an epoch, to the minute. */
  learn(wall, epoch) {
    if (Number.isNaN(wall)) return;
    const offset = wall - Math.floor(epoch / 60) * 60;
    this.#known.set(`${dayOf(wall)} ${offset}`, [wall, offset]);
    this.#zoneAgrees &&= this.#zone(epoch) === offset;
  }

  /** Takes the wall time of now, to the minute, and its epoch. Offsets are quarters of an hour. */
  setNow(wall, epoch) {
    this.#offsetNow = Math.round((wall - epoch) / 900) * 900;
    this.#ahead = epoch - Date.now() / 1000;
    this.learn(Math.floor(epoch / 60) * 60 + this.#offsetNow, epoch);
  }

  now() { return Date.now() / 1000 + this.#ahead; }
  wallNow() { return this.now() + this.#offsetNow; }

  epochOf(wall) {
    if (this.#zoneAgrees) return wall - this.#zone(wall - this.#zone(wall));
    let nearest = [Infinity, this.#offsetNow];
    for (const known of this.#known.values()) {
      if (Math.abs(known[0] - wall) < Math.abs(nearest[0] - wall)) nearest = known;
    }
    return wall - nearest[1];
  }

  /** The date and the time that stand for an epoch in a request. */
  reading(epoch) {
    const wall = epoch + this.#offsetNow;
    return [dateText(wall), timeText(wall)];
  }
}

/**
 * When a schedule records. `rule` is the answer of getinfo_repeat, or null for a one-shot schedule.
 * A repeat schedule whose rule is not known yet (undefined) counts on its first day.
 */
export function planOf(schedule, rule = undefined) {
  const wall = wallOf(schedule.start);
  const length = schedule.duration > 0 ? schedule.duration : UNKNOWN_LENGTH;
  const plan = { schedule, rule, wall, length, epoch: schedule.start_time };
  if (!rule) return { ...plan, selected: null, lastDay: dayOf(wall) };
  const selected = String(rule.weekdaystatus).split(",").map((flag) => parseInt(flag, 10) === 1);
  const end = isDate(rule.end_date) ? wallOf(rule.end_date) : Infinity;
  const lastDay = rule.isweekly ? end : Math.min(end, dayOf(wall) + 6 * DAY);
  return { ...plan, selected, lastDay };
}

/** What a plan records on the days from `from` to `to`, both included. */
export function occurrencesOf(plan, from, to, clock) {
  const firstDay = dayOf(plan.wall);
  const found = [];
  for (let day = Math.max(from, firstDay); day <= Math.min(to, plan.lastDay); day += DAY) {
    if (plan.selected && !plan.selected[weekdayOf(day)]) continue;
    const begin = day + plan.wall - firstDay;
    const epoch = day === firstDay ? plan.epoch : clock.epochOf(begin);
    const [end, endEpoch] = [begin + plan.length, epoch + plan.length];
    found.push({ plan, begin, end, epoch, endEpoch, collides: false });
  }
  return found;
}

// The recording service makes a one-shot schedule of a repeat schedule's next occurrence. The two
// are one recording and are shown once.
function withoutTwins(occurrences) {
  const keyOf = ({ epoch, plan }) => `${epoch} ${serviceOf(plan.schedule)}`;
  const single = new Set(occurrences.filter(({ plan }) => !plan.selected).map(keyOf));
  return occurrences.filter((one) => !one.plan.selected || !single.has(keyOf(one)));
}

/** Whether two occurrences overlap, half-open: one may begin when the other ends. */
const overlap = (a, b) => a.epoch < b.endEpoch && b.epoch < a.endEpoch;

function markCollisions(occurrences) {
  let running = [];
  for (const next of [...occurrences].sort((a, b) => a.epoch - b.epoch)) {
    running = running.filter((other) => overlap(other, next));
    for (const one of running) one.collides = next.collides = true;
    running.push(next);
  }
}

// Gives boxes that overlap columns of their own. All boxes of a cluster have as many columns.
function setColumns(boxes) {
  let cluster = [];
  let ends = []; // of the last box of each column
  const close = () => cluster.forEach((box) => { box.columns = ends.length; });
  for (const box of boxes) {
    if (ends.every((end) => end <= box.top)) {
      close();
      [cluster, ends] = [[], []];
    }
    const free = ends.findIndex((end) => end <= box.top);
    box.column = free < 0 ? ends.length : free;
    ends[box.column] = Math.max(box.bottom, box.top + SMALLEST_BOX);
    cluster.push(box);
  }
  close();
}

// All recordings of some days, sorted by time, with collisions marked, also those with recordings
// of the day after them.
function occurrencesOfDays(plans, first, count, clock) {
  const found = plans.flatMap((plan) => {
    const before = Math.ceil(plan.length / DAY) * DAY;
    return occurrencesOf(plan, first - before, first + count * DAY, clock);
  });
  const shown = withoutTwins(found.filter(({ end }) => end > first));
  markCollisions(shown);
  return shown.sort((a, b) => a.begin - b.begin);
}

/**
 * The boxes of each of some days from `first` on. `top` and `bottom` are seconds from midnight,
 * `column` is one of `columns`.
 */
export function boxesOfDays(plans, first, count, clock) {
  const occurrences = occurrencesOfDays(plans, first, count, clock);
  return Array.from({ length: count }, (_, index) => {
    const day = first + index * DAY;
    const own = occurrences.filter(({ begin, end }) => begin < day + DAY && end > day);
    const boxes = own.map((occurrence) => {
      const top = Math.max(occurrence.begin - day, 0);
      const bottom = Math.min(occurrence.end - day, DAY);
      return { occurrence, top, bottom, continued: occurrence.begin < day };
    });
    setColumns(boxes);
    return boxes;
  });
}

/** A wall time that is moved by some seconds with the mouse: to a step, if it is moved at all. */
export const movedBy = (wall, by) =>
  (Math.abs(by) < STEP / 2 ? wall : Math.round((wall + by) / STEP) * STEP);

/** What is drawn between two wall times: the steps that it touches; by a click, half an hour. */
export function drawn(from, to) {
  const start = Math.floor(Math.min(from, to) / STEP) * STEP;
  const end = Math.ceil(Math.max(from, to) / STEP) * STEP;
  return { start, duration: Math.abs(to - from) < STEP ? UNKNOWN_LENGTH : end - start };
}

/** Whether a plan records nothing any more after an epoch. */
export function hasEnded(plan, now, clock) {
  if (!plan.selected) return plan.epoch + plan.length <= now;
  if (plan.lastDay === Infinity) return false;
  const last = occurrencesOf(plan, plan.lastDay - 6 * DAY, plan.lastDay, clock).at(-1);
  return !last || last.endEpoch <= now;
}

/**
 * What a new plan would collide with: of each plan, the first occurrence. One week after both have
 * begun shows every way in which two rules can meet.
 */
export function collisionsWith(candidate, plans, clock) {
  const firstWith = (plan) => {
    const spread = Math.ceil(Math.max(plan.length, candidate.length) / DAY) * DAY;
    const first = Math.max(dayOf(plan.wall), dayOf(candidate.wall));
    const last = Math.min(plan.lastDay, candidate.lastDay, first + 7 * DAY);
    const [from, to] = [Math.min(first, last) - spread, Math.max(first, last) + spread];
    const mine = occurrencesOf(candidate, from, to, clock);
    return occurrencesOf(plan, from, to, clock)
      .find((theirs) => mine.some((own) => overlap(own, theirs)));
  };
  return plans.map(firstWith).filter(Boolean);
}
