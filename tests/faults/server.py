"""One run of the server in a directory of its own, with one call that fails."""

import os
import re
import signal
import socket
import subprocess
import time
from pathlib import Path

from scripted_requests import CLOSED, FAILED, SUCCESS, prepare

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


class Server:
    def __init__(self, directory, executable, library, fault, nth):
        self.root = Path(directory)
        self.work, self.home, self.temp = (self.root / name for name in ("work", "home", "temp"))
        for place in (self.work, self.home, self.temp, self.root / "program"):
            place.mkdir()
        prepare(self.work, self.home)
        self._make_program(executable)
        self.report = self.root / "report"
        environment = {
            "HOME": str(self.home), "TMPDIR": str(self.temp), "PATH": os.environ["PATH"],
            "LD_PRELOAD": str(library), "CORVANE_FAULT_CALL": fault.call, "CORVANE_FAULT_NTH": str(nth),
            "CORVANE_FAULT_ERRNO": str(fault.error), "CORVANE_FAULT_REPORT": str(self.report)}
        self.process = subprocess.Popen(
            [self.root / "program" / "corvane"], cwd=self.work, env=environment,
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_until(self._find_port, "start")
        self.descriptors = self._count_descriptors()

    def _make_program(self, executable):
        program = self.root / "program"
        (program / "corvane").symlink_to(executable)
        (program / "corvane.conf").write_text("PORT=0\n")
        self._make_script(program / "cvnwinfo", "echo 1920,1080")
        self._make_script(self.work / "program", "exit 0")

    @staticmethod
    def _make_script(path, command):
        path.write_text(f"#!/bin/sh\n{command}\n")
        path.chmod(0o755)

    def log(self):
        path = self.root / "program" / "cv0.log"
        return path.read_text(errors="replace") if path.exists() else ""

    def _find_port(self):
        match = re.search(r"Listening on 127\.0\.0\.1:(\d+)\n", self.log())
        if match:
            self.port = int(match[1])
        return match

    def _count_descriptors(self):
        return len(os.listdir(f"/proc/{self.process.pid}/fd"))

    def _children(self):
        return Path(f"/proc/{self.process.pid}/task/{self.process.pid}/children").read_text()

    @property
    def fault_happened(self):
        return self.report.exists()

    def serve(self, group):
        """Sends the requests of a group, one connection after the other when one is closed."""
        connection = None
        results = []
        for request in group:
            try:
                connection = connection or self._connect()
                connection.sendall(request.text.encode() + b"\0")
                reply = self._receive(connection)
            except OSError:
                reply = ""
            if reply:
                outcome = SUCCESS if ' Result="SUCCESS"' in reply else FAILED
            else:
                outcome = CLOSED
                connection = connection and connection.close()
            results.append((request, outcome, reply))
        if connection:
            connection.close()
        return results

    def _connect(self):
        return socket.create_connection(("127.0.0.1", self.port), timeout=PATIENCE)

    @staticmethod
    def _receive(connection):
        """A whole reply, or nothing when the connection was closed, also in the middle of it."""
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

    def serves(self):
        """Whether it still answers; the fault may hit one try. False when it has ended."""
        for _ in range(2):
            try:
                with self._connect() as probe:
                    probe.sendall(b"userName\0")
                    if self._receive(probe).startswith("<CorvaneMsg>"):
                        return True
            except OSError:
                pass
        return False

    def ended(self):
        return self.process.poll() is not None

    def check_nothing_kept(self):
        """Waits until all is given back, or the server has ended after all."""
        for what, condition in (
                ("closed descriptors", lambda: self._count_descriptors() == self.descriptors),
                ("collected children", lambda: not self._children()),
                ("removed temporary files", lambda: not list(self.temp.iterdir()))):
            wait_until(lambda: self.ended() or condition(), what)

    def stop(self):
        self.process.send_signal(signal.SIGTERM)
        return self.wait_for_end()

    def wait_for_end(self):
        try:
            return self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired as error:
            raise Hang("end") from error

    def kill(self):
        if not self.ended():
            self.process.kill()
            self.process.wait()
