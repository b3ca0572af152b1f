// The page: which tuner and week are shown, what the buttons do, and what is said when something fails.
import { connect } from "./api.js";
import { makeDialog } from "./dialog.js";
import { makeListView } from "./list_view.js";
import { Schedules } from "./schedules.js";
import { DAY, dateText, wallOf, weekOf } from "./week.js";
import { makeWeekView } from "./week_view.js";
import { FIRST_WEEKDAY, nameOf, whenOf } from "./words.js";

const SLOW = 300; // milliseconds after which a wait is shown
const find = (selector) => document.querySelector(selector);
const tunerButtons = document.querySelectorAll("#tuners button");

// The origin has no user and password in it, unlike the address that the page may have been opened with.
const address = new URL(document.documentElement.dataset.endpoint, location.origin).href;
const schedules = new Schedules(connect(address, { onBusy }));
const dialog = makeDialog(find("#recording"), schedules, { save, remove });
const open = (plan) => {
  const { key } = document.activeElement.dataset;
  find("#recording").addEventListener("close", () => refocus(key, find("#create")), { once: true });
  return guard(() => dialog.open(plan));
};
const weekView = makeWeekView(find("#week .days"), find("#week-title"), open);
const listView = makeListView(find("#list"), { open, turn: (start) => guard(() => showList(start)) });

let waiting = 0; // timer of the wait that may become slow
let listStart = 0;
let week = null; // null: the one of today

function onBusy(pending) {
  clearTimeout(waiting);
  const say = (text) => document.querySelectorAll(".waiting").forEach((note) => { note.textContent = text; });
  if (pending) waiting = setTimeout(say, SLOW, "Waiting for the appliance…");
  else say("");
  find("main").ariaBusy = String(pending > 0);
}

// The address's fragment holds tuner and week, so that they outlive a reload and can be kept as a bookmark.
function readAddress() {
  const parts = new URLSearchParams(location.hash.slice(1));
  week = parts.has("week") ? wallOf(parts.get("week")) : null;
  return /^\d+$/.test(parts.get("tuner")) ? Number(parts.get("tuner")) : 0;
}

function writeAddress(tuner) {
  const parts = new URLSearchParams({ tuner, ...(week === null ? {} : { week: dateText(week) }) });
  history.replaceState(null, "", `#${parts}`);
}

const shownWeek = () => weekOf(week ?? schedules.clock.wallNow(), FIRST_WEEKDAY);
const showWeek = () => weekView.show(schedules.plans, shownWeek(), schedules.clock);

async function showList(start = listStart) {
  const { turn } = schedules;
  const page = await schedules.page(start);
  if (turn !== schedules.turn) return;
  listStart = page.start;
  listView.show(page, schedules.plans, schedules.clock.now());
}

// What is shown anew has new elements; those that stand for the same have the same key.
function refocus(key, other) {
  (document.querySelector(`[data-key="${CSS.escape(key)}"]`) ?? other)?.focus({ preventScroll: true });
}

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
  writeAddress(tuner);
  for (const button of tunerButtons) button.ariaPressed = String(Number(button.value) === tuner);
  find("#tuner").value = tuner;
  const loading = schedules.load(tuner);
  if (isOther) {
    listStart = 0;
    show(schedules.turn); // nothing of the former tuner while this one is read
  }
  const turn = await loading;
  await show(turn);
  if (schedules.lacksRules()) await schedules.loadRules().finally(() => show(turn));
}

/** Says what went wrong in words. */
async function guard(action) {
  find("#alert").hidden = true;
  try {
    await action();
  } catch (problem) {
    find("#alert p").textContent = problem.message;
    find("#retry").hidden = problem.code !== "lost";
    find("#alert").hidden = false;
  }
}

/** Does something, then reads what stands now, whether it failed or not, and says what is done. */
async function change(action, done) {
  find("#done").textContent = "";
  const result = await action().finally(() => guard(() => read()));
  find("#done").textContent = done(result);
}

/** Asks once, then does it; false if it is not wanted. */
async function confirm(text, verb, action, done) {
  const question = find("#question");
  find("#question-text").textContent = text;
  find("#question .main").textContent = verb;
  question.returnValue = "no";
  question.showModal();
  await new Promise((resolve) => { question.addEventListener("close", resolve, { once: true }); });
  return question.returnValue === "yes" && change(action, () => done);
}

function save(draft, old) {
  const name = draft.kind === "userdefine" && draft.title ? draft.title : draft.channelName;
  return change(() => schedules.save(draft, old), (wall) => (wall === draft.wall
    ? `Saved: ${name}.`
    : `Saved: ${name}, at ${whenOf({ wall })}. The wanted time does not exist there, because the clocks change.`));
}

function remove(chosen) {
  if (!chosen.length) throw new Error("Choose schedules in the list first.");
  const what = chosen.length === 1 ? nameOf(chosen[0]) : `${chosen.length} schedules`;
  const text = `Delete ${what}? A repeat schedule goes with all its days.`;
  return confirm(text, "Delete", () => schedules.remove(chosen), `Deleted: ${what}.`);
}

const clearPassed = () => confirm(`Clear all one-shot schedules of tuner ${schedules.tuner} that have passed?`, "Clear",
  () => schedules.clearPassed(), "Passed schedules are cleared.");
const stop = () => confirm(`Stop what tuner ${schedules.tuner} is recording now? Its schedule stays.`, "Stop",
  () => schedules.stop(), "The tuner is told to stop.");

function turnWeek(days) {
  week = days === 0 ? null : shownWeek() + days * DAY;
  writeAddress(schedules.tuner);
  showWeek();
}

const BUTTONS = {
  "#create": () => open(),
  "#reload": () => read(), "#retry": () => read(readAddress()), "#dismiss": () => {},
  "#stop": stop, "#clear": clearPassed,
  "#delete-chosen": () => remove(listView.chosen()),
  "#previous": () => turnWeek(-7), "#today": () => turnWeek(0), "#next": () => turnWeek(7),
};
for (const [selector, action] of Object.entries(BUTTONS)) find(selector).addEventListener("click", () => guard(action));
for (const button of tunerButtons) button.addEventListener("click", () => guard(() => read(Number(button.value))));
find("#tuner").addEventListener("change", ({ target }) => guard(() => target.reportValidity() && read(+target.value)));
addEventListener("hashchange", () => guard(() => read(readAddress())));
setInterval(() => weekView.tick(), 30_000);
guard(() => read(readAddress()));
