// node demo.mjs SERVER MOVIE SCRATCH [WINDOWTOOL]: shows the explorer until it is interrupted.

import {join} from "node:path";
import {makeSampleHome} from "./sample.mjs";
import {startStack} from "./stack.mjs";

const [executable, movie, scratch, windowTool] = process.argv.slice(2);
const home = join(scratch, "kiosk");
await makeSampleHome(home);
const stack = await startStack({executable, movie, scratch, home, dir: home, windowTool});

let stopping = false;
async function leave(status) {
  if (stopping) return;
  stopping = true;
  await stack.stop();
  process.exit(status);
}
for (const signal of ["SIGINT", "SIGTERM", "SIGHUP"]) process.on(signal, () => leave(0));
stack.server.on("exit", (status) => {
  if (!stopping) console.error(`The server ended with ${status}`);
  leave(1);
});

console.log(`Open ${stack.url} in a browser (the server is on port ${stack.serverPort}). Ctrl-C ends everything.`);
