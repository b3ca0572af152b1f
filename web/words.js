// What the page says of a schedule: times, status and names in words.
import { timeText } from "./week.js";
import { isRepeat } from "./schedules.js";

// The page is English; a browser of another language gets the dates of one that counts 24 hours.
const LOCALE = /^en\b/i.test(navigator.language) ? navigator.language : "en-GB";
const formatOf = (options) => {
  const format = new Intl.DateTimeFormat(LOCALE, { timeZone: "UTC", ...options }); // they are wall times
  return (wall) => format.format(wall * 1000);
};

const RANGE = new Intl.DateTimeFormat(LOCALE, { timeZone: "UTC", day: "numeric", month: "long", year: "numeric" });

export const dayName = formatOf({ weekday: "short", day: "numeric", month: "short" });
export const weekName = (first, last) => RANGE.formatRange(first * 1000, last * 1000);
export const FIRST_WEEKDAY = new Intl.Locale(LOCALE).getWeekInfo?.().firstDay % 7 || 0;

export const channelOf = (schedule) => schedule.channel_name || `Channel ${schedule.id}`;
export const nameOf = (schedule) => schedule.title || channelOf(schedule);
export const spanOf = (begin, end) => `${timeText(begin)}–${timeText(end)}`;
export const whenOf = ({ wall }) => (Number.isNaN(wall) ? "at no known time" : `${dayName(wall)}, ${timeText(wall)}`);

// The stores' other statuses are the recording service's own, and the API gives them no names.
const STATUS = { 0: "Unknown status", 1: "Scheduled", 12: "Repeats" };

/** The status in words; what the appliance calls scheduled is known better from the time. */
export function statusOf({ schedule, epoch, length }, now) {
  const { status } = schedule;
  if (status === 1 && epoch + length <= now) return "Passed";
  if (status === 1 && epoch <= now) return "On now";
  return STATUS[status] ?? `${isRepeat(schedule) ? "Repeats, service" : "Service"} status ${status}`;
}

const SUNDAY_FIRST = ["Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"];

/** On which days a repeat schedule records. */
export function rhythmOf({ selected, rule, lastDay }) {
  if (!selected) return "";
  const days = SUNDAY_FIRST.filter((_, day) => selected[day]);
  const which = days.length === 7 ? "every day" : days.join(", ");
  if (!rule.isweekly) return `${which}, one week`;
  return lastDay === Infinity ? which : `${which}, until ${dayName(lastDay)}`;
}

/** What marks a schedule, as names of classes; the style sheet colours them. */
const SIGNS = { repeats: "↻", "user-defined": "✎", collides: "⚠", continued: "…" };

export function marksOf(schedule, more = {}) {
  const marks = { repeats: isRepeat(schedule), "user-defined": schedule.is_userdefine, ...more };
  return Object.keys(marks).filter((name) => marks[name]);
}

/** Time, title and channel, as a box and a row show them; signs are read out as words. */
export function describe(className, when, schedule, marks) {
  const signs = marks.flatMap((name) => {
    const sign = element("span", "", SIGNS[name]);
    sign.ariaHidden = "true";
    return [" ", sign, element("span", "spoken", name)];
  });
  const button = element("button", className, element("span", "when", when, ...signs), " ",
    element("span", "title", nameOf(schedule)), " ", element("span", "channel", channelOf(schedule)));
  button.type = "button";
  return button;
}

/** An element with a class and texts or elements in it. Texts are never markup. */
export function element(tag, className, ...content) {
  const made = Object.assign(document.createElement(tag), { className });
  made.append(...content);
  return made;
}
