// A screen without a monitor, with a window manager, for browsers that show themselves.

import {end, start, until} from "./server.mjs";

export class Screen {
  #processes = [];

  /** Its name, as DISPLAY wants it. */
  display;

  static async start(width, height) {
    const screen = new Screen();
    const words = ["-displayfd", "3", "-screen", "0", `${width}x${height}x24`, "-nolisten", "tcp"];
    const server = start("Xvfb", words, {stdio: ["ignore", "ignore", "ignore", "pipe"]});
    let number = "";
    server.stdio[3].on("data", (data) => { number += data; });
    await until(() => number.endsWith("\n"), "start of the screen");
    screen.display = `:${number.trim()}`;
    const manager = start("openbox", ["--sm-disable"], {stdio: "ignore", env: {...process.env, DISPLAY: screen.display}});
    screen.#processes = [manager, server];
    return screen;
  }

  async stop() {
    for (const child of this.#processes) await end(child);
  }
}
