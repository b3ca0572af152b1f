// The schedules of the tuner that is shown: reads them with their rules, saves and deletes them as their kind requires.
import { Clock, planOf, serviceOf, wallOf } from "./week.js";

const AT_ONCE = 4; // requests for rules; each starts a program on the appliance
export const PAGE = 50;

export const isRepeat = (schedule) => schedule.status >= 12 && schedule.status <= 15;

const sameKey = (a, b) => a.start_time === b.start_time && serviceOf(a) === serviceOf(b);

/** Runs `work` on all items, some at a time. All of them run; then the first failure is thrown. */
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
  turn = 0;
  plans = [];
  clock = new Clock();
  channels = new Map(); // name by id, of all schedules seen: no method lists the channels
  #api;

  constructor(api) { this.#api = api; }

  /**
   * Reads a tuner whole. Repeat schedules count on their first day until loadRules() has run. Answers the number of
   * this turn: if `turn` is another one by then, a later reading has begun, and nothing of this one is kept.
   */
  async load(tuner) {
    const turn = ++this.turn;
    if (tuner !== this.tuner) Object.assign(this, { tuner, plans: [] });
    const [answer, now] = await Promise.all([this.#api.call("list", { tuner }), this.#api.now(tuner)]);
    if (turn !== this.turn) return turn;
    this.clock.setNow(wallOf(`${now.form.start_date} ${now.form.start_time}`), now.epoch);
    this.plans = answer.schedules.map((schedule) => planOf(schedule, isRepeat(schedule) ? undefined : null));
    for (const { wall, epoch, schedule } of this.plans) {
      this.clock.learn(wall, epoch);
      this.channels.set(schedule.id, schedule.channel_name || this.channels.get(schedule.id));
    }
    return turn;
  }

  lacksRules() { return this.plans.some(({ rule }) => rule === undefined); }

  /** Fetches the days and the ends of the repeat schedules, which `list` does not tell. */
  async loadRules() {
    const { plans, tuner } = this;
    const unknown = [...plans.keys()].filter((index) => plans[index].rule === undefined);
    await forEach(unknown, AT_ONCE, async (index) => { plans[index] = await this.withRule(plans[index], tuner); });
  }

  /** The plan with its rule, if that is stored. */
  async withRule(plan, tuner = this.tuner) {
    const { id, start_time } = plan.schedule;
    const rule = await this.#api.call("getinfo_repeat", { tuner, id, start_time });
    return rule ? planOf(plan.schedule, rule) : plan;
  }

  /** One page as the server cuts it; the first if the list has become shorter than the wanted one. */
  async page(start) {
    const isFirst = start <= 0 || start >= this.plans.length;
    if (isFirst) return { start: 0, schedules: this.plans.slice(0, PAGE).map(({ schedule }) => schedule) };
    return this.#api.call("list", { tuner: this.tuner, start, limit: PAGE });
  }

  async newForm() { return (await this.#api.now(this.tuner)).form; }
  clearPassed() { return this.#api.call("delete_passed", { tuner: this.tuner }); }
  stop() { return this.#api.call("delete", { tuner: this.tuner }); }

  /** The user's own form of a schedule; null for a plain one, also for one that only starts with a user-defined one. */
  async formOf(schedule) {
    if (!schedule.is_userdefine) return null;
    const form = await this.#api.call("getinfo_userdefine", { tuner: this.tuner, start_time: schedule.start_time });
    return serviceOf({ id: form.channel_id }) === serviceOf(schedule) ? form : null;
  }

  /**
   * Stores what the dialog describes, in the place of `old` if that is given. Reads it back and moves it once if the
   * clock did not know the UTC offset of its date. Answers the wall time at which it stands in the end.
   */
  async save(draft, old, mayMove = true) {
    const epoch = old && wallOf(old.start) === draft.wall ? old.start_time : this.clock.epochOf(draft.wall);
    await this.#store(draft, epoch, old);
    const { schedules } = await this.#api.call("list", { tuner: this.tuner });
    const isIt = (one) => sameKey(one, { id: draft.id, start_time: epoch }) && isRepeat(one) === draft.repeats;
    const stored = schedules.find(isIt);
    const wall = stored ? wallOf(stored.start) : draft.wall;
    if (wall === draft.wall || !mayMove) return wall;
    this.clock.learn(wall, epoch);
    return this.save(draft, stored, false);
  }

  /** Deletes schedules of any kind. After a failure the others are tried all the same. */
  async remove(schedules) {
    const { tuner } = this;
    const [own, plain, rules] = [[], [], []];
    await forEach(schedules, AT_ONCE, async (schedule) => {
      if (await this.formOf(schedule)) own.push(schedule);
      else (isRepeat(schedule) ? rules : plain).push(schedule);
    });
    const join = (some, member) => some.map((schedule) => schedule[member]).join(",");
    const calls = plain.map((one) => ["delete", { id: one.start_time, channel_id: one.id }]);
    if (rules.length) calls.push(["delete_repeat", { id: join(rules, "start_time"), channel_id: join(rules, "id") }]);
    // delete_repeat does not tell the tuner daemon. This does, and start 0, which no schedule has, deletes nothing.
    if (own.length || rules.length) calls.push(["delete_userdefine", { id: join(own, "start_time") || "0" }]);
    await forEach(calls, 1, ([method, parameters]) => this.#api.call(method, { tuner, ...parameters }));
  }

  async #store(draft, epoch, old) {
    if (draft.kind === "userdefine") return this.#storeUserdefined(draft, epoch, old);
    const key = { tuner: this.tuner, id: draft.id, start_time: epoch };
    const stays = old && sameKey(old, key);
    if (!draft.repeats && !stays) await this.#api.call("create", key);
    if (draft.repeats) await this.#api.call(stays ? "edit_repeat" : "create_repeat", { ...key, ...draft.rule });
    return old && !stays && this.remove([old]); // no method moves a plain schedule to another start or channel
  }

  #storeUserdefined(draft, epoch, old) {
    const { date, time } = this.clock.reading(epoch);
    const form = {
      tuner: this.tuner, id: draft.id, channel_name: draft.channelName, start_date: date, start_time: time,
      duration: draft.duration, title: draft.title, description: draft.description, is_repeat: draft.repeats,
      ...(draft.repeats ? draft.rule : {}),
    };
    if (!old) return this.#api.call("create_userdefine", form);
    const former = this.clock.reading(old.start_time);
    return this.#api.call("edit_userdefine", { ...form, orig_start_date: former.date, orig_start_time: former.time });
  }
}
