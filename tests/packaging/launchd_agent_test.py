"""Checks that the launchd agent is well-formed and starts the server as it must be started.

Usage: launchd_agent_test.py PLIST
"""
import plistlib
import sys
import unittest
from pathlib import Path

PLIST = Path(sys.argv[1])


class LaunchdAgentTest(unittest.TestCase):
    def setUp(self):
        self.agent = plistlib.loads(PLIST.read_bytes())

    def test_runs_one_program_by_its_full_path(self):
        self.assertEqual(len(self.agent["ProgramArguments"]), 1)
        self.assertTrue(self.agent["ProgramArguments"][0].startswith("/"))

    def test_restarts_only_after_a_crash(self):
        self.assertTrue(self.agent["RunAtLoad"])
        self.assertEqual(self.agent["KeepAlive"], {"Crashed": True})

    def test_is_no_background_job(self):
        self.assertEqual(self.agent["ProcessType"], "Interactive")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
