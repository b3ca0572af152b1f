// Holds the schedules of the tuner that is shown. Reads them with their rules, and saves and
// deletes them by the methods of their kind.
import { ApiError } from "./api.js";
import { Clock, collisionsWith, planOf, serviceOf, wallOf } from "./week.js";

const AT_ONCE = 4; // requests for rules; each starts a program on the appliance

export const isRepeat = (schedule) => schedule.status >= 12 && schedule.status <= 15;

/** Whether two schedules are the same one, whatever else has changed of it. */
export const isSame = (a, b) => a.tuner === b.tuner && a.start_time === b.start_time &&
  serviceOf(a) === serviceOf(b) && isRepeat(a) === isRepeat(b);

// What the methods of a kind have in their names.
const kindOf = (plain, repeats) => (plain ? repeats ? "_repeat" : "" : "_userdefine");

/** The first tuner on which a plan collides with nothing, of [tuner, its plans]; else undefined. */
export const freeTuner = (wanted, tuners, clock) =>
  tuners.find(([, plans]) => !collisionsWith(wanted, plans, clock).length)?.[0];

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
  #others = new Map(); // promises of the plans of other tuners
  #api;

  constructor(api) { this.#api = api; }

  /** Reads a list. Its schedules tell their tuner, and the name of the channel if one has it. */
  async #list(tuner) {
    const { schedules } = await this.#api.call("list", { tuner });
    for (const { id, channel_name: name } of schedules) {
      this.channels.set(id, name || this.channels.get(id) || "");
    }
    for (const one of schedules) {
      Object.assign(one, { tuner, channel_name: this.channels.get(one.id) });
    }
    return schedules;
  }

  async #read(tuner) {
    const schedules = await this.#list(tuner);
    for (const { start, start_time } of schedules) this.clock.learn(wallOf(start), start_time);
    return schedules.map((one) => planOf(one, isRepeat(one) ? undefined : null));
  }

  /** Reads a tuner whole, but for its rules: loadRules() reads those. Returns the turn. */
  async load(tuner) {
    const turn = ++this.turn;
    if (tuner !== this.tuner) Object.assign(this, { tuner, plans: [] });
    const [plans, now] = await Promise.all([this.#read(tuner), this.#api.now(tuner)]);
    if (turn !== this.turn) return turn;
    this.clock.setNow(wallOf(`${now.form.start_date} ${now.form.start_time}`), now.epoch);
    this.plans = plans;
    this.#others.clear();
    return turn;
  }

  lacksRules() { return this.plans.some(({ rule }) => rule === undefined); }

  /** Reads the days and the ends of the repeat schedules, which `list` does not tell. */
  async loadRules(plans = this.plans) { // another tuner may be chosen meanwhile
    await forEach([...plans.entries()], AT_ONCE, async ([index, plan]) => {
      plans[index] = await this.withRule(plan);
    });
    return plans;
  }

  #ruleOf({ tuner, id, start_time }) {
    return this.#api.call("getinfo_repeat", { tuner, id, start_time });
  }

  /** The plan with its rule, which is read if it is not known. */
  async withRule(plan) {
    const rule = plan.rule ?? (plan.rule === undefined && await this.#ruleOf(plan.schedule));
    return rule ? planOf(plan.schedule, rule) : plan;
  }

  /** The tuners that are looked at together: the first four, and the shown one. */
  tuners() { return [...new Set([0, 1, 2, 3, this.tuner])]; }

  /** The plans of any tuner with their rules. Other tuners are read once for each load(). */
  async plansOf(tuner) {
    if (tuner === this.tuner) return this.plans;
    const read = async () => this.loadRules(await this.#read(tuner));
    if (!this.#others.has(tuner)) this.#others.set(tuner, read());
    return this.#others.get(tuner);
  }

  /** The number of a tuner on which a plan collides with nothing, else undefined. */
  async freeTuner(wanted) {
    const read = async (tuner) => [tuner, await this.plansOf(tuner)];
    return freeTuner(wanted, await Promise.all(this.tuners().map(read)), this.clock);
  }

  clearPassed() { return this.#api.call("delete_passed", { tuner: this.tuner }); }
  stop() { return this.#api.call("delete", { tuner: this.tuner }); }

  /**
   * The form of a user-defined schedule, otherwise null. `is_userdefine` also marks a plain
   * schedule that starts with a user-defined one.
   */
  async formOf(schedule) {
    if (!schedule.is_userdefine) return null;
    const { tuner, start_time } = schedule;
    const form = await this.#api.call("getinfo_userdefine", { tuner, start_time });
    return serviceOf({ id: form.channel_id }) === serviceOf(schedule) ? form : null;
  }

  /** What is stored of a schedule. Throws an ApiError with a code if it is not there. */
  async #find(wanted, code) {
    const schedules = await this.#list(wanted.tuner);
    const found = schedules.find((one) => isSame(one, wanted));
    if (!found) throw new ApiError("list", code);
    return found;
  }

  /**
   * Stores what the dialog describes, in place of `old` if that is given, and returns the schedule
   * as it is read back. If the clock did not know the UTC offset of its date, it is then moved.
   */
  async save(draft, old) {
    if (old) await this.#find(old, "gone");
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
    const { tuner, id, plain, repeats } = draft;
    const store = plain ? this.#storePlain : this.#storeOwn;
    const isNew = await store.call(this, draft, epoch, old);
    // No method moves a plain schedule, or any to another tuner: the old one is then deleted.
    if (old && isNew) await this.remove([old]).catch((problem) => {
      if (problem.code !== 402) throw problem; // it is gone already
    });
    const wanted = { tuner, id, start_time: epoch, status: repeats ? 12 : 1 };
    const stored = await this.#find(wanted, "missing");
    if (!plain && !stored.is_userdefine) throw new ApiError("list", "missing");
    return stored;
  }

  // These two return whether the schedule is a new one, beside which the old one still stands.
  async #storePlain({ tuner, id, repeats, rule }, start_time, old) {
    const isNew = old?.tuner !== tuner || old.id !== id || old.start_time !== start_time;
    const parameters = { tuner, id, start_time, ...(repeats && rule) };
    const method = `${isNew ? "create" : "edit"}${kindOf(true, repeats)}`;
    if (isNew || repeats) await this.#api.call(method, parameters);
    return isNew;
  }

  async #storeOwn(draft, epoch, old) {
    const { tuner, id, channelName, title, description, duration, repeats, rule } = draft;
    const texts = { tuner, id, channel_name: channelName || id, title, description, duration };
    const form = this.#timed({ ...texts, is_repeat: repeats, ...(repeats && rule) }, epoch);
    const isNew = old?.tuner !== tuner || !await this.formOf(old);
    if (isNew) await this.#api.call("create_userdefine", form);
    else await this.#api.call("edit_userdefine", this.#timed(form, old.start_time, "orig_"));
    return isNew;
  }

  // With the date and the time that stand for an epoch in a request.
  #timed(form, epoch, prefix = "") {
    const [date, time] = this.clock.reading(epoch);
    return { ...form, [`${prefix}start_date`]: date, [`${prefix}start_time`]: time };
  }

  /** What would store a schedule again; of a plain one, without its title and its length. */
  async #draftOf(schedule) {
    const { tuner, id, start_time, channel_name: channelName } = schedule;
    const form = await this.formOf(schedule);
    const { title, description, duration } = form ?? {};
    const repeats = isRepeat(schedule);
    const { weekdaystatus, end_date, isweekly } = repeats && await this.#ruleOf(schedule) || {};
    return {
      tuner, id, start_time, channelName, plain: !form, repeats, title, description, duration,
      rule: { weekdaystatus, end_date, isweekly },
    };
  }

  /**
   * Deletes schedules of any kind. If one fails, the others are still tried. Returns a function
   * that stores them again, as far as #draftOf() can, and returns what is read back of them.
   */
  async remove(schedules) {
    const drafts = [];
    await forEach(schedules, AT_ONCE, async (one) => drafts.push(await this.#draftOf(one)));
    const calls = drafts.map(({ tuner, id: channel_id, start_time: id, plain, repeats }) =>
      [`delete${kindOf(plain, repeats)}`, { tuner, id, channel_id }]);
    // delete_repeat does not tell the tuner daemon, delete_userdefine does. Start 0, which no
    // schedule has, deletes nothing.
    const rule = drafts.find(({ plain, repeats }) => plain && repeats);
    if (rule) calls.push(["delete_userdefine", { tuner: rule.tuner, id: 0 }]);
    await forEach(calls, 1, (call) => this.#api.call(...call));
    return async () => {
      const stored = [];
      await forEach(drafts, 1, async (one) => stored.push(await this.#store(one, one.start_time)));
      return stored;
    };
  }
}
