#!/usr/bin/env python3
"""Sends the examples of docs/protocol.md to a server and compares the replies byte for byte.

It needs Python 3 and nothing else. All files that the examples use are in one directory, which is
made through the server at the start and deleted at the end.
"""

import argparse
import contextlib
import pathlib
import re
import secrets
import socket
import sys
from dataclasses import dataclass, field

from through_client import Client, can_send, problem_of

TIMEOUT = 10  # seconds for a reply, and for the end of a connection
LONG_LINE = "x" * 1024
ESCAPES = {"\\0": "\0", "\\1": "\1", "\\r": "\r", "\\n": "\n"}
PROTOCOL = pathlib.Path(__file__).resolve().parents[2] / "docs" / "protocol.md"


@dataclass
class Example:
    """A request and what must come back for it."""

    line: int  # in the document
    request: str
    raw: bool = False  # escapes stand for line ends and terminators; nothing is added
    needs: list = field(default_factory=list)
    replies: list = field(default_factory=list)
    closes: bool = False  # after the replies the server ends the connection


def blocks(document):
    """Yields (line number, info words, text) for each fenced block."""
    fence = re.compile(r"^```(.*)\n((?:(?!```).*\n)*?)```$", re.MULTILINE)
    for match in fence.finditer(document):
        line = document.count("\n", 0, match.start()) + 1
        yield line, match.group(1).split(), match.group(2)[:-1]


def read_examples(document):
    examples = []
    for line, info, text in blocks(document):
        kind = info[0] if info else ""
        if kind == "request":
            needs = [word.removeprefix("needs=") for word in info if word.startswith("needs=")]
            examples.append(Example(line, text, "raw" in info, needs))
        elif kind == "reply":
            examples[-1].replies.append(text)
        elif kind == "closed":
            examples[-1].closes = True
    return examples


class Server:
    """A connection that is made when it is needed."""

    def __init__(self, host, port):
        self.address = (host, port)
        self.socket = None
        self.pending = b""

    def send(self, data):
        if self.socket is None:
            self.socket = socket.create_connection(self.address, TIMEOUT)
            self.pending = b""
        self.socket.sendall(data)

    def receive(self):
        """The next reply without its terminator; None when the server ended the connection."""
        while b"\0" not in self.pending:
            try:
                data = self.socket.recv(65536)
            except ConnectionResetError:
                data = b""
            if not data:
                self.close()
                return None
            self.pending += data
        reply, _, self.pending = self.pending.partition(b"\0")
        return reply.decode("utf-8", "replace")

    def ask(self, text):
        self.send(text.encode() + b"\0")
        return self.receive()

    def close(self):
        self.socket.close()
        self.socket = None


def value_of(reply):
    """The value of a reply's only detail."""
    found = re.search(r' Value="(.*)" /></Header>', reply or "", re.DOTALL)
    if not found:
        sys.exit(f"No value in this reply: {reply}")
    return found.group(1)


def learn(server, given):
    """What the placeholders stand for; `given` wins over what the server says."""
    known = {
        "home": value_of(server.ask("userDir")),
        "tmp": value_of(server.ask("tempDir")),
        "cwd": value_of(server.ask("currentDir")),
        "long": LONG_LINE,
    }
    known |= given
    known["dir"] = f"{known['tmp']}corvane-check-{secrets.token_hex(6)}"
    return known


def fill(text, known):
    return re.sub(r"\{(\w+)\}", lambda match: known.get(match.group(1), match.group(0)), text)


def wire(example, known):
    text = fill(example.request, known)
    if not example.raw:
        return text.encode() + b"\0"
    joined = text.replace("\n", "")
    return re.sub(r"\\[01rn]", lambda match: ESCAPES[match.group(0)], joined).encode()


def matches(reply, expected, known):
    if reply is None:
        return False
    parts = fill(expected, known).split("{any}")
    return re.fullmatch("[^\"]*".join(map(re.escape, parts)), reply) is not None


def run(example, server, known, client):
    """Returns what is wrong, or an empty string."""
    if client is not None:
        expected = None if example.closes else fill(example.replies[0], known)
        return problem_of(client.ask(fill(example.request, known)), expected)
    server.send(wire(example, known))
    for expected in example.replies:
        reply = server.receive()
        if not matches(reply, expected, known):
            if server.socket is not None:
                server.close()
            return f"  expected {fill(expected, known)}\n  got      {reply}"
    if example.closes:
        reply = server.receive()
        if reply is not None:
            return f"  expected the end of the connection\n  got      {reply}"
    elif server.pending:
        return f"  there is more than the reply: {server.pending!r}"
    return ""


def obstacle(example, known, prepared, commands):
    """Why an example cannot be run, or an empty string; `commands` is None without a client."""
    missing = [need for need in example.needs if need not in prepared]
    if missing:
        return f"needs {', '.join(missing)}"
    if commands is not None and (example.raw or not can_send(fill(example.request, known), commands)):
        return "no call of a client"
    return ""


def check(examples, server, known, prepared, client=None, commands=None):
    """Runs the examples that can be run; returns the numbers of passed, failed and skipped ones."""
    passed, failed, skipped = 0, 0, 0
    for example in examples:
        title = f"line {example.line}: {example.request.splitlines()[0] if example.request else ''}"
        reason = obstacle(example, known, prepared, commands)
        if reason:
            print(f"skip  {title} ({reason})")
            skipped += 1
            continue
        try:
            problem = run(example, server, known, client)
        except OSError as error:
            problem = f"  {error}"
            server.socket = None
        print(f"{'FAIL' if problem else 'ok  '}  {title}")
        if problem:
            print(problem)
        passed, failed = passed + (not problem), failed + bool(problem)
    return passed, failed, skipped


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--host", default="127.0.0.1")
    parser.add_argument("--port", type=int, default=54321)
    parser.add_argument("--document", type=pathlib.Path, default=PROTOCOL, help="where the examples are")
    parser.add_argument(
        "--with", dest="prepared", action="append", default=[], choices=["registry", "window-tool", "shutdown"],
        help="run the examples that need this as well (see the end of the document); can be repeated",
    )
    parser.add_argument(
        "--expect", action="append", default=[], metavar="NAME=VALUE",
        help="what {home}, {tmp} or {cwd} must be, instead of what the server says",
    )
    parser.add_argument(
        "--client", metavar="COMMAND",
        help="check a client library: send what its methods can send through a program that drives it, "
        "started with host and port behind COMMAND (see through_client.py)",
    )
    return parser.parse_args()


def check_all(document, server, known, arguments):
    """Those that end the server come last, when the directory of the examples is gone."""
    examples = read_examples(document)
    last = [example for example in examples if "shutdown" in example.needs]
    rest = [example for example in examples if example not in last]
    with contextlib.ExitStack() as stack:
        through = ()
        if arguments.client:
            client = stack.enter_context(Client(arguments.client, arguments.host, arguments.port))
            through = (client, {"shutdown", *re.findall(r"^### (\w+)$", document, re.MULTILINE)})
        counts = check(rest, server, known, arguments.prepared, *through)
        server.ask("delete\n" + known["dir"])
        return [sum(pair) for pair in zip(counts, check(last, server, known, arguments.prepared, *through))]


def main():
    arguments = parse_arguments()
    server = Server(arguments.host, arguments.port)
    try:
        known = learn(server, dict(pair.split("=", 1) for pair in arguments.expect))
        server.ask("makeDir\n" + known["dir"])
    except OSError as error:
        sys.exit(f"No server at {arguments.host}:{arguments.port}: {error}")
    counts = check_all(arguments.document.read_text(encoding="utf-8"), server, known, arguments)
    print("{} passed, {} failed, {} skipped".format(*counts))
    return 1 if counts[1] or not counts[0] else 0


if __name__ == "__main__":
    sys.exit(main())
