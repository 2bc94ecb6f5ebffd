// The real server in a directory of its own, and an application that is connected to it.

import {spawn} from "node:child_process";
import {once} from "node:events";
import {copyFileSync, mkdirSync, readFileSync, symlinkSync, writeFileSync} from "node:fs";
import {connect} from "node:net";
import {join} from "node:path";
import {setTimeout as pause} from "node:timers/promises";

const PATIENCE = 20000; // milliseconds
const running = new Set(); // what must not outlive this process, however it ends
process.on("exit", () => running.forEach((child) => child.kill("SIGKILL")));

/** Starts a program that ends with this process at the latest. */
export function start(program, words, options) {
  const child = spawn(program, words, options);
  running.add(child);
  child.on("error", () => running.delete(child)); // it could not be started
  child.on("exit", () => running.delete(child));
  return child;
}

export function isRunning(child) {
  return running.has(child);
}

/** Asks a program to end, and gives its status. */
export async function end(child) {
  if (isRunning(child)) {
    const gone = once(child, "exit");
    child.kill("SIGTERM");
    await gone;
  }
  return child.exitCode;
}

/** Waits until `condition` gives something; fails with `promise` when it does not. */
export async function until(condition, promise) {
  const deadline = Date.now() + PATIENCE;
  for (;;) {
    const result = await condition();
    if (result) return result;
    if (Date.now() > deadline) throw new Error(`not in time: ${promise}`);
    await pause(20);
  }
}

export class Server {
  port;
  #process;
  #directory;
  #environment;

  /**
   * `directory` is made; `settings` are lines of the configuration behind "PORT=0"; `windowTool` a
   * program to put beside the server; `environment` is added to this process's own.
   */
  static async start(executable, directory, settings, {windowTool, environment} = {}) {
    const server = new Server();
    server.#directory = directory;
    server.#environment = {...process.env, ...environment};
    mkdirSync(directory, {recursive: true});
    symlinkSync(executable, join(directory, "corvane"));
    if (windowTool) copyFileSync(windowTool, join(directory, "cvnwinfo"));
    server.#configure(0, settings);
    server.#start();
    await until(() => server.#findPort(), "start of the server");
    server.#configure(server.port, settings);
    return server;
  }

  /** Starts it again after stop(), on the port that it had. */
  async restart() {
    this.#start();
    await until(() => this.#logOf(this.port).includes(`Listening on 127.0.0.1:${this.port}\n`), "start of the server");
  }

  #configure(port, settings) {
    writeFileSync(join(this.#directory, "corvane.conf"), [`PORT=${port}`, ...settings, ""].join("\n"));
  }

  #start() {
    const options = {cwd: this.#directory, env: this.#environment, stdio: "ignore"};
    this.#process = start(join(this.#directory, "corvane"), options);
  }

  /** Of the first start. */
  log() {
    return this.#logOf(0);
  }

  #logOf(port) {
    try {
      return readFileSync(join(this.#directory, `cv${port}.log`), "utf8");
    } catch {
      return "";
    }
  }

  #findPort() {
    this.port = Number(this.log().match(/Listening on 127\.0\.0\.1:(\d+)\n/)?.[1]);
    return this.port;
  }

  get running() {
    return isRunning(this.#process);
  }

  /** Gives its status. */
  stop() {
    return end(this.#process);
  }
}

/** An application with one connection, which it keeps. */
export class Application {
  #socket;
  #received = "";

  static async connect(port) {
    const application = new Application();
    application.#socket = connect(port, "127.0.0.1");
    application.#socket.setEncoding("utf8");
    application.#socket.on("data", (text) => (application.#received += text));
    application.#socket.on("error", () => {});
    await once(application.#socket, "connect");
    return application;
  }

  /** The reply to a request; nothing when there is none in `patience` milliseconds. */
  async ask(request, patience = PATIENCE) {
    this.#received = "";
    this.#socket.write(request + "\0");
    const deadline = Date.now() + patience;
    while (!this.#received.endsWith("\0") && Date.now() < deadline) await pause(10);
    return this.#received.slice(0, -1);
  }

  close() {
    this.#socket.destroy();
  }
}
