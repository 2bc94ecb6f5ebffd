// Attacks what corvane-play serves: from a page of a stranger in real Chromium, and with requests that
// no browser would send. The same is done by the page itself first, to see that it works for it.
//
//   node play_attack.test.mjs SERVER PLAY SCRATCH

import assert from "node:assert/strict";
import {once} from "node:events";
import {existsSync, mkdirSync, symlinkSync, writeFileSync} from "node:fs";
import {createServer} from "node:http";
import {createServer as createTcpServer} from "node:net";
import {join} from "node:path";
import {Play, launchChromium} from "../browser/play.mjs";
import {Application, Server} from "../browser/server.mjs";
import {bridgeAttack, formAttack, frameAttack, readAttack, scriptAttack} from "./play_attacks.mjs";
import {get, statusOf, upgrade} from "./requests.mjs";

const [executable, program, scratch] = process.argv.slice(2);
const SECRET = "not for the page";

/** Ways out of the directory, below the key. */
const WAYS_OUT = [
  "../secret.txt", "..%2fsecret.txt", "%2e%2e/secret.txt", "%2E%2E%2Fsecret.txt", "..%5csecret.txt", "..\\secret.txt",
  "%252e%252e/secret.txt", "./../secret.txt", ".%2e/secret.txt", "/../secret.txt", "x/../../secret.txt", "link.txt",
  "directory/secret.txt", "inside.txt%00/../../secret.txt", "..;/secret.txt", "%c0%ae%c0%ae/secret.txt", "..%c0%afsecret.txt",
  ".hidden.txt", `${scratch}/site/../secret.txt`, "directory/",
];

async function listen(server) {
  server.listen(0, "127.0.0.1");
  await once(server, "listening");
  return server.address().port;
}

function fillSite(site) {
  mkdirSync(site, {recursive: true});
  writeFileSync(join(site, "page.html"), "<!DOCTYPE html><title>Page</title><p>The page itself");
  writeFileSync(join(site, "inside.txt"), "for the page");
  for (const secret of ["../secret.txt", ".hidden.txt"]) writeFileSync(join(site, secret), SECRET);
  symlinkSync("../secret.txt", join(site, "link.txt"));
  symlinkSync("..", join(site, "directory"));
}

/** Everything that a page of the program knows, and no other should. */
async function learn(address) {
  const {origin, port, pathname} = new URL(address);
  const settings = `${address}corvane-play.js`;
  const script = await (await fetch(settings)).text();
  const path = /\/bridge\/[0-9a-f]+\/127\.0\.0\.1\/\d+/.exec(script)[0];
  return {address, origin, port: Number(port), root: pathname, settings, path, bridge: `ws://127.0.0.1:${port}${path}`};
}

function otherSecret(path) {
  return path.replace(/[0-9a-f]{16,}/, (secret) => secret.replace(/./g, (digit) => (digit === "0" ? "1" : "0")));
}

/** Runs an attack in the page at `address`. */
async function inPage(browser, address, attack, target) {
  const page = await browser.newPage();
  try {
    await page.goto(address);
    const result = await page.evaluate(attack, target);
    return {result, framed: page.frames().slice(1).map((frame) => frame.url())};
  } finally {
    await page.close();
  }
}

async function pageMay(browser, known) {
  const file = join(scratch, "written");
  assert.equal((await inPage(browser, known.address, bridgeAttack, {...known, file})).result, "answered");
  assert.ok(existsSync(file));
  assert.equal((await inPage(browser, known.address, readAttack, known)).result, "answered");
  assert.equal((await inPage(browser, known.address, scriptAttack, known)).result, "answered");
  assert.match(await get(known.port, `${known.root}inside.txt`), /^for the page/m);
  assert.equal(statusOf(await upgrade(known.port, known.path)), 101);
  console.log("the page itself reaches the server, and reads what lies beside it");
}

/** Serves a page of an origin of its own; gives the server and the page's address. */
async function servePage() {
  const pages = createServer((_request, response) => {
    response.setHeader("Content-Type", "text/html");
    response.end("<!doctype html><title>Any page</title><body></body>");
  });
  return [pages, `http://127.0.0.1:${await listen(pages)}/`];
}

async function strangerMayNot(browser, known, server) {
  const [pages, stranger] = await servePage();
  const application = await Application.connect(server.port);
  const connections = async () => {
    await application.ask("userName"); // what came before has been accepted
    return server.log().split("accepted connection").length;
  };
  const before = await connections();
  for (const attack of [bridgeAttack, readAttack, scriptAttack, frameAttack, formAttack]) {
    const file = join(scratch, attack.name);
    for (const address of [known.address, known.origin + known.path]) {
      const {result, framed} = await inPage(browser, stranger, attack, {...known, address, file});
      assert.notEqual(result, "answered", attack.name);
      if (attack === frameAttack) assert.ok(!framed.includes(known.address), "the page is shown in a frame");
    }
    assert.ok(!existsSync(file), `${attack.name} has written a file`);
    console.log(`a page in another port: ${attack.name} has done nothing`);
  }
  assert.equal(await connections(), before, "the server has not even seen it");
  application.close();
  pages.close();
}

/** A name of the stranger's own that leads to this machine: his page has the origin of that name. */
async function otherNamesMayNot(known) {
  const rules = "--host-resolver-rules=MAP rebound.example 127.0.0.1";
  const browser = await launchChromium(join(scratch, "rebinding"), {args: ["--no-sandbox", "--disable-gpu", rules]});
  const page = await browser.newPage();
  const answered = page.waitForEvent("response");
  await page.goto(known.address.replace("127.0.0.1", "rebound.example")).catch(() => {}); // it may be no page at all
  assert.ok((await answered).status() >= 400, `status ${(await answered).status()}`);
  await browser.close();
  for (const host of ["rebound.example", `rebound.example:${known.port}`, `127.0.0.1:${known.port + 1}`, "127.0.0.1", ""]) {
    const reply = await get(known.port, known.root, host);
    assert.ok(statusOf(reply) >= 400 && !reply.includes("The page itself"), `Host: ${host}`);
    assert.notEqual(statusOf(await upgrade(known.port, known.path, {host})), 101, `Host: ${host}`);
  }
  assert.notEqual(statusOf(await upgrade(known.port, known.path, {host: null})), 101, "no Host");
  console.log("another Host: nothing is served");
}

async function otherOriginsMayNot(known) {
  const origins = [
    "https://stranger.example", `http://127.0.0.1:${known.port + 1}`, `https://127.0.0.1:${known.port}`, "http://127.0.0.1",
    "null", "", null, `${known.origin}.stranger.example`, `${known.origin}@stranger.example`, `http://stranger.example/${known.origin}`,
  ];
  for (const origin of origins) {
    assert.notEqual(statusOf(await upgrade(known.port, known.path, {origin})), 101, `Origin: ${origin}`);
  }
  console.log("another Origin: no bridge");
}

async function wrongTokensMayNot(known) {
  const [, , token] = known.path.split("/");
  const paths = [
    otherSecret(known.path), known.path.replace(token, ""), known.path.replace(token, token.slice(1)), known.path.replace(token, token + "0"),
    known.path.replace(token, token.slice(0, -1) + "%00"), known.path.replace(`/${token}`, ""),
  ];
  for (const path of paths) assert.notEqual(statusOf(await upgrade(known.port, path)), 101, path);
  assert.ok(statusOf(await get(known.port, otherSecret(known.root))) >= 400, "another key");
  for (const target of ["/", "/page.html", "/corvane-play.js"]) assert.ok(statusOf(await get(known.port, target)) >= 400, target);
  console.log("a wrong token, a wrong key: nothing");
}

async function otherTargetsMayNot(known) {
  let connections = 0;
  const other = createTcpServer((socket) => { connections++; socket.destroy(); });
  const port = await listen(other);
  const base = known.path.replace(/\/127\.0\.0\.1\/\d+$/, "");
  for (const target of [`127.0.0.1/${port}`, `localhost/${port}`, `127.0.0.1%2F${port}/1`, `[::1]/${port}`, `127.0.0.1/${port + 65536}`]) {
    assert.notEqual(statusOf(await upgrade(known.port, `${base}/${target}`)), 101, target);
  }
  assert.equal(connections, 0, "the bridge has connected to another server");
  other.close();
  console.log("another target: no bridge");
}

/** The bridge alone, for the pages of another web server. */
async function onlyAllowedOriginsMay(browser, server) {
  const [pages, allowed] = await servePage();
  const [others, other] = await servePage();
  const bridge = await Play.start(program, server.port, "--bridge", "--allow-origin", allowed.slice(0, -1));
  const file = join(scratch, "over the bridge alone");
  const target = {bridge: bridge.address, file};
  assert.equal((await inPage(browser, other, bridgeAttack, target)).result, "closed");
  assert.ok(!existsSync(file));
  assert.equal((await inPage(browser, allowed, bridgeAttack, target)).result, "answered");
  assert.ok(existsSync(file));
  await bridge.stop();
  for (const web of [pages, others]) web.close();
  console.log("the bridge alone: only the page whose origin is allowed");
}

async function directoryHolds(known) {
  for (const way of WAYS_OUT) {
    const reply = await get(known.port, known.root + way);
    assert.ok(statusOf(reply) >= 400, `${way}: ${reply.split("\r\n")[0]}`);
    assert.ok(!reply.includes(SECRET), way);
  }
  assert.ok(statusOf(await get(known.port, "/etc/passwd")) >= 400);
  assert.doesNotMatch(await get(known.port, known.root), /inside\.txt/, "no listing");
  for (const method of ["POST", "PUT", "DELETE", "OPTIONS", "TRACE"]) {
    const reply = await fetch(`${known.address}inside.txt`, {method}).catch(() => ({status: 400}));
    assert.ok(reply.status >= 400, method);
  }
  console.log(`${WAYS_OUT.length} ways out of the directory lead nowhere`);
}

fillSite(join(scratch, "site"));
const server = await Server.start(executable, join(scratch, "server"), []);
const play = await Play.start(program, server.port, "--stay", join(scratch, "site", "page.html"));
const browser = await launchChromium(join(scratch, "attacking"));
try {
  const known = await learn(play.address);
  await pageMay(browser, known);
  await strangerMayNot(browser, known, server);
  await otherNamesMayNot(known);
  await otherOriginsMayNot(known);
  await wrongTokensMayNot(known);
  await otherTargetsMayNot(known);
  await directoryHolds(known);
  await onlyAllowedOriginsMay(browser, server);
  assert.ok(play.running && server.running, "both still run");
} finally {
  await browser.close();
  await play.stop();
  await server.stop();
}
