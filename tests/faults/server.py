"""One run of the server in a directory of its own, with one call that fails. In Python, as nothing here
is measured: what a run asks and checks is a table of requests, and a run is over in a moment."""

import os
import sys
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1]))
from scripted_requests import CLOSED, FAILED, SUCCESS, prepare
from support.server_process import ServerProcess, ask, wait_until


def script(command):
    return f"#!/bin/sh\n{command}\n"


class Server(ServerProcess):
    def __init__(self, directory, executable, library, fault, nth):
        root = Path(directory)
        self.work, self.home, self.temp = (root / name for name in ("work", "home", "temp"))
        for place in (self.work, self.home, self.temp):
            place.mkdir()
        prepare(self.work, self.home)
        (self.work / "program").write_text(script("exit 0"))
        (self.work / "program").chmod(0o755)
        self.report = root / "report"
        super().__init__(
            directory, executable, files={"cvnwinfo": script("echo 1920,1080")}, work=self.work,
            environment={
                "HOME": str(self.home), "TMPDIR": str(self.temp), "LD_PRELOAD": str(Path(library).resolve()),
                "CORVANE_FAULT_CALL": fault.call, "CORVANE_FAULT_NTH": str(nth),
                "CORVANE_FAULT_ERRNO": str(fault.error), "CORVANE_FAULT_REPORT": str(self.report)})
        self.descriptors = self._count_descriptors()

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
                connection = connection or self.connect()
                reply = ask(connection, request.text)
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

    def serves(self):
        """Whether it still answers; the fault may hit one try. False when it has ended."""
        for _ in range(2):
            try:
                with self.connect() as probe:
                    if ask(probe, "userName").startswith("<CorvaneMsg>"):
                        return True
            except OSError:
                pass
        return False

    def check_nothing_kept(self):
        """Waits until all is given back, or the server has ended after all."""
        for what, condition in (
                ("closed descriptors", lambda: self._count_descriptors() == self.descriptors),
                ("collected children", lambda: not self._children()),
                ("removed temporary files", lambda: not list(self.temp.iterdir()))):
            wait_until(lambda: self.ended() or condition(), what)
