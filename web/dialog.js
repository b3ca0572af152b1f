// The dialog in which a recording of any kind is created, changed and deleted.
import { isRepeat } from "./schedules.js";
import { explain } from "./text.js";
import { collisionsWith, dateText, isDate, planOf, timeText, wallOf, weekdayOf } from "./week.js";
import { secondsOf } from "./week.js";
import { nameOf, whenOf } from "./words.js";

const NAMED_COLLISIONS = 4;

const isSame = (a, b) => a.schedule.primeid === b.schedule.primeid;

/**
 * Makes the dialog. `actions.save(draft, old)` and `actions.remove(schedules)` read again what
 * stands afterwards, and throw what went wrong; false means that nothing was done.
 */
export function makeDialog(dialog, schedules, actions) {
  const form = dialog.querySelector("form");
  const fields = form.elements;
  const find = (selector) => dialog.querySelector(selector);
  const toggles = [...fields.day]; // Sunday first
  let plan = null; // of the schedule that is changed

  /** Opens for a new recording, or for the plan of a stored one. */
  async function open(chosen = null) {
    const own = chosen ? await schedules.formOf(chosen.schedule) : await schedules.newForm();
    setPlan(chosen && await schedules.withRule(chosen));
    find("#problem").textContent = "";
    form.reset();
    fillChannels();
    fill(own ?? {});
    changed();
    dialog.showModal();
  }

  function setPlan(newPlan) {
    plan = newPlan;
    find("h2").textContent = plan ? `Change ${nameOf(plan.schedule)}` : "New recording";
    find("#kinds").disabled = plan !== null;
    find("#delete").hidden = plan === null;
  }

  function fillChannels() {
    const options = [...schedules.channels].map(([id, name]) =>
      new Option(name ? `${name} (${id})` : id, id));
    fields.channel.replaceChildren(...options, new Option("Other…", ""));
    if (plan) fields.channel.value = plan.schedule.id;
  }

  // `own` is the form of a user-defined schedule or of a new one. Without a value of its own, a
  // field keeps that of the page.
  function fill(own) {
    const wall = plan?.wall ?? wallOf(`${own.start_date} ${own.start_time}`);
    const { title, description, duration, is_repeat = false } = own;
    const { weekdaystatus, end_date, isweekly = true } = { ...own, ...plan?.rule };
    const plainKind = plan && isRepeat(plan.schedule) ? "repeat" : "oneshot";
    const texts = {
      kind: plan && own.channel_id ? "userdefine" : plainKind, title, description, duration,
      date: dateText(wall), time: timeText(wall), end: isDate(end_date) && end_date,
    };
    for (const [name, text] of Object.entries(texts)) if (text) fields[name].value = text;
    fields.repeats.checked = is_repeat;
    fields.weekly.checked = isweekly;
    fields.endless.checked = !isDate(end_date);
    const flags = String(weekdaystatus).split(",");
    toggles.forEach((box, day) => { box.checked = flags[day] === "1"; });
  }

  const isOwn = () => fields.kind.value === "userdefine";
  const isRepeating = () => fields.kind.value === "repeat" || isOwn() && fields.repeats.checked;

  function showPart(selector, shown) {
    find(selector).hidden = find(selector).disabled = !shown;
  }

  // Shows the fields of the kind, and tests what the browser does not test by itself.
  function changed(name) {
    showPart("#own", isOwn());
    showPart("#rule", isRepeating());
    showPart("#other", fields.channel.value === "");
    fields.end.disabled = fields.endless.checked;
    fields.end.min = fields.date.value;
    const first = toggles[weekdayOf(wallOf(fields.date.value || "1970-01-04"))];
    if (name === "date") first.checked = true;
    for (const box of toggles) box.setCustomValidity("");
    first.setCustomValidity(first.checked ? "" : `It begins on a ${first.ariaLabel}: choose that.`);
    showWarning();
  }

  /** What the fields say, for Schedules.save(). */
  function draft() {
    const id = fields.channel.value || fields.id.value.trim();
    const name = schedules.channels.get(fields.channel.value) ?? fields.channel_name.value.trim();
    return {
      id, channelName: name || id, kind: fields.kind.value, repeats: isRepeating(),
      wall: wallOf(`${fields.date.value} ${fields.time.value}`), duration: fields.duration.value,
      title: fields.title.value.trim(), description: fields.description.value,
      rule: {
        weekdaystatus: toggles.map((box) => Number(box.checked)).join(","),
        isweekly: fields.weekly.checked, end_date: fields.endless.checked ? "1" : fields.end.value,
      },
    };
  }

  /** Says what the recording would collide with, as far as its fields are filled. */
  function showWarning() {
    const { id, wall, repeats, duration, rule } = draft();
    if (Number.isNaN(wall)) return;
    const { clock, plans } = schedules;
    const wanted = planOf({
      id, start: `${fields.date.value} ${fields.time.value}`, start_time: clock.epochOf(wall),
      duration: isOwn() ? secondsOf(duration) : plan?.length,
    }, repeats ? rule : null);
    const others = plans.filter((other) => !plan || !isSame(other, plan));
    // The store has one form for a start: a second one would take the place of the first.
    const isTwin = ({ epoch, schedule }) => epoch === wanted.epoch && schedule.is_userdefine;
    const isTaken = isOwn() && others.some(isTwin);
    fields.time.setCustomValidity(isTaken ? "A user-defined schedule starts then." : "");
    const names = collisionsWith(wanted, others, clock)
      .map((other) => `${nameOf(other.schedule)} (${whenOf(other)})`);
    if (names.length > NAMED_COLLISIONS) names.splice(NAMED_COLLISIONS, Infinity, "others");
    find("#collisions").textContent = names.length ? `Collides with ${names.join(", ")}.` : "";
    find("#passed").hidden = repeats || wanted.epoch + wanted.length > clock.now();
  }

  async function run(action) {
    find("[type=submit]").disabled = true;
    find("#problem").textContent = "";
    try {
      if (await action() !== false) dialog.close();
    } catch (problem) {
      find("#problem").textContent = explain(problem);
      if (plan && !schedules.plans.some((one) => isSame(one, plan))) setPlan(null); // it is gone
    } finally {
      find("[type=submit]").disabled = false;
    }
  }

  form.addEventListener("input", (event) => changed(event.target.name));
  form.addEventListener("submit", (event) => {
    event.preventDefault();
    run(() => actions.save(draft(), plan?.schedule));
  });
  find("#cancel").addEventListener("click", () => dialog.close());
  find("#delete").addEventListener("click", () => run(() => actions.remove([plan.schedule])));
  return { open, refresh: () => dialog.open && showWarning() };
}
