// The values with which the dialog opens: one form for each kind of recording. Days are booleans,
// Sunday first.
import { isRepeat } from "./schedules.js";
import { dateText, isDate, lengthText, timeText, weekdayOf } from "./week.js";

const onlyOn = (weekday) => Array.from({ length: 7 }, (_, day) => day === weekday);

/** The days when the date moves to another weekday: a single day follows it, several stay. */
export const followDate = (days, weekday) =>
  (days.filter(Boolean).length > 1 ? days : onlyOn(weekday));

const timesOf = (wall) => ({ date: dateText(wall), time: timeText(wall) });

/** A new recording, from a wall time on, for some seconds. */
export const newForm = (wall, length) => ({
  ...timesOf(wall), duration: lengthText(length), title: "", description: "", plain: false,
  repeats: false, days: onlyOn(weekdayOf(wall)), weekly: true, endless: true, end: "",
});

/** A stored schedule of which the appliance knows title and length. */
export function plainForm({ schedule, wall, length, rule, selected }) {
  const { title, description } = schedule;
  const end = isDate(rule?.end_date) ? rule.end_date : "";
  return {
    ...newForm(wall, Math.max(length, 60)), title, description, plain: true,
    repeats: isRepeat(schedule), days: selected ?? onlyOn(weekdayOf(wall)),
    weekly: rule?.isweekly ?? true, endless: !end, end,
  };
}

/** A stored schedule with a title and a length of its own, as the answered form says them. */
export const ownForm = (plan, { title, description }) =>
  ({ ...plainForm(plan), title, description, plain: false });
