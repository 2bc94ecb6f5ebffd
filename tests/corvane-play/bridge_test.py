"""The bridge between a page and a server: who may use it, and how it carries bytes and ends.

Usage: bridge_test.py CORVANE_PLAY SERVER
"""
import contextlib
import hashlib
import os
import socket
import struct
import sys
import threading
import unittest
from pathlib import Path

from play import PlayTest, wait_until
from web_socket import BINARY, CLOSE, PING, PONG, TEXT, Refused, WebSocket

MEBIBYTE = 1024 * 1024


class GuardTest(PlayTest):
    def expect_refusal(self, status=403, target=None, **options):
        with self.assertRaises(Refused) as refused:
            WebSocket(self.port, target or self.bridges[0], **options)
        self.assertEqual(refused.exception.args[0], status)

    def expect_no_connection(self):
        self.listener.settimeout(0)
        with self.assertRaises(BlockingIOError):
            self.listener.accept()

    def test_refuses_pages_of_other_origins(self):
        self.play()
        for origin in ("http://attacker.example", "https://127.0.0.1", f"https://127.0.0.1:{self.port}",
                       f"http://127.0.0.1:{self.port + 1}", f"http://localhost:{self.port}", "null", "file://",
                       f"http://127.0.0.1:{self.port}.attacker.example", "", None):
            with self.subTest(origin):
                self.expect_refusal(Origin=origin)
        self.expect_no_connection()

    def test_refuses_a_name_that_was_made_to_lead_here(self):
        self.play()
        host = f"attacker.example:{self.port}"
        self.expect_refusal(Host=host, Origin=f"http://{host}")
        self.expect_refusal(Host=host)
        self.expect_no_connection()

    def test_refuses_wrong_tokens(self):
        self.play()
        _, _, token, host, port = self.bridges[0].split("/")
        other = "0" * 31 + ("1" if token.endswith("0") else "0")
        for wrong in other, token[:-1], token + "0", token.upper() + "x", self.base.strip("/"), "":
            with self.subTest(wrong):
                self.expect_refusal(target=f"/bridge/{wrong}/{host}/{port}")
        self.expect_refusal(target=f"/alive/{other}")
        self.expect_no_connection()

    def test_has_another_token_and_another_address_at_each_start(self):
        self.play()
        first = self.bridges[0], self.base
        self.play()
        self.assertNotEqual(first[0].split("/")[2], self.bridges[0].split("/")[2])
        self.assertNotEqual(first[1], self.base)

    def test_leads_to_no_other_host_or_port(self):
        self.play()
        with socket.create_server(("127.0.0.1", 0)) as other:
            other.settimeout(0)
            token, port = self.bridges[0].split("/")[2], other.getsockname()[1]
            for target in (f"127.0.0.1/{port}", f"localhost/{port}", "attacker.example/80", f"127.0.0.1/{port}/",
                           f"127.0.0.2/{self.target_port}", "127.0.0.1/0", "127.0.0.1", f"%31/{self.target_port}"):
                with self.subTest(target):
                    self.expect_refusal(target=f"/bridge/{token}/{target}")
            with self.assertRaises(BlockingIOError):
                other.accept()

    def test_leads_to_what_was_allowed(self):
        with socket.create_server(("127.0.0.1", 0)) as other:
            self.play(f"--allow=localhost:{other.getsockname()[1]}", "--allow", "[::1]:7")
            with WebSocket(self.port, self.bridges[2]) as page:
                page.send(b"hello")
                with other.accept()[0] as connection:
                    self.assertEqual(connection.recv(5), b"hello")

    def test_tells_the_page_that_nobody_listens(self):
        self.play()
        self.listener.close()
        self.expect_refusal(502)

    def test_serves_a_page_of_another_server_on_demand_and_no_file(self):
        origin = "https://www.example.com"
        self.start("--bridge", "--allow-origin", origin)
        self.assertTrue(self.address.startswith("ws://"))
        target = self.base
        page, connection = self.bridge(target, Origin=origin)
        page.send(b"x")
        self.assertEqual(connection.recv(1), b"x")
        for wrong in (f"http://127.0.0.1:{self.port}", "https://www.example.com.evil.example",
                      "http://www.example.com", "https://example.com", None):
            with self.subTest(wrong):
                self.expect_refusal(target=target, Origin=wrong)
        self.expect_refusal(target=target, Origin=origin, Host=f"www.example.com:{self.port}")
        self.expect_refusal(target="/bridge/0/127.0.0.1/1", Origin=origin)

    def test_limits_the_connections_at_once(self):
        self.play()
        pages = [WebSocket(self.port, self.bridges[0]) for _ in range(64)]
        self.expect_refusal(503)
        for page in pages:
            page.reset()
        wait_until(lambda: self.is_accepted(), "a free place")

    def is_accepted(self):
        with contextlib.suppress(Refused):
            WebSocket(self.port, self.bridges[0]).socket.close()
            return True
        return False

    def test_closes_further_connections_when_there_are_very_many(self):
        self.play()
        with contextlib.ExitStack() as all_of_them:
            for _ in range(256):
                all_of_them.enter_context(socket.create_connection(("127.0.0.1", self.port)))
            last = all_of_them.enter_context(socket.create_connection(("127.0.0.1", self.port), timeout=60))
            with contextlib.suppress(ConnectionError):
                last.sendall(f"HEAD / HTTP/1.1\r\nHost: 127.0.0.1:{self.port}\r\n\r\n".encode())
                self.assertEqual(last.recv(1), b"")


class CarryingTest(PlayTest):
    def setUp(self):
        super().setUp()
        self.play()
        self.page, self.target = self.bridge()

    def read_target(self, count):
        data = b""
        while len(data) < count:
            piece = self.target.recv(1 << 20)
            self.assertTrue(piece, "the connection has ended")
            data += piece
        return data

    def test_carries_binary_and_text_frames_to_the_server_and_binary_ones_back(self):
        self.page.send(b"userDir\n\0")
        self.assertEqual(self.read_target(9), b"userDir\n\0")
        self.page.send("ä\0".encode(), TEXT)
        self.assertEqual(self.read_target(3), "ä\0".encode())
        self.page.send(b"in", BINARY, final=False)
        self.page.send(b"pieces", 0)
        self.assertEqual(self.read_target(8), b"inpieces")
        self.target.sendall(b"<x/>\xff\0")
        self.assertEqual(self.page.receive(6), b"<x/>\xff\0")

    def test_carries_much_both_ways_at_once(self):
        data = os.urandom(10 * MEBIBYTE)
        threads = [threading.Thread(target=self.page.send, args=(data,)),
                   threading.Thread(target=self.target.sendall, args=(data,))]
        received = []
        threads.append(threading.Thread(target=lambda: received.append(self.read_target(len(data)))))
        for thread in threads:
            thread.start()
        self.assertEqual(hashlib.sha256(self.page.receive(len(data))).digest(), hashlib.sha256(data).digest())
        for thread in threads:
            thread.join()
        self.assertTrue(received[0] == data)

    def memory(self):
        status = Path(f"/proc/{self.process.pid}/status").read_text()
        return int(status.split("VmHWM:")[1].split()[0]) * 1024

    def push(self, send):
        """Sends 64 MiB in a thread, and returns it when nothing more is taken."""
        sent = [0]

        def work():
            for _ in range(64):
                send(bytes(MEBIBYTE))
                sent[0] += MEBIBYTE

        thread = threading.Thread(target=work)
        thread.start()
        return thread, sent

    def held_up(self, sent):
        before = sent[0]
        threading.Event().wait(0.5)  # what is not taken in this time is held up
        return sent[0] == before

    @unittest.skipUnless(sys.platform.startswith("linux"), "needs /proc")
    def test_holds_little_for_a_page_that_does_not_read(self):
        before = self.memory()
        thread, sent = self.push(self.target.sendall)
        wait_until(lambda: self.held_up(sent), "the server being held up")
        self.assertLess(sent[0], 32 * MEBIBYTE)
        self.assertLess(self.memory() - before, 4 * MEBIBYTE)
        self.assertEqual(len(self.page.receive(64 * MEBIBYTE)), 64 * MEBIBYTE)
        thread.join()

    @unittest.skipUnless(sys.platform.startswith("linux"), "needs /proc")
    def test_holds_little_for_a_server_that_does_not_read(self):
        before = self.memory()
        thread, sent = self.push(self.page.send)
        wait_until(lambda: self.held_up(sent), "the page being held up")
        self.assertLess(sent[0], 32 * MEBIBYTE)
        self.assertLess(self.memory() - before, 4 * MEBIBYTE)
        self.read_target(64 * MEBIBYTE)
        thread.join()

    def test_passes_the_end_of_the_page_on_behind_its_last_bytes(self):
        self.page.send(b"last")
        self.page.close()
        self.assertEqual(self.read_target(4), b"last")
        self.assertEqual(self.target.recv(1), b"")

    def test_passes_the_end_of_the_server_on_behind_its_last_bytes(self):
        self.target.sendall(b"last")
        self.target.shutdown(socket.SHUT_WR)
        self.assertEqual(self.page.receive(4), b"last")
        self.assertEqual(self.page.frame(), (CLOSE, struct.pack("!H", 1000)))

    def test_passes_a_reset_of_the_page_on(self):
        self.page.reset()
        with self.assertRaises(ConnectionResetError):
            self.target.recv(1)

    def test_passes_a_reset_of_the_server_on(self):
        self.target.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.target.close()
        with self.assertRaises(ConnectionResetError):
            self.page.socket.recv(1)

    def test_answers_pings_and_ends_a_page_that_breaks_the_protocol(self):
        self.page.send(b"?", PING)
        self.assertEqual(self.page.frame(), (PONG, b"?"))
        self.page.send(b"\xff", TEXT)
        self.assertEqual(self.page.frame()[0], CLOSE)
        with contextlib.suppress(ConnectionResetError):
            self.assertEqual(self.target.recv(1), b"")

    def test_accepts_no_compression(self):
        page, _ = self.bridge(Sec_WebSocket_Extensions="permessage-deflate")
        self.assertNotIn("Sec-WebSocket-Extensions", page.headers)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
