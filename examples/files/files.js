// What the page does with the server: a directory, its entries, the text of one of them.

import {Failure} from "./corvane/index.js";

const REASONS = {
  [Failure.REFUSED]: "the server refused it, its log says why",
  [Failure.UNSENDABLE]: "such a name cannot be used",
  [Failure.DISCONNECTED]: "there is no connection to the server",
  [Failure.TIMED_OUT]: "the server did not answer in time",
  [Failure.MALFORMED]: "the server's answer makes no sense",
};

/** Shows files in `view`: see main.js for what it needs to have. */
export class Files {
  #client;
  #view;
  #directory = "";

  /** The path of the file whose text is shown, or null. */
  file = null;

  constructor(client, view) {
    this.#client = client;
    this.#view = view;
  }

  /** Begins where the user is at home. */
  start() {
    return this.#attempt("Nothing can be shown", async () => this.#show(await this.#client.userDir() + "/"));
  }

  up() {
    const above = this.#directory.replace(/[^/]+\/$/, "");
    return this.#attempt(`${above} cannot be opened`, () => this.#show(above));
  }

  open(entry) {
    const path = this.#directory + entry.name;
    return this.#attempt(`${path} cannot be opened`, async () => {
      if (entry.isDirectory()) {
        await this.#show(path);
        return;
      }
      const text = await this.#client.readText(path);
      this.file = path;
      this.#view.showText(entry, text);
    });
  }

  makeDirectory(name) {
    return this.#attempt(`${name} cannot be created`, async () => {
      if (/^\.*$|[/\\]/.test(name)) throw new Failure(Failure.UNSENDABLE, "makeDir");
      await this.#client.makeDir(this.#directory + name);
      await this.#show(this.#directory);
    });
  }

  /** Deletes the file whose text is shown. */
  remove() {
    return this.#attempt(`${this.file} is not deleted`, async () => {
      await this.#client.delete(this.file);
      await this.#show(this.#directory);
    });
  }

  async #show(directory) {
    const entries = await this.#client.listDir(directory);
    this.#directory = directory;
    this.file = null;
    this.#view.showDirectory(directory, entries);
  }

  async #attempt(failed, work) {
    try {
      await work();
    } catch (failure) {
      if (!(failure instanceof Failure)) throw failure;
      this.#view.report(`${failed}: ${REASONS[failure.kind]}.`);
    }
  }
}
