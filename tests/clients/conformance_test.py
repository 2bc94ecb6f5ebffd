#!/usr/bin/env python3
"""conformance_test.py SERVER: runs the examples of docs/protocol.md against the real executable.

The server has a directory, a home directory and a port of its own, so every placeholder is known.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
CONFORMANCE = ROOT / "clients" / "conformance"
PROTOCOL = ROOT / "docs" / "protocol.md"


def prepare(executable, directory):
    """Fills the directory; returns the server's executable and its home directory."""
    server = directory / "server"
    home = directory / "home"
    for made in (server, home / ".corvane", home / "Desktop", directory / "tmp"):
        made.mkdir(parents=True)
    shutil.copy(executable, server / "corvane")
    shutil.copy(CONFORMANCE / "cvnwinfo", server / "cvnwinfo")
    # Standard error is a pipe that is not read to its end, so little may go there.
    (server / "corvane.conf").write_text("PORT=0\nCONSOLE=true\nlog4cpp.priority=NOTICE\n")
    registry = re.search(r"^```registry\n(.*?)^```$", PROTOCOL.read_text("utf-8"), re.MULTILINE | re.DOTALL)
    (home / ".corvane" / "registry.txt").write_text(registry.group(1))
    return server / "corvane", home


def wait_for_port(log):
    """Reads the server's log up to the line that names the port."""
    for line in log:
        found = re.search(r"Listening on 127\.0\.0\.1:(\d+)", line)
        if found:
            return found.group(1)
    sys.exit("The server ended before it listened")


def check(port, home, directory):
    expected = {"home": home, "tmp": f"{directory}/tmp/", "cwd": f"{directory}/"}
    command = [sys.executable, CONFORMANCE / "check.py", "--port", port]
    for need in ("registry", "window-tool", "shutdown"):
        command += ["--with", need]
    for name, value in expected.items():
        command += ["--expect", f"{name}={value}"]
    result = subprocess.run(command, stdout=subprocess.PIPE, text=True)
    print(result.stdout, end="")
    if " 0 skipped" not in result.stdout:
        sys.exit("Every example has to be run")
    return result.returncode


def main():
    with tempfile.TemporaryDirectory() as name:
        directory = pathlib.Path(name).resolve()
        executable, home = prepare(sys.argv[1], directory)
        environment = os.environ | {"HOME": str(home), "TMPDIR": f"{directory}/tmp"}
        with subprocess.Popen(
            [executable], cwd=directory, env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True
        ) as server:
            try:
                status = check(wait_for_port(server.stderr), home, directory)
            finally:
                server.terminate()
        if server.returncode != 0:
            sys.exit(f"The server ended with {server.returncode}")
    sys.exit(status)


if __name__ == "__main__":
    main()
