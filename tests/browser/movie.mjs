// The explorer in a browser, as a user has it: a mouse, a keyboard and what is on the screen.

import {appendFileSync} from "node:fs";
import {join} from "node:path";
import {setTimeout as pause} from "node:timers/promises";
import {chromium} from "playwright-core";
import {Wire} from "./wire.mjs";

const PATIENCE = 10000; // milliseconds until what should appear counts as missing
const PAINTING = 300; // milliseconds that the runtime needs to paint what the movie has changed
const ARGUMENTS = [
  "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
  "--disable-component-update", "--disable-sync",
];

export class Movie {
  /** What the movie and the server say to each other. */
  wire;

  #context;
  #page;
  #results;
  #pictures = 0;

  /** `results` is the directory for screenshots and the console's log. */
  static async open(url, profile, results) {
    const movie = new Movie();
    movie.#results = results;
    movie.#context = await chromium.launchPersistentContext(profile, {
      executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium", headless: true, args: ARGUMENTS,
      viewport: {width: 800, height: 600}, // the movie's size: positions on the stage are those on the page
    });
    movie.#page = movie.#context.pages()[0];
    movie.wire = await Wire.tap(movie.#page);
    movie.#page.on("console", (line) => appendFileSync(join(results, "console.log"), line.text() + "\n"));
    await movie.#page.goto(url);
    await movie.#page.waitForFunction(() => typeof window.movie?.state === "function", null, {timeout: 30000});
    return movie;
  }

  close() {
    return this.#context.close();
  }

  state() {
    return this.#page.evaluate(() => window.movie.state());
  }

  textOf(name) {
    return this.#page.evaluate((name) => window.movie.textOf(name), name);
  }

  /** Waits until `holds`, called with the state, is true; throws with the last state if it never is. */
  async until(what, holds) {
    const deadline = Date.now() + PATIENCE;
    let state;
    do {
      state = await this.state();
      if (await holds(state)) return state;
      await pause(40);
    } while (Date.now() < deadline);
    throw new Error(`${what}: not seen within ${PATIENCE} ms; the movie shows ${JSON.stringify(state, null, 1)}`);
  }

  /** Clicks on the control of that name, as soon as there is one. */
  async click(name) {
    let place = null;
    await this.until(`the control "${name}"`, async () => {
      place = await this.#page.evaluate((name) => window.movie.whereIs(name), name);
      return place !== null;
    });
    await this.#page.mouse.click(place[0], place[1], {delay: 60});
    await pause(120); // one frame: the movie reads the mouse once per frame
  }

  /** Two clicks that the movie takes for one double click. */
  async doubleClick(name) {
    await this.click(name);
    await this.click(name);
  }

  /** Turns the mouse wheel where the mouse is. */
  async scrollDown() {
    await this.#page.mouse.wheel(0, 200);
    await pause(120);
  }

  async type(text) {
    await this.#page.keyboard.type(text, {delay: 15});
    await pause(120);
  }

  async press(key) {
    await this.#page.keyboard.press(key);
    await pause(120);
  }

  /** Replaces what is in a field. */
  async fill(name, text) {
    await this.click(name);
    await this.press("Control+A");
    await this.type(text);
  }

  async picture(name) {
    await pause(PAINTING);
    const number = String(++this.#pictures).padStart(2, "0");
    await this.#page.screenshot({path: join(this.#results, `${number}-${name}.png`)});
  }
}
