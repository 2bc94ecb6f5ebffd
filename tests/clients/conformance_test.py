#!/usr/bin/env python3
"""conformance_test.py SERVER: runs the examples of docs/protocol.md against the real executable.

The server has a directory, a home directory and a port of its own, so every placeholder is known.
"""

import pathlib
import re
import subprocess
import sys
import tempfile

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1]))
from support.server_process import ServerProcess

ROOT = pathlib.Path(__file__).resolve().parents[2]
CONFORMANCE = ROOT / "clients" / "conformance"
PROTOCOL = ROOT / "docs" / "protocol.md"


def prepare(directory):
    """Fills the directory; returns the home directory."""
    home = directory / "home"
    for made in (home / ".corvane", home / "Desktop", directory / "tmp"):
        made.mkdir(parents=True)
    registry = re.search(r"^```registry\n(.*?)^```$", PROTOCOL.read_text("utf-8"), re.MULTILINE | re.DOTALL)
    (home / ".corvane" / "registry.txt").write_text(registry.group(1))
    return home


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
        home = prepare(directory)
        tool = (CONFORMANCE / "cvnwinfo").read_text("utf-8")
        with ServerProcess(
            directory, sys.argv[1], "log4cpp.priority=NOTICE\n", files={"cvnwinfo": tool},
            environment={"HOME": str(home), "TMPDIR": f"{directory}/tmp"}
        ) as server:
            status = check(str(server.port), home, directory)
            if not server.ended():
                server.stop()
        if server.process.returncode != 0:
            sys.exit(f"The server ended with {server.process.returncode}")
    sys.exit(status)


if __name__ == "__main__":
    main()
