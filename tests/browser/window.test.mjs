// node window.test.mjs SERVER PLAY MOVIE WINDOWTOOL SCRATCH: the window that a movie is shown in, found by
// its title on a screen of its own, moved and sized; and the full screen of --kiosk.

import assert from "node:assert/strict";
import {chmodSync, mkdirSync, readFileSync, writeFileSync} from "node:fs";
import {delimiter, join} from "node:path";
import {Play, launchChromium} from "./play.mjs";
import {Screen} from "./screen.mjs";
import {Application, Server, until} from "./server.mjs";

const [executable, program, movie, windowTool, scratch] = process.argv.slice(2);
const WIDTH = 1280, HEIGHT = 800;
const TITLE = "Adobe Flash Player";

/** Where the window is, as [x, y, width, height]; null when there is none. */
async function windowRect(application) {
  const reply = await application.ask(`getWndRect\n${TITLE}`);
  return reply.includes('Result="SUCCESS"') ? [...reply.matchAll(/Value="(-?\d+)"/g)].map(([, number]) => Number(number)) : null;
}

/** Waits until the window is where it should be: browsers take what they are told with some delay. */
async function untilAt(application, expected, what) {
  let rect;
  await until(async () => {
    rect = await windowRect(application);
    return String(rect) === String(expected);
  }, what).catch((error) => { throw new Error(`${error.message}; it is at ${rect}`); });
}

async function movesTheWindow(application, port) {
  const play = await Play.start(program, port, "--flashvars", `port=${port}`, movie);
  const browser = await launchChromium(join(scratch, "window"), {
    headless: false, viewport: null, args: ["--no-sandbox", "--disable-gpu", "--no-first-run", `--app=${play.address}`],
  });
  await until(async () => await windowRect(application) !== null, "a window with the player's title");
  for (const [flags, numbers, expected] of [
    [3, [40, 60, 700, 500], [40, 60, 700, 500]], [1, [100, 90], [100, 90, 700, 500]], [2, [640, 520], [100, 90, 640, 520]],
  ]) {
    const reply = await application.ask(["setWndPos", flags, ...numbers, TITLE].join("\n"));
    assert.match(reply, /Result="SUCCESS"/);
    await untilAt(application, expected, `the window at ${expected}`);
  }
  await browser.close();
  await play.stop();
  console.log("ok - the window is found by its title, moved and sized");
}

/** A Chromium that notes how it is called; the superuser of a container may not have its sandbox. */
function noteCalls(directory, calls) {
  mkdirSync(directory, {recursive: true});
  const real = process.env.CHROMIUM ?? "/usr/bin/chromium";
  writeFileSync(join(directory, "chromium"), `#!/bin/sh\nprintf '%s\\n' "$@" >> '${calls}'\nexec '${real}' --no-sandbox --disable-gpu "$@"\n`);
  chmodSync(join(directory, "chromium"), 0o755);
}

async function fillsTheScreen(application, port, display) {
  const calls = join(scratch, "calls");
  noteCalls(join(scratch, "bin"), calls);
  const environment = {DISPLAY: display, PATH: `${join(scratch, "bin")}${delimiter}${process.env.PATH}`};
  const play = Play.startKiosk(program, environment, port, "--flashvars", `port=${port}`, movie);
  await untilAt(application, [0, 0, WIDTH, HEIGHT], "the window over the whole screen");
  const words = readFileSync(calls, "utf8").split("\n");
  assert.ok(words.includes("--kiosk"), words);
  const [profile] = words.filter((word) => word.startsWith("--user-data-dir=")).map((word) => word.split("=")[1]);
  assert.ok(profile, "a profile of its own");
  assert.equal(await play.stop(), 0);
  await until(async () => await windowRect(application) === null, "the end of the browser with its program");
  console.log("ok - the kiosk's window fills the screen");
}

const screen = await Screen.start(WIDTH, HEIGHT);
process.env.DISPLAY = screen.display;
const server = await Server.start(executable, join(scratch, "server"), [], {windowTool});
const application = await Application.connect(server.port);
try {
  await movesTheWindow(application, server.port);
  await fillsTheScreen(application, server.port, screen.display);
} finally {
  application.close();
  await server.stop();
  await screen.stop();
}
