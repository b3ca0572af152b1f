// The layout of a week and the times in it, without a browser.
import assert from "node:assert/strict";
import { test } from "node:test";
import * as week from "../../web/week.js";

const { Clock, DAY, collisionsWith, planOf, wallOf } = week;

const [WEEK, utc] = [wallOf("2025-06-30"), new Clock(() => 0)]; // a Monday
const EVERY_DAY = "1,1,1,1,1,1,1";

function plan(start, minutes, { days, end = "1", weekly = true, id = "1@2" } = {}) {
  const schedule = { id, start, start_time: wallOf(start), duration: minutes * 60 };
  return planOf(schedule, days ? { weekdaystatus: days, end_date: end, isweekly: weekly } : null);
}

const daysOf = (...plans) => week.boxesOfDays(plans, WEEK, 7, utc);
const countsOf = (...plans) => daysOf(...plans).map((boxes) => boxes.length).join("");

test("a repeat schedule stands on its days, from its first to its last", () => {
  const cases = [
    ["2025-07-02", { days: EVERY_DAY }, "0011111"],
    ["2025-06-03", { days: "1,0,1,0,0,0,1" }, "0100011"],
    ["2025-06-01", { days: EVERY_DAY, end: "2025-07-02" }, "1110000"],
    ["2025-06-26", { days: EVERY_DAY, weekly: false }, "1110000"]];
  for (const [start, rule, expected] of cases) {
    assert.equal(countsOf(plan(`${start} 08:00`, 30, rule)), expected, start);
  }
});

test("a recording over midnight has a box on each of its days, also from the week before", () => {
  const [[before], [after]] = daysOf(plan("2025-06-30 23:30", 60));
  assert.deepEqual([before.top, before.bottom, before.continued], [84600, DAY, false]);
  assert.deepEqual([after.top, after.bottom, after.continued], [0, 1800, true]);
  assert.equal(countsOf(plan("2025-06-29 23:30", 60)), "1000000");
  assert.equal(countsOf(plan("2025-06-29 23:30", 30), plan("2025-07-06 23:30", 60)), "0000001");
});

test("recordings that overlap collide and stand side by side; those that touch do not", () => {
  const [boxes] = daysOf(plan("2025-06-30 20:00", 60), plan("2025-06-30 20:30", 60),
    plan("2025-06-30 21:00", 30), plan("2025-06-30 21:30", 30), plan("2025-06-30 22:00", 0));
  const seen = boxes.map((box) => [box.column, box.columns, box.occurrence.collides]);
  assert.deepEqual(seen, [[0, 2, true], [1, 2, true], [0, 2, true], [0, 1, false], [0, 1, false]]);
  assert.equal(boxes[4].bottom - boxes[4].top, 1800); // without a length half an hour is recorded
});

test("the one-shot schedule that is made of a repeat schedule is shown once", () => {
  const rule = plan("2025-06-30 20:00", 30, { days: EVERY_DAY });
  const [, boxes] = daysOf(plan("2025-07-01 20:00", 30, { id: "1" }), rule);
  assert.deepEqual(boxes.map(({ occurrence }) => occurrence.collides), [false]);
  assert.equal(countsOf(plan("2025-07-01 20:00", 30, { id: "7" }), rule), "1211111");
});

test("what a wanted recording would collide with, and where first", () => {
  const stored = [plan("2025-07-01 20:00", 60), plan("2025-06-01 12:00", 30, { days: EVERY_DAY }),
    plan("2025-09-01 08:00", 30, { days: "0,1,0,0,0,0,0" }), plan("2025-06-29 22:00", 24 * 60)];
  const cases = [
    ["2025-07-01 21:00", 30, {}], ["2025-07-01 20:59", 30, {}, 0, "2025-07-01 20:00"],
    ["2025-06-30 21:59", 1, {}, 3, "2025-06-29 22:00"],
    ["2025-07-01 19:30", 31, { days: EVERY_DAY }, 0, "2025-07-01 20:00"],
    ["2025-07-05 08:15", 5, { days: "0,1,0,0,0,0,1" }, 2, "2025-09-01 08:00"],
    ["2025-06-30 23:30", 13 * 60, { days: EVERY_DAY, weekly: false }, 1, "2025-07-01 12:00"]];
  for (const [start, minutes, rule, other, begin] of cases) {
    const [found] = collisionsWith(plan(start, minutes, rule), stored, utc);
    assert.deepEqual([found?.plan, found?.begin], [stored[other], begin && wallOf(begin)], start);
  }
});

test("a recording has ended when its end has passed, a rule when that of its last day has", () => {
  const now = wallOf("2025-07-03 12:00"); // a Thursday
  const cases = [
    ["2025-07-03 11:30", {}, true], ["2025-07-03 11:31", {}, false],
    ["2025-06-01 11:30", { days: EVERY_DAY }, false],
    ["2025-06-01 11:30", { days: EVERY_DAY, end: "2025-07-03" }, true],
    ["2025-06-01 11:31", { days: EVERY_DAY, end: "2025-07-03" }, false],
    ["2025-06-02 20:00", { days: "0,1,0,0,0,0,0", end: "2025-07-05" }, true],
    ["2025-06-27 11:30", { days: EVERY_DAY, weekly: false }, true]];
  for (const [start, rule, expected] of cases) {
    assert.equal(week.hasEnded(plan(start, 30, rule), now, utc), expected, start);
  }
});

test("the mouse draws and moves in steps of five minutes; a click draws half an hour", () => {
  const at = (time) => wallOf(`2025-06-30 ${time}`);
  const cases = [["20:03", "20:41", "20:00", 45], ["20:41", "20:03", "20:00", 45],
    ["20:03", "20:06", "20:00", 30], ["23:50", "24:00", "23:50", 10]];
  for (const [from, to, start, minutes] of cases) {
    assert.deepEqual(week.drawn(at(from), at(to)), { start: at(start), duration: minutes * 60 });
  }
  assert.equal(week.movedBy(at("21:49"), 120), at("21:49"));
  assert.equal(week.movedBy(at("21:49"), -DAY + 200), at("21:50") - DAY);
});

test("the offset of a date is the browser's if it agrees with the appliance, else learned", () => {
  const july = wallOf("2025-07-01 20:15");
  const summer = (epoch) => (epoch > wallOf("2025-03-30 01:00") ? 7200 : 3600); // as in Berlin
  const [near, far] = [new Clock(summer), new Clock(() => 19800)];
  const [shown, epoch] = [wallOf("2025-02-03 20:15"), wallOf("2025-02-03 19:15")];
  for (const clock of [near, far]) clock.learn(shown, epoch);
  assert.deepEqual([near.epochOf(july), far.epochOf(july)], [july - 7200, july - 3600]);
  far.learn(wallOf("2025-07-02 09:00"), wallOf("2025-07-02 07:00"));
  assert.equal(far.epochOf(july), july - 7200);
});
