// The module that knows the API, with a fetch of its own in the place of an appliance.
import assert from "node:assert/strict";
import { test } from "node:test";
import { connect } from "../../web/api.js";

const answerOf = (body, status = 200) => async () => new Response(body, { status });
const codeOf = (fetch) => connect("/", { fetch }).call("delete", {}).catch(({ code }) => code);

test("whatever goes wrong is one error with a code", async () => {
  assert.equal(await codeOf(answerOf('{"success":false,"error":{"code":405}}')), 405);
  assert.equal(await codeOf(answerOf('{"success":false}')), "garbled");
  assert.equal(await codeOf(answerOf("<html>")), "garbled");
  assert.equal(await codeOf(answerOf("", 401)), "refused");
  assert.equal(await codeOf(answerOf("", 503)), "lost");
  assert.equal(await codeOf(() => Promise.reject(new TypeError("no network"))), "lost");
});
