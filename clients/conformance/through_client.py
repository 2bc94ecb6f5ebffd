"""Speaks to a server through a client library instead of a socket, and compares what the library makes
of each reply with the reply that docs/protocol.md prints.

The library is driven by a program: it reads one request a line, a JSON array of the command and its
parameters, and writes one outcome a line, a JSON object. Its "result" is "success" or the kind of the
failure; a success has "values", a list of texts: none, the one value, the four numbers of a rectangle,
or "kind attributes name" for each entry of a list. A failure has "errno" and "hint".
"""

import json
import re
import shlex
import subprocess

LONGEST_LINE = 1023  # bytes; a longer one reads as empty, so libraries do not send it
ENTITIES = {"&lt;": "<", "&gt;": ">", "&quot;": '"', "&apos;": "'", "&amp;": "&"}
DETAIL = re.compile(r'<Detail id="(\w+)" extra="(\w*)"(?: size="\w*")?(?:>([^<]*)</Detail>| Value="(.*?)" />)'
                    r'(?=<Detail id="|</Header></CorvaneMsg>$)', re.DOTALL)


def unescape(text):
    return re.sub("&[a-z]+;", lambda match: ENTITIES[match.group(0)], text)


def outcome_of(reply):
    """What a library has to make of a reply; of None, the end of the connection, a success."""
    if reply is None:
        return {"result": "success", "values": []}
    action, result = re.search(r'Action="([^"]*)" Result="(\w+)"', reply).groups()
    errno = re.search(r'Result="\w+" errno="(\d+)"', reply)
    hint = re.search(r'Result="\w+"(?: errno="\d+")? hint="(.*?)">(?=<Detail id="|</Header>)', reply, re.DOTALL)
    hint = hint.group(1) if hint else ""
    if result == "FAILED":
        return {"result": "refused", "errno": int(errno.group(1)) if errno else 0, "hint": hint}
    details = [(kind, extra, unescape(text) if text else value or "")
               for kind, extra, text, value in DETAIL.findall(reply)]
    if action in ("listDir", "listNet"):
        values = [" ".join(detail) for detail in details]
    else:
        values = [hint] if action == "makeDir" else [value for _, _, value in details]
    return {"result": "success", "values": values}


def can_send(text, commands):
    """Whether the methods of a library can be asked for this request."""
    name, *lines = text.split("\n")
    if name not in commands or name == "setWndPos" and not lines[0].isdigit():
        return False
    return name == "write" or all(len(line.encode()) <= LONGEST_LINE for line in lines)


class Client:
    """A library's program; use it as a context."""

    def __init__(self, command, host, port):
        self.process = subprocess.Popen([*shlex.split(command), host, str(port)], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True, encoding="utf-8", bufsize=1)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.stdout.close()
        self.process.wait()

    def ask(self, text):
        """The outcome of a request; raises OSError when the program has ended."""
        self.process.stdin.write(json.dumps(text.split("\n")) + "\n")
        line = self.process.stdout.readline()
        if not line:
            raise OSError("the client's program has ended")
        return json.loads(line)


def problem_of(outcome, expected):
    """What is wrong with an outcome, or an empty string; {any} in `expected` stands for any value."""
    wanted = outcome_of(expected)
    if any("{any}" in text for text in wanted.get("values", [])):
        right = outcome["result"] == "success" and len(outcome["values"]) == len(wanted["values"])
    else:
        right = outcome == wanted
    return "" if right else f"  expected {wanted}\n  got      {outcome}"
