// node demo.test.mjs SERVER SCRATCH: the demonstration shows its sample directory and nothing else.

import assert from "node:assert/strict";
import {mkdirSync, readdirSync} from "node:fs";
import {dirname, join} from "node:path";
import {fileURLToPath} from "node:url";
import {Play, launchChromium} from "./play.mjs";

const [executable, scratch] = process.argv.slice(2);
const demo = join(dirname(fileURLToPath(import.meta.url)), "../../script/demo");
mkdirSync(scratch, {recursive: true});

/** What the status line says after a click on the arrow that leads upwards. */
async function statusAfterUp(page) {
  await page.locator("#up").click();
  await page.waitForFunction(() => document.getElementById("status").textContent !== "");
  return page.locator("#status").textContent();
}

const play = await Play.read(demo, ["files"], {CORVANE_EXECUTABLE: executable, TMPDIR: scratch});
const browser = await launchChromium(join(scratch, "profile"));
try {
  const page = browser.pages()[0];
  const missing = [];
  page.on("response", (response) => { if (response.status() >= 400) missing.push(response.url()); });
  await page.goto(play.address);
  await page.getByText("readme.txt").click();
  await page.waitForFunction(() => document.getElementById("text").textContent.startsWith("Welcome!"));
  console.log("ok - the demonstration shows its samples");
  assert.equal(await page.evaluate(async () => (await fetch(document.querySelector('link[rel~="icon"]').href)).status), 200);
  assert.deepEqual(missing, []);
  console.log("ok - the page asks for nothing that is not there, and has an icon");
  if (play.said.includes("cannot confine")) {
    console.log("skipped - the demonstration shows nothing else: this kernel cannot confine the server");
  } else {
    assert.match(await statusAfterUp(page), /cannot be opened: the server refused it/);
    console.log("ok - the demonstration shows nothing else");
  }
} finally {
  await browser.close();
  await play.stop();
}
assert.deepEqual(readdirSync(scratch).filter((name) => name.startsWith("corvane-")), [], "it leaves nothing behind");
