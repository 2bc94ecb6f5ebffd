// node desktop.test.mjs SERVER PLAY MOVIE SCRATCH: the explorer as a part of the desktop: it hands files to
// their applications, is used with keys, goes through links, and fills its window.

import assert from "node:assert/strict";
import {chmodSync, cpSync, existsSync, mkdirSync, readFileSync, symlinkSync, writeFileSync} from "node:fs";
import {delimiter, dirname, join} from "node:path";
import {fileURLToPath} from "node:url";
import {Movie} from "./movie.mjs";
import {Play} from "./play.mjs";
import {Server, until} from "./server.mjs";

const [executable, program, swf, scratch] = process.argv.slice(2);
const root = join(dirname(fileURLToPath(import.meta.url)), "../..");
const home = join(scratch, "kiosk");
const tools = join(scratch, "tools");
const calls = join(scratch, "calls");

/** What the desktop's opener was called with. */
const opened = () => existsSync(calls) ? readFileSync(calls, "utf8").trimEnd().split("\n") : [];

/** The files, an opener that notes what it is called with, and a window tool that has no display. */
function prepare() {
  cpSync(join(root, "examples/explorer/sample"), home, {recursive: true});
  symlinkSync("Documents", join(home, "papers"));
  writeFileSync(join(home, "what?.txt"), "");
  mkdirSync(tools);
  for (const [name, script] of [["xdg-open", `echo "$1" >> '${calls}'`], ["cvnwinfo", "echo 'no X display' >&2; exit 1"]]) {
    writeFileSync(join(tools, name), `#!/bin/sh\n${script}\n`);
    chmodSync(join(tools, name), 0o755);
  }
}

/** How far the right and the lower end of what is shown are from those of the window. */
async function margins(movie, width, height) {
  const [right] = await movie.whereIs("button Refresh");
  const [, bottom] = await movie.whereIs("status");
  return [width - right, height - bottom];
}

const steps = {
  async "Enter hands a file to its application, once"(movie) {
    await movie.click("row readme.txt");
    await movie.hold("Enter");
    await movie.until("what was done", ({status}) => status === `"readme.txt" handed to its application`);
    await until(() => opened().length > 0, "the application");
    assert.deepEqual(opened(), [join(home, "readme.txt")]);
  },

  async "a double click does so, too"(movie) {
    await movie.doubleClick("row schedule.html");
    await until(() => opened().length > 1, "the application");
    assert.deepEqual(opened().slice(1), [join(home, "schedule.html")]);
  },

  async "nothing else is opened in place of a file that cannot be"(movie) {
    await movie.scrollDown();
    await movie.doubleClick("row what?.txt");
    await movie.until("the reason", ({status}) => status.startsWith(`Could not open "what?.txt"`));
    assert.equal(opened().length, 2);
  },

  async "a link to a directory is entered"(movie) {
    await movie.doubleClick("row papers");
    await movie.until("what the link leads to", ({directory, entries}) =>
      directory === `${home}/papers/` && entries.join() === "budget.csv,letter.txt");
    await movie.press("Backspace");
    await movie.until("the home directory", ({directory}) => directory === `${home}/`);
  },

  async "the Delete key asks, and takes away nothing by itself"(movie) {
    await movie.click("row catalogue.xml");
    await movie.hold("Delete");
    await movie.until("the question", ({dialog}) => dialog);
    assert.ok(existsSync(join(home, "catalogue.xml")));
    await movie.press("Escape");
    await movie.until("no question", ({dialog}) => !dialog);
    assert.ok(existsSync(join(home, "catalogue.xml")));
    await movie.press("Delete");
    await movie.press("Enter");
    await movie.until("the file gone", ({entries}) => !entries.includes("catalogue.xml"));
    assert.ok(!existsSync(join(home, "catalogue.xml")));
  },

  async "says what is missing where there is no display"(movie) {
    await movie.click("button Screen");
    await movie.until("the reason", async () => (await movie.textOf("screen")).startsWith("No screen: the server has no display"));
    await movie.until("the place to look", async () => (await movie.textOf("window")).includes("the server's log says what is missing"));
    await movie.click("dialog button Close");
  },

  async "fills a window of any size"(movie) {
    const before = await margins(movie, 800, 600);
    for (const [width, height] of [[1280, 900], [900, 500], [760, 480]]) {
      await movie.resize(width, height);
      assert.deepEqual(await margins(movie, width, height), before, `${width} by ${height}`);
    }
    // In a smaller one everything is smaller.
    await movie.resize(380, 240);
    assert.deepEqual(await margins(movie, 380, 240), before.map((margin) => margin / 2));
    await movie.click("row Documents");
    await movie.until("a click that meets what is shown", ({selected}) => selected === "Documents/");
    await movie.resize(800, 600);
    assert.deepEqual(await margins(movie, 800, 600), before);
  },

  async "a question stays in the middle of the window"(movie) {
    await movie.click("button New folder");
    const [x] = await movie.whereIs("field Name");
    await movie.resize(1000, 600);
    assert.equal((await movie.whereIs("field Name"))[0], x + 100);
    await movie.press("Escape");
  },

  async "the page asks for nothing that is not there"(movie) {
    assert.deepEqual(movie.missing, []);
  },
};

prepare();
const server = await Server.start(executable, join(scratch, "server"), [], {
  environment: {HOME: home, PATH: `${tools}${delimiter}${process.env.PATH}`}, windowTool: join(tools, "cvnwinfo"),
});
let play, movie;
try {
  play = await Play.start(program, server.port, "--scale", "--flashvars", `port=${server.port}&dir=${encodeURIComponent(home)}`, swf);
  movie = await Movie.open(play.address, join(scratch, "profile"), scratch);
  await movie.until("the list", ({entries}) => entries.length > 0);
  for (const [name, step] of Object.entries(steps)) {
    await step(movie).catch((error) => { throw new Error(`${name}: ${error.message}`, {cause: error}); });
    console.log(`ok - ${name}`);
  }
} finally {
  await movie?.close();
  await play?.stop();
  await server.stop();
}
