"""Peer for script/bench: the same protocol as Corvane for three commands, written as a Python
developer would: one asyncio loop, synchronous file access, one write for each reply.

Usage: python3 server.py [DIRECTORY]   (the working directory is changed to DIRECTORY)
"""

import asyncio
import os
import socket
import sys

ENTITIES = str.maketrans(
    {"&": "&amp;", "<": "&lt;", ">": "&gt;", '"': "&quot;", "'": "&apos;", "\0": ""}
)
# Only the case-blind order of ASCII letters: file names of the benchmark need no more.
SORT_KEYS = {code: code | 0x20 for code in range(256)}


def envelope(action, ok, hint, details):
    result = "SUCCESS" if ok else "FAILED"
    hint_text = f' hint="{hint}"' if hint else ""
    return (
        f'<CorvaneMsg><Header id="info" Type="RESULT" Action="{action}" Result="{result}"'
        f"{hint_text}>{details}</Header></CorvaneMsg>\0"
    )


def current_dir(action):
    directory = os.path.join(os.getcwd(), "")
    return envelope(action, True, action, f'<Detail id="value" extra="" Value="{directory}" />')


def read_text(action, path):
    with open(path, "rb") as file:
        text = file.read().decode("latin1").translate(ENTITIES)
    return envelope(action, True, "", f'<Detail id="text" extra="">{text}</Detail>')


def describe(entry):
    """Rank, sort key and reply text of one directory entry."""
    name = entry.name
    key = name.translate(SORT_KEYS)
    hidden = "h" if name.startswith(".") else ""
    if entry.is_dir(follow_symlinks=False):
        return 0, key, f'<Detail id="directory" extra="d{hidden}" Value="{name}/" />'
    read_only = "" if os.access(entry.path, os.W_OK) else "r"
    return 1, key, f'<Detail id="file" extra="{hidden}{read_only}" size="0" Value="{name}" />'


def list_dir(action, path):
    directory = os.path.join(path, "")
    with os.scandir(directory) as entries:
        details = sorted(describe(entry) for entry in entries)
    return envelope(action, True, directory, "".join(detail[2] for detail in details))


COMMANDS = {"currentDir": current_dir, "readText": read_text, "listDir": list_dir}


def reply(request):
    action, *parameters = request.split("\n")
    try:
        return COMMANDS[action](action, *parameters)
    except (KeyError, TypeError, OSError):
        return envelope(action, False, "", "")


class Client(asyncio.Protocol):
    """One connection. Texts travel as latin1, which passes every byte through unchanged."""

    def connection_made(self, transport):
        self.transport = transport
        self.pending = b""
        transport.get_extra_info("socket").setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)

    def data_received(self, data):
        *requests, self.pending = (self.pending + data).split(b"\0")
        for request in requests:
            self.transport.write(reply(request.decode("latin1")).encode("latin1"))


async def main():
    if len(sys.argv) > 1:
        os.chdir(sys.argv[1])
    loop = asyncio.get_running_loop()
    server = await loop.create_server(Client, "127.0.0.1", 0, backlog=128)
    print(f"Listening on 127.0.0.1:{server.sockets[0].getsockname()[1]}", flush=True)
    await server.serve_forever()


if __name__ == "__main__":
    asyncio.run(main())
