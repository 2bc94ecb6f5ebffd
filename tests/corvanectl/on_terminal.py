"""A program on a terminal of its own, for the tests of what people see."""

import fcntl
import os
import pty
import re
import select
import signal
import struct
import subprocess
import termios
import time

# Seconds after which whatever did not happen counts as a hang.
PATIENCE = 60
# What moves the cursor, or sets colours and modes.
SEQUENCE = re.compile(r"\x1b(?:\[[0-9;?]*[A-Za-z]|[()=>][0-9A-B]?)")


class OnTerminal:
    """Runs until the end of the `with`. `columns` is the width of the terminal."""

    def __init__(self, arguments, columns=80, environment=None, stdout=None, cwd=None):
        self.master, terminal = pty.openpty()
        fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        self.raw = ""
        self.process = subprocess.Popen(
            arguments, stdin=terminal, stdout=terminal if stdout is None else stdout, stderr=terminal, cwd=cwd,
            env=os.environ | {"TERM": "vt100", "LC_ALL": "C.UTF-8"} | (environment or {}),
            preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0), start_new_session=True)
        os.close(terminal)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGKILL)
            self.process.wait()
        os.close(self.master)

    def _receive(self, end):
        if not select.select([self.master], [], [], max(0, end - time.monotonic()))[0]:
            raise AssertionError(f"nothing more came behind {self.raw!r}")
        try:
            piece = os.read(self.master, 65536)
        except OSError:  # the system's way to say that nobody has the terminal any more
            piece = b""
        self.raw += piece.decode(errors="replace")
        return bool(piece)

    def type(self, text):
        os.write(self.master, text.encode())

    def expect(self, text):
        """Waits for a text, and forgets what came up to it, which is returned."""
        end = time.monotonic() + PATIENCE
        while text not in self.shown():
            if not self._receive(end):
                raise AssertionError(f"{text!r} is not in {self.shown()!r}")
        before, _, rest = self.shown().partition(text)
        self.raw = rest
        return before + text

    def shown(self):
        return SEQUENCE.sub("", self.raw).replace("\r\n", "\n")

    def rest(self):
        """All that comes until the end; returns it and the exit status."""
        end = time.monotonic() + PATIENCE
        while self._receive(end):
            pass
        return self.shown(), self.process.wait(PATIENCE)
