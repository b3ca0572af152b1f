// Writes the reference of the API as one HTML page that loads nothing else, with Redoc.
//
// usage: node render.mjs DESCRIPTION.json PAGE.html
import { readFile, writeFile } from "node:fs/promises";

const [source, target] = process.argv.slice(2);
const description = JSON.parse(await readFile(source, "utf8"));
const bundle = await readFile("node_modules/redoc/bundles/redoc.standalone.js", "utf8");
const redoc = bundle.replaceAll("https://cdn.redoc.ly/redoc/logo-mini.svg", "data:,");
const options = { expandResponses: "200", hideDownloadButtons: true, requiredPropsFirst: true };

// The policy keeps the page from loading anything, whatever the renderer tries.
const head = `<!DOCTYPE html>
<html lang="en">
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; img-src data:;
  script-src 'unsafe-inline'; style-src 'unsafe-inline'; worker-src blob:">
<title>${description.info.title}</title>
<style>body { margin: 0 } img[src="data:,"] { display: none }</style>
<div id="reference"></div>
`;
const start = `Redoc.init(${JSON.stringify(description)}, ${JSON.stringify(options)},
  document.getElementById("reference"))`;
const scripts = [redoc, start].map(
  (code) => `<script>${code.replaceAll("</script", "<\\/script")}</script>\n`);
await writeFile(target, head + scripts.join(""));
