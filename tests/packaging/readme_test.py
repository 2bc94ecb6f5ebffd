"""Types README's first requests as they are written there, and compares what comes with what it shows.

Usage: readme_test.py SOURCE_DIRECTORY SERVER CLIENT
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

ROOT, SERVER, CLIENT = (Path(argument).resolve() for argument in sys.argv[1:4])


class ReadmeTest(unittest.TestCase):
    def test_names_no_option_of_nc_that_only_some_systems_have(self):
        for document in [*ROOT.glob("*.md"), *(ROOT / "docs").rglob("*.md")]:
            with self.subTest(document=document.name):
                self.assertEqual(re.findall(r"\bnc\b[^\n|]* -[qN]", document.read_text()), [])

    @unittest.skipUnless(shutil.which("nc"), "no nc here")
    def test_shows_what_its_first_requests_bring(self):
        section = (ROOT / "README.md").read_text().split("\n## A first request\n")[1].split("\n## ")[0]
        lines = re.findall(r"^    (.*)$", section, re.M)
        commands = [line.removeprefix("$ ") for line in lines if line.startswith("$ ")]
        shown = [line for line in lines if not line.startswith("$ ")]
        self.assertEqual((len(commands), len(shown)), (3, 2))
        with tempfile.TemporaryDirectory() as scratch:
            with ServerProcess(scratch, SERVER, "log4cpp.priority=NOTICE\n",
                               environment={"HOME": "/home/me"}) as server:
                client = f"'{CLIENT}' --port {server.port}"
                output = [subprocess.run(["sh", "-c", command.replace("54321", str(server.port))
                                          .replace("build/corvanectl", client)],
                                         stdout=subprocess.PIPE, text=True, timeout=60, check=False).stdout
                          for command in commands]
                self.assertEqual(output, [line + "\n" for line in shown] + [""])
                self.assertEqual(server.wait_for_end(), 0)
                self.assertIn("application terminated", server.log())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
