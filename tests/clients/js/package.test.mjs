// What npm makes of the JavaScript client.

import assert from "node:assert/strict";
import {execFileSync} from "node:child_process";
import {mkdirSync, mkdtempSync, readFileSync, rmSync} from "node:fs";
import {tmpdir} from "node:os";
import {join} from "node:path";
import {after, test} from "node:test";
import {fileURLToPath, pathToFileURL} from "node:url";

const CLIENT = fileURLToPath(new URL("../../../clients/js", import.meta.url));
const scratch = mkdtempSync(join(tmpdir(), "corvane-"));
after(() => rmSync(scratch, {recursive: true}));

const npm = (...words) => execFileSync("npm", words, {cwd: CLIENT, stdio: ["ignore", "pipe", "ignore"], encoding: "utf8"});
const missing = (() => {
  try {
    npm("--version");
    return false;
  } catch {
    return "no npm here";
  }
})();

/** The package in a directory of its own, as an application would have it. */
function install() {
  const [{filename}] = JSON.parse(npm("pack", "--json", "--offline", "--pack-destination", scratch));
  const directory = join(scratch, "node_modules", "corvane-client");
  mkdirSync(directory, {recursive: true});
  execFileSync("tar", ["-xzf", join(scratch, filename), "--strip-components=1", "-C", directory]);
  return execFileSync("tar", ["-tzf", join(scratch, filename)], {encoding: "utf8"}).trim().split("\n").sort();
}

test("the package holds the client and nothing else, and can be used", {skip: missing}, async () => {
  const modules = ["bridge", "client", "connection", "entry", "failure", "index", "messages", "reply_reader", "tcp"];
  assert.deepEqual(install(), [
    "package/LICENSE", "package/README.md", ...[...modules.map((name) => `${name}.js`), "index.d.ts", "tcp.d.ts"].map((name) => `package/corvane/${name}`),
    "package/package.json",
  ].sort());
  const {dependencies, scripts, exports} = JSON.parse(readFileSync(join(CLIENT, "package.json"), "utf8"));
  assert.deepEqual([dependencies, scripts], [undefined, undefined]);
  for (const {default: module, types} of Object.values(exports)) {
    const installed = join(scratch, "node_modules", "corvane-client");
    const declared = readFileSync(join(installed, types), "utf8").matchAll(/^export (?:class|function) (\w+)/gm);
    const names = Object.keys(await import(pathToFileURL(join(installed, module)).href));
    assert.deepEqual(names.sort(), [...declared].map(([, name]) => name).sort());
  }
});
