// Sends right and wrong requests through Prism, which judges them by docs/openapi.yaml.
//
// usage: node try-prism.mjs ADDRESS
//
// The schedules belong to a tuner of their own. Prism passes a right request on to the server, and
// refuses a wrong one with HTTP status 422.

const [address] = process.argv.slice(2);
const LOGIN = "Basic " + btoa("viewer:viewer");
const CHANNEL = "17540@618000";
const START = 1900000200; // in 2030
const DAYS = "1,1,1,1,1,1,1";
const TUNER = { tuner: 7 };
const ONE = { ...TUNER, id: CHANNEL, start_time: START };
const RULE = { weekdaystatus: DAYS, end_date: "1" };
const SHOW = { ...TUNER, id: CHANNEL, channel_name: "Channel Cedar", start_date: "2030-03-18",
  start_time: "10:10", duration: "00:20", title: "Tea & scones", is_repeat: false };
const EDIT = { ...SHOW, orig_start_date: "2030-03-18", orig_start_time: "10:10" };
const WEEKLY = { ...RULE, is_repeat: true };

// method, parameters, and for a wrong request what is wrong with it.
const GETS = [
  ["list", {}],
  ["list", { tuner: 1, start: 1, limit: 1 }],
  ["getinfo_repeat", ONE],
  ["getinfo_userdefine", TUNER],
  ["lists", TUNER, "an unknown method"],
  ["list", { start: "first" }, "start is not an integer"],
  ["list", { tuner: -1 }, "the tuner is negative"],
  ["getinfo_repeat", { ...ONE, id: "Cedar" }, "id is not a channel"],
];
const POSTS = [
  ["list", { tuner: 1, limit: 2 }],
  ["create", ONE],
  ["create", { ...TUNER, id: `${CHANNEL},17541`, start_time: `${START},${START + 3600}` }],
  ["delete", { ...TUNER, id: START, channel_id: CHANNEL }],
  ["delete", { ...TUNER, id: START + 3600, channel_id: "17541" }],
  ["delete", TUNER],
  ["delete_passed", TUNER],
  ["create_repeat", { ...ONE, ...RULE }],
  ["getinfo_repeat", ONE],
  ["edit_repeat", { ...ONE, ...RULE, isweekly: true }],
  ["delete_repeat", { ...TUNER, id: START, channel_id: CHANNEL }],
  ["create_userdefine", SHOW],
  ["getinfo_userdefine", { ...TUNER, start_time: START }],
  ["edit_userdefine", { ...EDIT, title: "" }],
  ["edit_userdefine", { ...EDIT, ...WEEKLY, isweekly: false }],
  ["create_userdefine", { ...SHOW, ...WEEKLY, start_date: "2030-03-25" }],
  ["delete_userdefine", { ...TUNER, id: `${START},${START + 3600}` }],
  ["erase", TUNER, "an unknown method"],
  ["list", { limit: "all" }, "limit is not an integer"],
  ["create", { ...ONE, tuner: undefined }, "there is no tuner"],
  ["create", { ...ONE, id: `${CHANNEL},` }, "the list ends with a comma"],
  ["delete", { ...TUNER, id: START }, "there is no channel_id"],
  ["delete", { ...TUNER, channel_id: CHANNEL }, "there is no id"],
  ["delete_passed", {}, "there is no tuner"],
  ["create_repeat", { ...ONE, ...RULE, weekdaystatus: "1,1" }, "two flags for seven days"],
  ["getinfo_repeat", TUNER, "there is no id and no start_time"],
  ["edit_repeat", { ...ONE, ...RULE }, "there is no isweekly"],
  ["delete_repeat", { ...TUNER, id: START }, "there is no channel_id"],
  ["create_userdefine", { ...SHOW, is_repeat: true }, "a rule without weekdays"],
  ["getinfo_userdefine", { ...TUNER, start_time: "10:10" }, "start_time is not an integer"],
  ["edit_userdefine", { ...EDIT, duration: "00:00" }, "the duration is 0"],
  ["edit_userdefine", { ...EDIT, ...WEEKLY }, "a rule without isweekly"],
  ["delete_userdefine", { ...TUNER, id: "10:10" }, "id is not an epoch"],
];

/** The HTTP status and the text of the answer to a request. */
async function send(verb, method, parameters) {
  const given = Object.entries({ method, ...parameters });
  const form = new URLSearchParams(given.filter(([, value]) => value !== undefined));
  const options = { method: verb, headers: { Authorization: LOGIN } };
  const answer = verb === "GET"
    ? await fetch(`${address}?${form}`, options)
    : await fetch(address, { ...options, body: form });
  return { status: answer.status, text: await answer.text() };
}

let total = 0;
let failed = 0;
for (const [verb, requests] of [["GET", GETS], ["POST", POSTS]]) {
  for (const [method, parameters, fault] of requests) {
    const { status, text } = await send(verb, method, parameters);
    ++total;
    if (status !== (fault ? 422 : 200)) {
      ++failed;
      console.error(`${verb} ${method}, ${fault ?? "a right request"}: HTTP status ${status}`,
        parameters, text);
    }
  }
}
console.log(`prism: ${total - failed} of ${total} requests judged right`);
process.exitCode = failed ? 1 : 0;
