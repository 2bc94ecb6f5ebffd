// What went over the wire, byte for byte. The movie reads replies generously; this does not.

import assert from "node:assert/strict";

const TEXT = `(?:[^&<>"']|&(?:amp|lt|gt|quot|apos);)*`;
const DETAIL = `<Detail id="[^"]*" extra="[dshr]*"(?: date="[^"]+")?(?: size="[^"]+")?(?:>${TEXT}</Detail>| Value="[^]*?" />)`;
const REPLY = new RegExp(
  `^<CorvaneMsg><Header id="info" Type="RESULT" Action="([^"]*)" Result="(?:SUCCESS|FAILED)"` +
  `(?: errno="\\d+")?(?: hint="[^]+?")?>(?:${DETAIL})*</Header></CorvaneMsg>$`);

export class Wire {
  #connections = 0;
  #received = [];
  #page;

  /** Listens to the bridges that the page opens from now on. */
  static async tap(page) {
    const wire = new Wire();
    wire.#page = page;
    page.on("websocket", (socket) => {
      if (!socket.url().includes("/bridge/")) return;
      wire.#connections++;
      socket.on("framereceived", ({payload}) => wire.#received.push(Buffer.from(payload)));
    });
    // The runtime sends blobs, and the browser does not report what is in them.
    await page.addInitScript(() => {
      window.sent = [];
      const send = WebSocket.prototype.send;
      WebSocket.prototype.send = function (data) {
        if (this.url.includes("/bridge/")) window.sent.push(new Response(data).text());
        send.call(this, data);
      };
    });
    return wire;
  }

  /** Throws unless each request had one reply of the right form, in order, on one connection. */
  async check() {
    assert.equal(this.#connections, 1, "the connection was lost");
    const sent = await this.#page.evaluate(async () => (await Promise.all(window.sent)).join(""));
    const requests = messages(sent, "the last request");
    const replies = messages(Buffer.concat(this.#received).toString("utf8"), "the last reply");
    for (const [index, request] of requests.entries()) {
      const found = REPLY.exec(replies[index] ?? "");
      assert.ok(found, `the reply to ${JSON.stringify(request)} is ${JSON.stringify(replies[index])}`);
      assert.equal(found[1], request.split("\n")[0], "replies come in the order of the requests");
    }
    assert.equal(replies.length, requests.length, "one reply for each request");
    return requests.length;
  }
}

function messages(text, last) {
  const parts = text.split("\0");
  assert.equal(parts.pop(), "", `${last} has no end`);
  return parts;
}
