"""corvane-play as its user meets it: what it starts, shows and ends, and what it says.

Usage: program_test.py CORVANE_PLAY SERVER
"""
import os
import shutil
import signal
import socket
import subprocess
import sys
import unittest

from play import MOVIE, SERVER, PlayTest, wait_until
from web_socket import WebSocket, request


def is_free(port):
    with socket.socket() as probe:
        return probe.connect_ex(("127.0.0.1", port)) != 0


class ProgramTest(PlayTest):
    def run_it(self, *arguments, status, **options):
        result = subprocess.run([self.program, *arguments], capture_output=True, text=True, timeout=60,
                                check=False, stdin=subprocess.DEVNULL, **options)
        self.assertEqual(result.returncode, status, result.stderr)
        return result.stdout + result.stderr

    def refuse(self, subject, *arguments):
        return self.run_it("--no-open", "--port", str(self.target_port), *arguments, subject, status=1)

    def fake_program(self, name, script):
        """A program of this name that is found before all others; PATH for it."""
        directory = self.scratch / "programs"
        directory.mkdir(exist_ok=True)
        (directory / name).write_text("#!/bin/sh\n" + script)
        (directory / name).chmod(0o755)
        return {**os.environ, "PATH": f"{directory}:/usr/bin:/bin", "TMPDIR": str(self.scratch)}

    def test_explains_itself(self):
        self.assertIn("corvane-play [options] MOVIE.swf | DIRECTORY | PAGE.html", self.run_it("--help", status=0))
        self.assertRegex(self.run_it("--version", status=0), r"^corvane-play [\d.]+\n$")
        self.assertIn("--help", self.run_it("--unknown", status=2))

    def test_tells_what_is_missing(self):
        (self.scratch / "empty").mkdir()
        self.assertIn("No such file", self.refuse(self.scratch / "missing.swf"))
        self.assertIn("neither an index.html nor a movie", self.refuse(self.scratch / "empty"))
        (self.place / "other.swf").write_bytes(MOVIE)
        self.assertIn("which one?", self.refuse(self.place))
        self.listener.close()
        self.assertIn(f"No Corvane listens on port {self.target_port}", self.refuse(self.place / "start.swf"))
        (self.data / "ruffle" / "ruffle.js").unlink()
        self.assertIn("Ruffle is missing", self.refuse(self.place / "start.swf"))

    def test_hands_variables_to_the_movie(self):
        self.play("--flashvars", "name=A%26B&note=%22%3C/script%3E", "--scale")
        self.assertIn('"flashvars":{"name":"A&B","note":"\\"\\u003c/script>"}', self.script)
        self.assertIn('"scale":true', self.script)

    def test_finds_the_movie_or_the_page_of_a_directory(self):
        self.start("--no-open", self.place)
        self.assertIn(b'"movie":"start.swf"', self.get("corvane-play.js")[2])
        (self.place / "index.html").write_text("<html><head><title>Mine</title></head></html>")
        self.start("--no-open", self.place)
        self.assertIn(b"<title>Mine</title>", self.get("")[2])

    def test_gives_a_page_of_the_user_the_script(self):
        page = self.place / "page.html"
        page.write_text("<!doctype html><html><HEAD class=x><title>Mine</title></head></html>")
        self.start("--no-open", page)
        script = f'<script src="{self.base}corvane-play.js"></script>'
        for name in "", "page.html":
            self.assertEqual(self.get(name)[2].decode(),
                             f"<!doctype html><html><HEAD class=x>{script}<title>Mine</title></head></html>")

    def installed_server(self, configuration):
        directory = self.scratch / "lib"
        directory.mkdir()
        shutil.copy(SERVER, directory / "corvane")
        (directory / "corvane.conf").write_text(configuration)
        return directory

    def expect_server_that_ends(self, sig, configuration):
        directory = self.installed_server(configuration)
        self.start("--no-open", "--config", directory, self.place / "start.swf", port=0,
                   env={**os.environ, "HOME": str(self.scratch)})
        self.read_settings()
        port = int(self.bridges[0].split("/")[-1])
        with WebSocket(self.port, self.bridges[0]) as page:
            page.send(b"userDir\0")
            self.assertIn(str(self.scratch).encode(), page.receive(60))
        self.process.send_signal(sig)
        self.assertEqual(self.wait_for_status(), 0)
        wait_until(lambda: is_free(port), "the end of the server")
        shutil.rmtree(directory)

    def test_starts_a_server_and_ends_it_with_itself(self):
        for sig in signal.SIGTERM, signal.SIGINT, signal.SIGHUP:
            with self.subTest(sig):
                self.expect_server_that_ends(sig, "PORT=0\n")

    def test_ends_a_server_that_has_detached_itself(self):
        port = self.target_port
        self.listener.close()
        self.expect_server_that_ends(signal.SIGTERM, f"PORT={port}\nCONSOLE=false\n")

    def test_leaves_a_running_server_alone(self):
        directory = self.installed_server(f"PORT={self.target_port}\nSHUTDOWNONDISCONNECT=1\n")
        self.start("--no-open", "--config", directory / "corvane.conf", self.place / "start.swf", port=0)
        self.process.terminate()
        self.assertEqual(self.wait_for_status(), 0)
        self.listener.settimeout(0)
        with self.assertRaises(BlockingIOError):  # not even a connection that ends
            self.listener.accept()

    def test_tells_why_the_server_does_not_start(self):
        directory = self.installed_server("PORT=0\nlog4cpp.priority=WRONG\n")
        output = self.run_it("--no-open", "--config", directory, self.place / "start.swf", status=1)
        self.assertIn("Corvane has not started", output)

    def test_ends_when_the_page_has_been_gone_for_a_while(self):
        self.play()
        WebSocket(self.port, self.alive).close()
        with WebSocket(self.port, self.alive) as reloaded:
            with self.assertRaises(subprocess.TimeoutExpired):
                self.process.wait(6)
            reloaded.close()
        self.assertEqual(self.wait_for_status(), 0)

    def test_stays_on_demand(self):
        self.play("--stay")
        WebSocket(self.port, self.alive).close()
        with self.assertRaises(subprocess.TimeoutExpired):
            self.process.wait(7)
        self.assertEqual(self.get("")[0], 200)

    def test_opens_the_default_browser(self):
        seen = self.scratch / "seen"
        environment = self.fake_program("xdg-open", f'echo "$1" > {seen}.new && mv {seen}.new {seen}\n')
        self.start(self.place / "start.swf", env=environment)
        wait_until(seen.exists, "the browser")
        self.assertEqual(seen.read_text().strip(), self.address)

    def test_starts_a_browser_in_full_screen_and_ends_with_it(self):
        seen = self.scratch / "seen"
        script = f'echo "$@" > {seen}.new && mv {seen}.new {seen}\nwhile [ ! -e {seen}.end ]; do sleep 0.05; done\n'
        self.start("--kiosk", self.place / "start.swf", env=self.fake_program("chromium", script))
        wait_until(seen.exists, "the browser")
        words = seen.read_text().split()
        self.assertEqual((words[0], words[-1]), ("--kiosk", self.address))
        profile = next(word for word in words if word.startswith("--user-data-dir=")).split("=")[1]
        self.assertTrue(os.path.isdir(profile))
        (self.scratch / "seen.end").touch()
        self.assertEqual(self.wait_for_status(), 0)
        self.assertFalse(os.path.exists(profile))

    def test_tells_that_the_browser_has_not_come_to_the_page(self):
        environment = self.fake_program("chromium", "exit 3\n")
        self.assertIn("the browser has ended before it has shown the page",
                      self.run_it("--kiosk", "--port", str(self.target_port), self.place / "start.swf", status=1,
                                  env=environment))

    def test_ends_the_browser_in_full_screen_with_itself(self):
        pid = self.scratch / "pid"
        script = f"echo $$ > {pid}.new && mv {pid}.new {pid}\nexec sleep 1000\n"
        self.start("--kiosk", self.place / "start.swf", env=self.fake_program("chromium", script))
        wait_until(pid.exists, "the browser")
        self.process.terminate()
        self.assertEqual(self.wait_for_status(), 0)
        with self.assertRaises(ProcessLookupError):
            os.kill(int(pid.read_text()), 0)

    def test_answers_only_on_the_loopback_address(self):
        self.play()
        self.assertEqual(request(self.port, self.base)[0], 200)
        with socket.socket(socket.AF_INET) as probe:
            self.assertNotEqual(probe.connect_ex(("127.0.0.2", self.port)), 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
