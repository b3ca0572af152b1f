// The values with which the dialog opens: one form for each kind of recording. Days are booleans,
// Sunday first.
import { dateText, isDate, lengthText, timeText, weekdayOf } from "./week.js";

const onlyOn = (weekday) => Array.from({ length: 7 }, (_, day) => day === weekday);

/** The days when the date moves to another weekday: a single day follows it, several stay. */
export const followDate = (days, weekday) =>
  (days.filter(Boolean).length > 1 ? days : onlyOn(weekday));

/** A new recording, from a wall time on, for some seconds. */
export const newForm = (wall, length) => ({
  date: dateText(wall), time: timeText(wall), duration: lengthText(length), title: "",
  description: "", plain: false, repeats: false, days: onlyOn(weekdayOf(wall)), weekly: true,
  endless: true, end: "",
});

/** A stored one. `own` is the answered form of a user-defined schedule, otherwise null. */
export function storedForm({ schedule, rule, selected }, own, wall, length) {
  const { title, description } = own ?? schedule;
  const end = isDate(rule?.end_date) ? rule.end_date : "";
  const form = { ...newForm(wall, length), title, description, plain: !own };
  if (!selected) return form;
  return { ...form, repeats: true, days: selected, weekly: rule.isweekly, endless: !end, end };
}
