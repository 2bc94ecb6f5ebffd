// node types.mjs: compiles use.ts against the types of the JavaScript client, as an application with
// Node's way to find modules and as one with a bundler's. Status 77: there is no compiler.

import {spawnSync} from "node:child_process";
import {existsSync} from "node:fs";
import {fileURLToPath} from "node:url";

const here = fileURLToPath(new URL(".", import.meta.url));
const compiler = `${here}/node_modules/typescript/bin/tsc`;
if (!existsSync(compiler)) {
  console.log("skipped: no TypeScript here, script/test-clients installs it");
  process.exit(77);
}
for (const resolution of [[], ["--module", "ESNext", "--moduleResolution", "Bundler"]]) {
  const {status} = spawnSync(process.execPath, [compiler, "-p", here, ...resolution], {stdio: "inherit"});
  if (status !== 0) process.exit(1);
}
