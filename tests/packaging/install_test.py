"""Installs the build into a scratch prefix and uses it from there.

Usage: install_test.py CMAKE BUILD_DIRECTORY
"""
import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CMAKE, BUILD = sys.argv[1:3]


class InstallTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.home = Path(scratch.name) / "home"
        self.home.mkdir()
        self.prefix = Path(scratch.name) / "prefix"
        self.install()

    def install(self):
        subprocess.run([CMAKE, "--install", BUILD, "--prefix", self.prefix], check=True,
                       stdout=subprocess.DEVNULL)

    def launcher(self, *arguments):
        return subprocess.run([self.prefix / "bin" / "corvane", *arguments], capture_output=True,
                              text=True, timeout=60, check=False)

    def test_the_launcher_answers_help_and_version_itself(self):
        self.assertIn("Usage: corvane", self.launcher("--help").stdout)
        self.assertRegex(self.launcher("--version").stdout, r"^corvane \d+(\.\d+)+\n$")
        unknown = self.launcher("--unknown")
        self.assertEqual((unknown.returncode, unknown.stdout), (2, ""))

    def test_an_edited_configuration_survives_another_installation(self):
        config = self.prefix / "etc" / "corvane" / "corvane.conf"
        config.write_text("PORT=0\n")
        self.install()
        self.assertEqual(config.read_text(), "PORT=0\n")
        self.assertEqual((self.prefix / "lib/corvane/corvane.conf").read_text(), "PORT=0\n")

    def test_the_installed_server_answers_when_started_through_a_link(self):
        (self.prefix / "etc" / "corvane" / "corvane.conf").write_text("PORT=0\n")
        link = self.home / "start"
        link.symlink_to("../prefix/bin/corvane")
        environment = dict(os.environ, HOME=str(self.home))
        with subprocess.Popen([link], env=environment, stdin=subprocess.DEVNULL, text=True,
                              stdout=subprocess.DEVNULL, stderr=subprocess.PIPE) as server:
            try:
                port = next(found.group(1) for line in server.stderr
                            if (found := re.search(r"Listening on [\d.]+:(\d+)", line)))
                client = [self.prefix / "bin" / "corvanectl", "--port", port]
                answer = subprocess.run([*client, "userDir"], capture_output=True, text=True,
                                        timeout=60, check=True)
                self.assertEqual(answer.stdout, f"{self.home}\n")
                subprocess.run([*client, "shutdown"], timeout=60, check=True)
                server.stderr.read()
                self.assertEqual(server.wait(timeout=60), 0)
            finally:
                server.kill()


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
