#!/usr/bin/env python3
"""conformance_test.py SERVER [CLIENT]: runs the examples of docs/protocol.md against the real executable.

The server has a directory, a home directory and a port of its own, so every placeholder is known. With
CLIENT, the command of a program that drives a client library, they are run through that library.
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


def complaint(output, client):
    """What has not been run and should have been, or an empty string."""
    if not client:
        return "" if " 0 skipped" in output else "Every example has to be run"
    commands = {"shutdown", *re.findall(r"^### (\w+)$", PROTOCOL.read_text("utf-8"), re.MULTILINE)}
    called = set(re.findall(r"^ok    line \d+: (\w+)$", output, re.MULTILINE))
    skips = re.findall(r"^skip  .* \((.*)\)$", output, re.MULTILINE)
    if commands != called:
        return f"No example has been run of: {', '.join(sorted(commands - called))}"
    return "" if set(skips) == {"no call of a client"} else "Every call has to be made"


def check(port, home, directory, client):
    expected = {"home": home, "tmp": f"{directory}/tmp/", "cwd": f"{directory}/"}
    command = [sys.executable, CONFORMANCE / "check.py", "--port", port]
    for need in ("registry", "window-tool", "shutdown"):
        command += ["--with", need]
    for name, value in expected.items():
        command += ["--expect", f"{name}={value}"]
    if client:
        command += ["--client", client]
    result = subprocess.run(command, stdout=subprocess.PIPE, text=True)
    print(result.stdout, end="")
    return result.returncode or complaint(result.stdout, client) or 0


def main():
    with tempfile.TemporaryDirectory() as name:
        directory = pathlib.Path(name).resolve()
        home = prepare(directory)
        tool = (CONFORMANCE / "cvnwinfo").read_text("utf-8")
        with ServerProcess(
            directory, sys.argv[1], "log4cpp.priority=NOTICE\n", files={"cvnwinfo": tool},
            environment={"HOME": str(home), "TMPDIR": f"{directory}/tmp"}
        ) as server:
            status = check(str(server.port), home, directory, " ".join(sys.argv[2:]))
            if not server.ended():
                server.stop()
        if server.process.returncode != 0:
            sys.exit(f"The server ended with {server.process.returncode}")
    sys.exit(status)


if __name__ == "__main__":
    main()
