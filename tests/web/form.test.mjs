// What the dialog computes, without a browser.
import assert from "node:assert/strict";
import { test } from "node:test";
import { followDate } from "../../web/form.js";
import { freeTuner } from "../../web/schedules.js";
import { Clock, planOf, wallOf } from "../../web/week.js";

const daysOf = (...days) => Array.from({ length: 7 }, (_, day) => days.includes(day));

test("a single day follows the date to its weekday; several days stay", () => {
  const cases = [[daysOf(3), 6, daysOf(6)], [daysOf(), 0, daysOf(0)],
    [daysOf(1, 3), 6, daysOf(1, 3)]];
  for (const [days, weekday, expected] of cases) {
    assert.deepEqual(followDate(days, weekday), expected);
  }
});

test("the first tuner on which nothing overlaps is free", () => {
  const plan = (start, duration) =>
    planOf({ id: "1", start, start_time: wallOf(start), duration }, null);
  const wanted = plan("2025-07-01 20:00", 3600);
  const [busy, free] = [[plan("2025-07-01 20:59", 60)], [plan("2025-07-01 21:00", 60)]];
  const freeOf = (...tuners) => freeTuner(wanted, tuners, new Clock(() => 0));
  assert.equal(freeOf([0, busy], [1, free], [2, []]), 1);
  assert.equal(freeOf([0, busy]), undefined);
});
