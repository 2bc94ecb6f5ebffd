"""Runs "corvanectl status" against the real server.

Usage: status_test.py SERVER CORVANECTL
"""
import json
import os
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1]))
from support.server_process import ServerProcess

SERVER, CLIENT = (Path(p).resolve() for p in sys.argv[1:3])
NOBODY = 65534


class StatusTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.home = Path(scratch.name).resolve()
        self.server = ServerProcess(self.home, SERVER, "SHUTDOWNONDISCONNECT=1\n")
        self.addCleanup(self.server.kill)

    def status(self, *arguments, client=CLIENT, **options):
        return subprocess.run([client, "--port", str(self.server.port), *arguments],
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60,
                              check=False, **options)

    def test_tells_what_runs_and_since_when(self):
        with self.server.connect() as connection:
            far_end = "127.0.0.1:%d" % connection.getsockname()[1]
            result = self.status("status", "--json")
        told = json.loads(result.stdout)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertAlmostEqual(told.pop("startedAt"), time.time(), delta=60)
        self.assertEqual(told.pop("version").count("."), 3)
        self.assertEqual(told.pop("connections"), [far_end])
        self.assertTrue(told.pop("user"))
        self.assertEqual(told, {
            "running": True, "certain": True, "port": self.server.port, "process": self.server.process.pid,
            "executable": str(SERVER), "address": f"127.0.0.1:{self.server.port}",
            "configuration": str(self.server.program / "corvane.conf"),
            "log": str(self.server.program / "cv0.log")})

    def test_is_no_connection_of_its_own(self):
        self.assertEqual(self.status("status").returncode, 0)
        self.assertEqual(self.status("--json", "status").returncode, 0)
        self.assertNotIn("accepted connection", self.server.log())

    def test_says_that_nothing_runs(self):
        self.server.kill()
        result = self.status("status")
        self.assertEqual((result.returncode, result.stdout, result.stderr),
                         (1, f"Corvane is not running on port {self.server.port}.\n", ""))

    def as_nobody(self, *arguments):
        client = self.home / "corvanectl"
        client.write_bytes(CLIENT.read_bytes())
        client.chmod(0o755)
        self.home.chmod(0o755)
        return self.status(*arguments, client=client, user=NOBODY, group=NOBODY, extra_groups=[])

    @unittest.skipUnless(os.geteuid() == 0, "only root can be another user")
    def test_says_what_another_users_server_hides(self):
        result = self.as_nobody("status")
        # A build that counts the lines that run complains that nobody may not write the counts.
        said = [line for line in result.stderr.splitlines() if not line.startswith("profiling:")]
        self.assertEqual((result.returncode, said), (0, []))
        self.assertIn("its process is another user's", result.stdout)
        self.assertIn("user           root\n", result.stdout)
        self.assertIn("process        cannot be seen\n", result.stdout)

    @unittest.skipUnless(os.geteuid() == 0, "only root can be another user")
    def test_of_a_server_that_serves_its_own_user_only_is_said_where_it_refuses(self):
        self.server.kill()
        (self.home / "own").mkdir()
        self.server = ServerProcess(self.home / "own", SERVER, "SAMEUSER=true\n")
        self.addCleanup(self.server.kill)
        for command in ("shutdown", "userDir"):
            result = self.as_nobody(command)
            self.assertEqual((result.returncode, result.stdout), (2, ""))
            self.assertIn("it is root's, and may serve no other user", result.stderr)
        self.assertEqual(self.status("shutdown").returncode, 0)
        self.assertEqual(self.server.process.wait(60), 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
