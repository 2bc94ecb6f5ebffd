// Connects, and ties the elements of the page to what they do.

import {CorvaneClient, overBridge} from "./corvane/index.js";
import {Files} from "./files.js";

const element = (id) => document.getElementById(id);

/** What Files shows things with. */
const view = {
  showDirectory(path, entries) {
    element("directory").textContent = path;
    element("entries").replaceChildren(...entries.map(row));
    this.showText(null, "");
    this.report("");
  },

  /** `entry` is null when there is no text to show. */
  showText(entry, text) {
    for (const item of element("entries").children) item.ariaCurrent = String(item.title === entry?.name);
    element("text").textContent = text;
    element("delete").disabled = entry === null;
    this.report("");
  },

  report(failure) {
    element("status").textContent = failure;
  },
};

function row(entry) {
  const item = document.createElement("li");
  const button = document.createElement("button");
  item.title = entry.name;
  item.classList.toggle("directory", entry.isDirectory());
  item.classList.toggle("hidden", entry.isHidden());
  button.textContent = entry.name;
  button.onclick = () => files.open(entry);
  item.append(button);
  return item;
}

// corvane-play has told the page where its bridge to the server is.
const files = new Files(new CorvaneClient(overBridge(corvanePlay.sockets[0].path)), view);
element("up").onclick = () => files.up();
element("make").onclick = () => {
  const name = prompt("Name of the new folder");
  if (name) files.makeDirectory(name);
};
element("delete").onclick = () => {
  if (confirm(`Delete ${files.file} for ever?`)) files.remove();
};
files.start();
