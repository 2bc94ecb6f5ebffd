"""Runs corvanectl against the real server: what it prints for people, for scripts and into pipes.

Usage: output_test.py SERVER CORVANECTL
"""
import json
import os
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1]))
from support.server_process import ServerProcess

SERVER, CLIENT = (Path(p).resolve() for p in sys.argv[1:3])


class OutputTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.home = Path(scratch.name)
        self.server = ServerProcess(self.home, SERVER, environment={"HOME": str(self.home)})
        self.addCleanup(self.server.kill)
        self.port = str(self.server.port)

    def run_client(self, *arguments):
        return subprocess.run([CLIENT, "--port", self.port, *arguments], stdin=subprocess.DEVNULL,
                              capture_output=True, timeout=60, check=False)

    def expect_json(self, status, expected, *arguments):
        result = self.run_client("--json", *arguments)
        self.assertEqual((result.returncode, result.stderr), (status, b""))
        self.assertEqual(json.loads(result.stdout.decode()), expected)

    def test_prints_a_reply_as_json(self):
        directory = self.home / "dir"
        (directory / "sub").mkdir(parents=True)
        (directory / 'a"<b>\\\nz').touch()
        self.expect_json(0, {"command": "listDir", "result": "SUCCESS", "hint": f"{directory}/", "details": [
            {"id": "directory", "extra": "d", "value": "sub/"},
            {"id": "file", "size": "0", "value": 'a"<b>\\\nz'}]}, "listDir", directory)

    def test_prints_a_failure_as_json(self):
        self.expect_json(1, {"command": "write", "result": "FAILED", "errno": 2, "details": []},
                         "write", self.home / "missing" / "x")

    def test_prints_bytes_that_are_no_utf8_twice_in_json(self):
        (self.home / "text").write_bytes(b"\xff\x80z")
        self.expect_json(0, {"command": "readText", "result": "SUCCESS", "details": [
            {"id": "text", "value": "\ufffd\ufffdz", "valueHex": "ff807a"}]}, "readText", self.home / "text")

    def test_prints_an_object_for_a_command_that_ends_the_server(self):
        self.expect_json(0, {"command": "shutdown", "result": "SUCCESS", "details": []}, "shutdown")
        result = self.run_client("--json", "userDir")
        self.assertEqual((result.returncode, result.stdout), (2, b""))
        self.assertIn(b"cannot connect", result.stderr)

    def test_ends_quietly_when_nobody_reads_on(self):
        big = self.home / "big"
        big.write_bytes(b"line\n" * 2_000_000)
        script = 'exec 3>&1; { "$0" --port "$1" readText "$2"; echo "status $?" >&3; } | head -n 1'
        result = subprocess.run(["bash", "-c", script, CLIENT, self.port, big], capture_output=True,
                                timeout=60, check=False)
        self.assertEqual(sorted(result.stdout.splitlines()), [b"line", b"status 141"])
        self.assertEqual(result.stderr, b"")

    def test_ends_by_the_signal_of_a_broken_pipe(self):
        reading, writing = os.pipe()
        os.close(reading)
        for arguments in ["--help"], ["--port", self.port, "userDir"]:
            result = subprocess.run([CLIENT, *arguments], stdout=writing, stderr=subprocess.PIPE,
                                    stdin=subprocess.DEVNULL, timeout=60, check=False)
            self.assertEqual((result.returncode, result.stderr), (-signal.SIGPIPE, b""))
        os.close(writing)

    def test_explains_commands(self):
        for arguments in ["help", "listDir"], ["listDir", "--help"]:
            result = self.run_client(*arguments)
            self.assertTrue(result.stdout.startswith(b"Usage: corvanectl listDir directory\n"), result)
            self.assertEqual(result.returncode, 0)
        self.assertEqual(self.run_client("help").stdout, self.run_client("--help").stdout)

    def test_asks_whether_another_command_was_meant(self):
        result = self.run_client("listdir", "/")
        self.assertEqual((result.returncode, result.stderr),
                         (2, b"corvanectl: unknown command 'listdir', did you mean listDir?\n"))

    def test_names_no_classes_in_messages(self):
        result = self.run_client("--frob", "listDir", "/")
        self.assertEqual((result.returncode, result.stderr), (2, b"corvanectl: Unrecognized option '--frob'\n"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
