// The catalogues: every text that the page names stands in each language.
import assert from "node:assert/strict";
import { readFileSync, readdirSync } from "node:fs";
import { test } from "node:test";
import { localeOf } from "../../web/text.js";
import de from "../../web/text_de.js";
import en from "../../web/text_en.js";

const WEB = new URL("../../web/", import.meta.url);
const read = (name) => readFileSync(new URL(name, WEB), "utf8");
const namesIn = (text, pattern) => [...text.matchAll(pattern)].map(([, name]) => name);

// Each text with what it takes: "status.1 string" or "choose function 1".
const shapeOf = (texts, path = "") => Object.entries(texts).flatMap(([name, text]) =>
  (typeof text === "object" ? shapeOf(text, `${path}${name}.`)
    : `${path}${name} ${typeof text} ${typeof text === "function" ? text.length : ""}`)).sort();

test("the catalogues have the same texts", () => assert.deepEqual(shapeOf(de), shapeOf(en)));

test("a catalogue has every text that the page names", () => {
  const html = read("index.html");
  const scripts = readdirSync(WEB).filter((name) => name.endsWith(".js")).map(read).join("");
  const named = [...namesIn(html, /data-(?:text|label|hint|example)="(\w*)"/g),
    ...namesIn(scripts, /\bTEXT\.(\w+)/g)];
  assert.deepEqual(named.filter((name) => !(name in en)), []);
});

test("every error code of the API page has a sentence", () => {
  const page = readFileSync(new URL("../docs/api.md", WEB), "utf8");
  const codes = namesIn(page, /^\| ([\d, ]+) \|/gm).flatMap((row) => row.split(", "));
  assert.deepEqual(codes.filter((code) => !(code in en.errors)), []);
});

test("the address decides the language, then the browser, and the browser its variant", () => {
  assert.equal(localeOf("?lang=de", ["en-US", "de-AT"]), "de-AT");
  assert.equal(localeOf("?lang=de", ["en-US"]), "de-DE");
  assert.equal(localeOf("?lang=xx", ["fr", "de-CH", "en"]), "de-CH");
  assert.equal(localeOf("", ["fr"]), "en-GB");
});
