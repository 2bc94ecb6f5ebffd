"""Runs corvanectl against servers that misbehave: silent ones, and ones that reset the connection.

Usage: exchange_test.py CORVANECTL
"""
import contextlib
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from pathlib import Path

CLIENT = Path(sys.argv[1]).resolve()
REPLY = (b'<CorvaneMsg><Header id="info" Type="RESULT" Action="write" Result="SUCCESS">'
         b'<Detail id="value" extra="" Value="here" /></Header></CorvaneMsg>\0')
# More than the buffers of a connection hold.
MUCH = b"x" * 32 * 1024 * 1024
ON_LINUX = sys.platform.startswith("linux")


def reset(connection):
    """Closes so that the peer gets a reset instead of an end."""
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    connection.close()


def read_request(connection):
    data = b""
    while not data.endswith(b"\0"):
        data += connection.recv(65536)


class ExchangeTest(unittest.TestCase):
    def setUp(self):
        self.listener = socket.socket()
        self.addCleanup(self.listener.close)
        self.listener.bind(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]

    def serve(self, behaviour):
        """Accepts one connection in a thread and does with it what the test says."""
        self.listener.listen(5)

        def accept():
            connection, _ = self.listener.accept()
            with connection:
                behaviour(connection)

        thread = threading.Thread(target=accept)
        thread.start()
        self.addCleanup(thread.join)

    def run_client(self, *arguments, data=None):
        with tempfile.TemporaryFile() as source:
            source.write(data or b"")
            source.seek(0)
            return subprocess.run([CLIENT, "--port", str(self.port), *arguments], stdin=source,
                                  capture_output=True, text=True, timeout=60, check=False)

    def expect(self, result, status, output, errors):
        self.assertEqual((result.returncode, result.stdout, result.stderr),
                         (status, output, errors))

    def expect_time_out(self, *arguments, data=None):
        began = time.monotonic()
        self.expect(self.run_client("-t", "1", *arguments, data=data), 2, "",
                    f"corvanectl: no answer from 127.0.0.1:{self.port} within 1 s\n")
        self.assertGreaterEqual(time.monotonic() - began, 1)

    def test_gives_up_on_a_server_that_takes_the_request_and_says_nothing(self):
        self.listener.listen(5)
        self.expect_time_out("userDir")

    def test_gives_up_on_a_server_that_does_not_read_the_request(self):
        self.listener.listen(5)
        self.expect_time_out("write", "f", data=MUCH)

    def test_gives_up_on_a_server_that_says_half_a_reply(self):
        over = threading.Event()
        self.serve(lambda connection: (connection.sendall(REPLY[:-1]), over.wait()))
        self.expect_time_out("userDir")
        over.set()

    def test_gives_up_on_a_server_whose_reply_comes_byte_by_byte(self):
        over = threading.Event()

        def trickle(connection):
            with contextlib.suppress(OSError):
                for byte in REPLY[:-1]:
                    if over.wait(0.2):
                        break
                    connection.sendall(bytes([byte]))

        self.serve(trickle)
        self.expect_time_out("userDir")
        over.set()

    @unittest.skipUnless(ON_LINUX, "what a full backlog does differs between systems")
    def test_gives_up_on_a_connection_that_is_not_accepted(self):
        self.listener.listen(0)
        for _ in range(3):
            waiting = socket.socket()
            self.addCleanup(waiting.close)
            waiting.setblocking(False)
            waiting.connect_ex(("127.0.0.1", self.port))
        self.expect_time_out("userDir")

    def test_says_that_a_reset_connection_has_brought_no_reply(self):
        self.serve(lambda connection: (read_request(connection), reset(connection)))
        self.expect(self.run_client("userDir"), 2, "",
                    "corvanectl: the server has closed the connection without a reply\n")

    def test_takes_a_reset_for_the_end_that_shutdown_asks_for(self):
        self.serve(lambda connection: (read_request(connection), reset(connection)))
        self.expect(self.run_client("shutdown"), 0, "", "")

    @unittest.skipUnless(ON_LINUX, "elsewhere a reset takes the reply with it")
    def test_reads_the_reply_of_a_server_that_closes_before_it_has_read_everything(self):
        def answer(connection):
            connection.recv(1)
            connection.sendall(REPLY)

        def answer_and_end(connection):
            answer(connection)
            connection.shutdown(socket.SHUT_WR)

        # A reset makes the client's send fail with ECONNRESET, or after a regular end with EPIPE.
        for error, behaviour in ("ECONNRESET", answer), ("EPIPE", answer_and_end):
            with self.subTest(error):
                self.serve(behaviour)
                self.expect(self.run_client("write", "f", data=MUCH), 0, "here\n", "")

    def test_sends_all_of_a_request_that_is_read_piece_by_piece(self):
        received = []

        def take(connection):
            while not (received and received[-1].endswith(b"\0")):
                received.append(connection.recv(65536) or b"\0")
            connection.sendall(REPLY)

        self.serve(take)
        self.expect(self.run_client("-t", "50", "write", "f", data=MUCH), 0, "here\n", "")
        self.assertEqual(len(b"".join(received)), len(b"write\nf\n\0") + len(MUCH))

    def test_says_that_half_a_reply_is_none(self):
        def answer_half(connection):
            read_request(connection)
            connection.sendall(REPLY[:-1])

        self.serve(answer_half)
        self.expect(self.run_client("userDir"), 2, "",
                    "corvanectl: the server has closed the connection without a reply\n")

    def test_prints_replies_of_all_sizes_and_nothing_that_follows_them(self):
        before, after = REPLY.split(b"here")
        # The end of a reply is looked for in what comes at once, at most 65536 bytes.
        for size in 65535, 65536, 65537, 131072, 131073, 3000000:
            with self.subTest(size):
                value = b"v" * (size - len(before) - len(after))
                reply = before + value + after

                def answer(connection, reply=reply):
                    read_request(connection)
                    connection.sendall(reply + REPLY)
                    connection.recv(1)

                self.serve(answer)
                self.expect(self.run_client("userDir"), 0, value.decode() + "\n", "")

    def test_prints_a_reply_of_success_as_it_came(self):
        self.serve(lambda connection: (read_request(connection), connection.sendall(REPLY)))
        self.expect(self.run_client("-x", "userDir"), 0, REPLY[:-1].decode() + "\n", "")

    def test_says_that_nobody_listens(self):
        result = self.run_client("userDir")
        self.assertEqual((result.returncode, result.stdout), (2, ""))
        self.assertIn(f"cannot connect to 127.0.0.1:{self.port}: ", result.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
