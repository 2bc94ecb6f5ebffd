// For Node.js: straight to the server.

import {connect} from "node:net";

/** The way to a server over TCP. Each connection has a socket of its own. */
export function overTcp(host = "127.0.0.1", port = 54321) {
  if (typeof host !== "string") throw new TypeError(`${host} is no host`);
  if (!Number.isInteger(port) || port < 1 || port > 65535) throw new RangeError(`${port} is no port`);
  return {open: (events) => open(host, port, events)};
}

function open(host, port, {opened, received, lost}) {
  const socket = connect({host, port, noDelay: true});
  socket.on("connect", () => opened());
  socket.on("data", (bytes) => received(bytes));
  socket.on("error", () => {}); // "close" follows
  socket.on("close", () => lost());
  return {
    send: (bytes) => socket.write(bytes),
    close: () => socket.destroy(),
  };
}
