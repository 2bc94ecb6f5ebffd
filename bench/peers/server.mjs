// Peer for script/bench: the same protocol as Corvane for three commands, written as a Node
// developer would: one event loop, synchronous file access, one write for each reply.
// Usage: node server.mjs [DIRECTORY]   (the working directory is changed to DIRECTORY)
import { accessSync, constants, readdirSync, readFileSync } from "node:fs";
import { createServer } from "node:net";

const ENTITIES = { "&": "&amp;", "<": "&lt;", ">": "&gt;", '"': "&quot;", "'": "&apos;" };

const escapeXml = (text) => text.replace(/[&<>"']/g, (c) => ENTITIES[c]).replaceAll("\0", "");

function envelope(action, ok, hint, details) {
  const result = ok ? "SUCCESS" : "FAILED";
  const hintText = hint ? ` hint="${hint}"` : "";
  return `<CorvaneMsg><Header id="info" Type="RESULT" Action="${action}" Result="${result}"` +
    `${hintText}>${details}</Header></CorvaneMsg>\0`;
}

// Only the case-blind order of ASCII letters: file names of the benchmark need no more.
function sortKey(name) {
  const bytes = Buffer.from(name, "latin1");
  for (let i = 0; i < bytes.length; i++) bytes[i] |= 0x20;
  return bytes.toString("latin1");
}

function isReadOnly(path) {
  try {
    accessSync(path, constants.W_OK);
    return false;
  } catch {
    return true;
  }
}

function describe(directory, entry) {
  const isDirectory = entry.isDirectory();
  const hidden = entry.name.startsWith(".") ? "h" : "";
  const readOnly = !isDirectory && isReadOnly(directory + entry.name) ? "r" : "";
  const text = isDirectory
    ? `<Detail id="directory" extra="d${hidden}" Value="${entry.name}/" />`
    : `<Detail id="file" extra="${hidden}${readOnly}" size="0" Value="${entry.name}" />`;
  return { rank: isDirectory ? 0 : 1, key: sortKey(entry.name), text };
}

const byRankAndKey = (a, b) => a.rank - b.rank || (a.key < b.key ? -1 : a.key > b.key ? 1 : 0);

const COMMANDS = {
  currentDir: (action) => {
    const directory = process.cwd().replace(/\/?$/, "/");
    return envelope(action, true, action, `<Detail id="value" extra="" Value="${directory}" />`);
  },
  readText: (action, path) => {
    const text = escapeXml(readFileSync(path, "latin1"));
    return envelope(action, true, "", `<Detail id="text" extra="">${text}</Detail>`);
  },
  listDir: (action, path) => {
    const directory = path.replace(/\/?$/, "/");
    const entries = readdirSync(directory, { withFileTypes: true });
    const details = entries.map((entry) => describe(directory, entry)).sort(byRankAndKey);
    return envelope(action, true, directory, details.map((detail) => detail.text).join(""));
  },
};

function reply(request) {
  const [action, ...parameters] = request.split("\n");
  try {
    return COMMANDS[action](action, ...parameters);
  } catch {
    return envelope(action, false, "", "");
  }
}

// Texts travel as latin1, which passes every byte through unchanged.
function serve(socket) {
  let pending = "";
  socket.setNoDelay(true);
  socket.setEncoding("latin1");
  socket.on("error", () => socket.destroy());
  socket.on("data", (received) => {
    const requests = (pending + received).split("\0");
    pending = requests.pop();
    for (const request of requests) socket.write(reply(request), "latin1");
  });
}

if (process.argv[2]) process.chdir(process.argv[2]);
const server = createServer(serve).listen({ host: "127.0.0.1", port: 0, backlog: 128 }, () => {
  console.log(`Listening on 127.0.0.1:${server.address().port}`);
});
