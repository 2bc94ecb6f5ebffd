// The real server in a directory of its own, and an application that is connected to it.

import {spawn} from "node:child_process";
import {once} from "node:events";
import {mkdirSync, readFileSync, symlinkSync, writeFileSync} from "node:fs";
import {connect} from "node:net";
import {join} from "node:path";
import {setTimeout as pause} from "node:timers/promises";

const PATIENCE = 20000; // milliseconds

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
  #log;

  static async start(executable, directory, settings) {
    const server = new Server();
    mkdirSync(directory, {recursive: true});
    symlinkSync(executable, join(directory, "corvane"));
    writeFileSync(join(directory, "corvane.conf"), ["PORT=0", ...settings, ""].join("\n"));
    server.#log = join(directory, "cv0.log");
    server.#process = spawn(join(directory, "corvane"), {cwd: directory, stdio: "ignore"});
    await until(() => server.#findPort(), "start of the server");
    return server;
  }

  log() {
    try {
      return readFileSync(this.#log, "utf8");
    } catch {
      return "";
    }
  }

  #findPort() {
    this.port = Number(this.log().match(/Listening on 127\.0\.0\.1:(\d+)\n/)?.[1]);
    return this.port;
  }

  get running() {
    return this.#process.exitCode === null && this.#process.signalCode === null;
  }

  async stop() {
    if (!this.running) return;
    const end = once(this.#process, "exit");
    this.#process.kill("SIGTERM");
    await end;
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
