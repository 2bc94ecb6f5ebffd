// node explorer.test.mjs SERVER PLAY MOVIE SCRATCH RESULTS: uses the explorer like a person does and looks at
// the files behind its back. Ends with status 1 at the first thing that is not as it should be.

import assert from "node:assert/strict";
import {cpSync, existsSync, mkdirSync, readFileSync, readdirSync} from "node:fs";
import {dirname, join} from "node:path";
import {fileURLToPath} from "node:url";
import {Movie} from "./movie.mjs";
import {Play} from "./play.mjs";
import {Server} from "./server.mjs";

const [executable, program, swf, scratch, results] = process.argv.slice(2);
const root = join(dirname(fileURLToPath(import.meta.url)), "../..");
const sample = join(root, "examples/explorer/sample");
const home = join(scratch, "kiosk");
const onDisk = (name) => readFileSync(join(home, name), "utf8");
const inSample = (name) => readFileSync(join(sample, name), "utf8");
const isThere = (name) => existsSync(join(home, name));

/** A name that no XML parser can read out of a reply. */
const ODD = `R&D "final" <2>.txt`;

const steps = {
  async "lists the home directory"(movie) {
    const state = await movie.until("the list", ({entries}) => entries.length > 0);
    assert.equal(state.directory, home + "/");
    const folders = ["Desktop", "Documents", "Games", "Music", "Pictures"].map((name) => name + "/");
    const plain = readdirSync(sample, {withFileTypes: true}).filter((entry) => entry.isFile()).map(({name}) => name);
    assert.deepEqual(state.entries, [".corvane/", ...folders, ...plain.sort(ignoringCase)]);
  },

  async "opens a folder and goes up again"(movie) {
    await movie.doubleClick("row Documents");
    await movie.until("Documents", ({directory, entries}) =>
      directory === `${home}/Documents/` && entries.join() === "budget.csv,letter.txt");
    await movie.picture("folder");
    await movie.click("button Up");
    await movie.until("the home directory", ({directory}) => directory === home + "/");
  },

  async "goes to a place and back through the path bar"(movie) {
    await movie.click("button Desktop");
    await movie.until("the desktop", ({directory}) => directory === `${home}/Desktop/`);
    await movie.click("crumb kiosk");
    await movie.until("the home directory", ({directory}) => directory === home + "/");
  },

  async "shows the text of a file"(movie) {
    await movie.click("row readme.txt");
    await movie.until("the text", ({preview}) => unix(preview) === inSample("readme.txt"));
    await movie.picture("explorer");
    await movie.click("row catalogue.xml");
    await movie.until("markup as it is in the file", ({preview}) => unix(preview) === inSample("catalogue.xml"));
  },

  async "shows the first bytes of a file that is no text"(movie) {
    await movie.click("row explorer.swf");
    await movie.until("the bytes", ({preview}) => preview.includes("46 57 53 08"));
  },

  async "creates a folder"(movie) {
    await movie.click("button New folder");
    await movie.type("Saved games");
    await movie.picture("new-folder");
    await movie.click("dialog button Create");
    await movie.until("the new folder", ({selected}) => selected === "Saved games/");
    assert.deepEqual(readdirSync(join(home, "Saved games")), []);
  },

  async "refuses a name that is taken"(movie) {
    await movie.click("button New folder");
    await movie.type("Saved games");
    await movie.click("dialog button Create");
    const {dialog} = await movie.state();
    assert.equal(dialog, true, "the question stays open");
    await movie.press("Escape");
    await movie.until("no question", ({dialog}) => !dialog);
  },

  async "writes a text file"(movie) {
    await movie.click("button New file");
    await movie.type(ODD);
    await movie.click("field Text");
    await movie.type("First <line> & more");
    await movie.press("Enter");
    await movie.type("second \"line\"");
    await movie.picture("new-file");
    await movie.click("dialog button Save");
    await movie.until("the new file", ({selected}) => selected === ODD);
    assert.equal(onDisk(ODD), "First <line> & more\nsecond \"line\"");
    await movie.until("its text", ({preview}) => unix(preview) === "First <line> & more\nsecond \"line\"");
  },

  async "renames a file"(movie) {
    await movie.click("button Rename");
    await movie.type("report.txt");
    await movie.press("Enter");
    await movie.until("the new name", ({selected, entries}) => selected === "report.txt" && !entries.includes(ODD));
    assert.equal(isThere(ODD), false);
    assert.equal(onDisk("report.txt"), "First <line> & more\nsecond \"line\"");
  },

  async "copies a file"(movie) {
    await movie.click("button Copy");
    await movie.click("dialog button Copy");
    await movie.until("the copy", ({selected}) => selected === "report copy.txt");
    assert.equal(onDisk("report copy.txt"), onDisk("report.txt"));
  },

  async "copies a folder with all that is in it"(movie) {
    await movie.click("row Games");
    await movie.click("button Copy");
    await movie.type("More games");
    await movie.press("Enter");
    await movie.until("the copy", ({selected}) => selected === "More games/");
    assert.equal(onDisk("More games/Chess/chess.swf"), inSample("Games/Chess/chess.swf"));
    assert.equal(onDisk("More games/Solitaire/solitaire.swf"), inSample("Games/Solitaire/solitaire.swf"));
  },

  async "renames a folder that is not empty"(movie) {
    await movie.click("button Rename");
    await movie.type("All games");
    await movie.press("Enter");
    await movie.until("the new name", ({selected}) => selected === "All games/");
    assert.equal(isThere("More games"), false);
    assert.equal(onDisk("All games/Chess/chess.swf"), inSample("Games/Chess/chess.swf"));
  },

  async "asks before it deletes, and deletes"(movie) {
    await movie.click("button Delete");
    await movie.picture("delete");
    await movie.press("Escape");
    assert.equal(isThere("All games"), true, "Escape deletes nothing");
    await movie.click("button Delete");
    await movie.click("dialog button Delete");
    await movie.until("the folder gone", ({entries}) => !entries.includes("All games/"));
    assert.equal(isThere("All games"), false);
    assert.equal(isThere("Games"), true);
    await movie.click("row report copy.txt");
    await movie.click("button Delete");
    await movie.press("Enter");
    await movie.until("the file gone", ({entries}) => !entries.includes("report copy.txt"));
    assert.equal(isThere("report copy.txt"), false);
    assert.equal(isThere("report.txt"), true);
  },

  async "reads a value of the registry"(movie) {
    await movie.click("button Registry");
    await movie.click("dialog button Read");
    await movie.until("the value", async () => await movie.textOf("answer") === "Hello from the registry");
    await movie.picture("registry");
    await movie.fill("field Value name", "Nothing");
    await movie.click("dialog button Read");
    await movie.until("no value", async () => await movie.textOf("answer") === "There is no such value");
    await movie.click("dialog button Close");
  },

  async "draws the screen and the window"(movie) {
    await movie.click("button Screen");
    await movie.until("the screen", async () => await movie.textOf("screen") === "Screen: 1920 × 1080");
    await movie.until("the window", async () => await movie.textOf("window") === "Window: 800 × 600 at 240, 135");
    await movie.picture("screen");
    await movie.fill("field Window title (empty: the Flash player)", "Nobody");
    await movie.click("dialog button Refresh");
    await movie.until("no window", async () => await movie.textOf("window") === "There is no such window");
    await movie.click("dialog button Close");
  },

  async "scrolls, and says what went wrong"(movie) {
    await movie.click("row readme.txt");
    await movie.scrollDown();
    await movie.click("row settings.conf");
    await movie.until("its text", ({preview}) => preview !== "");
    await movie.click("button Rename");
    await movie.type("missing:".repeat(40));
    await movie.press("Enter");
    await movie.until("the refusal", ({status}) => status.startsWith("Could not rename \"settings.conf\": the server refused"));
    assert.equal(isThere("settings.conf"), true);
  },
};

function ignoringCase(a, b) {
  return a.toLowerCase() < b.toLowerCase() ? -1 : 1;
}

/** A text field separates lines with carriage returns. */
function unix(text) {
  return text.replaceAll("\r", "\n");
}

async function run() {
  cpSync(sample, home, {recursive: true});
  mkdirSync(results, {recursive: true});
  const server = await Server.start(executable, join(scratch, "server"), ["log4cpp.priority=INFO"], {
    environment: {HOME: home}, windowTool: join(root, "clients/conformance/cvnwinfo"),
  });
  let play, movie;
  try {
    play = await Play.start(program, server.port, "--flashvars", `port=${server.port}&dir=${encodeURIComponent(home)}`, swf);
    movie = await Movie.open(play.address, join(scratch, "profile"), results);
    for (const [name, step] of Object.entries(steps)) {
      try {
        await step(movie);
      } catch (error) {
        await movie.picture("failure");
        error.message = `${name}: ${error.message}`;
        throw error;
      }
      console.log(`ok - ${name}`);
    }
    console.log(`ok - ${await movie.wire.check()} replies have the form they should have`);
  } finally {
    await movie?.close();
    await play?.stop();
    await server.stop();
  }
  assert.equal(await server.stop(), 0, "the server ends in order");
}

process.once("SIGTERM", () => process.exit(1)); // time is up

run().then(() => console.log(`Screenshots are in ${results}`), (error) => {
  console.error(error);
  process.exitCode = 1;
});
