// The dialog in which a recording of any kind is created, changed and deleted.
import { isRepeat } from "./schedules.js";
import { collisionsWith, dateText, planOf, secondsOf, timeText, wallOf, weekdayOf } from "./week.js";
import { nameOf, whenOf } from "./words.js";

const NAMED_COLLISIONS = 4;
const PLAIN_HINT = "The appliance takes title and length from elsewhere, or records half an hour.";
const CHANGE_HINT = "Another start or channel makes it a new schedule, without the title and length that it has now.";

/**
 * `actions.save(draft, old)` and `actions.remove(schedules)` do what they say, read again what stands then, and throw
 * what went wrong; false means that nothing was done.
 */
export function makeDialog(dialog, schedules, actions) {
  const form = dialog.querySelector("form");
  const fields = form.elements;
  const find = (selector) => dialog.querySelector(selector);
  const toggles = [...form.querySelectorAll("[name=day]")]; // Sunday first
  let plan = null; // of the schedule that is changed

  /** Opens for a new recording, or for the plan of a stored one. */
  async function open(chosen = null) {
    const own = chosen ? await schedules.formOf(chosen.schedule) : await schedules.newForm();
    plan = chosen && chosen.rule === undefined ? await schedules.withRule(chosen) : chosen;
    form.reset();
    find("#problem").textContent = "";
    find("#recording-title").textContent = plan ? `Change ${nameOf(plan.schedule)}` : "New recording";
    find("#kinds").disabled = plan !== null;
    find("#delete").hidden = plan === null;
    fill(own);
    changed();
    dialog.showModal();
  }

  function fill(own) {
    const options = [...schedules.channels].map(([id, name]) => new Option(name ? `${name} (${id})` : id, id));
    fields.channel.replaceChildren(...options, new Option("Other…", ""));
    if (plan) fields.channel.value = plan.schedule.id;
    const stored = own && plan ? "userdefine" : plan && isRepeat(plan.schedule) ? "repeat" : "oneshot";
    const wall = plan?.wall ?? wallOf(`${own.start_date} ${own.start_time}`);
    const rule = { ...own, ...plan?.rule };
    const endless = !/^\d{4}-\d\d-\d\d$/.test(rule.end_date);
    const texts = {
      kind: stored, date: dateText(wall), time: timeText(wall), end: endless ? "" : rule.end_date,
      title: own?.title ?? "", description: own?.description ?? "", duration: own?.duration ?? "00:30",
    };
    for (const [name, text] of Object.entries(texts)) fields[name].value = text;
    fields.repeats.checked = own?.is_repeat ?? false;
    fields.weekly.checked = rule.isweekly ?? true;
    fields.endless.checked = endless;
    const flags = String(rule.weekdaystatus).split(",");
    toggles.forEach((box, day) => { box.checked = flags[day] === "1"; });
  }

  const isRepeating = () => fields.kind.value === "repeat" || !fields.own.disabled && fields.repeats.checked;

  function showPart(selector, shown) {
    find(selector).hidden = find(selector).disabled = !shown;
  }

  // Shows the fields of the kind, and tests what the browser does not test by itself.
  function changed(name) {
    const own = fields.kind.value === "userdefine";
    find("#hint").textContent = own ? "" : plan ? CHANGE_HINT : PLAIN_HINT;
    showPart("#own", own);
    showPart("#rule", isRepeating());
    showPart("#other", fields.channel.value === "");
    fields.end.disabled = fields.endless.checked;
    const first = toggles[weekdayOf(wallOf(fields.date.value || "1970-01-04"))];
    if (name === "date") first.checked = true;
    for (const box of toggles) box.setCustomValidity("");
    first.setCustomValidity(first.checked ? "" : `The first day is a ${first.ariaLabel}: it must be one of the days.`);
    fields.duration.setCustomValidity(fields.duration.value === "00:00" ? "The length must be more than nothing." : "");
    fields.end.setCustomValidity(fields.end.value < fields.date.value ? "The last day is before the first." : "");
    showWarning();
  }

  /** What the fields say, for Schedules.save(). */
  function draft() {
    const id = fields.channel.value || fields.id.value.trim();
    const name = fields.channel.value ? schedules.channels.get(id) : fields.channel_name.value.trim();
    return {
      id, kind: fields.kind.value, repeats: isRepeating(), channelName: name || id,
      wall: wallOf(`${fields.date.value} ${fields.time.value}`),
      title: fields.title.value.trim(), description: fields.description.value, duration: fields.duration.value,
      rule: {
        weekdaystatus: toggles.map((box) => Number(box.checked)).join(","),
        isweekly: fields.weekly.checked, end_date: fields.endless.checked ? "1" : fields.end.value,
      },
    };
  }

  /** Names what the recording would collide with, as far as its fields are filled. */
  function showWarning() {
    const { id, kind, wall, repeats, duration, rule } = draft();
    if (Number.isNaN(wall)) return;
    const { clock, plans } = schedules;
    const length = kind === "userdefine" ? secondsOf(duration) : plan?.length;
    const start = `${fields.date.value} ${fields.time.value}`;
    const wanted = planOf({ id, start, start_time: clock.epochOf(wall), duration: length }, repeats ? rule : null);
    const others = plans.filter(({ schedule }) => schedule.primeid !== plan?.schedule.primeid);
    // The store has one form for a start and tuner: a second one would take the place of the first.
    const isTwin = (other) => other.epoch === wanted.epoch && other.schedule.is_userdefine;
    const twin = kind === "userdefine" && others.find(isTwin);
    fields.time.setCustomValidity(twin ? `${nameOf(twin.schedule)} starts then. Choose another start.` : "");
    const names = collisionsWith(wanted, others, clock).map((other) => `${nameOf(other.schedule)} (${whenOf(other)})`);
    const more = names.splice(NAMED_COLLISIONS).length;
    if (more) names.push(`${more} more`);
    const passed = !repeats && wanted.epoch + wanted.length <= clock.now() ? "This time has passed. " : "";
    find("#collisions").textContent = passed + (names.length ? `Collides with ${names.join(", ")}.` : "");
  }

  async function run(action) {
    const save = find("[type=submit]");
    save.disabled = true;
    find("#problem").textContent = "";
    try {
      if (await action() !== false) dialog.close();
    } catch (problem) {
      find("#problem").textContent = problem.message + noteLoss();
    } finally {
      save.disabled = false;
    }
  }

  // A failed change can leave nothing of the old schedule. Saving then stores a new one.
  function noteLoss() {
    if (!plan || schedules.plans.some(({ schedule }) => schedule.primeid === plan.schedule.primeid)) return "";
    plan = null;
    find("#delete").hidden = true;
    return " The schedule is no longer stored as it was; saving stores a new one.";
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
