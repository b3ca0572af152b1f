// The dialog in which a recording of any kind is created, changed and deleted.
import { followDate, newForm, storedForm } from "./form.js";
import { isSame } from "./schedules.js";
import { LOCALE, TEXT, explain } from "./text.js";
import { collisionsWith, hasEnded, planOf, secondsOf, wallOf, weekdayOf } from "./week.js";
import { FIRST_WEEKDAY, LONG_SUNDAY_FIRST, SUNDAY_FIRST, nameOf, whenOf } from "./words.js";

const LIST = new Intl.ListFormat(LOCALE);
const NAMED_COLLISIONS = 4;
const USUAL_LENGTH = 1800;
const DOUBLE_CLICK = 500; // milliseconds

const storage = () => { try { return localStorage; } catch { return {}; } }; // it may be forbidden

/**
 * Makes the dialog. `actions.save(draft, old)` and `actions.remove(schedules)` read again what
 * stands afterwards, and throw what went wrong; false means that nothing was done.
 * `actions.ask(text, verb)` tells whether the user agrees.
 */
export function makeDialog(dialog, schedules, actions) {
  const form = dialog.querySelector("form");
  const fields = form.elements;
  const find = (selector) => dialog.querySelector(selector);
  const submit = find("[type=submit]");
  const toggles = [...fields.day]; // Sunday first
  let plan = null; // of the schedule that is changed
  let isPlain = false; // whether that one has no title and length of the user's own
  let wasMoved = false;
  let openedAt = -Infinity; // milliseconds
  let opened = ""; // what the fields said when the dialog was opened
  let warnings = 0; // counts; what an earlier one still gets is not shown

  /**
   * Opens for a new recording on a tuner, from a wall time on, of a length in seconds. Without
   * them: on the shown tuner, from now on, half an hour.
   */
  function openNew({ tuner = schedules.tuner, start, duration = USUAL_LENGTH } = {}) {
    show(null, { tuner, ...newForm(start ?? schedules.clock.wallNow(), duration) });
  }

  /**
   * Opens for the plan of a stored schedule, moved to another tuner, wall time or length in seconds
   * if these are given. Nothing is stored before it is saved.
   */
  async function openChanged(chosen, { tuner, start, duration } = {}) {
    const { schedule, wall, length } = chosen;
    const own = await schedules.formOf(schedule);
    const whole = await schedules.withRule(chosen);
    const values = storedForm(whole, own, start ?? wall, duration ?? length);
    show(whole, { tuner: tuner ?? schedule.tuner, ...values });
  }

  function show(chosen, { days, ...values }) {
    if (dialog.open) return; // an earlier click has opened it meanwhile
    find("#problem").textContent = "";
    form.reset();
    fields.tuner.replaceChildren(...schedules.tuners().map((one) => new Option(one, one)));
    fillChannels(chosen?.schedule.id);
    for (const [name, value] of Object.entries(values)) {
      fields[name][typeof value === "boolean" ? "checked" : "value"] = value;
    }
    toggles.forEach((box, day) => { box.checked = days[day]; });
    setPlan(chosen, values.plain);
    opened = entered();
    dialog.showModal();
    openedAt = performance.now();
    find("input:enabled, select:enabled").focus();
  }

  // The channel used last comes first.
  function fillChannels(chosen) {
    const { channels } = schedules;
    const [last, lastName] = JSON.parse(storage().channel ?? "[]");
    if (last) channels.set(last, channels.get(last) || lastName);
    const options = [...channels].sort(([a], [b]) => (b === last) - (a === last))
      .map(([id, name]) => new Option(name ? `${name} (${id})` : id, id));
    fields.channel.replaceChildren(...options, new Option(TEXT.other, ""));
    if (chosen) fields.channel.value = chosen;
  }

  function setPlan(newPlan, newIsPlain) {
    [plan, isPlain, wasMoved] = [newPlan, newPlan && newIsPlain, false];
    find("h2").textContent = plan ? TEXT.change(nameOf(plan.schedule)) : TEXT.new;
    find("#delete").hidden = plan === null;
    changed();
  }

  const entered = () => JSON.stringify([...new FormData(form)]);
  const isChanged = () => dialog.open && entered() !== opened;
  const isMoved = ({ tuner, wall, id }) => plan &&
    (tuner !== plan.schedule.tuner || wall !== plan.wall || id !== plan.schedule.id);

  // Shows the fields of the kind, and tests what the browser does not test by itself.
  function changed(name) {
    const { plain, repeats } = fields;
    const moved = isMoved(draft());
    // A plain one that is moved keeps title and length as one of the user's own, if that is wanted.
    if (isPlain && moved !== wasMoved) plain.checked = !moved;
    wasMoved = moved;
    const parts = {
      ".own": !plain.checked, "#kind": !plan || isPlain && moved, "#repeats": !isPlain,
      "#rule": repeats.checked, "#other": fields.channel.value === "",
    };
    for (const [selector, shown] of Object.entries(parts)) {
      for (const part of dialog.querySelectorAll(selector)) {
        part.hidden = (part.control ?? part).disabled = !shown; // of a label, the field
      }
    }
    const [ticked, unticked] = plan ? [TEXT.loses, TEXT.keeps] : [TEXT.plainNew, ""];
    find("#kind .quiet").textContent = plain.checked ? ticked : unticked;
    fields.end.disabled = fields.endless.checked;
    fields.end.min = fields.date.value;
    if (fields.date.value) testDays(name === "date");
    showWarning();
  }

  function testDays(isNewDate) {
    const weekday = weekdayOf(wallOf(fields.date.value));
    const days = toggles.map((box) => box.checked);
    if (isNewDate) followDate(days, weekday).forEach((on, day) => { toggles[day].checked = on; });
    for (const box of toggles) box.setCustomValidity("");
    const { checked, ariaLabel } = toggles[weekday];
    toggles[weekday].setCustomValidity(checked ? "" : TEXT.wrongDay(ariaLabel));
  }

  /** What the fields say, for Schedules.save(). */
  function draft() {
    const { channel, date, time, endless } = fields;
    return {
      tuner: Number(fields.tuner.value), id: channel.value || fields.id.value.trim(),
      channelName: schedules.channels.get(channel.value) ?? fields.channel_name.value.trim(),
      plain: fields.plain.checked, repeats: fields.repeats.checked,
      wall: wallOf(`${date.value} ${time.value}`), duration: fields.duration.value,
      title: fields.title.value.trim(), description: fields.description.value,
      rule: {
        weekdaystatus: toggles.map((box) => Number(box.checked)).join(","),
        isweekly: fields.weekly.checked, end_date: endless.checked ? "1" : fields.end.value,
      },
    };
  }

  // What the appliance will record of a draft.
  function wantedOf(own) {
    const stays = plan && !isMoved(own);
    return planOf({
      id: own.id, start: `${fields.date.value} ${fields.time.value}`,
      start_time: stays ? plan.epoch : schedules.clock.epochOf(own.wall),
      duration: own.plain ? stays && plan.length : secondsOf(own.duration),
    }, own.repeats ? own.rule : null);
  }

  /** Says what the recording would collide with, and which tuner is free instead. */
  async function showWarning() {
    const turn = ++warnings;
    const own = draft();
    if (Number.isNaN(own.wall)) return say(false, [], false);
    const wanted = wantedOf(own);
    const plans = await schedules.plansOf(own.tuner).catch(() => []);
    if (turn !== warnings) return;
    const others = plans.filter((other) => !plan || !isSame(other.schedule, plan.schedule));
    // The store has one form for a start: a second one would take the place of the first.
    const isTwin = ({ epoch, schedule }) => epoch === wanted.epoch && schedule.is_userdefine;
    const { clock } = schedules;
    const collisions = collisionsWith(wanted, others, clock);
    say(hasEnded(wanted, clock.now(), clock), collisions, !own.plain && others.some(isTwin));
    const free = collisions.length && await schedules.freeTuner(wanted).catch(() => undefined);
    if (turn !== warnings || !collisions.length || free === undefined) return;
    find("#collisions").append(` ${TEXT.free(free)}`);
  }

  function say(hasPassed, collisions, isTaken) {
    find("#passed").hidden = !hasPassed;
    fields.time.setCustomValidity(isTaken ? TEXT.taken : "");
    const names = collisions.slice(0, NAMED_COLLISIONS)
      .map((one) => TEXT.quoted(nameOf(one.plan.schedule), whenOf({ wall: one.begin })));
    if (collisions.length > NAMED_COLLISIONS) names.push(TEXT.others);
    find("#collisions").textContent = names.length ? TEXT.collides(LIST.format(names)) : "";
  }

  async function run(action) {
    if (submit.disabled) return; // another action runs
    submit.disabled = true;
    find("#problem").textContent = "";
    try {
      if (await action() !== false) dialog.close();
    } catch (problem) {
      find("#problem").textContent = explain(problem);
      find("#problem").scrollIntoView({ block: "nearest" });
      if (problem.code !== "gone" && problem.code !== 402) return;
      fields.plain.checked = false; // what was entered can be stored anew
      setPlan(null);
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

  // What was entered is not lost without a question, nor while it is being saved.
  async function leave() {
    if (submit.disabled) return;
    if (!isChanged() || await actions.ask(TEXT.discard, TEXT.discardVerb)) dialog.close();
  }

  dialog.addEventListener("cancel", (event) => { // the way back of a phone
    event.preventDefault();
    leave();
  });
  // The second half of a double click that opened the dialog is not meant for what lies there now.
  for (const type of ["mousedown", "click"]) {
    dialog.addEventListener(type, (event) => {
      if (event.detail < 2 || performance.now() - openedAt > DOUBLE_CLICK) return;
      event.preventDefault();
      event.stopPropagation();
    }, true);
  }
  form.addEventListener("input", (event) => changed(event.target.name));
  form.addEventListener("submit", (event) => {
    event.preventDefault();
    run(save);
  });
  find(".cancel").addEventListener("click", leave);
  find("#delete").addEventListener("click", () => run(() => actions.remove([plan.schedule])));
  addEventListener("beforeunload", (event) => { if (isChanged()) event.preventDefault(); });
  toggles.forEach((box, day) => {
    box.ariaLabel = LONG_SUNDAY_FIRST[day];
    box.after(SUNDAY_FIRST[day]);
  });
  find("#weekdays").append(...toggles.slice(0, FIRST_WEEKDAY).map((box) => box.parentNode));
  return { openNew, openChanged, refresh: () => dialog.open && showWarning() };
}
