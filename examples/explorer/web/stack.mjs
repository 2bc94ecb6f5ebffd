// Everything between a page and the Corvane server: the server itself in a directory of its own, the
// bridge from WebSocket to TCP, and a web server for the page, the movie and the Flash runtime. All on
// free ports of the loopback address.

import {spawn} from "node:child_process";
import {copyFile, mkdir, readFile, writeFile} from "node:fs/promises";
import {createServer} from "node:http";
import {connect, createServer as createTcpServer} from "node:net";
import {extname, join, normalize} from "node:path";
import {fileURLToPath} from "node:url";

const HOST = "127.0.0.1";
const PATIENCE = 15000; // milliseconds until something that does not start counts as failed
const WEB = fileURLToPath(new URL(".", import.meta.url));
const RUNTIME = join(WEB, "../node_modules/@ruffle-rs/ruffle");
const children = new Set(); // what must not outlive this process, however it ends
const TYPES = {
  ".html": "text/html", ".js": "text/javascript", ".json": "application/json", ".wasm": "application/wasm",
  ".swf": "application/x-shockwave-flash",
};

/**
 * Starts everything. `scratch` is an empty directory, `home` the server's home directory, `dir` where
 * the explorer begins, `windowTool` a program to put beside the server (or null).
 * @returns {{url, serverPort, server, stop}}; `stop` ends everything and can be called twice.
 */
export async function startStack({executable, movie, scratch, home, dir, windowTool}) {
  const running = [];
  process.on("exit", () => children.forEach((child) => child.kill("SIGKILL")));
  const stop = async () => {
    for (const end of running.splice(0).reverse()) await end();
  };
  try {
    const {server, port} = await startServer({executable, scratch, home, windowTool}, running);
    const proxyUrl = await startBridge(port, running);
    const settings = {host: HOST, port, proxyUrl, dir};
    const url = await startWeb(movie, settings, running);
    return {url, server, serverPort: port, stop};
  } catch (error) {
    await stop();
    throw error;
  }
}

async function startServer({executable, scratch, home, windowTool}, running) {
  const directory = join(scratch, "server");
  await mkdir(directory, {recursive: true});
  await copyFile(executable, join(directory, "corvane"));
  if (windowTool) await copyFile(windowTool, join(directory, "cvnwinfo"));
  await writeFile(join(directory, "corvane.conf"), "PORT=0\nADDRESS=127.0.0.1\nCONSOLE=true\nlog4cpp.priority=INFO\n");
  const server = start(join(directory, "corvane"), [], {
    cwd: directory, env: {...process.env, HOME: home}, stdio: ["ignore", "ignore", "pipe"],
  });
  running.push(() => end(server));
  return {server, port: await listeningPort(server)};
}

/** The port that the server chose; it says so on standard error. */
function listeningPort(server) {
  return new Promise((resolve, reject) => {
    let said = "";
    const timer = setTimeout(() => reject(new Error(`The server did not start:\n${said}`)), PATIENCE);
    server.on("error", reject);
    server.on("exit", (status) => reject(new Error(`The server ended with ${status}:\n${said}`)));
    server.stderr.on("data", (data) => {
      said = (said + data).slice(-4000);
      const found = /Listening on 127\.0\.0\.1:(\d+)/.exec(said);
      if (!found) return;
      clearTimeout(timer);
      resolve(Number(found[1]));
    });
  });
}

/** The bridge cannot choose its port itself, and another program may take a free one first: try again. */
async function startBridge(port, running, attempts = 5) {
  const bridgePort = await freePort();
  const bridge = start("websockify", [`${HOST}:${bridgePort}`, `${HOST}:${port}`], {stdio: "ignore"});
  let ended = false;
  bridge.on("error", () => { ended = true; });
  bridge.on("exit", () => { ended = true; });
  const deadline = Date.now() + PATIENCE;
  while (!ended && Date.now() < deadline) {
    if (await accepts(bridgePort)) {
      running.push(() => end(bridge));
      return `ws://${HOST}:${bridgePort}/`;
    }
    await new Promise((resolve) => setTimeout(resolve, 50));
  }
  await end(bridge);
  if (attempts <= 1) throw new Error("websockify did not start");
  return startBridge(port, running, attempts - 1);
}

function freePort() {
  return new Promise((resolve, reject) => {
    const probe = createTcpServer();
    probe.on("error", reject);
    probe.listen(0, HOST, () => {
      const {port} = probe.address();
      probe.close(() => resolve(port));
    });
  });
}

function accepts(port) {
  return new Promise((resolve) => {
    const socket = connect(port, HOST);
    socket.on("connect", () => { socket.destroy(); resolve(true); });
    socket.on("error", () => resolve(false));
  });
}

function startWeb(movie, settings, running) {
  const web = createServer(async (request, response) => {
    const path = normalize(new URL(request.url, "http://x").pathname);
    try {
      const body = path === "/settings.json" ? JSON.stringify(settings) : await readFile(fileFor(path, movie));
      response.writeHead(200, {"Content-Type": TYPES[extname(path) || ".html"] ?? "application/octet-stream"});
      response.end(body);
    } catch {
      response.writeHead(404).end();
    }
  });
  return new Promise((resolve, reject) => {
    web.on("error", reject);
    web.listen(0, HOST, () => {
      running.push(() => new Promise((closed) => { web.close(closed); web.closeAllConnections(); }));
      resolve(`http://${HOST}:${web.address().port}/`);
    });
  });
}

function fileFor(path, movie) {
  if (path === "/explorer.swf") return movie;
  if (path.startsWith("/ruffle/")) return join(RUNTIME, path.slice("/ruffle".length));
  return join(WEB, path === "/" ? "index.html" : path);
}

function start(program, parameters, options) {
  const child = spawn(program, parameters, options);
  children.add(child);
  child.on("exit", () => children.delete(child));
  return child;
}

function end(child) {
  if (child.pid === undefined || child.exitCode !== null || child.signalCode !== null) return Promise.resolve();
  return new Promise((resolve) => {
    const timer = setTimeout(() => child.kill("SIGKILL"), 3000);
    child.on("exit", () => { clearTimeout(timer); resolve(); });
    child.kill("SIGTERM");
  });
}
