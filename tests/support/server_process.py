"""The real server as a process of its own, for the tests in Python: in a directory that looks like an
installation, with its configuration and its log."""

import os
import re
import signal
import socket
import subprocess
import time
from pathlib import Path

# Seconds after which whatever did not happen counts as a hang.
PATIENCE = 60


class Hang(Exception):
    """Something did not happen in time."""


def wait_until(condition, what):
    end = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > end:
            raise Hang(what)
        time.sleep(0.002)


def receive(connection):
    """A whole reply without its zero byte, or nothing when the connection ends, also in the middle."""
    data = b""
    while not data.endswith(b"\0"):
        try:
            piece = connection.recv(1 << 20)
        except TimeoutError as error:
            raise Hang("reply") from error
        if not piece:
            return ""
        data += piece
    return data[:-1].decode()


def ask(connection, request):
    """Sends a request and returns its reply as receive() does."""
    connection.sendall(request.encode() + b"\0")
    return receive(connection)


class ServerProcess:
    """Serves when it has been made, and is killed at the end of a `with`."""

    def __init__(self, directory, executable, configuration="", files=None, work=None, environment=None,
                 wrapper=()):
        """The installation is `directory`/program: the executable, the configuration file with these
        lines behind "PORT=0", and executable files, name and text. `work` is the working directory;
        without one it is `directory`. `environment` is added to this process's own. `wrapper` is a
        command that becomes the server, whose path is put behind it."""
        self.program = Path(directory) / "program"
        self.program.mkdir()
        (self.program / "corvane").symlink_to(Path(executable).resolve())
        (self.program / "corvane.conf").write_text("PORT=0\n" + configuration)
        for name, text in (files or {}).items():
            (self.program / name).write_text(text)
            (self.program / name).chmod(0o755)
        self.process = subprocess.Popen(
            [*wrapper, self.program / "corvane"], cwd=work or directory, env=os.environ | (environment or {}),
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            wait_until(lambda: self._find_port() or self.ended(), "start")
        except Hang:
            self.kill()
            raise
        if not self._find_port():
            raise RuntimeError(f"the server has ended with status {self.process.wait()}")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.kill()

    def _find_port(self):
        match = re.search(r"Listening on [\d.]+:(\d+)\n", self.log())
        if match:
            self.port = int(match[1])
        return match

    def log(self):
        path = self.program / "cv0.log"
        return path.read_text(errors="replace") if path.exists() else ""

    def connect(self):
        return socket.create_connection(("127.0.0.1", self.port), timeout=PATIENCE)

    def ended(self):
        return self.process.poll() is not None

    def wait_for_end(self):
        """Returns the exit status."""
        try:
            return self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired as error:
            raise Hang("end") from error

    def stop(self):
        self.process.send_signal(signal.SIGTERM)
        return self.wait_for_end()

    def kill(self):
        if not self.ended():
            self.process.kill()
            self.process.wait()
