// The module that knows the API, with a fetch of its own in the place of an appliance.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { test } from "node:test";
import { connect, explain } from "../../web/api.js";

function client(answer, seen = []) {
  const fetch = async (url, options) => {
    seen.push([url, options.method, options.body?.toString()]);
    return answer();
  };
  return connect("http://a/b", { fetch, onBusy: (pending) => seen.push(pending) });
}

const answerOf = (body, status = 200) => () => new Response(body, { status });
const codeOf = (answer) => client(answer).call("edit_userdefine", {}).catch(({ code }) => code);

test("reading methods are asked for, changing ones are sent as a form", async () => {
  const seen = [];
  const api = client(answerOf('{"success":true,"data":{"total":0}}'), seen);
  assert.deepEqual(await api.call("list", { tuner: 1 }), { total: 0 });
  await api.call("create_userdefine", { title: "Tea & scones", is_repeat: false });
  assert.deepEqual(seen, [
    1, ["http://a/b?method=list&tuner=1", undefined, undefined], 0,
    1, ["http://a/b", "POST", "method=create_userdefine&title=Tea+%26+scones&is_repeat=false"], 0]);
});

test("whatever goes wrong is one error with a code", async () => {
  assert.equal(await codeOf(answerOf('{"success":false,"error":{"code":405}}')), 405);
  assert.equal(await codeOf(answerOf('{"success":false}')), "garbled");
  assert.equal(await codeOf(answerOf("<html>")), "garbled");
  assert.equal(await codeOf(answerOf("", 401)), "refused");
  assert.equal(await codeOf(answerOf("", 503)), "lost");
  assert.equal(await codeOf(() => { throw new TypeError("no network"); }), "lost");
});

test("every code of the API page has a sentence", () => {
  const page = readFileSync(new URL("../../docs/api.md", import.meta.url), "utf8");
  for (const section of page.split(/^## /m)) {
    const method = section.match(/^`(\w+)`/)?.[1] ?? "all";
    const rows = [...section.matchAll(/^\| ([\d, ]+) \|/gm)];
    for (const code of rows.flatMap(([, codes]) => codes.split(", "))) {
      assert.doesNotMatch(explain(method, code), /unknown error/, code);
    }
  }
});
