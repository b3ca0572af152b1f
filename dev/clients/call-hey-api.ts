// Calls all methods with the client that @hey-api/openapi-ts makes.
import assert from "node:assert/strict";
import { address, channel, days, show, start, successOf, tuner } from "./answers.js";
import * as api from "./generated/hey-api/index.js";
import { client } from "./generated/hey-api/client.gen.js";

client.setConfig({ baseUrl: address, auth: "viewer:viewer" });

async function schedules() {
  return successOf(await api.list({ body: { method: "list", tuner } })).data.schedules;
}

assert.deepEqual(await schedules(), []);

// One-shot schedules.
successOf(await api.create({
  body: { method: "create", tuner, id: `${channel},17541`, start_time: `${start},${start + 3600}` },
}));
assert.deepEqual((await schedules()).map((schedule) => schedule.start_time),
  [start, start + 3600]);
for (const { id, start_time } of await schedules()) {
  successOf(await api.delete_({
    body: { method: "delete", tuner, id: start_time, channel_id: id },
  }));
}
successOf(await api.stop({ body: { method: "delete", tuner } }));
successOf(await api.deletePassed({ body: { method: "delete_passed", tuner } }));
assert.deepEqual(await schedules(), []);

// A repeat schedule.
const rule = { tuner, id: channel, start_time: start };
successOf(await api.createRepeat({
  body: { method: "create_repeat", ...rule, weekdaystatus: days, end_date: "1" },
}));
successOf(await api.editRepeat({
  body: { method: "edit_repeat", ...rule, weekdaystatus: days, end_date: "2031-01-01",
    isweekly: true },
}));
const changed = successOf(await api.getinfoRepeat({ body: { method: "getinfo_repeat", ...rule } }));
assert.equal(changed.data?.end_date, "2031-01-01");
successOf(await api.deleteRepeat({
  body: { method: "delete_repeat", tuner, id: String(start), channel_id: channel },
}));
assert.deepEqual(await schedules(), []);

// A user-defined schedule, which becomes a rule.
successOf(await api.createUserdefine({
  body: { method: "create_userdefine", ...show, start_time: "10:10", is_repeat: false },
}));
const [made] = await schedules();
assert.equal(made?.title, show.title);
const form = successOf(await api.getinfoUserdefine({
  body: { method: "getinfo_userdefine", tuner, start_time: made.start_time },
})).data;
successOf(await api.editUserdefineRepeat({
  body: { method: "edit_userdefine", ...show, orig_start_date: show.start_date,
    orig_start_time: "10:10", start_time: "10:40", duration: form.duration, is_repeat: true,
    weekdaystatus: days, end_date: form.end_date, isweekly: true },
}));
const [moved] = await schedules();
assert.equal(moved?.start_time, made.start_time + 1800);
successOf(await api.deleteUserdefine({
  body: { method: "delete_userdefine", tuner, id: String(moved.start_time) },
}));
assert.deepEqual(await schedules(), []);
console.log("hey-api: all methods work");

/** Mistakes that must not compile. */
export function mistakes() {
  // @ts-expect-error: without an id
  api.delete_({ body: { method: "delete", tuner } });
  api.createUserdefineRepeat({
    // @ts-expect-error: a rule without its days
    body: { method: "create_userdefine", ...show, start_time: "10:10", is_repeat: true },
  });
}
