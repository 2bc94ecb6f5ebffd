// Uses everything that the JavaScript client declares; only the compiler reads it.

import {CorvaneClient, Entry, Failure, overBridge} from "corvane-client";
import type {Channel, FailureKind, Rect, Transport, TransportEvents} from "corvane-client";
import {overTcp} from "corvane-client/tcp";

const own: Transport = {
  open(events: TransportEvents): Channel {
    queueMicrotask(() => events.opened());
    return {send: (bytes: Uint8Array) => events.received(bytes), close: () => {}};
  },
};

export async function everyCommand(client: CorvaneClient): Promise<string> {
  client.setTimeout(1000);
  const texts: string[] = [
    await client.userDir(), await client.userDir("desktop"), await client.userName(), await client.currentDir(),
    await client.tempDir(), await client.makeDir("d"), await client.readText("f"), await client.clipboardGet(),
    await client.regQueryValue("HKEY_CURRENT_USER", "a/b", "c"),
  ];
  const done: true[] = [
    await client.write("f", "text"), await client.delete("f"), await client.execute("f"), await client.copy("a", "b"),
    await client.copy("a", "b", false, ["txt"], null), await client.rename("a", "b"), await client.log("", "INFO", "m"),
    await client.regSetValue("r", "p", "n", "v"), await client.bringToFront("w"), await client.shutdown(),
    await client.setWndPos(CorvaneClient.POSITION | CorvaneClient.SIZE, 1, 2, 3, 4, "w"),
  ];
  const byte: number = await client.readByte("f", 0);
  const entries: Entry[] = [...await client.listDir("d"), ...await client.listNet()];
  const rects: Rect[] = [await client.getWndRect(), await client.getScreenRect()];
  client.close();
  const named = entries.map((entry) => entry.isDirectory() || entry.isHidden() || entry.isReadOnly() ? entry.kind : entry.name);
  return [...texts, ...done, byte, ...named, ...rects.map(({x, y, width, height}) => x + y + width + height)].join();
}

export function everyFailure(error: unknown): FailureKind | undefined {
  if (!(error instanceof Failure)) return undefined;
  if (error.kind === Failure.REFUSED || error.kind === Failure.MALFORMED) return error.kind;
  if (error.kind === Failure.UNSENDABLE || error.kind === Failure.DISCONNECTED) return error.kind;
  const rest: typeof Failure.TIMED_OUT = error.kind;
  return error.action + error.errno.toFixed() + error.hint + error.message === "" ? undefined : rest;
}

export const clients = [
  new CorvaneClient(overTcp()), new CorvaneClient(overTcp("::1", 5000)), new CorvaneClient(own),
  new CorvaneClient(overBridge("ws://127.0.0.1/")), new CorvaneClient(overBridge(new URL("ws://127.0.0.1/"))),
];

export async function mistakes(client: CorvaneClient): Promise<void> {
  // @ts-expect-error: a port is a number
  overTcp("127.0.0.1", "54321");
  // @ts-expect-error: the offset is missing
  await client.readByte("f");
  // @ts-expect-error: extensions come as a list
  await client.copy("a", "b", true, "txt");
  // @ts-expect-error: there is no such command
  await client.listFiles("d");
  // @ts-expect-error: a command that has no result gives true
  const text: string = await client.delete("f");
  // @ts-expect-error: results are read only
  (await client.listDir("d"))[0].name = text;
}
