// node session.test.mjs SERVER PLAY MOVIE SCRATCH: what happens around a page in the course of a day. Its
// application is the JavaScript client, and then the Flash explorer.

import assert from "node:assert/strict";
import {cpSync, existsSync, mkdirSync, rmSync, readFileSync, writeFileSync} from "node:fs";
import {dirname, join} from "node:path";
import {fileURLToPath} from "node:url";
import {Movie} from "./movie.mjs";
import {Play, launchChromium, launchFirefox} from "./play.mjs";
import {Server, until} from "./server.mjs";

const [executable, program, swf, scratch] = process.argv.slice(2);
const root = join(dirname(fileURLToPath(import.meta.url)), "../..");
const site = join(scratch, "site");
const home = join(scratch, "home");
const BIG = 10 * 1024 * 1024; // bytes

/** A directory with the pages and the client, and a home directory. */
function fillSite() {
  for (const directory of [site, home]) rmSync(directory, {recursive: true, force: true});
  cpSync(join(root, "examples/files"), site, {recursive: true});
  cpSync(join(root, "clients/js/corvane"), join(site, "corvane"), {recursive: true});
  cpSync(join(root, "tests/browser/page.html"), join(site, "page.html"));
  const [, example] = /^```html file=page.html\n(.*?)^```$/ms.exec(readFileSync(join(root, "docs/flash.md"), "utf8"));
  writeFileSync(join(site, "desktop.html"), example);
  mkdirSync(join(home, "Desktop"), {recursive: true});
  writeFileSync(join(home, "note.txt"), "Umlauts äöü, Привет, & < > \" '");
}

async function visit(browser, address) {
  const page = await browser.newPage();
  page.setDefaultTimeout(60000);
  await page.goto(address);
  return page;
}

async function open(browser, address) {
  const page = await visit(browser, address);
  await page.waitForFunction(() => window.client);
  return page;
}

/** What a call of the client comes to: its value, or the kind of its failure. */
function call(page, command, ...parameters) {
  return page.evaluate(([command, parameters]) =>
    window.client[command](...parameters).catch((failure) => failure.kind), [command, parameters]);
}

const steps = {
  async "10 MiB of text go both ways"({page}) {
    const file = join(home, "big.txt");
    // Letters of one to four bytes, and what is escaped in a reply.
    const same = await page.evaluate(async ([file, size]) => {
      const line = "a <tag> & \"quotes\", äöü, Привет, 🎈\n";
      const text = line.repeat(Math.ceil(size / new TextEncoder().encode(line).length));
      await window.client.write(file, text);
      return await window.client.readText(file) === text;
    }, [file, BIG]);
    assert.ok(same);
    assert.ok(readFileSync(file).length >= BIG);
  },

  async "two tabs are served beside each other"({browser, page, address}) {
    const other = await open(browser, address);
    const calls = [...Array(50).keys()].flatMap((number) =>
      [page, other].map(async (tab, index) => {
        const text = `${index} ${number}`;
        await call(tab, "write", join(home, `tab${index}-${number}`), text);
        assert.equal(await call(tab, "readText", join(home, `tab${index}-${number}`)), text);
      }));
    await Promise.all(calls);
    await other.close();
    assert.equal(await call(page, "userDir", ""), home);
  },

  async "a page that is loaded again connects again"({page, server}) {
    const before = server.log().split("accepted connection").length;
    await page.reload();
    await page.waitForFunction(() => window.client);
    assert.equal(await call(page, "userDir", ""), home);
    assert.ok(server.log().split("accepted connection").length > before);
  },

  async "a server that is started again under the page is found again"({page, server, play}) {
    assert.equal(await server.stop(), 0);
    assert.equal(await call(page, "userDir", ""), "disconnected");
    await server.restart();
    assert.equal(await call(page, "userDir", ""), home);
    assert.ok(play.running);
  },

  async "corvane-play ends when the last page is closed, and not before"({page, play, server}) {
    await page.reload();
    await page.waitForFunction(() => window.client);
    assert.equal(await call(page, "userDir", ""), home);
    await page.close();
    await until(() => !play.running, "end of corvane-play");
    assert.equal(await play.stop(), 0);
    assert.ok(server.running, "a server that was there before goes on");
  },
};

/** The page that docs/flash.md shows. */
async function showsTheDesktop(browser, server) {
  const play = await Play.start(program, server.port, join(site, "desktop.html"));
  const page = await visit(browser, play.address);
  await page.waitForFunction((text) => document.getElementById("answer").textContent === text, `${home}/Desktop`);
  await page.close();
  await play.stop();
}

/** examples/files, used like a person does. */
async function showsFiles(browser, server) {
  const play = await Play.start(program, server.port, join(site, "index.html"));
  const page = await visit(browser, play.address);
  const shows = (id, text) => page.waitForFunction(([id, text]) => document.getElementById(id).textContent === text, [id, text]);
  const names = () => page.locator("#entries button").allTextContents();
  await shows("directory", `${home}/`);
  assert.deepEqual((await names()).slice(0, 2), ["Desktop/", "big.txt"]);
  await page.getByText("note.txt").click();
  await shows("text", readFileSync(join(home, "note.txt"), "utf8"));
  page.once("dialog", (dialog) => dialog.accept());
  await page.getByText("Delete", {exact: true}).click();
  await until(() => !existsSync(join(home, "note.txt")), "deletion of the file");
  page.once("dialog", (dialog) => dialog.accept("New & old"));
  await page.getByText("New folder").click();
  await page.getByText("New & old/").click();
  await shows("directory", `${home}/New & old/`);
  assert.deepEqual(await names(), []);
  page.once("dialog", (dialog) => dialog.accept("a/b"));
  await page.getByText("New folder").click();
  await shows("status", "a/b cannot be created: such a name cannot be used.");
  await page.locator("#up").click();
  await shows("directory", `${home}/`);
  assert.ok(existsSync(join(home, "New & old")));
  await page.close();
  await play.stop();
}

/** The Flash explorer, in two tabs, loaded again, and with its server started again under it. */
async function showsTheExplorer(browser, server) {
  const play = await Play.start(program, server.port, "--flashvars", `port=${server.port}&dir=${encodeURIComponent(home)}`, swf);
  const lists = (movie, directory) => movie.until("the list", (state) => state.directory === directory && state.entries.length > 0);
  const tabs = [];
  for (let count = 0; count < 2; count++) {
    const page = await visit(browser, play.address);
    const movie = new Movie(page);
    await movie.loaded();
    await lists(movie, `${home}/`);
    tabs.unshift({page, movie});
  }
  const [{page, movie}] = tabs; // the one in front: a movie behind it stands still
  await page.reload();
  await movie.loaded();
  await lists(movie, `${home}/`);
  assert.equal(await server.stop(), 0);
  await server.restart();
  writeFileSync(join(home, "Desktop", "new.txt"), "");
  await movie.click("row Desktop");
  await movie.press("Enter");
  await lists(movie, `${home}/Desktop/`);
  await page.close();
  await tabs[1].page.bringToFront();
  await tabs[1].movie.click("row Desktop");
  await tabs[1].movie.press("Enter");
  await lists(tabs[1].movie, `${home}/Desktop/`);
  await tabs[1].page.close();
  await play.stop();
}

/** What a user reads in place of a movie. */
async function saysWhatIsMissing(browser, server) {
  const movie = join(scratch, "here today.swf");
  cpSync(swf, movie);
  const play = await Play.start(program, server.port, "--stay", movie);
  const says = (page, text) => page.waitForFunction((text) => document.getElementById("message").innerText.includes(text), text);
  const page = await visit(browser, play.address);
  rmSync(movie);
  await page.reload();
  await says(page, "The movie here today.swf is not there.");
  cpSync(swf, movie);
  await page.addInitScript(() => { delete window.WebAssembly; });
  await page.reload();
  await says(page, "This browser has no WebAssembly");
  await play.stop();
  await says(page, "The connection to corvane-play was refused or has ended.");
  await page.close();
}

async function run(name, launch) {
  const browser = await launch();
  const server = await Server.start(executable, join(scratch, `server of ${name}`), [], {environment: {HOME: home}});
  const play = await Play.start(program, server.port, join(site, "page.html"));
  try {
    const page = await open(browser, play.address);
    for (const [title, step] of Object.entries(steps)) {
      await step({browser, page, play, server, address: play.address});
      console.log(`ok - ${name}: ${title}`);
    }
    await showsTheDesktop(browser, server);
    console.log(`ok - ${name}: the page of the Flash author's document gets its answer`);
    await showsFiles(browser, server);
    console.log(`ok - ${name}: a page shows files without Flash`);
    await showsTheExplorer(browser, server);
    console.log(`ok - ${name}: the Flash explorer goes through the same`);
    await saysWhatIsMissing(browser, server);
    console.log(`ok - ${name}: the page says what is missing`);
  } finally {
    await browser.close();
    await play.stop();
    await server.stop();
  }
}

fillSite();
await run("Chromium", () => launchChromium(join(scratch, "profile")));
fillSite();
await run("Firefox", launchFirefox);
