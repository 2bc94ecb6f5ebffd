// The explorer in a browser, as a user has it: a mouse, a keyboard and what is on the screen.

import {appendFileSync} from "node:fs";
import {join} from "node:path";
import {setTimeout as pause} from "node:timers/promises";
import {launchChromium} from "./play.mjs";
import {Wire} from "./wire.mjs";

const PATIENCE = 10000; // milliseconds until what should appear counts as missing
const PAINTING = 300; // milliseconds that the runtime needs to paint what the movie has changed
const PLAYER = "ruffle-player"; // the runtime's element, which has what the movie offers

export class Movie {
  /** What the movie and the server say to each other. */
  wire;

  #context;
  #page;
  #results;
  #pictures = 0;

  /** Addresses that were asked for and not there, with the status. */
  missing = [];

  /** Where the stage begins on the page. */
  #corner;

  /** `results` is the directory for screenshots and the console's log. */
  static async open(url, profile, results) {
    const context = await launchChromium(profile, {viewport: {width: 800, height: 600}}); // the movie's size
    const movie = new Movie(context.pages()[0]);
    movie.#context = context;
    movie.#results = results;
    movie.wire = await Wire.tap(movie.#page);
    movie.#page.on("response", (response) => {
      if (response.status() >= 400) movie.missing.push(`${response.status()} ${response.url()}`);
    });
    movie.#page.on("console", (line) => appendFileSync(join(results, "console.log"), line.text() + "\n"));
    await movie.#page.goto(url);
    await movie.loaded();
    return movie;
  }

  /** Waits until the movie runs, also after the page was loaded again. */
  async loaded() {
    await this.#page.waitForFunction((player) => typeof document.querySelector(player)?.state === "function", PLAYER, {timeout: 30000});
    const {x, y} = await this.#page.locator(PLAYER).boundingBox();
    this.#corner = [x, y];
  }

  /** Gives the page another size, and the movie the time to notice. */
  async resize(width, height) {
    await this.#page.setViewportSize({width, height});
    await pause(PAINTING);
  }

  /** The middle of the control of that name in pixels of the page; null when there is none. */
  whereIs(name) {
    return this.#ask("whereIs", name);
  }

  /** The movie on a page that another has opened. */
  constructor(page) {
    this.#page = page;
  }

  close() {
    return this.#context.close();
  }

  state() {
    return this.#ask("state");
  }

  textOf(name) {
    return this.#ask("textOf", name);
  }

  /** Calls a function that the movie offers. */
  #ask(name, ...parameters) {
    return this.#page.evaluate(([player, name, parameters]) => document.querySelector(player)[name](...parameters), [PLAYER, name, parameters]);
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
      place = await this.#ask("whereIs", name);
      return place !== null;
    });
    await this.#page.mouse.click(this.#corner[0] + place[0], this.#corner[1] + place[1], {delay: 60});
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

  /** A key that is held until it has repeated itself. */
  async hold(key) {
    for (let count = 0; count < 4; count++) {
      await this.#page.keyboard.down(key);
      await pause(120);
    }
    await this.#page.keyboard.up(key);
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
