// A home directory with something in it, for the demonstration and for the test.

import {mkdir, writeFile} from "node:fs/promises";
import {dirname, join} from "node:path";

const FILES = {
  "Desktop/shortcut.txt": "Opens from the desktop.\n",
  "Documents/letter.txt": "Dear reader,\n\nthis letter is part of the example.\n",
  "Documents/budget.csv": "month;rent;food\nJanuary;900;310\nFebruary;900;295\n",
  "Games/Chess/chess.swf": "FWS\u0008 not a real movie",
  "Games/Solitaire/solitaire.swf": "FWS\u0008 not a real movie",
  "highscores.csv": "name;points\nAda;4200\nGrace;3900\n",
  "Music/theme.mp3": "not a real tune",
  "Pictures/harbour.png": "not a real picture",
  "catalogue.xml": "<?xml version=\"1.0\"?>\n<catalogue>\n  <book id=\"1\">Tides & \"Currents\"</book>\n</catalogue>\n",
  "explorer.swf": "FWS\u0008 not a real movie",
  "R&D plans.md": "# Plans\n\n- keep it simple\n- keep it <small>\n",
  "readme.txt": [
    "Welcome!", "",
    "This is a Flash movie. It shows the files of this machine: it asks the Corvane server over one XMLSocket, " +
      "one short request after the other.", "",
    "Each button is one or two of the server's commands: makeDir, write, rename, copy, delete. The list comes " +
      "from listDir, this text from readText.", "",
    "Umlauts äöü, Привет, & < > \" '", "",
  ].join("\n"),
  "schedule.html": "<h1>Schedule</h1>\n<p>Monday & Tuesday</p>\n",
  "settings.conf": "# Example settings\nvolume=7\nlanguage=en\n",
  ".corvane/registry.txt":
    "# Read by regQueryValue\nHKEY_CURRENT_USER/Software/Corvane/Explorer:Greeting=Hello from the registry\n",
};

/** Fills the directory `home`; it need not exist. */
export async function makeSampleHome(home) {
  for (const [name, text] of Object.entries(FILES)) {
    await mkdir(dirname(join(home, name)), {recursive: true});
    await writeFile(join(home, name), text);
  }
  return FILES;
}
