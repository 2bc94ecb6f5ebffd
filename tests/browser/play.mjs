// corvane-play as a process, and the browsers that look at what it serves.

import {chromium, firefox} from "playwright-core";
import {end, isRunning, start, until} from "./server.mjs";

const ARGUMENTS = [
  "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
  "--disable-component-update", "--disable-sync",
  // Without a GPU, WebGL is so slow that clicks get lost; without WebGL the runtime uses a canvas.
  "--disable-software-rasterizer", "--disable-3d-apis",
];

export class Play {
  /** The page's address, or with --bridge that of the bridge. */
  address;
  said = "";
  #process;

  /** Runs `program` for the server on `port`; `words` are what else stands on the command line. */
  static start(program, port, ...words) {
    return Play.read(program, ["--no-open", "--port", String(port), ...words]);
  }

  /** Runs a program that prints the address of a page. */
  static async read(program, words, environment = {}) {
    const play = new Play(program, words, {...process.env, ...environment});
    await until(() => !play.running || play.#findAddress(), "an address of a page");
    if (!play.address) throw new Error(`${program} ended: ${play.said}`);
    return play;
  }

  /** The same, with the kiosk's browser as `environment` lets it find one. */
  static startKiosk(program, environment, port, ...words) {
    return new Play(program, ["--kiosk", "--port", String(port), ...words], {...process.env, ...environment});
  }

  constructor(program, words, environment) {
    this.#process = start(program, words, {env: environment, stdio: ["ignore", "pipe", "pipe"]});
    for (const stream of [this.#process.stdout, this.#process.stderr]) stream.on("data", (text) => { this.said += text; });
  }

  #findAddress() {
    this.address = this.said.match(/\b(?:http|ws):\/\/127\.0\.0\.1:\d+\/\S*/)?.[0];
    return this.address;
  }

  get running() {
    return isRunning(this.#process);
  }

  /** Gives its status. */
  stop() {
    return end(this.#process);
  }
}

/** A browser on an empty profile; `options` are added to those of playwright. */
export function launchChromium(profile, options = {}) {
  return chromium.launchPersistentContext(profile, {
    executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium", headless: true, args: ARGUMENTS, ...options,
  });
}

/** Debian's Firefox, which is driven by its own protocol. */
export function launchFirefox() {
  return firefox.launch({
    channel: "moz-firefox", executablePath: process.env.FIREFOX ?? "/usr/bin/firefox-esr", headless: true,
    firefoxUserPrefs: {"webgl.disabled": true}, // as in Chromium
  });
}
