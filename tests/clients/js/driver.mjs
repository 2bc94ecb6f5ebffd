// node driver.mjs HOST PORT: lets clients/conformance/check.py speak through the JavaScript client.

import {createInterface} from "node:readline";
import {CorvaneClient, Failure} from "../../../clients/js/corvane/index.js";
import {overTcp} from "../../../clients/js/corvane/tcp.js";

const [host, port] = process.argv.slice(2);
const client = new CorvaneClient(overTcp(host, Number(port)));

/** The lines of a request as the parameters of the method. */
const PARAMETERS = {
  write: (path, ...text) => [path, text.join("\n")],
  copy: (source, destination, recursive, included, excluded) =>
    [source, destination, recursive !== "false", extensions(included), extensions(excluded)],
  readByte: (path, offset) => [path, Number(offset)],
  setWndPos(flags, ...lines) {
    const numbers = lines.slice(0, -1).map(Number);
    const [x, y] = flags & CorvaneClient.POSITION ? numbers : [0, 0];
    const [width, height] = flags & CorvaneClient.SIZE ? numbers.slice(-2) : [0, 0];
    return [Number(flags), x, y, width, height, lines.at(-1)];
  },
};

function extensions(line) {
  return line ? line.split(",") : null;
}

function values(result) {
  if (result === true) return [];
  if (Array.isArray(result)) return result.map(({kind, name, attributes}) => `${kind} ${attributes} ${name}`);
  return typeof result === "object" ? Object.values(result).map(String) : [String(result)];
}

async function run([command, ...lines]) {
  try {
    const parameters = PARAMETERS[command]?.(...lines) ?? lines;
    return {result: "success", values: values(await client[command](...parameters))};
  } catch (failure) {
    if (!(failure instanceof Failure)) throw failure;
    return {result: failure.kind, errno: failure.errno, hint: failure.hint};
  }
}

for await (const line of createInterface({input: process.stdin})) console.log(JSON.stringify(await run(JSON.parse(line))));
client.close();
