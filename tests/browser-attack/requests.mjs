// Requests that no browser sends by itself, byte for byte.

import {once} from "node:events";
import {connect} from "node:net";

/** Sends a request and gives all that comes back until the end, or until a WebSocket is open. */
export async function exchange(port, lines) {
  const socket = connect(port, "127.0.0.1");
  let received = "";
  socket.setEncoding("latin1");
  socket.on("error", () => {});
  socket.on("data", (text) => {
    received += text;
    if (received.startsWith("HTTP/1.1 101")) socket.destroy();
  });
  socket.end([...lines, "", ""].join("\r\n"));
  await once(socket, "close");
  return received;
}

export function get(port, target, host = `127.0.0.1:${port}`) {
  return exchange(port, [`GET ${target} HTTP/1.1`, `Host: ${host}`, "Connection: close"]);
}

export function upgrade(port, target, {host = `127.0.0.1:${port}`, origin = `http://127.0.0.1:${port}`} = {}) {
  return exchange(port, [
    `GET ${target} HTTP/1.1`, ...(host === null ? [] : [`Host: ${host}`]), ...(origin === null ? [] : [`Origin: ${origin}`]),
    "Connection: Upgrade", "Upgrade: websocket", "Sec-WebSocket-Version: 13", "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==",
  ]);
}

/** The status of a reply, as a number; 0 when there is none. */
export function statusOf(reply) {
  return Number(/^HTTP\/1\.1 (\d{3})/.exec(reply)?.[1] ?? 0);
}
