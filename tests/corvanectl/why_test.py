"""Runs corvanectl against the real server: the reasons for failures that it finds in the server's log.

Usage: why_test.py SERVER CORVANECTL
"""
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1]))
from support.server_process import ServerProcess

SERVER, CLIENT = (Path(p).resolve() for p in sys.argv[1:3])
MISSING = "(No such file or directory)"


class WhyTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.home = Path(scratch.name).resolve()
        self.start("log4cpp.priority=NOTICE\n")

    def start(self, configuration):
        directory = tempfile.mkdtemp(dir=self.home)
        self.server = ServerProcess(directory, SERVER, configuration)
        self.addCleanup(self.server.kill)

    def why(self, *arguments, status=1, options=()):
        environment = os.environ | {"HOME": str(self.home)}
        result = subprocess.run([CLIENT, "--port", str(self.server.port), *options, *arguments],
                                stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60,
                                check=False, env=environment)
        self.assertEqual((result.returncode, result.stdout), (status, ""), result.stderr)
        return result.stderr.removeprefix("corvanectl: ").removesuffix("\n")

    def test_prints_the_servers_own_reason_in_words(self):
        self.assertEqual(self.why("listDir", "/nonexistent"),
                         f"listDir: FAILED; opendir '/nonexistent/' error 2 {MISSING}")
        self.assertEqual(self.why("write", "/nonexistent/x"),
                         f"write: FAILED, error 2 {MISSING}; fail (2) to open file '/nonexistent/x' {MISSING}")
        self.assertEqual(self.why("readText", "/nonexistent"),
                         f"readText: FAILED; cannot open file '/nonexistent' for read {MISSING}")
        self.assertEqual(self.why("clipboardGet"), "clipboardGet: FAILED, clipboardGet; "
                         "clipboardGet() not supported on this platform")

    def test_prints_it_whatever_this_machine_is_called(self):
        for host in "127.0.0.1", "localhost", "0.0.0.0":
            with self.subTest(host):
                self.assertIn("error 2", self.why("listDir", "/nonexistent", options=["--host", host]))

    def test_finds_the_reason_in_another_layout(self):
        for pattern in "simple", "basic", "%c: %m%n":
            with self.subTest(pattern):
                self.start(f"log4cpp.pattern={pattern}\n")
                reason = self.why("listDir", "/nonexistent")
                self.assertIn("opendir '/nonexistent/' error 2", reason)

    def test_reads_the_log_that_is_named(self):
        log = self.server.program / "cv0.log"
        copy = self.home / "copy.log"
        os.link(log, copy)
        self.assertIn("error 2", self.why("listDir", "/nonexistent", options=["--log", copy]))
        empty = self.home / "empty.log"
        empty.touch()
        self.assertEqual(self.why("listDir", "/nonexistent", options=["--log", empty]),
                         f"listDir: FAILED; its log says nothing about it ({empty}); its level may hide it")

    def test_names_the_places_when_no_log_can_be_read(self):
        missing = self.home / "missing.log"
        self.assertEqual(self.why("listDir", "/nonexistent", options=["--log", missing]),
                         "listDir: FAILED; the server's log tells why; it may be "
                         f"{missing}, --log FILE names another")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
