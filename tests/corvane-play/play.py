"""corvane-play as a process of its own, with the real server or a stand-in under it."""
import random
import re
import socket
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1]))
from support.server_process import PATIENCE, wait_until

from web_socket import WebSocket, request

PROGRAM, SERVER = (Path(p).resolve() for p in sys.argv[1:3])
# The least movie whose size can be read: 20 x 20 pixels (400 twips), uncompressed.
MOVIE = b"FWS\x08\x19\0\0\0" + bytes.fromhex("78000032000000c800" "000c010040000000")


def listen_below_others():
    """On a port that the system gives to nobody else, also when it is closed."""
    for port in random.sample(range(20_000, 32_000), 100):
        try:
            return socket.create_server(("127.0.0.1", port))
        except OSError:
            pass  # another program's
    raise RuntimeError("no port is free")


class PlayTest(unittest.TestCase):
    """Each test has a directory with a movie, a stand-in for Corvane, and the program as it is
    started."""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.scratch = Path(scratch.name).resolve()
        self.place = self.scratch / "game"
        self.place.mkdir()
        (self.place / "start.swf").write_bytes(MOVIE)
        self.listener = listen_below_others()
        self.listener.settimeout(PATIENCE)
        self.addCleanup(self.listener.close)
        self.target_port = self.listener.getsockname()[1]
        self.data = self.make_installation()

    def make_installation(self):
        """The program beside its own files, with a Ruffle that is none."""
        build = PROGRAM.parent / "share" / "corvane-play"
        home = self.scratch / "installed"
        data = home / "share" / "corvane-play"
        (data / "ruffle").mkdir(parents=True)
        for file in build.glob("*.*"):
            (data / file.name).write_bytes(file.read_bytes())
        (data / "ruffle" / "ruffle.js").write_text("// a stand-in\n")
        (home / "bin").mkdir()
        self.program = home / "bin" / "corvane-play"
        self.program.write_bytes(PROGRAM.read_bytes())
        self.program.chmod(0o755)
        return data

    def start(self, *arguments, port=None, **options):
        """Starts it; its first line is in self.address."""
        words = [self.program, *arguments]
        if port != 0:
            words += ["--port", str(port or self.target_port)]
        process = subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True, **options)
        self.addCleanup(self.end, process)
        self.process = process
        self.address = process.stdout.readline().strip()
        found = re.match(r"(?:http|ws)://127\.0\.0\.1:(\d+)(/.*)", self.address)
        if not found:
            self.fail(f"no address: {process.communicate(timeout=PATIENCE)}")
        self.port, self.base = int(found[1]), found[2]
        return process

    def play(self, *arguments, **options):
        """Starts it with the movie and without a browser, and reads what the page is told."""
        self.start("--no-open", self.place / "start.swf", *arguments, **options)
        self.read_settings()

    def read_settings(self):
        script = self.get("corvane-play.js")[2].decode()
        self.bridges = re.findall(r'"(/bridge/[^"]*)"', script)
        self.alive = re.search(r'"(/alive/[^"]*)"', script)[1]
        self.script = script

    @staticmethod
    def end(process):
        if process.poll() is None:
            process.terminate()
        process.communicate(timeout=PATIENCE)

    def get(self, name, **options):
        return request(self.port, self.base + name, **options)

    def bridge(self, target=None, **options):
        """A WebSocket to the stand-in, and the stand-in's side of it."""
        page = WebSocket(self.port, target or self.bridges[0], **options)
        self.addCleanup(page.socket.close)
        connection, _ = self.listener.accept()
        connection.settimeout(PATIENCE)
        self.addCleanup(connection.close)
        return page, connection

    def wait_for_status(self):
        return self.process.wait(PATIENCE)


__all__ = ["MOVIE", "PROGRAM", "SERVER", "PlayTest", "wait_until"]
