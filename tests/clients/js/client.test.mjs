// The queue, the failures and the limits of the JavaScript client, on a stand-in for the connection.

import assert from "node:assert/strict";
import {afterEach, beforeEach, test} from "node:test";
import {CorvaneClient, Failure} from "../../../clients/js/corvane/index.js";
import {Clock, StandIn, connected, envelope, outcome, valueReply} from "./stand_in.mjs";

let clock;
beforeEach(() => { clock = new Clock(); });
afterEach(() => clock.restore());

test("one request is under way at a time", async () => {
  const transport = new StandIn();
  const client = new CorvaneClient(transport);
  const first = client.currentDir();
  const second = client.readByte("f", 7);
  assert.deepEqual(transport.sent, []);
  transport.accept();
  assert.deepEqual(transport.sent, ["currentDir\0"]);
  transport.receive(valueReply("currentDir", "/d/"));
  assert.deepEqual(transport.sent, ["currentDir\0", "readByte\nf\n7\0"]);
  transport.receive(valueReply("readByte", "255"));
  assert.deepEqual(await Promise.all([first, second]), ["/d/", 255]);
  assert.equal(transport.openings, 1);
  assert.deepEqual(clock.running, []);
});

test("a lost connection is made again by the next call", async () => {
  const {client, transport} = await connected();
  transport.drop();
  const gone = client.delete("x");
  assert.equal(transport.openings, 2);
  transport.accept();
  transport.receive(envelope("delete", "SUCCESS"));
  assert.equal(await gone, true);
});

test("a lost request is not repeated", async () => {
  const {client, transport} = await connected();
  const lost = outcome(client.delete("x"));
  transport.drop();
  assert.equal((await lost).failure.kind, Failure.DISCONNECTED);
  assert.deepEqual(transport.sent, ["delete\nx\0"]);
  assert.equal(transport.openings, 1);
});

test("a request behind a lost one goes out on a new connection", async () => {
  const {client, transport} = await connected();
  const lost = outcome(client.delete("x"));
  const next = client.tempDir();
  transport.drop();
  assert.equal(transport.openings, 2);
  transport.accept();
  assert.deepEqual(transport.sent, ["delete\nx\0", "tempDir\0"]);
  transport.receive(valueReply("tempDir", "/tmp/"));
  assert.equal(await next, "/tmp/");
  assert.equal((await lost).failure.kind, Failure.DISCONNECTED);
});

test("a reply in time is waited for, and no longer", async () => {
  const {client, transport} = await connected();
  client.setTimeout(2500);
  const late = outcome(client.tempDir());
  assert.deepEqual(clock.running, [2500]);
  const connection = transport.last;
  clock.elapse();
  assert.equal((await late).failure.kind, Failure.TIMED_OUT);
  assert.equal(connection.closed, true);
});

test("a time-out that no timer can hold is the longest one", async () => {
  const {client} = await connected();
  client.setTimeout(Infinity);
  outcome(client.tempDir());
  assert.deepEqual(clock.running, [2 ** 31 - 1]);
});

test("what comes late from an old connection counts for nothing", async () => {
  const {client, transport} = await connected();
  const old = transport.last;
  const late = outcome(client.tempDir());
  clock.elapse();
  await late;
  const next = outcome(client.tempDir());
  transport.accept();
  old.events.received(new TextEncoder().encode(valueReply("tempDir", "/old/") + "\0"));
  old.events.lost();
  old.events.opened();
  transport.receive(valueReply("tempDir", "/new/"));
  assert.deepEqual(await next, {value: "/new/"});
  assert.equal(transport.sent.length, 2);
});

test("a reply out of step ends the connection", async () => {
  const {client, transport} = await connected();
  const result = outcome(client.tempDir());
  const behind = outcome(client.userDir());
  const old = transport.last;
  transport.receive(valueReply("userDir", "/wrong/"), valueReply("userDir", "/wrong/"));
  assert.equal((await result).failure.kind, Failure.MALFORMED);
  assert.equal(old.closed, true);
  transport.accept();
  transport.receive(valueReply("userDir", "/right/"));
  assert.deepEqual(await behind, {value: "/right/"});
});

test("what is no reply ends the connection", async () => {
  const {client, transport} = await connected();
  const result = outcome(client.tempDir());
  transport.receive("<html>");
  assert.equal((await result).failure.kind, Failure.MALFORMED);
  assert.equal(transport.last.closed, true);
});

test("a reply that nobody has asked for ends the connection", async () => {
  const {transport} = await connected();
  transport.receive(valueReply("userName", ""));
  assert.equal(transport.last.closed, true);
});

test("a refusal has the reply's error number and hint", async () => {
  const {client, transport} = await connected();
  const result = outcome(client.write("x", "a\nb"));
  assert.deepEqual(transport.sent, ["write\nx\na\nb\0"]);
  transport.receive(envelope("write", "FAILED", ' errno="2" hint="h"'));
  const {failure} = await result;
  assert.ok(failure instanceof Failure && failure instanceof Error);
  assert.deepEqual([failure.kind, failure.action, failure.errno, failure.hint], ["refused", "write", 2, "h"]);
  assert.equal(String(failure), "Failure: write: refused, error 2, h");
});

test("a reply without the value that belongs to the command is malformed", async () => {
  for (const [call, reply] of [
    [(client) => client.tempDir(), envelope("tempDir", "SUCCESS")],
    [(client) => client.readByte("f", 0), valueReply("readByte", "x")],
    [(client) => client.getScreenRect(), envelope("getScreenRect", "SUCCESS", "", '<Detail id="x" extra="" Value="0" />')],
  ]) {
    const {client, transport} = await connected();
    const result = outcome(call(client));
    transport.receive(reply);
    assert.equal((await result).failure?.kind, Failure.MALFORMED);
  }
});

test("nothing is sent that a request cannot carry", async () => {
  const {client, transport} = await connected();
  const texts = ["a\nb", "a\r", "a\0b", "a\x01b", "\ud800", "x".repeat(1024), "é".repeat(512), undefined, 7];
  const calls = [
    ...texts.map((text) => client.delete(text)), client.write("ok", "a\x01b"), client.write("ok", undefined),
    client.write("a\nb", ""), client.readByte("f", 1.5), client.readByte("f", 2 ** 53),
    client.setWndPos(1, NaN, 2, 3, 4, "w"),
  ];
  for (const result of await Promise.all(calls.map(outcome))) assert.equal(result.failure?.kind, Failure.UNSENDABLE);
  assert.deepEqual(transport.sent, []);
  outcome(client.delete("x".repeat(1023)));
  assert.equal(transport.sent.length, 1);
});

test("setWndPos sends only the numbers that the flags name", async () => {
  const texts = [];
  for (const flags of [1, 2, 3]) {
    const {client, transport} = await connected();
    outcome(client.setWndPos(flags, 1, 2, 3, 4, "w"));
    texts.push(transport.sent[0].replaceAll("\n", " "));
  }
  assert.deepEqual(texts, ["setWndPos 1 1 2 w\0", "setWndPos 2 3 4 w\0", "setWndPos 3 1 2 3 4 w\0"]);
});

test("copy sends two lists of extensions, empty for no limit", async () => {
  for (const [limits, text] of [[[], "true\n\n"], [[false, ["txt", "md"], ["bak"]], "false\ntxt,md\nbak"]]) {
    const {client, transport} = await connected();
    outcome(client.copy("a", "b", ...limits));
    assert.deepEqual(transport.sent, [`copy\na\nb\n${text}\0`]);
  }
});

test("an entry tells what it is", async () => {
  const {client, transport} = await connected();
  const entries = client.listDir("d");
  const detail = (id, extra) => `<Detail id="${id}" extra="${extra}" Value="x" />`;
  transport.receive(envelope("listDir", "SUCCESS", "", [["directory", "d"], ["file", "h"], ["file", "r"], ["file", "s"]].map((pair) => detail(...pair)).join("")));
  assert.deepEqual((await entries).map((entry) => [entry.isDirectory(), entry.isHidden(), entry.isReadOnly()]),
    [[true, false, false], [false, true, false], [false, false, true], [false, false, false]]);
});

test("the end is the answer to shutdown", async () => {
  const {client, transport} = await connected();
  const result = client.shutdown();
  transport.drop();
  assert.equal(await result, true);
});

test("a connection that cannot be made is no answer to shutdown", async () => {
  const {client, transport} = await connected();
  transport.drop();
  const result = outcome(client.shutdown());
  transport.drop();
  assert.equal((await result).failure.kind, Failure.DISCONNECTED);
});

test("a shutdown that is refused leaves the connection", async () => {
  const {client, transport} = await connected();
  const result = outcome(client.shutdown());
  transport.receive(envelope("shutdown", "FAILED"));
  assert.equal((await result).failure.kind, Failure.REFUSED);
  assert.equal(transport.last.closed, false);
});

test("closing answers everything", async () => {
  const {client, transport} = await connected();
  const results = Promise.all([client.tempDir(), client.currentDir()].map(outcome));
  client.close();
  assert.deepEqual((await results).map(({failure}) => failure.action), ["tempDir", "currentDir"]);
  assert.equal(transport.last.closed, true);
  assert.deepEqual(clock.running, []);
});
