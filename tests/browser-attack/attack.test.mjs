// Attacks the server from a real page in a real browser, without the guard against browsers, to
// prove that the attacks are real, and with it.
//
//   node attack.test.mjs SERVER SCRATCH

import assert from "node:assert/strict";
import {once} from "node:events";
import {existsSync} from "node:fs";
import {createServer} from "node:http";
import {createRequire} from "node:module";
import {join} from "node:path";
import {fetchAttack, formAttack, imageAttack, peerAttack, preconnectAttack, relayAttack} from "./attacks.mjs";
import {Application, Server, until} from "../browser/server.mjs";

const {chromium} = createRequire(new URL("../browser/package.json", import.meta.url))("playwright-core");

const CALLS = [
  {name: "relayAttack", run: relayAttack},
  {name: "peerAttack", run: peerAttack},
  {name: "peerAttack in disguise", run: peerAttack, protocol: "ssltcp"},
];
const HELD = 1500; // milliseconds without a reply after which the server counts as held
const ARGUMENTS = [
  "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
  "--disable-component-update", "--disable-sync",
];
const [executable, scratch] = process.argv.slice(2);

function launch(profile) {
  return chromium.launchPersistentContext(join(scratch, profile), {
    executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium", headless: true, args: ARGUMENTS,
  });
}

async function servePage() {
  const pages = createServer((_request, response) => {
    response.setHeader("Content-Type", "text/html");
    response.end("<!doctype html><title>Any page</title><body></body>");
  });
  pages.listen(0, "127.0.0.1");
  await once(pages, "listening");
  return pages;
}

/** Runs an attack in a fresh page; the page stays open until `look` has seen what came of it. */
async function attack(browser, pages, run, target, look) {
  const page = await browser.newPage();
  try {
    await page.goto(`http://127.0.0.1:${pages.address().port}/`);
    await page.evaluate(run, target);
    return await look();
  } finally {
    await page.close();
  }
}

async function withServer(name, settings, test) {
  const directory = join(scratch, name);
  const server = await Server.start(executable, directory, settings);
  const application = await Application.connect(server.port);
  try {
    await test(server, application, directory);
  } finally {
    application.close();
    await server.stop();
  }
}

async function attacksAreReal(browser, pages) {
  await withServer("unguarded", ["ALLOWHTTP=true"], async (server, application, directory) => {
    for (const run of [fetchAttack, formAttack]) {
      const file = join(directory, run.name);
      await attack(browser, pages, run, {port: server.port, file}, () => until(() => existsSync(file), `file of ${run.name}`));
      console.log(`without the guard: ${run.name} has written a file`);
    }
    // Chromium may open connections that it does not use: only silence tells that the picture's one is read.
    await attack(browser, pages, imageAttack, {port: server.port}, () =>
      until(async () => (await application.ask("userName", HELD)) === "", "silence while a picture holds the server"));
    console.log("without the guard: imageAttack has held the server");
  });
}

/** Without the guard a browser that leaves ends a server that any client may end by leaving. */
async function callsAreReal(browser, pages) {
  for (const {name, run, protocol} of CALLS) {
    await withServer(`unguarded ${name}`, ["ALLOWHTTP=true", "SHUTDOWNONDISCONNECT=1"], async (server) => {
      await attack(browser, pages, run, {port: server.port, protocol}, () =>
        until(() => server.log().includes("request data"), `message of ${name}`));
      await until(() => !server.running, `end of the server by ${name}`);
      console.log(`without the guard: ${name} has stopped the server`);
    });
  }
}

/** A connection without a word tells nothing about who has made it: it counts as a client's. */
async function preconnectionCounts(pages) {
  await withServer("preconnected", ["SHUTDOWNONDISCONNECT=1"], async (server) => {
    const browser = await launch("preconnecting");
    await attack(browser, pages, preconnectAttack, {port: server.port}, () =>
      until(() => server.log().split("accepted connection").length > 2, "a connection besides the application's"));
    await browser.close(); // it may keep the connection until then
    await until(() => !server.running, "end of the server by a connection that is not used");
    console.log("with the guard: preconnectAttack has stopped the server that SHUTDOWNONDISCONNECT is set for");
  });
}

async function guardHolds(browser, pages) {
  // Any application that disconnects would stop this server; a web page must not.
  await withServer("guarded", ["SHUTDOWNONDISCONNECT=1"], async (server, application, directory) => {
    const requests = [fetchAttack, formAttack, imageAttack].map((run) => ({name: run.name, run}));
    for (const {name, run, protocol} of [...requests, ...CALLS]) {
      const file = join(directory, name);
      const refused = server.log().split("Closing socket").length;
      await attack(browser, pages, run, {port: server.port, file, protocol}, async () => {
        await until(() => server.log().split("Closing socket").length > refused, `refusal of ${name}`);
        assert.match(await application.ask("userName"), /^<CorvaneMsg>/, "the application is served");
      });
      assert.ok(!existsSync(file), `${name} has written a file`);
      console.log(`with the guard: ${name} has done nothing, the application was served`);
    }
    await browser.close(); // and with it every connection it may still have had
    assert.match(await application.ask("userName"), /^<CorvaneMsg>/, "the server keeps serving");
    assert.ok(server.running, "the server runs");
    assert.equal(server.log().split("refused, not an application's request").length - 1, 1, "one warning a minute");
    assert.doesNotMatch(server.log(), /Marking server for shutdown|has closed connection/, "no disconnection counted");
  });
}

const pages = await servePage();
const browser = await launch("attacking");
try {
  console.log(`Chromium ${browser.browser()?.version() ?? ""}`);
  await attacksAreReal(browser, pages);
  await callsAreReal(browser, pages);
  await preconnectionCounts(pages);
  await guardHolds(browser, pages);
} finally {
  await browser.close();
  pages.close();
}
