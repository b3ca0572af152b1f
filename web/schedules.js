// Holds the schedules of the tuner that is shown. Reads them with their rules, and saves and
// deletes them by the methods of their kind.
import { ApiError } from "./api.js";
import { Clock, collisionsWith, planOf, serviceOf, wallOf } from "./week.js";

const AT_ONCE = 4; // requests for rules; each starts a program on the appliance
export const PAGE = 50;

export const isRepeat = (schedule) => schedule.status >= 12 && schedule.status <= 15;
const sameKey = (a, b) => a.start_time === b.start_time && serviceOf(a) === serviceOf(b);

/** Whether two schedules of a tuner are the same one, whatever else has changed of it. */
export const isSame = (a, b) => sameKey(a, b) && isRepeat(a) === isRepeat(b);

/** The first of the tuners on which a plan collides with none of theirs. `entries`: tuner, plans */
export function freeTuner(wanted, entries, clock) {
  return entries.find(([, plans]) => !collisionsWith(wanted, plans, clock).length)?.[0];
}

/** Works on all items, some at a time. All of them are tried; then the first failure is thrown. */
async function forEach(items, limit, work) {
  const queue = items.values(); // the workers share it
  const failures = [];
  const worker = async () => {
    for (const item of queue) await work(item).catch((failure) => failures.push(failure));
  };
  await Promise.all(Array.from({ length: limit }, worker));
  if (failures.length) throw failures[0];
}

export class Schedules {
  tuner = 0;
  turn = 0; // counts the readings; what an earlier one still gets is not kept
  plans = [];
  clock = new Clock();
  channels = new Map(); // name by id, of all schedules seen: no method lists the channels
  #others = new Map(); // plans of other tuners, as promises
  #api;

  constructor(api) { this.#api = api; }

  #call(method, parameters) { return this.#api.call(method, { tuner: this.tuner, ...parameters }); }

  /** Reads a list. A schedule without a channel's name gets that of another one. */
  async #list(parameters) {
    const answer = await this.#call("list", parameters);
    const { channels } = this;
    for (const { id, channel_name: name } of answer.schedules) {
      channels.set(id, name || channels.get(id) || "");
    }
    for (const one of answer.schedules) one.channel_name = channels.get(one.id);
    return answer;
  }

  #plansOf(schedules, tuner) {
    return schedules.map((one) => {
      const plan = { ...planOf(one, isRepeat(one) ? undefined : null), tuner };
      this.clock.learn(plan.wall, plan.epoch);
      return plan;
    });
  }

  /** Reads a tuner whole, but for its rules: loadRules() reads those. Returns the turn. */
  async load(tuner) {
    const turn = ++this.turn;
    if (tuner !== this.tuner) Object.assign(this, { tuner, plans: [] });
    const [{ schedules }, now] = await Promise.all([this.#list({ tuner }), this.#api.now(tuner)]);
    if (turn !== this.turn) return turn;
    this.clock.setNow(wallOf(`${now.form.start_date} ${now.form.start_time}`), now.epoch);
    this.plans = this.#plansOf(schedules, tuner);
    this.#others.clear();
    return turn;
  }

  lacksRules() { return this.plans.some(({ rule }) => rule === undefined); }

  /** Reads the days and the ends of the repeat schedules, which `list` does not tell. */
  loadRules(plans = this.plans) { // another tuner may be chosen meanwhile
    return forEach([...plans.entries()], AT_ONCE, async ([index, plan]) => {
      plans[index] = await this.withRule(plan);
    });
  }

  /** The plan with its rule, which is read if it is not known. */
  async withRule(plan) {
    if (plan.rule !== undefined) return plan;
    const rule = await this.#ruleOf(plan.schedule, plan.tuner);
    return rule ? { ...planOf(plan.schedule, rule), tuner: plan.tuner } : plan;
  }

  #ruleOf({ id, start_time }, tuner) {
    return this.#call("getinfo_repeat", { tuner, id, start_time });
  }

  /** The tuners that are looked at together: the first four, and the shown one. */
  tuners() { return [...new Set([0, 1, 2, 3, this.tuner])]; }

  /**
   * The plans of any tuner, with their rules. Those of a tuner that is not shown are read once,
   * until the shown one is read again.
   */
  async plansOf(tuner) {
    if (tuner === this.tuner) return this.plans;
    if (!this.#others.has(tuner)) this.#others.set(tuner, this.#readOther(tuner));
    return this.#others.get(tuner);
  }

  async #readOther(tuner) {
    const plans = this.#plansOf((await this.#list({ tuner })).schedules, tuner);
    await this.loadRules(plans);
    return plans;
  }

  /** The number of a tuner on which a plan collides with nothing, undefined if there is none. */
  async freeTuner(wanted) {
    const read = async (tuner) => [tuner, await this.plansOf(tuner)];
    return freeTuner(wanted, await Promise.all(this.tuners().map(read)), this.clock);
  }

  /** One page as the server cuts it; the first one if the list has become too short for it. */
  async page(start) {
    if (start > 0 && start < this.plans.length) return this.#list({ start, limit: PAGE });
    return { start: 0, schedules: this.plans.slice(0, PAGE).map(({ schedule }) => schedule) };
  }

  clearPassed() { return this.#call("delete_passed"); }
  stop() { return this.#call("delete"); }

  /**
   * The form of a user-defined schedule, otherwise null. `is_userdefine` also marks a plain
   * schedule that starts with a user-defined one.
   */
  async formOf(schedule, tuner = this.tuner) {
    if (!schedule.is_userdefine) return null;
    const { start_time } = schedule;
    const form = await this.#call("getinfo_userdefine", { tuner, start_time });
    return serviceOf({ id: form.channel_id }) === serviceOf(schedule) ? form : null;
  }

  /** What is stored of a schedule; throws an ApiError with a code if it is no longer there. */
  async #find(wanted, tuner, code) {
    const { schedules } = await this.#list({ tuner });
    const found = schedules.find((one) => isSame(one, wanted));
    if (!found) throw new ApiError("list", code);
    return found;
  }

  /**
   * Stores what the dialog describes, in place of `old` if that is given, and returns the schedule
   * as it is read back. If the clock did not know the UTC offset of its date, it is then moved.
   */
  async save(draft, old) {
    if (old) await this.#find(old, draft.tuner, "gone");
    const isMoved = !old || wallOf(old.start) !== draft.wall;
    const epoch = isMoved ? this.clock.epochOf(draft.wall) : old.start_time;
    const stored = await this.#store(draft, epoch, old);
    const wall = wallOf(stored.start);
    if (wall === draft.wall) return stored;
    this.clock.learn(wall, epoch);
    return this.#store(draft, this.clock.epochOf(draft.wall), stored);
  }

  /** Stores a draft at an epoch, and reads it back. */
  async #store(draft, epoch, old) {
    const key = { id: draft.id, start_time: epoch };
    if (draft.plain) await this.#storePlain(draft, key, old);
    else await this.#storeUserdefined(draft, epoch, old);
    const status = draft.repeats ? 12 : 1;
    const stored = await this.#find({ ...key, status }, draft.tuner, "missing");
    if (!draft.plain && !stored.is_userdefine) throw new ApiError("list", "missing");
    return stored;
  }

  async #storePlain({ tuner, repeats, rule }, key, old) {
    const stays = old && old.id === key.id && old.start_time === key.start_time;
    const ruleMethod = stays ? "edit_repeat" : "create_repeat";
    if (repeats) await this.#call(ruleMethod, { tuner, ...key, ...rule });
    else if (!stays) await this.#call("create", { tuner, ...key });
    if (old && !stays) await this.#replace(old, tuner);
  }

  async #storeUserdefined({ tuner, ...draft }, epoch, old) {
    const { id, channelName, title, description, duration, repeats, rule } = draft;
    const texts = { tuner, id, channel_name: channelName || id, title, description, duration };
    const form = this.#timed({ ...texts, is_repeat: repeats, ...(repeats && rule) }, epoch);
    if (old && await this.formOf(old, tuner)) {
      const [orig_start_date, orig_start_time] = this.clock.reading(old.start_time);
      return this.#call("edit_userdefine", { ...form, orig_start_date, orig_start_time });
    }
    await this.#call("create_userdefine", form);
    return old && this.#replace(old, tuner);
  }

  // No method moves a plain schedule: it is deleted when the new one is stored.
  #replace(old, tuner) {
    return this.remove([old], tuner).catch((problem) => {
      if (problem.code !== 402) throw problem; // it is gone already
    });
  }

  /**
   * Deletes schedules of any kind. If one fails, the others are still tried. Returns a function
   * that stores them again; what is plain then lacks its title and its length.
   */
  async remove(schedules, tuner = this.tuner) {
    const found = [];
    await forEach(schedules, AT_ONCE, async (schedule) => {
      const { id, start_time } = schedule;
      const form = await this.formOf(schedule, tuner);
      const rule = isRepeat(schedule) && await this.#ruleOf(schedule, tuner);
      const kind = form ? "_userdefine" : isRepeat(schedule) ? "_repeat" : "";
      const named = { ...form, channel_name: form?.channel_name || id };
      const own = form && this.#timed(named, start_time);
      found.push({ schedule, kind, made: { ...rule, id, start_time, ...own } });
    });
    const calls = found.map(({ kind, made: { id }, schedule: { start_time } }) =>
      [`delete${kind}`, { tuner, id: start_time, channel_id: id }]);
    // delete_repeat does not tell the tuner daemon, delete_userdefine does. Start 0, which no
    // schedule has, deletes nothing.
    if (found.some(({ kind }) => kind === "_repeat")) {
      calls.push(["delete_userdefine", { tuner, id: "0" }]);
    }
    const callAll = (some) => forEach(some, 1, (call) => this.#call(...call));
    await callAll(calls);
    return async () => {
      await callAll(found.map(({ kind, made }) => [`create${kind}`, { tuner, ...made }]));
      for (const { schedule } of found) await this.#find(schedule, tuner, "missing");
    };
  }

  // With the date and the time that stand for an epoch in a request.
  #timed(form, epoch) {
    const [start_date, start_time] = this.clock.reading(epoch);
    return { ...form, start_date, start_time };
  }
}
