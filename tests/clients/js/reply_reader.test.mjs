// What the JavaScript client makes of the server's bytes.

import assert from "node:assert/strict";
import {test} from "node:test";
import {Messages} from "../../../clients/js/corvane/messages.js";
import {parseReply} from "../../../clients/js/corvane/reply_reader.js";
import {envelope} from "./stand_in.mjs";

test("a reply is taken apart", () => {
  const reply = parseReply(envelope("listDir", "SUCCESS", ' errno="13" hint="/a/"',
    '<Detail id="file" extra="hr" date="d" size="0" Value="x" /><Detail id="text" extra="">&lt;a&amp;lt;&quot;&apos;</Detail>'));
  assert.deepEqual(reply, {action: "listDir", ok: true, errno: 13, hint: "/a/", details: [
    {id: "file", extra: "hr", date: "d", size: "0", value: "x"},
    {id: "text", extra: "", date: "", size: "", value: "<a&lt;\"'"},
  ]});
});

test("names that are no XML are read", () => {
  const name = 'R&D "final" <2>.txt" />';
  const reply = parseReply(envelope("listDir", "SUCCESS", ' hint="/a">b/"',
    `<Detail id="file" extra="" Value="${name}" /><Detail id="file" extra="" Value="a&amp;b" />`));
  assert.equal(reply.hint, '/a">b/');
  assert.deepEqual(reply.details.map(({value}) => value), [name, "a&amp;b"]);
});

test("what is no reply is refused", () => {
  const good = envelope("userName", "SUCCESS", "", '<Detail id="value" extra="" Value="" />');
  assert.ok(parseReply(good));
  for (let length = 0; length < good.length; length++) assert.equal(parseReply(good.slice(0, length)), null);
  for (const bad of [good + " ", good.replace(" Value", "  Value"), good.replace("SUCCESS", "Success"),
    envelope("write", "FAILED", ' errno="two"')]) assert.equal(parseReply(bad), null, bad);
});

test("messages come whole wherever they are cut", () => {
  const bytes = new TextEncoder().encode("\ufeffnaïve\0Привет, 🎈\0\0end\0rest");
  const whole = ["\ufeffnaïve", "Привет, 🎈", "", "end"];
  for (let cut = 0; cut <= bytes.length; cut++) {
    const messages = new Messages();
    assert.deepEqual([...messages.add(bytes.subarray(0, cut)), ...messages.add(bytes.subarray(cut))], whole);
  }
  const messages = new Messages();
  assert.deepEqual([...bytes].flatMap((byte) => [...messages.add(Uint8Array.of(byte))]), whole);
});

test("bytes that are no text do not reach into the next message", () => {
  const messages = new Messages();
  assert.deepEqual([...messages.add(Uint8Array.of(0xd0, 0, 0x61, 0))], ["\ufffd", "a"]);
});
