#!/usr/bin/env python3
"""flash_page_test.py SERVER: takes the examples out of docs/flash.md, compiles those for which there is a
compiler, and runs what can be run without a player against the real server."""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1]))
from support.server_process import ServerProcess

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGE = (ROOT / "docs" / "flash.md").read_text("utf-8")
EXAMPLES = dict(re.findall(r"^```\w+ file=(\S+)\n(.*?)^```$", PAGE, re.MULTILINE | re.DOTALL))
SERVER = sys.argv[1]


def commands(program):
    """The command lines of the page that begin with this program."""
    return [line.split() for line in re.findall(rf"^    ({program} .*)$", PAGE, re.MULTILINE)]


class FlashPageTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.directory = pathlib.Path(scratch.name)
        for name, text in EXAMPLES.items():
            (self.directory / name).write_text(text, "utf-8")

    def run_here(self, command):
        result = subprocess.run(command, cwd=self.directory, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                text=True, timeout=60, check=False)
        self.assertEqual(result.returncode, 0, result.stdout)
        return result.stdout

    @unittest.skipUnless(shutil.which("haxe"), "no haxe here")
    def test_shows_haxe_that_compiles_with_the_command_beside_it(self):
        lines = commands("haxe")
        self.assertEqual(len(lines), sum(name.endswith(".hx") for name in EXAMPLES))
        for line in lines:
            with self.subTest(command=line):
                (self.directory / "main.swf").unlink(missing_ok=True)
                self.run_here([word.replace("path/to", str(ROOT)) for word in line])
                self.assertIn((self.directory / "main.swf").read_bytes()[:3], (b"FWS", b"CWS"))

    @unittest.skipUnless(shutil.which("node"), "no Node.js here")
    def test_shows_javascript_that_gets_an_answer(self):
        modules = self.directory / "node_modules"
        modules.mkdir()
        (modules / "corvane-client").symlink_to(ROOT / "clients" / "js")
        home = self.directory / "home"
        (home / "Desktop").mkdir(parents=True)
        program = self.directory / "main.mjs"
        with ServerProcess(self.directory, SERVER, environment={"HOME": str(home)}) as server:
            program.write_text(EXAMPLES["main.mjs"].replace("54321", str(server.port)))
            [command] = commands("node")
            self.assertEqual(self.run_here(command), f"{home}/Desktop\n")
        self.assertEqual(self.run_here(command), "userDir: disconnected\n")

    def test_shows_the_same_in_every_language(self):
        for name in ("main.as", "Main.as", "Main.hx"):
            with self.subTest(example=name):
                text = EXAMPLES[name]
                self.assertIn('connect("127.0.0.1", 54321)', text)
                self.assertEqual(re.findall(r"\.send\((.*?)\)", text), [r'"userDir\ndesktop"'])
        listeners = [re.findall(r"addEventListener\((.*?)\)", EXAMPLES[name]) for name in ("Main.as", "Main.hx")]
        self.assertEqual(*listeners)
        self.assertEqual(len(listeners[0]), 5)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
