// The page itself: which tuner and week it shows, what its buttons do, and what it says on failure.
import { connect } from "./api.js";
import { makeDialog } from "./dialog.js";
import { makeListView } from "./list_view.js";
import { Schedules, isRepeat } from "./schedules.js";
import { TEXT, explain, translate } from "./text.js";
import { DAY, weekOf } from "./week.js";
import { makeWeekView } from "./week_view.js";
import { FIRST_WEEKDAY, nameOf, whenOf } from "./words.js";

const SLOW = 300; // milliseconds after which a wait is shown
const find = (selector) => document.querySelector(selector);
const tunerButtons = document.querySelectorAll("#tuners button");

translate(document);
// The origin leaves out a login with which the address of the page may have been typed.
const endpoint = new URL(document.documentElement.dataset.endpoint, location.origin).href;
const schedules = new Schedules(connect(endpoint, { onBusy }));
const dialog = makeDialog(find("#recording"), schedules, { save, remove });
const weekView = makeWeekView(find("#week .days"), find("#week-title"), open);
const listView = makeListView(find("#list"), open, (start) => guard(() => showList(start)));

let waiting = 0; // timer of the wait that may become slow
let listStart = 0;
let week = null; // null means the week of today

function onBusy(pending) {
  const notes = document.querySelectorAll(".waiting");
  const say = (text) => notes.forEach((note) => { note.textContent = text; });
  clearTimeout(waiting);
  if (pending) waiting = setTimeout(say, SLOW, TEXT.waiting);
  else say("");
  find("main").ariaBusy = String(pending > 0);
}

function open(plan) {
  const { key } = document.activeElement.dataset;
  find("#recording").onclose = () => refocus(key, find("#create"));
  return guard(() => dialog.open(plan));
}

// What is shown anew has new elements. Those that stand for the same schedule have the same key.
function refocus(key, other) {
  (find(`[data-key="${CSS.escape(key)}"]`) ?? other)?.focus({ preventScroll: true });
}

const shownWeek = () => week ?? weekOf(schedules.clock.wallNow(), FIRST_WEEKDAY);
const showWeek = () => weekView.show(schedules.plans, shownWeek(), schedules.clock);

function turnWeek(days) {
  week = days === 0 ? null : shownWeek() + days * DAY;
  showWeek();
}

async function showList(start = listStart) {
  const { turn } = schedules;
  const page = await schedules.page(start);
  if (turn !== schedules.turn) return;
  listStart = page.start;
  listView.show(page, schedules.plans, schedules.clock.now());
}

/** Shows what a turn has read, unless a later one has begun. */
async function show(turn) {
  if (turn !== schedules.turn) return;
  const { key } = document.activeElement.dataset;
  showWeek();
  await showList();
  refocus(key);
  dialog.refresh();
}

/** Reads a tuner from the server and shows it; the repeat schedules' other days follow. */
async function read(tuner = schedules.tuner) {
  const isOther = tuner !== schedules.tuner;
  history.replaceState(null, "", `#tuner=${tuner}`); // outlives a reload
  for (const button of tunerButtons) button.ariaPressed = String(Number(button.value) === tuner);
  find("#tuner").value = tuner < tunerButtons.length ? "" : tuner;
  const loading = schedules.load(tuner);
  if (isOther) show(schedules.turn); // nothing of the former tuner while this one is read
  const turn = await loading;
  await show(turn);
  if (schedules.lacksRules()) await schedules.loadRules().finally(() => show(turn));
}

/** Runs an action, and says in words what went wrong. */
async function guard(action) {
  find("#alert").hidden = true;
  try {
    await action();
  } catch (problem) {
    find("#alert p").textContent = explain(problem);
    find("#retry").hidden = problem.code !== "lost";
    find("#alert").hidden = false;
  }
}

/** Changes something, reads what stands afterwards even on failure, and says what is done. */
async function change(action, done) {
  find("#done").textContent = "";
  find("#done").textContent = done(await action().finally(() => guard(() => read())));
}

/** Asks once, then does it. Returns false if it is not wanted. */
async function confirm({ text, verb, done }, action) {
  const question = find("#question");
  find("#question-text").textContent = text;
  find("#question .main").textContent = verb;
  question.returnValue = "no";
  question.showModal();
  await new Promise((resolve) => { question.onclose = resolve; });
  return question.returnValue === "yes" && change(action, () => done);
}

function save(draft, old) {
  const name = draft.kind === "userdefine" && draft.title || draft.channelName;
  const moved = "The wanted time does not exist there, because the clocks change.";
  return change(() => schedules.save(draft, old), (wall) =>
    (wall === draft.wall ? `Saved: ${name}.` : `Saved: ${name}, ${whenOf({ wall })}. ${moved}`));
}

function remove(chosen) {
  if (!chosen.length) throw new Error("Choose schedules in the list first.");
  const what = chosen.length === 1 ? nameOf(chosen[0]) : `${chosen.length} schedules`;
  const text = `Delete ${what}${chosen.some(isRepeat) ? ", with all days of what repeats" : ""}?`;
  const question = { text, verb: "Delete", done: `Deleted: ${what}.` };
  return confirm(question, () => schedules.remove(chosen));
}

const BUTTONS = {
  "#create": () => open(),
  "#reload": () => read(), "#retry": () => read(), "#dismiss": () => {},
  "#stop": () => confirm(TEXT.stopping, () => schedules.stop()),
  "#clear": () => confirm(TEXT.clearing, () => schedules.clearPassed()),
  "#delete-chosen": () => remove(listView.chosen()),
  "#previous": () => turnWeek(-7), "#today": () => turnWeek(0), "#next": () => turnWeek(7),
};
for (const [selector, action] of Object.entries(BUTTONS)) {
  find(selector).addEventListener("click", () => guard(action));
}
for (const button of tunerButtons) {
  button.addEventListener("click", () => guard(() => read(Number(button.value))));
}
find("#tuner").addEventListener("change", ({ target }) =>
  guard(() => target.reportValidity() && read(Number(target.value))));
setInterval(() => weekView.tick(), 30_000);
guard(() => read(Number(location.hash.match(/^#tuner=(\d+)$/)?.[1] ?? 0)));
