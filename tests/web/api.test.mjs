// The module that knows the API, with a fetch of its own in the place of an appliance.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { test } from "node:test";
import { ApiError, connect } from "../../web/api.js";

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

test("every code of the API page has a sentence", () => {
  const page = readFileSync(new URL("../../docs/api.md", import.meta.url), "utf8");
  const codes = [...page.matchAll(/^\| ([\d, ]+) \|/gm)].flatMap(([, row]) => row.split(", "));
  const isUnknown = (code) => /unknown error/.test(new ApiError("any", code).message);
  assert.deepEqual(codes.filter(isUnknown), [], "codes without a sentence");
});
