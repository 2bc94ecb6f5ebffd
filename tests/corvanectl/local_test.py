"""Runs "corvanectl doctor" and "corvanectl log" against the real server.

Usage: local_test.py SERVER CORVANECTL
"""
import os
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1]))
from support.server_process import PATIENCE, ServerProcess

SERVER, CLIENT = (Path(p).resolve() for p in sys.argv[1:3])


class LocalTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.home = Path(scratch.name).resolve()
        self.start("log4cpp.priority=NOTICE\n")

    def start(self, configuration):
        self.server = ServerProcess(tempfile.mkdtemp(dir=self.home), SERVER, configuration,
                                    {"cvnwinfo": "#!/bin/sh\necho 800 600\n"})
        self.addCleanup(self.server.kill)

    def command(self, *arguments):
        return [CLIENT, "--port", str(self.server.port), *arguments]

    def run_client(self, *arguments):
        return subprocess.run(self.command(*arguments), stdin=subprocess.DEVNULL, capture_output=True,
                              text=True, timeout=60, check=False,
                              env=os.environ | {"HOME": str(self.home)})

    def fail_a_command(self):
        self.assertEqual(self.run_client("listDir", "/nonexistent").returncode, 1)

    def test_doctor_names_what_is_wrong_with_its_mend(self):
        self.start("MAXREQEST=5\nCONSOLE=yes\nTOOLTIMEOUT = 5\n")
        result = self.run_client("doctor")
        self.assertEqual((result.returncode, result.stderr), (1, ""))
        for text in ("WRONG  keys: ", "did you mean MAXREQUEST?", "CONSOLE=yes counts as not set",
                     "write TOOLTIMEOUT=5", "ok     server: running as process %d" % self.server.process.pid,
                     f"ok     log: {self.server.program}/cv0.log", "ok     window tool: "):
            self.assertIn(text, result.stdout)

    def test_doctor_finds_nothing_in_a_good_configuration(self):
        result = self.run_client("doctor")
        self.assertIn("ok     keys: nothing wrong\nok     values: nothing wrong\n", result.stdout)
        self.assertIn(f"ok     configuration: {self.server.program}/corvane.conf\n", result.stdout)

    def test_log_shows_the_whole_log_in_a_pipe_as_it_is(self):
        self.fail_a_command()
        result = self.run_client("log")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual(result.stdout, self.server.log())

    def test_log_shows_what_is_asked_for(self):
        self.fail_a_command()
        wanted = [line + "\n" for line in self.server.log().splitlines() if "[ERROR," in line]
        self.assertEqual(len(wanted), 1)
        for options in ["--level", "ERROR"], ["--command=listDir"], ["--level=WARN", "--client", "127.0.0.1"]:
            self.assertEqual(self.run_client("log", *options).stdout, wanted[0])

    def test_log_with_parameters_is_the_servers_command(self):
        self.assertEqual(self.run_client("log", "game", "ERROR", "it is over").returncode, 0)
        self.assertIn("[ERROR,ext.log.game] it is over\n", self.server.log())

    def follow(self):
        follower = subprocess.Popen(self.command("log", "-f", "--level=ERROR"), stdin=subprocess.DEVNULL,
                                    stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(follower.stderr.close)
        self.addCleanup(follower.stdout.close)
        self.fail_a_command()
        self.assertIn("opendir '/nonexistent/'", follower.stdout.readline())
        return follower

    def test_log_follows_through_truncation_and_ends_with_ctrl_c(self):
        follower = self.follow()
        os.truncate(self.server.program / "cv0.log", 0)
        self.run_client("log", "", "ERROR", "after")
        self.assertIn("after", follower.stdout.readline())
        follower.send_signal(signal.SIGINT)
        self.assertEqual(follower.wait(PATIENCE), -signal.SIGINT)
        self.assertEqual(follower.stderr.read(), "")

    def test_log_stops_following_when_nobody_reads(self):
        follower = self.follow()
        follower.stdout.close()
        self.assertIn(follower.wait(PATIENCE), (0, -signal.SIGPIPE))
        self.assertEqual(follower.stderr.read(), "")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
