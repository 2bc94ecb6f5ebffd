"""Runs corvanectl on a terminal, with and without the real server.

Usage: terminal_test.py SERVER CORVANECTL
"""
import os
import socket
import subprocess
import sys
import tempfile
import threading
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1]))
from on_terminal import OnTerminal
from support.server_process import ServerProcess

SERVER, CLIENT = (Path(p).resolve() for p in sys.argv[1:3])
REPLY = (b'<CorvaneMsg><Header id="info" Type="RESULT" Action="userDir" Result="SUCCESS">'
         b'<Detail id="value" extra="" Value="%s" /></Header></CorvaneMsg>\0')


class ListingTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.home = Path(scratch.name)
        self.dir = self.home / "dir"
        (self.dir / "sub").mkdir(parents=True)
        for name in "alpha", "beta", "\u65e5\u672c", "x\x1b[2Jy":
            (self.dir / name).touch()
        self.server = ServerProcess(self.home, SERVER, environment={"LC_ALL": "C.UTF-8"})
        self.addCleanup(self.server.kill)

    def list(self, columns, *options):
        with OnTerminal([CLIENT, "-p", str(self.server.port), *options, "listDir", self.dir], columns) as terminal:
            return terminal.rest()

    def test_has_columns_on_a_wide_terminal(self):
        self.assertEqual(self.list(80), ("sub/  alpha  beta  x\\x1b[2Jy  \u65e5\u672c\n", 0))

    def test_has_rows_on_a_narrow_terminal(self):
        self.assertEqual(self.list(20), ("sub/   x\\x1b[2Jy\nalpha  \u65e5\u672c\nbeta\n", 0))
        self.assertEqual(self.list(1)[0].count("\n"), 5)

    def test_has_a_long_form(self):
        shown, status = self.list(80, "--long")
        self.assertEqual(status, 0)
        self.assertEqual(shown.splitlines()[0].split(), ["directory", "d", "-", "-", "sub/"])
        self.assertIn("x\\x1b[2Jy", shown)

    def test_ends_a_text_with_its_line_on_a_terminal_only(self):
        for text, shown in ("abc", "abc\n"), ("abc\n", "abc\n"), ("", ""):
            (self.dir / "alpha").write_text(text)
            arguments = [CLIENT, "-p", str(self.server.port), "readText", self.dir / "alpha"]
            with OnTerminal(arguments) as terminal:
                self.assertEqual(terminal.rest(), (shown, 0))
            self.assertEqual(subprocess.run(arguments, capture_output=True, check=True).stdout.decode(), text)

    def test_has_a_line_for_each_name_in_a_pipe(self):
        result = subprocess.run([CLIENT, "-p", str(self.server.port), "listDir", self.dir], capture_output=True,
                                check=True)
        self.assertEqual(result.stdout.decode(), "sub/\nalpha\nbeta\nx\x1b[2Jy\n\u65e5\u672c\n")


class ProgressTest(unittest.TestCase):
    """Servers that hold the rest of a reply back until the line was seen."""

    def setUp(self):
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(self.listener.close)
        self.seen = threading.Event()

    def serve(self):
        connection, _ = self.listener.accept()
        with connection:
            while not connection.recv(65536).endswith(b"\0"):
                pass
            head, tail = REPLY.split(b"%s")
            connection.sendall(head)
            while not self.seen.wait(0.05):
                connection.sendall(b"v" * 1000)
            connection.sendall(tail)

    def run_client(self, **arguments):
        server = threading.Thread(target=self.serve)
        server.start()
        self.addCleanup(server.join)
        self.addCleanup(self.seen.set)
        client = OnTerminal([CLIENT, "-p", str(self.listener.getsockname()[1]), "userDir"], **arguments)
        self.addCleanup(client.__exit__)
        return client

    def test_is_shown_and_erased(self):
        with open(os.devnull, "wb") as nowhere:
            client = self.run_client(stdout=nowhere)
            self.assertRegex(client.expect("kB/s"), r"^\r\d+\.\d kB, \d+\.\d kB/s$")
            self.seen.set()
            client.rest()
        self.assertTrue(client.raw.endswith("\r\x1b[K"), client.raw)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
