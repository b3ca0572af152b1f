// Puts schedules into words: their times, status, days and names, and the elements that show them.
import { isRepeat } from "./schedules.js";
import { LOCALE, TEXT } from "./text.js";
import { hasEnded, timeText } from "./week.js";

const DATE = { timeZone: "UTC", day: "numeric", month: "short" }; // wall times have no zone
const DAY_FORMAT = new Intl.DateTimeFormat(LOCALE, { ...DATE, weekday: "short" });
const DATE_FORMAT =
  new Intl.DateTimeFormat(LOCALE, { ...DATE, weekday: "short", year: "numeric" });
const WEEK_FORMAT = new Intl.DateTimeFormat(LOCALE, { ...DATE, year: "numeric" });

export const FIRST_WEEKDAY = new Intl.Locale(LOCALE).getWeekInfo?.().firstDay % 7 || 0;
export const dayName = (wall) => DAY_FORMAT.format(wall * 1000);
/** A day with its year, unless that is this one. */
export const dateName = (wall) => (new Date(wall * 1000).getUTCFullYear() ===
  new Date().getFullYear() ? DAY_FORMAT : DATE_FORMAT).format(wall * 1000);
export const weekName = (first, last) => WEEK_FORMAT.formatRange(first * 1000, last * 1000);

export const channelOf = (schedule) => schedule.channel_name || TEXT.channelOf(schedule.id);
export const nameOf = (schedule) => schedule.title || channelOf(schedule);
/** Whether title and channel contain every word of a filter. */
export function matches(schedule, filter) {
  const text = `${nameOf(schedule)} ${channelOf(schedule)}`.toLocaleLowerCase(LOCALE);
  return filter.toLocaleLowerCase(LOCALE).split(/\s+/).every((word) => text.includes(word));
}

export const whenOf = ({ wall }) =>
  (Number.isNaN(wall) ? TEXT.noTime : `${dateName(wall)}, ${timeText(wall)}`);

/** The status in words. The clock tells whether a scheduled recording runs or has passed. */
export function statusOf(plan, clock) {
  const { status } = plan.schedule;
  const isOver = hasEnded(plan, clock.now(), clock);
  if (plan.selected && isOver) return TEXT.ended;
  if (status === 1 && plan.epoch <= clock.now()) return isOver ? TEXT.passed : TEXT.onNow;
  // The other statuses are the recording service's own; the API does not name them.
  return TEXT.status[status] ?? TEXT.otherStatus(status);
}

const weekdaysIn = (style) => {
  const format = new Intl.DateTimeFormat(LOCALE, { timeZone: "UTC", weekday: style });
  return Array.from({ length: 7 }, (_, day) => format.format(Date.UTC(2023, 0, 1 + day)));
};
export const SUNDAY_FIRST = weekdaysIn("short");
export const LONG_SUNDAY_FIRST = weekdaysIn("long");

/** The days on which a repeat schedule records. */
export function rhythmOf({ selected, rule, lastDay }) {
  if (!selected) return "";
  const days = SUNDAY_FIRST.filter((_, index) => selected[index]);
  const which = days.length === 7 ? TEXT.everyDay : days.join(", ");
  if (!rule.isweekly) return TEXT.oneWeek(which);
  return lastDay === Infinity ? which : TEXT.until(which, dateName(lastDay));
}

// What marks a schedule: the class that colours it, and the sign that stands after its time.
const SIGNS = { collides: "⚠", continued: "…", repeats: "↻", "user-defined": "✎" };

export function marksOf(schedule, more = {}) {
  const marks = { ...more, repeats: isRepeat(schedule), "user-defined": schedule.is_userdefine };
  return Object.keys(marks).filter((name) => marks[name]);
}

/** What the signs say, and how paper shows what has passed. */
export const legend = () => [
  ...Object.entries(SIGNS).map(([name, sign]) => `${sign} ${TEXT.marks[name]}`), TEXT.passedOnPaper,
].join(" · ");

/** A button with the time, marks, title and channel of a schedule. */
export function describe(className, schedule, marks, ...when) {
  const signOf = (name) =>
    Object.assign(element("span", "", SIGNS[name]), { role: "img", ariaLabel: TEXT.marks[name] });
  const button = element("button", [className, ...marks].join(" "),
    element("span", "when", ...when, ...marks.flatMap((name) => [" ", signOf(name)])), " ",
    element("span", "title", nameOf(schedule)));
  if (schedule.title) button.append(" ", element("span", "channel", channelOf(schedule)));
  button.type = "button";
  return button;
}

/** An element with a class and with texts or elements in it. Texts are never markup. */
export function element(tag, className, ...content) {
  const made = Object.assign(document.createElement(tag), { className });
  made.append(...content);
  return made;
}
