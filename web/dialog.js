// The dialog in which a recording of any kind is created, changed and deleted.
import { followDate, newForm, ownForm, plainForm } from "./form.js";
import { isSame } from "./schedules.js";
import { TEXT, explain } from "./text.js";
import { collisionsWith, lengthText, planOf, secondsOf, wallOf, weekdayOf } from "./week.js";
import {
  FIRST_WEEKDAY, LONG_SUNDAY_FIRST, SUNDAY_FIRST, element, nameOf, whenOf,
} from "./words.js";

const NAMED_COLLISIONS = 4;
const USUAL_LENGTH = 1800;

const storage = () => { try { return localStorage; } catch { return {}; } }; // it may be forbidden

function makeToggle(name, day) {
  const box = element("input", "");
  const ariaLabel = LONG_SUNDAY_FIRST[day];
  Object.assign(box, { type: "checkbox", name: "day", value: day, ariaLabel });
  return element("label", "", box, name).firstChild;
}

/**
 * Makes the dialog. `actions.save(draft, old)` and `actions.remove(schedules, tuner)` read again
 * what stands afterwards, and throw what went wrong; false means that nothing was done.
 * `actions.ask(text, verb)` tells whether the user agrees.
 */
export function makeDialog(dialog, schedules, actions) {
  const form = dialog.querySelector("form");
  const fields = form.elements;
  const find = (selector) => dialog.querySelector(selector);
  const submit = find("[type=submit]");
  const toggles = SUNDAY_FIRST.map(makeToggle);
  let plan = null; // of the schedule that is changed
  let isPlain = false; // whether that has no title and length of its own
  let wasMoved = false;
  let opened = ""; // what the fields said when the dialog was opened
  let warnings = 0; // counts; what an earlier one still gets is not shown
  for (let day = 0; day < 7; day++) {
    find("#weekdays").append(toggles[(FIRST_WEEKDAY + day) % 7].parentNode);
  }

  /**
   * Opens for a new recording on a tuner, from a wall time on, of a length in seconds. Without
   * them: on the shown tuner, from now on, half an hour.
   */
  function openNew({ tuner = schedules.tuner, start, duration = USUAL_LENGTH } = {}) {
    show(null, tuner, newForm(start ?? schedules.clock.wallNow(), duration));
  }

  /**
   * Opens for the plan of a stored schedule, moved to another wall time or to another length in
   * seconds if these are given. Nothing is stored before it is saved.
   */
  async function openChanged(chosen, { start, duration } = {}) {
    const { tuner = schedules.tuner, schedule } = chosen;
    const own = await schedules.formOf(schedule, tuner);
    const whole = await schedules.withRule({ ...chosen, tuner });
    const { date, time } = newForm(start ?? whole.wall, USUAL_LENGTH);
    const length = duration ? { duration: lengthText(duration) } : {};
    show(whole, tuner, { ...own ? ownForm(whole, own) : plainForm(whole), date, time, ...length });
  }

  function show(chosen, tuner, values) {
    if (dialog.open) return; // an earlier click has opened it meanwhile
    find("#problem").textContent = "";
    form.reset();
    setPlan(chosen, values.plain);
    fillChannels();
    fields.tuner.replaceChildren(...schedules.tuners().map((one) => new Option(one, one)));
    fields.tuner.value = tuner;
    fill(values);
    changed();
    opened = entered();
    dialog.showModal();
  }

  function setPlan(newPlan, newIsPlain) {
    [plan, isPlain, wasMoved] = [newPlan, newIsPlain, false];
    find("h2").textContent = plan ? TEXT.change(nameOf(plan.schedule)) : TEXT.new;
    find("#delete").hidden = plan === null;
  }

  // The channel used last comes first.
  function fillChannels() {
    const [last, lastName] = JSON.parse(storage().channel ?? "[]");
    const { channels } = schedules;
    if (last) channels.set(last, channels.get(last) || lastName);
    const options = [...channels].sort(([a], [b]) => (b === last) - (a === last))
      .map(([id, name]) => new Option(name ? `${name} (${id})` : id, id));
    fields.channel.replaceChildren(...options, new Option(TEXT.other, ""));
    if (plan) fields.channel.value = plan.schedule.id;
  }

  function fill({ days, ...values }) {
    for (const [name, value] of Object.entries(values)) {
      fields[name][typeof value === "boolean" ? "checked" : "value"] = value;
    }
    toggles.forEach((box, day) => { box.checked = days[day]; });
  }

  const entered = () => JSON.stringify([...new FormData(form)]);
  const isMoved = ({ wall, id }) => plan && (wall !== plan.wall || id !== plan.schedule.id);

  function showPart(part, shown) {
    part.hidden = (part.control ?? part).disabled = !shown; // of a label, the field
  }

  // Shows the fields of the kind, and tests what the browser does not test by itself.
  function changed(name) {
    const moved = isMoved(draft());
    // Moved, a plain one keeps title and length as a recording of the user's own, if wanted.
    if (plan && isPlain && moved !== wasMoved) fields.plain.checked = !moved;
    wasMoved = moved;
    for (const label of dialog.querySelectorAll(".own")) showPart(label, !fields.plain.checked);
    showPart(find("#plain"), plan ? isPlain && moved : true);
    showPart(find("#on-tuner"), !plan);
    showPart(find("#repeats"), !isPlain || !plan);
    showPart(find("#rule"), fields.repeats.checked);
    showPart(find("#other"), fields.channel.value === "");
    const hint = fields.plain.checked ? TEXT.loses : TEXT.keeps;
    find("#plain .quiet").textContent = plan ? hint : TEXT.plainNew;
    fields.end.disabled = fields.endless.checked;
    fields.end.min = fields.date.value;
    testDays(name === "date");
    showWarning();
  }

  function testDays(isNewDate) {
    const weekday = weekdayOf(wallOf(fields.date.value));
    if (Number.isNaN(weekday)) return;
    const days = toggles.map((box) => box.checked);
    if (isNewDate) followDate(days, weekday).forEach((on, day) => { toggles[day].checked = on; });
    for (const box of toggles) box.setCustomValidity("");
    const first = toggles[weekday];
    first.setCustomValidity(first.checked ? "" : TEXT.wrongDay(first.ariaLabel));
  }

  /** What the fields say, for Schedules.save(). */
  function draft() {
    const id = fields.channel.value || fields.id.value.trim();
    const name = schedules.channels.get(fields.channel.value) ?? fields.channel_name.value.trim();
    return {
      tuner: Number(fields.tuner.value), id, channelName: name,
      plain: fields.plain.checked, repeats: fields.repeats.checked,
      wall: wallOf(`${fields.date.value} ${fields.time.value}`), duration: fields.duration.value,
      title: fields.title.value.trim(), description: fields.description.value,
      rule: {
        weekdaystatus: toggles.map((box) => Number(box.checked)).join(","),
        isweekly: fields.weekly.checked, end_date: fields.endless.checked ? "1" : fields.end.value,
      },
    };
  }

  // What the appliance will record of a draft, null as long as its time is not filled in.
  function wantedOf(own) {
    const { id, wall, plain, repeats, duration, rule } = own;
    if (Number.isNaN(wall)) return null;
    const stays = plan && !isMoved(own);
    return planOf({
      id, start: `${fields.date.value} ${fields.time.value}`,
      start_time: stays ? plan.epoch : schedules.clock.epochOf(wall),
      duration: plain ? stays && plan.length : secondsOf(duration),
    }, repeats ? rule : null);
  }

  /** Says what the recording would collide with, and which tuner is free instead. */
  async function showWarning() {
    const turn = ++warnings;
    const { clock } = schedules;
    const own = draft();
    const wanted = wantedOf(own);
    if (!wanted) return;
    const plans = await schedules.plansOf(own.tuner).catch(() => []);
    if (turn !== warnings) return;
    const others = plans.filter((other) => !plan || !isSame(other.schedule, plan.schedule));
    // The store has one form for a start: a second one would take the place of the first.
    const isTwin = ({ epoch, schedule }) => epoch === wanted.epoch && schedule.is_userdefine;
    fields.time.setCustomValidity(!own.plain && others.some(isTwin) ? TEXT.taken : "");
    const names = collisionsWith(wanted, others, clock)
      .map((other) => `${nameOf(other.schedule)} (${whenOf(other)})`);
    if (names.length > NAMED_COLLISIONS) names.splice(NAMED_COLLISIONS, Infinity, TEXT.others);
    const collides = names.length ? TEXT.collides(names.join(", ")) : "";
    find("#passed").hidden = own.repeats || wanted.epoch + wanted.length > clock.now();
    find("#collisions").textContent = collides;
    const free = collides && await schedules.freeTuner(wanted).catch(() => undefined);
    if (turn !== warnings || !collides || free === undefined) return;
    find("#collisions").textContent = `${collides} ${TEXT.free(free)}`;
  }

  async function run(action) {
    submit.disabled = true;
    find("#problem").textContent = "";
    try {
      if (await action() !== false) dialog.close();
    } catch (problem) {
      find("#problem").textContent = explain(problem);
      if (["gone", 402].includes(problem.code)) { // what was entered can be stored anew
        setPlan(null, fields.plain.checked = false);
        changed();
      }
    } finally {
      submit.disabled = false;
    }
  }

  async function save() {
    const own = draft();
    if (own.channelName) schedules.channels.set(own.id, own.channelName);
    await actions.save(own, plan?.schedule);
    storage().channel = JSON.stringify([own.id, own.channelName]);
  }

  const isChanged = () => dialog.open && entered() !== opened;

  // What was entered is not lost without a question, nor while it is being saved.
  async function leave() {
    if (submit.disabled) return;
    if (!isChanged() || await actions.ask(TEXT.discard, TEXT.discardVerb)) dialog.close();
  }

  form.addEventListener("input", (event) => changed(event.target.name));
  form.addEventListener("submit", (event) => {
    event.preventDefault();
    run(save);
  });
  find("#cancel").addEventListener("click", leave);
  find("#delete").addEventListener("click", () =>
    run(() => actions.remove([plan.schedule], plan.tuner)));
  dialog.addEventListener("cancel", (event) => { // the way back of a phone
    event.preventDefault();
    leave();
  });
  dialog.addEventListener("keydown", (event) => {
    if (event.key !== "Escape") return;
    event.preventDefault(); // otherwise a second one would close it in spite of "cancel"
    leave();
  });
  addEventListener("beforeunload", (event) => { if (isChanged()) event.preventDefault(); });
  return { openNew, openChanged, refresh: () => dialog.open && showWarning() };
}
