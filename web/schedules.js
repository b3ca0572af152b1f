// Holds the schedules of the tuner that is shown. Reads them with their rules, and saves and
// deletes them by the methods of their kind.
import { Clock, planOf, serviceOf, wallOf } from "./week.js";

const AT_ONCE = 4; // requests for rules; each starts a program on the appliance
export const PAGE = 50;

export const isRepeat = (schedule) => schedule.status >= 12 && schedule.status <= 15;
const sameKey = (a, b) => a.start_time === b.start_time && serviceOf(a) === serviceOf(b);

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
  #api;

  constructor(api) { this.#api = api; }

  #call(method, parameters) { return this.#api.call(method, { tuner: this.tuner, ...parameters }); }

  /** Reads a tuner whole, but for its rules: loadRules() reads those. Returns the turn. */
  async load(tuner) {
    const turn = ++this.turn;
    if (tuner !== this.tuner) Object.assign(this, { tuner, plans: [] });
    const [{ schedules }, now] = await Promise.all([this.#call("list"), this.#api.now(tuner)]);
    if (turn !== this.turn) return turn;
    this.clock.setNow(wallOf(`${now.form.start_date} ${now.form.start_time}`), now.epoch);
    this.plans = schedules.map((one) => planOf(one, isRepeat(one) ? undefined : null));
    for (const { wall, epoch, schedule } of this.plans) {
      this.clock.learn(wall, epoch);
      this.channels.set(schedule.id, schedule.channel_name || this.channels.get(schedule.id));
    }
    return turn;
  }

  lacksRules() { return this.plans.some(({ rule }) => rule === undefined); }

  /** Reads the days and the ends of the repeat schedules, which `list` does not tell. */
  async loadRules() {
    const { plans, tuner } = this; // another tuner may be chosen meanwhile
    await forEach([...plans.entries()], AT_ONCE, async ([index, plan]) => {
      plans[index] = await this.withRule(plan, tuner);
    });
  }

  /** The plan with its rule, which is read if it is not known. */
  async withRule(plan, tuner = this.tuner) {
    if (plan.rule !== undefined) return plan;
    const { id, start_time } = plan.schedule;
    const rule = await this.#call("getinfo_repeat", { tuner, id, start_time });
    return rule ? planOf(plan.schedule, rule) : plan;
  }

  /** One page as the server cuts it; the first one if the list has become too short for it. */
  async page(start) {
    if (start > 0 && start < this.plans.length) return this.#call("list", { start, limit: PAGE });
    return { start: 0, schedules: this.plans.slice(0, PAGE).map(({ schedule }) => schedule) };
  }

  newForm() { return this.#call("getinfo_userdefine"); }
  clearPassed() { return this.#call("delete_passed"); }
  stop() { return this.#call("delete"); }

  /**
   * The form of a user-defined schedule, otherwise null. `is_userdefine` also marks a plain
   * schedule that starts with a user-defined one.
   */
  async formOf(schedule) {
    if (!schedule.is_userdefine) return null;
    const form = await this.#call("getinfo_userdefine", { start_time: schedule.start_time });
    return serviceOf({ id: form.channel_id }) === serviceOf(schedule) ? form : null;
  }

  /**
   * Stores what the dialog describes, in place of `old` if that is given. Reads it back, and moves
   * it once if the clock did not know the UTC offset of its date. Returns the wall time at which
   * it stands in the end.
   */
  async save(draft, old, mayMove = true) {
    const isMoved = !old || wallOf(old.start) !== draft.wall;
    const epoch = isMoved ? this.clock.epochOf(draft.wall) : old.start_time;
    await this.#store(draft, epoch, old);
    const { schedules } = await this.#call("list");
    const key = { id: draft.id, start_time: epoch };
    const stored = schedules.find((one) => sameKey(one, key) && isRepeat(one) === draft.repeats);
    const wall = stored ? wallOf(stored.start) : draft.wall;
    if (wall === draft.wall || !mayMove) return wall;
    this.clock.learn(wall, epoch);
    return this.save(draft, stored, false);
  }

  async #store(draft, epoch, old) {
    if (draft.kind === "userdefine") return this.#storeUserdefined(draft, epoch, old);
    const key = { id: draft.id, start_time: epoch };
    const stays = old && sameKey(old, key);
    const ruleMethod = stays ? "edit_repeat" : "create_repeat";
    if (draft.repeats) await this.#call(ruleMethod, { ...key, ...draft.rule });
    else if (!stays) await this.#call("create", key);
    // No method moves a plain schedule to another start or channel.
    return old && !stays && this.remove([old]);
  }

  #storeUserdefined(draft, epoch, old) {
    const [start_date, start_time] = this.clock.reading(epoch);
    const { id, title, description, duration } = draft;
    const form = {
      id, channel_name: draft.channelName, title, description, start_date, start_time, duration,
      is_repeat: draft.repeats, ...(draft.repeats ? draft.rule : {}),
    };
    if (!old) return this.#call("create_userdefine", form);
    const [orig_start_date, orig_start_time] = this.clock.reading(old.start_time);
    return this.#call("edit_userdefine", { ...form, orig_start_date, orig_start_time });
  }

  /** Deletes schedules of any kind. If one fails, the others are still tried. */
  async remove(schedules) {
    const [own, plain, rules] = [[], [], []];
    await forEach(schedules, AT_ONCE, async (schedule) => {
      if (await this.formOf(schedule)) own.push(schedule);
      else (isRepeat(schedule) ? rules : plain).push(schedule);
    });
    const starts = (some) => some.map((schedule) => schedule.start_time).join(",");
    const channels = rules.map(({ id }) => id).join(",");
    const calls = plain.map((one) => ["delete", { id: one.start_time, channel_id: one.id }]);
    if (rules.length) calls.push(["delete_repeat", { id: starts(rules), channel_id: channels }]);
    // delete_repeat does not tell the tuner daemon, delete_userdefine does. Start 0, which no
    // schedule has, deletes nothing.
    if (own.length || rules.length) calls.push(["delete_userdefine", { id: starts(own) || "0" }]);
    await forEach(calls, 1, ([method, parameters]) => this.#call(method, parameters));
  }
}
