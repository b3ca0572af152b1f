// The page itself: which tuner and week it shows, what its buttons do, and what it says on failure.
import { connect } from "./api.js";
import { makeDialog } from "./dialog.js";
import { makeListView } from "./list_view.js";
import { Schedules, isRepeat } from "./schedules.js";
import { TEXT, explain, translate } from "./text.js";
import { DAY, boxesOfDays, dayOf, wallOf, weekOf } from "./week.js";
import { makeWeekView } from "./week_view.js";
import {
  FIRST_WEEKDAY, dateName, dayName, legend, matches, nameOf, weekName, whenOf,
} from "./words.js";

const UNDO_TIME = 10_000; // milliseconds for which a deletion can be undone
const SLOW = 300; // milliseconds after which a wait is shown
const find = (selector) => document.querySelector(selector);
const tunerButtons = document.querySelectorAll("#tuners [value]");

translate(document);
find("#legend").textContent = legend();
// The origin leaves out a login with which the address of the page may have been typed.
const endpoint = new URL(document.documentElement.dataset.endpoint, location.origin).href;
const schedules = new Schedules(connect(endpoint, { onBusy }));
const dialog = makeDialog(find("#recording"), schedules, { save, remove, ask });
const weekView = makeWeekView(find("#week .days"), find("#week-title"), { openChanged, openNew });
const listView = makeListView(find("#list"), find("#delete-chosen"), openChanged, showList);

let waiting = 0; // timer of the wait that may become slow
let undoing = 0; // timer after which nothing can be undone
let listStart = 0;
let shownWall = null; // a time of the shown week or day; null means now
let showsAll = false; // one day of all tuners, not a week of one
let revealed = null; // the schedule that was saved last
let showings = 0; // counts; what an earlier one still gets is not shown

function onBusy(pending) {
  const notes = document.querySelectorAll(".waiting");
  const say = (text) => notes.forEach((note) => { note.textContent = text; });
  clearTimeout(waiting);
  if (pending) waiting = setTimeout(say, SLOW, TEXT.waiting);
  else say("");
  find("main").ariaBusy = String(pending > 0);
}

function openBy(action) {
  const { key } = document.activeElement.dataset;
  revealed = null;
  find("#recording").onclose = () =>
    refocus(key, boxOf(revealed) ?? find("#undo:not([hidden])") ?? find("#create"));
  return guard(action);
}

// When a new recording begins unless it is drawn: now, or at this time in what is shown.
function newStart() {
  const now = schedules.clock.wallNow();
  return Math.max(now, shownDay() + now % DAY);
}

function openNew(values = { start: newStart() }) { return openBy(() => dialog.openNew(values)); }
function openChanged(plan, values) { return openBy(() => dialog.openChanged(plan, values)); }

// What is shown anew has new elements. Those that stand for the same schedule have the same key.
function refocus(key, other) {
  (find(`[data-key="${CSS.escape(key)}"]`) ?? other)?.focus({ preventScroll: true });
}

function shownDay() {
  const wall = shownWall ?? schedules.clock.wallNow();
  return showsAll ? dayOf(wall) : weekOf(wall, FIRST_WEEKDAY);
}

async function readTuner(tuner, day) {
  const [boxes] = boxesOfDays(await schedules.plansOf(tuner), day, 1, schedules.clock);
  return { title: TEXT.tunerOf(tuner), day, tuner, boxes };
}

function daysOfWeek(week) {
  const { clock, plans, tuner } = schedules;
  return boxesOfDays(plans, week, 7, clock).map((boxes, index) => {
    const day = week + index * DAY;
    return { title: dayName(day), day, tuner, boxes };
  });
}

async function showWeek() {
  const showing = ++showings;
  const day = shownDay();
  const title = showsAll ? dateName(day)
    : `${TEXT.tunerOf(schedules.tuner)}: ${weekName(day, day + 6 * DAY)}`;
  const columns = showsAll
    ? await Promise.all(schedules.tuners().map((tuner) => readTuner(tuner, day))) : daysOfWeek(day);
  if (showing !== showings) return;
  weekView.show(title, columns, schedules.clock, !schedules.lacksRules());
}

function turn(steps) {
  shownWall = steps && shownDay() + steps * (showsAll ? 1 : 7) * DAY || null;
  return showWeek();
}

function chooseTuner(tuner, all = false) {
  showsAll = all;
  return read(tuner);
}

function showList(start = listStart) {
  const { plans, clock } = schedules;
  const found = plans.filter(({ schedule }) => matches(schedule, find("#filter").value));
  listStart = start < found.length ? start : 0;
  listView.show(plans, found, listStart, clock, plans.length ? TEXT.noMatch : TEXT.empty);
}

/** Shows what a turn has read, unless a later one has begun. */
async function show(turn) {
  if (turn !== schedules.turn) return;
  const { key } = document.activeElement.dataset;
  showList();
  await showWeek();
  refocus(key);
  dialog.refresh();
}

/** Reads a tuner from the server and shows it; the repeat schedules' other days follow. */
async function read(tuner = schedules.tuner) {
  const isOther = tuner !== schedules.tuner;
  history.replaceState(null, "", `#tuner=${tuner}${showsAll ? "&all" : ""}`); // outlives a reload
  for (const button of tunerButtons) {
    button.ariaPressed = String(!showsAll && Number(button.value) === tuner);
  }
  find("#all-tuners").ariaPressed = String(showsAll);
  find("#list-title").textContent = TEXT.listOf(tuner);
  find("#tuner").value = showsAll || tuner < tunerButtons.length ? "" : tuner;
  const loading = schedules.load(tuner);
  if (isOther && !showsAll) show(schedules.turn); // nothing of the former tuner meanwhile
  const turn = await loading;
  await show(turn);
  if (schedules.lacksRules()) await schedules.loadRules().finally(() => show(turn));
}

/** Runs an action, and says in words what went wrong. */
async function guard(action) {
  find("#alert").hidden = true;
  if (find("#undo").hidden) tell(""); // what an earlier action has done
  try {
    await action();
  } catch (problem) {
    find("#alert p").textContent = explain(problem);
    find("#retry").hidden = problem.code !== "lost";
    find("#alert").hidden = false;
  }
}

/** Says what is done, and offers to undo it for a while, or as long as the offer has the focus. */
function tell(text, undo) {
  const button = find("#undo");
  const expire = () => {
    if (document.activeElement === button) undoing = setTimeout(expire, UNDO_TIME);
    else button.hidden = true;
  };
  clearTimeout(undoing);
  find("#done").textContent = text;
  button.hidden = !undo;
  button.onclick = () => guard(() => change(undo, ([first]) => {
    tell(TEXT.undone);
    refocus(`row ${first.primeid}`, find("#create"));
  }));
  if (undo) undoing = setTimeout(expire, UNDO_TIME);
}

/** Changes something, reads what stands afterwards even on failure, and tells what is done. */
async function change(action, told, tuner = schedules.tuner) {
  tell("");
  const result = await action().catch(async (problem) => {
    await read().catch(() => {}); // the first failure is the cause and is told alone
    throw problem;
  });
  await guard(() => read(tuner));
  await told(result);
}

/** Whether the user agrees. */
async function ask(text, verb) {
  const question = find("#question");
  find("#question-text").textContent = text;
  find("#question .main").textContent = verb;
  question.returnValue = "no";
  question.showModal();
  await new Promise((resolve) => { question.onclose = resolve; });
  return question.returnValue === "yes";
}

/** Asks once about the shown tuner, then does it. */
async function confirm({ text, verb, done }, action) {
  const { tuner } = schedules;
  if (await ask(text(tuner), verb)) await change(action, () => tell(done(tuner)));
}

function save(draft, old) {
  const name = !draft.plain && draft.title || draft.channelName || draft.id;
  return change(() => schedules.save(draft, old), (stored) => {
    const wall = wallOf(stored.start);
    tell(wall === draft.wall ? TEXT.saved(name) : TEXT.savedElsewhere(name, whenOf({ wall })));
    return reveal(stored);
  }, draft.tuner);
}

const boxOf = (schedule) =>
  schedule && find(`.box[data-key^="${CSS.escape(`box ${schedule.primeid} `)}"]`);

/** Shows a schedule in the week: the shown one if it is there, otherwise that of its start. */
async function reveal(schedule) {
  if (!boxOf(schedule)) {
    shownWall = wallOf(schedule.start);
    await showWeek();
  }
  boxOf(schedule)?.scrollIntoView({ block: "center" });
  revealed = schedule;
}

async function remove(chosen) {
  if (!chosen.length) throw new Error(TEXT.chooseFirst);
  const what = chosen.length === 1 ? nameOf(chosen[0]) : TEXT.several(chosen.length);
  const text = [(chosen.some(isRepeat) ? TEXT.removeAll : TEXT.remove)(what)];
  if (chosen.some((one) => one.title && !one.is_userdefine)) text.push(TEXT.losesTitle);
  if (!await ask(text.join(" "), TEXT.delete)) return false;
  return change(() => schedules.remove(chosen), (undo) => {
    listView.untick(chosen);
    tell(TEXT.deleted(what), undo);
    find("#undo").focus();
  });
}

const BUTTONS = {
  "#create": () => openNew(),
  "#reload": () => read(), "#retry": () => read(), "#dismiss": () => {},
  "#stop": () => confirm(TEXT.stopping, () => schedules.stop()),
  "#clear": () => confirm(TEXT.clearing, () => schedules.clearPassed()),
  "#delete-chosen": () => remove(listView.chosen()),
  "#previous": () => turn(-1), "#today": () => turn(0), "#next": () => turn(1),
  "#all-tuners": () => chooseTuner(schedules.tuner, true),
};
for (const [selector, action] of Object.entries(BUTTONS)) {
  find(selector).addEventListener("click", () => guard(action));
}
for (const button of tunerButtons) {
  button.addEventListener("click", () => guard(() => chooseTuner(Number(button.value))));
}
find("#tuner").addEventListener("change", ({ target }) =>
  guard(() => target.reportValidity() && chooseTuner(Number(target.value))));
find("#filter").addEventListener("input", () => showList(0));
// Escape presses Cancel: left to the browser, it could close the dialog behind a question, too.
addEventListener("keydown", (event) => {
  const opened = [...document.querySelectorAll("dialog[open]")].at(-1);
  if (event.key !== "Escape" || !opened) return;
  event.preventDefault();
  opened.querySelector(".cancel").click();
});
setInterval(() => weekView.tick(), 30_000);
const [, tuner = 0, all] = location.hash.match(/^#tuner=(\d+)(&all)?$/) ?? [];
guard(() => chooseTuner(Number(tuner), Boolean(all)));
