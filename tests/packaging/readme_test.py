"""Types README's first request as it is written there, and compares what comes with what it shows.

Usage: readme_test.py SOURCE_DIRECTORY SERVER
"""
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1]))
from support.server_process import ServerProcess

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
            with ServerProcess(scratch, SERVER, "log4cpp.priority=NOTICE\n",
                               environment={"HOME": "/home/me"}) as server:
                output = [subprocess.run(["sh", "-c", command.replace("54321", str(server.port))],
                                         stdout=subprocess.PIPE, timeout=60, check=False).stdout
                          for command in (ask, stop)]
                self.assertEqual(output, [shown.encode() + b"\0", b""])
                self.assertEqual(server.wait_for_end(), 0)
                self.assertIn("application terminated", server.log())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
