"""What corvane-play serves, and what it does not.

Usage: files_test.py CORVANE_PLAY SERVER
"""
import os
import signal
import socket
import sys
import unittest

from play import MOVIE, PlayTest
from web_socket import read_head, request


class FilesTest(PlayTest):
    def setUp(self):
        super().setUp()
        (self.scratch / "secret.txt").write_text("secret")
        (self.place / "levels").mkdir()
        (self.place / "levels" / "one.xml").write_text("<level/>")

    def status(self, name, **options):
        return self.get(name, **options)[0]

    def test_serves_the_page_the_movie_and_what_lies_beside_it(self):
        self.play()
        status, headers, page = self.get("")
        self.assertEqual((status, headers["Content-Type"]), (200, "text/html; charset=utf-8"))
        self.assertIn(b"<title>Adobe Flash Player</title>", page)
        status, headers, movie = self.get("start.swf?level=1")
        self.assertEqual((status, movie), (200, MOVIE))
        self.assertEqual(headers["Content-Type"], "application/x-shockwave-flash")
        self.assertEqual(self.get("levels/one.xml")[2], b"<level/>")
        self.assertIn('"width":20,"height":20', self.script)
        self.assertEqual(self.status("corvane-play/ruffle/ruffle.js"), 200)

    def test_tells_the_size_to_a_request_for_the_head_alone(self):
        self.play()
        status, headers, body = self.get("start.swf", method="HEAD")
        self.assertEqual((status, headers["Content-Length"], body), (200, str(len(MOVIE)), b""))

    def test_serves_nothing_outside_of_the_directory(self):
        self.play()
        for name in ("../secret.txt", "%2e%2e/secret.txt", "..%2fsecret.txt", "levels/../../secret.txt",
                     "levels/%2E%2E/%2E%2E/secret.txt", "..%5csecret.txt", "//etc/passwd", "%2fetc%2fpasswd",
                     "/etc/passwd", "levels//one.xml", "start.swf%00.xml", "%252e%252e/secret.txt",
                     "corvane-play/../start.swf", "corvane-play/ruffle/../../../bin/corvane-play"):
            with self.subTest(name):
                self.assertEqual(self.status(name), 404)

    def test_follows_no_link(self):
        (self.place / "link.txt").symlink_to("../secret.txt")
        (self.place / "out").symlink_to("..")
        (self.place / "inside.xml").symlink_to("levels/one.xml")
        self.play()
        for name in "link.txt", "out/secret.txt", "inside.xml":
            with self.subTest(name):
                self.assertEqual(self.status(name), 404)

    def test_lists_no_directory_and_hides_hidden_files(self):
        (self.place / ".git").mkdir()
        (self.place / ".git" / "config").write_text("secret")
        (self.place / ".env").write_text("secret")
        self.play()
        for name in "levels/", "levels", ".env", "%2eenv", ".git/config":
            with self.subTest(name):
                self.assertEqual(self.status(name), 404)

    def test_is_not_held_up_by_what_is_no_file(self):
        os.mkfifo(self.place / "pipe")
        self.play()
        self.assertEqual(self.status("pipe"), 404)

    def test_answers_only_below_the_address_of_this_start(self):
        self.play()
        key = self.base.strip("/")
        for target in ("/", "/start.swf", "/corvane-play.js", f"/{key[:-1]}/start.swf",
                       f"/{key}0/start.swf", f"/{'0' * len(key)}/"):
            with self.subTest(target):
                self.assertEqual(request(self.port, target)[0], 404)

    def test_answers_to_no_other_host(self):
        self.play()
        for host in ("attacker.example", f"attacker.example:{self.port}", "127.0.0.1", "",
                     f"127.0.0.1:{self.port + 1}", f"127.0.0.1:{self.port}.attacker.example",
                     f"[::1]:{self.port}", None):
            with self.subTest(host):
                self.assertEqual(self.status("", Host=host), 403)
        self.assertEqual(self.status("", Host=f"LOCALHOST:{self.port}"), 200)

    def hundreds_of_status_as(self, user):
        """Of the reply that another user's program gets, who has seen the address; 0 for none."""
        child = os.fork()
        if child == 0:
            hundreds = 255
            try:
                os.setresuid(user, user, user)
                hundreds = self.status("") // 100
            except ConnectionError:
                hundreds = 0
            finally:
                os._exit(hundreds)
        return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])

    @unittest.skipUnless(os.geteuid() == 0, "only the superuser can be several users")
    def test_answers_to_no_other_user(self):
        self.play()
        self.assertEqual([self.hundreds_of_status_as(user) for user in (0, 4321, 4321)], [2, 0, 0])
        self.process.terminate()
        self.assertEqual(self.process.communicate(timeout=60)[1],
                         "corvane-play: refused a connection of user 4321\n")

    def test_refuses_a_request_of_two_hosts_or_two_origins(self):
        self.play()
        host = f"127.0.0.1:{self.port}"
        upgrade = (f"GET {self.bridges[0]} HTTP/1.1", "Connection: Upgrade", "Upgrade: websocket",
                   "Sec-WebSocket-Version: 13", "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==",
                   f"Host: {host}", f"Origin: http://{host}")
        for lines, status in ((upgrade, 101), ((*upgrade, "Origin: http://attacker.example"), 403),
                              ((*upgrade, "Host: attacker.example"), 403)):
            with self.subTest(lines[-1]), socket.create_connection(("127.0.0.1", self.port)) as connection:
                connection.sendall("".join(line + "\r\n" for line in (*lines, "")).encode())
                self.assertEqual(read_head(connection)[0], status)

    def test_says_nothing_of_a_connection_that_is_gone_already(self):
        self.play()
        self.process.send_signal(signal.SIGSTOP)
        socket.create_connection(("127.0.0.1", self.port)).close()
        self.process.send_signal(signal.SIGCONT)
        self.assertEqual(self.status(""), 200)
        self.process.terminate()
        self.assertEqual(self.process.communicate(timeout=60)[1], "")

    def test_answers_to_the_page_itself_and_to_no_other(self):
        self.play()
        for site, status in (("same-origin", 200), ("none", 200), ("cross-site", 403), ("same-site", 403)):
            with self.subTest(site):
                self.assertEqual(self.status("corvane-play.js", Sec_Fetch_Site=site), status)

    def test_lets_no_other_page_read_or_frame_what_it_serves(self):
        self.play()
        for name in "", "start.swf", "corvane-play.js", "missing":
            with self.subTest(name):
                headers = self.get(name)[1]
                self.assertNotIn("Access-Control-Allow-Origin", headers)
                self.assertEqual(headers["Cross-Origin-Resource-Policy"], "same-origin")
                self.assertEqual(headers["X-Content-Type-Options"], "nosniff")
                self.assertEqual(headers["Cache-Control"], "no-store")
                self.assertIn("frame-ancestors", headers["Content-Security-Policy"])
        self.assertIn("script-src 'self' 'wasm-unsafe-eval';", self.get("")[1]["Content-Security-Policy"])

    def test_only_lets_files_be_read(self):
        self.play()
        for method in "POST", "PUT", "DELETE", "OPTIONS", "CONNECT", "TRACE":
            with self.subTest(method):
                self.assertEqual(self.status("start.swf", method=method), 405)
        self.assertEqual(self.status("start.swf", method="POST", body=b"user=1", Content_Type="text/plain"), 405)
        self.assertEqual(self.status("start.swf", body=b"GET / HTTP/1.1"), 403)

    def test_refuses_a_request_that_is_too_long_or_none(self):
        self.play()
        self.assertEqual(self.status("", Filler="x" * 20000), 431)
        with socket.create_connection(("127.0.0.1", self.port)) as connection:
            connection.sendall(b"userDir\n\0\r\n\r\n")
            self.assertEqual(read_head(connection)[0], 400)

    def test_serves_several_requests_of_a_connection(self):
        self.play()
        with socket.create_connection(("127.0.0.1", self.port)) as connection:
            for _ in range(2):
                connection.sendall(f"HEAD {self.base} HTTP/1.1\r\nHost: 127.0.0.1:{self.port}\r\n\r\n".encode())
                self.assertEqual(read_head(connection)[0], 200)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
