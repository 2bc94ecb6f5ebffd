import {Connection} from "./connection.js";
import {Entry} from "./entry.js";
import {Failure} from "./failure.js";

/** The server reads a longer parameter line as an empty one. */
const MAX_LINE_BYTES = 1023;

// What would end the request or the line, and halves of letters, which have no form in UTF-8.
const NOT_IN_A_REQUEST = /[\0\x01]|\p{Surrogate}/u;
const NOT_IN_A_LINE = /\n|\r$/;

/** The server's commands as methods; index.d.ts says what each does and gives. */
export class CorvaneClient {
  static POSITION = 1;
  static SIZE = 2;

  #connection;

  constructor(transport) {
    this.#connection = new Connection(transport);
  }

  setTimeout(milliseconds) {
    this.#connection.timeout = milliseconds;
  }

  close() {
    this.#connection.close();
  }

  async write(path, text) {
    if (!isLine(path) || !isText(text)) throw new Failure(Failure.UNSENDABLE, "write");
    return nothing(await this.#transmit("write", `write\n${path}\n${text}`));
  }

  async makeDir(path) {
    return (await this.#request("makeDir", path)).hint;
  }

  async regQueryValue(root, path, name) {
    return value(await this.#request("regQueryValue", root, path, name));
  }

  async delete(path) {
    return nothing(await this.#request("delete", path));
  }

  async execute(target) {
    return nothing(await this.#request("execute", target));
  }

  async copy(source, destination, recursive = true, included = null, excluded = null) {
    const lines = [source, destination, recursive ? "true" : "false", list(included), list(excluded)];
    return nothing(await this.#request("copy", ...lines));
  }

  async rename(source, destination) {
    return nothing(await this.#request("rename", source, destination));
  }

  async log(category, priority, message) {
    return nothing(await this.#request("log", category, priority, message));
  }

  async readByte(path, offset) {
    return number(await this.#request("readByte", path, digits(offset)), "value");
  }

  async readText(path) {
    return find(await this.#request("readText", path), "text");
  }

  async listDir(path) {
    return entries(await this.#request("listDir", path));
  }

  async userDir(which = "") {
    return value(await this.#request("userDir", which));
  }

  async currentDir() {
    return value(await this.#request("currentDir"));
  }

  async tempDir() {
    return value(await this.#request("tempDir"));
  }

  async regSetValue(root, path, name, value) {
    return nothing(await this.#request("regSetValue", root, path, name, value));
  }

  async getWndRect(window = "") {
    return rect(await this.#request("getWndRect", window));
  }

  async getScreenRect() {
    return rect(await this.#request("getScreenRect"));
  }

  async setWndPos(flags, x, y, width, height, window = "") {
    const lines = [digits(flags)];
    if (flags & CorvaneClient.POSITION) lines.push(digits(x), digits(y));
    if (flags & CorvaneClient.SIZE) lines.push(digits(width), digits(height));
    return nothing(await this.#request("setWndPos", ...lines, window));
  }

  async bringToFront(window) {
    return nothing(await this.#request("bringToFront", window));
  }

  async listNet(group = "") {
    return entries(await this.#request("listNet", group));
  }

  async userName() {
    return value(await this.#request("userName"));
  }

  async clipboardGet() {
    return value(await this.#request("clipboardGet"));
  }

  async shutdown() {
    const reply = await this.#connection.send({action: "shutdown", text: "shutdown", endsServer: true});
    return nothing(reply === null || succeeded(reply));
  }

  #request(action, ...lines) {
    if (!lines.every(isLine)) throw new Failure(Failure.UNSENDABLE, action);
    return this.#transmit(action, [action, ...lines].join("\n"));
  }

  async #transmit(action, text) {
    return succeeded(await this.#connection.send({action, text, endsServer: false}));
  }
}

function succeeded(reply) {
  if (!reply.ok) throw new Failure(Failure.REFUSED, reply.action, reply.errno, reply.hint);
  return reply;
}

function isText(text) {
  return typeof text === "string" && !NOT_IN_A_REQUEST.test(text);
}

/** Whether the text arrives as one parameter: no terminator, no line break, not too long. */
function isLine(text) {
  return isText(text) && !NOT_IN_A_LINE.test(text) && new TextEncoder().encode(text).length <= MAX_LINE_BYTES;
}

/** Null, which no line is, for what the server would read as another number. */
function digits(value) {
  return Number.isSafeInteger(value) ? String(value) : null;
}

function list(extensions) {
  return extensions === null ? "" : extensions.join(",");
}

/** The result of a command that has none. */
function nothing() {
  return true;
}

function value(reply) {
  return find(reply, "value");
}

function find(reply, id) {
  const detail = reply.details.find((detail) => detail.id === id);
  if (detail === undefined) throw new Failure(Failure.MALFORMED, reply.action);
  return detail.value;
}

function number(reply, id) {
  const text = find(reply, id);
  if (!/^-?\d+$/.test(text)) throw new Failure(Failure.MALFORMED, reply.action);
  return Number(text);
}

function entries(reply) {
  return reply.details.map(({id, value, extra}) => new Entry(id, value, extra));
}

function rect(reply) {
  return {
    x: number(reply, "x"), y: number(reply, "y"), width: number(reply, "width"), height: number(reply, "height"),
  };
}
