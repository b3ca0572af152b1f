// Calls all methods with the client that openapi-fetch makes of the types of openapi-typescript.
import assert from "node:assert/strict";
import createClient from "openapi-fetch";
import { address, channel, days, show, start, successOf, tuner } from "./answers.js";
import type { paths } from "./generated/openapi-typescript.js";

const { POST } = createClient<paths>({
  baseUrl: address,
  headers: {
    Authorization: "Basic " + btoa("viewer:viewer"),
    "Content-Type": "application/x-www-form-urlencoded",
  },
});

async function schedules() {
  const answer = await POST("/webapi/schedule_recording#list", { body: { method: "list", tuner } });
  return successOf(answer).data.schedules;
}

assert.deepEqual(await schedules(), []);

// One-shot schedules.
successOf(await POST("/webapi/schedule_recording#create", {
  body: { method: "create", tuner, id: `${channel},17541`, start_time: `${start},${start + 3600}` },
}));
assert.deepEqual((await schedules()).map((schedule) => schedule.start_time),
  [start, start + 3600]);
for (const { id, start_time } of await schedules()) {
  successOf(await POST("/webapi/schedule_recording#delete", {
    body: { method: "delete", tuner, id: start_time, channel_id: id },
  }));
}
successOf(await POST("/webapi/schedule_recording#stop", { body: { method: "delete", tuner } }));
successOf(await POST("/webapi/schedule_recording#delete_passed", {
  body: { method: "delete_passed", tuner },
}));
assert.deepEqual(await schedules(), []);

// A repeat schedule.
const rule = { tuner, id: channel, start_time: start };
successOf(await POST("/webapi/schedule_recording#create_repeat", {
  body: { method: "create_repeat", ...rule, weekdaystatus: days, end_date: "1" },
}));
successOf(await POST("/webapi/schedule_recording#edit_repeat", {
  body: { method: "edit_repeat", ...rule, weekdaystatus: days, end_date: "2031-01-01",
    isweekly: true },
}));
const changed = successOf(await POST("/webapi/schedule_recording#getinfo_repeat", {
  body: { method: "getinfo_repeat", ...rule },
}));
assert.equal(changed.data?.end_date, "2031-01-01");
successOf(await POST("/webapi/schedule_recording#delete_repeat", {
  body: { method: "delete_repeat", tuner, id: String(start), channel_id: channel },
}));
assert.deepEqual(await schedules(), []);

// A user-defined schedule, which becomes a rule.
successOf(await POST("/webapi/schedule_recording#create_userdefine", {
  body: { method: "create_userdefine", ...show, start_time: "10:10", is_repeat: false },
}));
const [made] = await schedules();
assert.equal(made?.title, show.title);
const form = successOf(await POST("/webapi/schedule_recording#getinfo_userdefine", {
  body: { method: "getinfo_userdefine", tuner, start_time: made.start_time },
})).data;
successOf(await POST("/webapi/schedule_recording#edit_userdefine_repeat", {
  body: { method: "edit_userdefine", ...show, orig_start_date: show.start_date,
    orig_start_time: "10:10", start_time: "10:40", duration: form.duration, is_repeat: true,
    weekdaystatus: days, end_date: form.end_date, isweekly: true },
}));
const [moved] = await schedules();
assert.equal(moved?.start_time, made.start_time + 1800);
successOf(await POST("/webapi/schedule_recording#delete_userdefine", {
  body: { method: "delete_userdefine", tuner, id: String(moved.start_time) },
}));
assert.deepEqual(await schedules(), []);
console.log("openapi-fetch: all methods work");

/** Mistakes that must not compile. */
export function mistakes() {
  // @ts-expect-error: without an id
  POST("/webapi/schedule_recording#delete", { body: { method: "delete", tuner } });
  POST("/webapi/schedule_recording#create_userdefine_repeat", {
    // @ts-expect-error: a rule without its days
    body: { method: "create_userdefine", ...show, start_time: "10:10", is_repeat: true },
  });
}
