// A page cannot open a TCP connection; a bridge on its own machine carries the bytes for it.

/**
 * The way to a server through a WebSocket bridge at `address`: one of "ws:" or "wss:", or in a page
 * one that is relative to the page's. Each connection has a WebSocket of its own.
 */
export function overBridge(address) {
  const url = new URL(address, globalThis.location?.href);
  url.protocol = url.protocol.replace(/^http/, "ws");
  url.hash = "";
  if (!/^wss?:$/.test(url.protocol)) throw new TypeError(`${address} is no address of a bridge`);
  return {open: (events) => open(url, events)};
}

function open(url, {opened, received, lost}) {
  let socket;
  try {
    socket = new WebSocket(url);
  } catch {
    // There are addresses that this page may not even try, such as "ws:" from one of "https:".
    queueMicrotask(lost);
    return {send() {}, close() {}};
  }
  const encoder = new TextEncoder();
  socket.binaryType = "arraybuffer";
  socket.onopen = () => opened();
  socket.onmessage = ({data}) => received(typeof data === "string" ? encoder.encode(data) : new Uint8Array(data));
  socket.onclose = () => lost(); // comes after an error, too
  return {
    send: (bytes) => socket.send(bytes),
    close: () => socket.close(),
  };
}
