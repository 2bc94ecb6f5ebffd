"""Types README's first request as it is written there, and compares what comes with what it shows.

Usage: readme_test.py SOURCE_DIRECTORY SERVER
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT, SERVER = (Path(argument).resolve() for argument in sys.argv[1:3])


class ReadmeTest(unittest.TestCase):
    def test_names_no_option_of_nc_that_only_some_systems_have(self):
        for document in [*ROOT.glob("*.md"), *(ROOT / "docs").rglob("*.md")]:
            with self.subTest(document=document.name):
                self.assertEqual(re.findall(r"\bnc\b[^\n|]* -[qN]", document.read_text()), [])

    @unittest.skipUnless(shutil.which("nc"), "no nc here")
    def test_shows_what_its_first_request_brings(self):
        section = (ROOT / "README.md").read_text().split("## A first request")[1].split("\n### ")[0]
        ask, stop = re.findall(r"^    \$ (.*)$", section, re.M)
        shown = re.search(r"^    (<.*)$", section, re.M).group(1)
        with tempfile.TemporaryDirectory() as scratch:
            program = Path(scratch) / "corvane"
            shutil.copy2(SERVER, program)
            (Path(scratch) / "corvane.conf").write_text("PORT=0\nlog4cpp.priority=NOTICE\n")
            environment = dict(os.environ, HOME="/home/me")
            with subprocess.Popen([program], env=environment, text=True, stdin=subprocess.DEVNULL,
                                  stdout=subprocess.DEVNULL, stderr=subprocess.PIPE) as server:
                try:
                    port = next(found.group(1) for line in server.stderr
                                if (found := re.search(r"Listening on [\d.]+:(\d+)", line)))
                    output = [subprocess.run(["sh", "-c", command.replace("54321", port)],
                                             stdout=subprocess.PIPE, timeout=60, check=False).stdout
                              for command in (ask, stop)]
                    self.assertEqual(output, [shown.encode() + b"\0", b""])
                    self.assertIn("application terminated", server.stderr.read())
                    self.assertEqual(server.wait(timeout=60), 0)
                finally:
                    server.kill()


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
