// The JavaScript client's ways to a server: a TCP server of the test's own, and a stand-in for the
// browser's WebSocket.

import assert from "node:assert/strict";
import {once} from "node:events";
import {createServer} from "node:net";
import {after, test} from "node:test";
import {CorvaneClient, Failure, overBridge} from "../../../clients/js/corvane/index.js";
import {overTcp} from "../../../clients/js/corvane/tcp.js";
import {outcome, valueReply} from "./stand_in.mjs";

const servers = [];
after(() => servers.forEach((server) => server.close()));

/** A server that hands each request to `answer`, with its socket. */
async function serve(answer) {
  const server = createServer((socket) => {
    let begun = "";
    socket.setEncoding("utf8");
    socket.on("error", () => {});
    socket.on("data", (text) => {
      const requests = (begun + text).split("\0");
      begun = requests.pop();
      for (const request of requests) answer(socket, request);
    });
  });
  servers.push(server);
  server.listen(0, "127.0.0.1");
  await once(server, "listening");
  return server.address().port;
}

test("over TCP a reply may come byte by byte", async () => {
  const port = await serve(async (socket) => {
    for (const byte of Buffer.from(valueReply("userDir", "/home/Zoë") + "\0")) {
      await new Promise((sent) => socket.write(Uint8Array.of(byte), sent));
    }
  });
  const client = new CorvaneClient(overTcp("127.0.0.1", port));
  assert.equal(await client.userDir(), "/home/Zoë");
  client.close();
});

test("over TCP the end of the other side fails what is under way, and the next call connects again", async () => {
  let connections = 0;
  const port = await serve((socket, request) => {
    if (connections++ === 0) socket.end("<CorvaneMsg>");
    else socket.write(valueReply(request, "/tmp/") + "\0");
  });
  const client = new CorvaneClient(overTcp("127.0.0.1", port));
  assert.equal((await outcome(client.tempDir())).failure.kind, Failure.DISCONNECTED);
  assert.equal(await client.tempDir(), "/tmp/");
  client.close();
});

test("over TCP a reset fails what is under way", async () => {
  const port = await serve((socket) => socket.resetAndDestroy());
  const client = new CorvaneClient(overTcp("127.0.0.1", port));
  assert.equal((await outcome(client.tempDir())).failure.kind, Failure.DISCONNECTED);
});

test("over TCP a port that nobody listens on fails every call", async () => {
  const server = createServer().listen(0, "127.0.0.1");
  await once(server, "listening");
  const {port} = server.address();
  server.close();
  await once(server, "close");
  const client = new CorvaneClient(overTcp("127.0.0.1", port));
  const results = await Promise.all([client.tempDir(), client.shutdown()].map(outcome));
  assert.deepEqual(results.map(({failure}) => failure.kind), [Failure.DISCONNECTED, Failure.DISCONNECTED]);
  for (const wrong of [54321, null]) assert.throws(() => overTcp(wrong), TypeError);
  for (const wrong of [0, 65536, "54321"]) assert.throws(() => overTcp("127.0.0.1", wrong), RangeError);
});

/** The browser's WebSocket as far as the client uses it; `last` is the newest one. */
class WebSocketStandIn {
  static last;
  sent = [];
  closed = false;

  constructor(url) {
    if (url.hostname === "forbidden.example") throw new Error("mixed content");
    this.url = String(url);
    WebSocketStandIn.last = this;
  }

  send(bytes) {
    this.sent.push(bytes);
  }

  close() {
    this.closed = true;
    this.emit("close");
  }

  emit(type, data) {
    this[`on${type}`]?.({data});
  }
}

function inPage(address) {
  globalThis.WebSocket = WebSocketStandIn;
  return new CorvaneClient(overBridge(address));
}

test("over a bridge requests leave as bytes, and replies come as bytes or text", async () => {
  const client = inPage("ws://127.0.0.1:8080/bridge?token=1");
  const results = [client.userDir(), client.tempDir()];
  const socket = WebSocketStandIn.last;
  assert.equal(socket.url, "ws://127.0.0.1:8080/bridge?token=1");
  assert.equal(socket.binaryType, "arraybuffer");
  socket.emit("open");
  assert.deepEqual(socket.sent, [new TextEncoder().encode("userDir\n\0")]);
  const bytes = new TextEncoder().encode(valueReply("userDir", "/home/Zoë") + "\0");
  socket.emit("message", bytes.slice(0, -30).buffer);
  socket.emit("message", bytes.slice(-30).buffer);
  socket.emit("message", valueReply("tempDir", "/tmp/é") + "\0");
  assert.deepEqual(await Promise.all(results), ["/home/Zoë", "/tmp/é"]);
  client.close();
  assert.equal(socket.closed, true);
});

test("over a bridge the end fails what is under way", async () => {
  const client = inPage("ws://127.0.0.1:8080/");
  const result = outcome(client.tempDir());
  const socket = WebSocketStandIn.last;
  socket.emit("open");
  socket.emit("error");
  socket.emit("close");
  assert.equal((await result).failure.kind, Failure.DISCONNECTED);
  outcome(client.tempDir());
  assert.notEqual(WebSocketStandIn.last, socket);
  client.close();
});

test("an address that the page may not try fails the calls, one that is none is refused at once", async () => {
  const client = inPage("ws://forbidden.example/");
  const results = await Promise.all([client.tempDir(), client.userDir()].map(outcome));
  assert.deepEqual(results.map(({failure}) => failure.kind), [Failure.DISCONNECTED, Failure.DISCONNECTED]);
  for (const wrong of ["file:///etc", "127.0.0.1:8080", "/bridge"]) assert.throws(() => overBridge(wrong), TypeError);
});

test("an address may be relative to the page's", () => {
  globalThis.location = {href: "http://127.0.0.1:8080/page/?x#y"};
  try {
    const client = inPage("/bridge#part");
    outcome(client.tempDir());
    assert.equal(WebSocketStandIn.last.url, "ws://127.0.0.1:8080/bridge");
    client.close();
  } finally {
    delete globalThis.location;
  }
});
