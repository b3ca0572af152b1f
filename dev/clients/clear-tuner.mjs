// Deletes all schedules of the tuner that the checks use.
//
// usage: node clear-tuner.mjs ADDRESS

const [address] = process.argv.slice(2);
const headers = { Authorization: "Basic " + btoa("viewer:viewer") };
const tuner = 7;

async function ask(method, parameters = {}) {
  const body = new URLSearchParams({ method, tuner, ...parameters });
  const answer = await (await fetch(address, { method: "POST", headers, body })).json();
  if (!answer.success) {
    throw new Error(`${method}: error ${answer.error.code}`);
  }
  return answer.data;
}

const FIRST_STATUS_OF_A_RULE = 12;
for (const schedule of (await ask("list")).schedules) {
  const key = { id: schedule.start_time, channel_id: schedule.id };
  const isRule = schedule.status >= FIRST_STATUS_OF_A_RULE;
  const plain = isRule ? "delete_repeat" : "delete";
  await ask(schedule.is_userdefine ? "delete_userdefine" : plain, key);
}
