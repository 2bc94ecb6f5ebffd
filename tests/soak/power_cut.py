#!/usr/bin/env python3
"""Moves files on a disk of its own and takes the power away: right after the reply, once the disk
has been told of everything that it would have been told of some seconds later anyway, which are
the names, but not yet the contents. Then every file has to be there, at its old or its new name.

Says why it skips where it may not make a disk (that takes root and a loop device)."""

import argparse
import fcntl
import os
import struct
import subprocess
import sys
import tempfile
import time
from contextlib import ExitStack
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1]))
from support.server_process import ServerProcess, ask

DISK_SIZE = 256 << 20
SHUTDOWN = 0x8004587D  # EXT4_IOC_SHUTDOWN
LOSE_THE_LOG = struct.pack("I", 2)  # EXT4_GOING_FLAGS_NOLOGFLUSH
SIZES = (1, 4096, 100_000, 20_000_000)


class Skip(Exception):
    """The reason why this machine cannot do it."""


def run(*command):
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    if result.returncode:
        raise Skip(f"{command[0]}: {result.stderr.strip()}")


class Disk:
    """An ext4 file system in a file, on a mount point of its own."""

    def __init__(self, directory):
        self.image, self.place = directory / "image", directory / "disk"
        self.place.mkdir()
        with self.image.open("wb") as image:
            image.truncate(DISK_SIZE)
        run("mkfs.ext4", "-q", "-F", str(self.image))
        self.mount()

    def mount(self):
        run("mount", "-o", "loop", str(self.image), str(self.place))

    def unmount(self):
        subprocess.run(["umount", str(self.place)], check=False, capture_output=True)

    def commit_names(self):
        """What the file system does by itself every five seconds: to sync one file commits its log,
        but writes no other file's contents."""
        with (self.place / "other").open("w") as other:
            other.write("x")
            other.flush()
            os.fsync(other.fileno())

    def cut_power(self):
        directory = os.open(self.place, os.O_RDONLY)
        try:
            fcntl.ioctl(directory, SHUTDOWN, LOSE_THE_LOG)
        except OSError as error:
            raise Skip(f"the file system cannot be shut down: {error}") from error
        finally:
            os.close(directory)
        self.unmount()
        self.mount()


class Server(ServerProcess):
    """With one connection for all requests."""

    def __init__(self, directory, executable):
        super().__init__(directory, executable, environment={"HOME": str(directory)})
        self.connection = self.connect()

    def succeeds(self, *lines):
        """Whether the request succeeded."""
        reply = ask(self.connection, "\n".join(map(str, lines)))
        if not reply:
            raise RuntimeError("the server closed the connection")
        return ' Result="SUCCESS"' in reply

    def stop(self):
        self.connection.close()
        return super().stop()


def move_through_a_cut(server, disk, size):
    """Returns what is wrong, or None."""
    contents = (os.urandom(1 << 16) * (size // (1 << 16) + 1))[:size]
    source, target = disk.place / f"from{size}", disk.place / f"to{size}"
    source.write_bytes(contents)
    os.sync()
    if not server.succeeds("rename", source, target):
        return f"{size} bytes: the move failed"
    disk.commit_names()
    disk.cut_power()
    if any(place.exists() and place.read_bytes() == contents for place in (source, target)):
        return None
    return f"{size} bytes: the data is lost"


def milliseconds(action, repetitions):
    times = []
    for nth in range(repetitions):
        start = time.monotonic()
        action(nth)
        times.append((time.monotonic() - start) * 1000)
    return sorted(times)[len(times) // 2]


def costs(server, disk, size):
    """What a move costs beside a copy and a removal, which wait for no disk."""
    source = disk.place / "cost"
    source.write_bytes(b"x" * size)
    names = [source, disk.place / "cost2"]

    def copy_and_delete(nth):
        server.succeeds("copy", names[nth % 2], names[1 - nth % 2], "true", "", "")
        server.succeeds("delete", names[nth % 2])

    loose = milliseconds(copy_and_delete, 20)
    safe = milliseconds(lambda nth: server.succeeds("rename", names[nth % 2], names[1 - nth % 2]), 20)
    return f"{size} bytes {safe:.1f} ms (copy and delete {loose:.1f} ms)"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--server", required=True, help="the server's executable")
    arguments = parser.parse_args()
    try:
        if os.geteuid() != 0:
            raise Skip("only root may mount a disk")
        with tempfile.TemporaryDirectory(prefix="corvane-power-") as name, ExitStack() as ends:
            directory = Path(name)
            disk = Disk(directory)
            ends.callback(disk.unmount)
            server = Server(directory, arguments.server)
            ends.callback(server.stop)
            problems = [problem for size in SIZES if (problem := move_through_a_cut(server, disk, size))]
            print(f"power cut           {len(SIZES)} moves,", *problems or ["nothing lost"])
            if not problems:
                print("                    a move of", ", of ".join(costs(server, disk, size) for size in SIZES))
            return 1 if problems else 0
    except Skip as reason:
        print(f"power cut           skipped: {reason}")
        return 0


if __name__ == "__main__":
    sys.exit(main())
