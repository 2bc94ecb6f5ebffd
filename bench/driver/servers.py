"""The contenders: each can be started in a scratch directory, be asked once, and be stopped.

All servers of a row are started with the same working directory, so that their replies to
currentDir are equal, and each in a session of its own, as services are: the system's scheduler may
treat a session as a group, and switching between groups costs time.
"""

import os
import shutil
import signal
import socket
import subprocess
import sys
import time
from contextlib import ExitStack, contextmanager
from pathlib import Path

import machine

LISTENING = "Listening on 127.0.0.1:"
START_SECONDS = 10
STOP_SECONDS = 10


class Server:
    """A process that listens on `port`; requests and replies end with `terminator`."""

    terminator = 0
    ping = "currentDir"
    expect = 'Result="SUCCESS"'

    def __init__(self, name, port, pid, child=None, directory=None):
        self.name = name
        self.port = port
        self.pid = pid
        self.child = child
        self.directory = directory

    def ask(self, request):
        """Sends one request on a connection of its own; the reply without its terminator."""
        end = bytes([self.terminator])
        with socket.create_connection(("127.0.0.1", self.port), timeout=120) as connection:
            connection.sendall(request.encode() + end)
            reply = bytearray()
            while not reply.endswith(end):
                received = connection.recv(1 << 20)
                if not received:
                    raise RuntimeError(f"{self.name} closed the connection")
                reply += received
        return bytes(reply[:-1])

    def stop(self):
        """What the server has written goes with it: the memory of its log serves the next one."""
        self.end()
        if self.directory:
            shutil.rmtree(self.directory)

    def end(self):
        if self.child:
            self.child.terminate()
            self.child.wait(STOP_SECONDS)
            return
        os.kill(self.pid, signal.SIGTERM)
        if not until(lambda: not machine.alive(self.pid), STOP_SECONDS):
            os.kill(self.pid, signal.SIGKILL)
            raise RuntimeError(f"{self.name} did not stop")


def until(condition, seconds):
    """Waits for the condition to hold; its value, or None when the time is over."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        value = condition()
        if value:
            return value
        time.sleep(0.005)
    return None


class Workshop:
    """Starts contenders. `programs` is the build directory, `scratch` a directory for this run."""

    def __init__(self, programs, scratch, sources):
        self.programs = programs
        self.scratch = scratch
        self.peers = sources / "bench" / "peers"
        self.current = scratch / "current"
        self.current.mkdir()
        self.count = 0

    def new_directory(self, name):
        self.count += 1
        directory = self.scratch / f"{name}{self.count}"
        directory.mkdir()
        return directory

    def install_corvane(self, settings):
        """A copy of the program with its configuration beside it, as it is installed."""
        program = self.new_directory("corvane") / "corvane"
        shutil.copy2(find_program(self.programs, "corvane"), program)
        text = "".join(f"{key}={value}\n" for key, value in settings.items())
        (program.parent / "corvane.conf").write_text(text)
        return program

    def corvane(self, core, priority="NOTICE"):
        """Detached, because only then it logs to its file alone."""
        settings = {"PORT": 0, "CONSOLE": "false", "log4cpp.priority": priority}
        program = self.install_corvane(settings)
        subprocess.run([program], cwd=self.current, preexec_fn=machine.pin(core),
                       stdout=subprocess.DEVNULL, check=True)
        port = until(lambda: port_in(program.parent / "cv0.log"), START_SECONDS)
        if not port:
            raise RuntimeError("corvane does not listen")
        return Server("ours", port, machine.process_of(program), directory=program.parent)

    def floor(self, core, mode, *options, name="floor"):
        command = [find_program(self.programs, "bench-floor"), mode, *options]
        return self.announced(name, command, core)

    def node(self, core):
        return self.announced("Node", ["node", self.peers / "server.mjs"], core)

    def asyncio(self, core):
        return self.announced("asyncio", [sys.executable, self.peers / "server.py"], core)

    def announced(self, name, command, core):
        """A server that prints the port on which it listens."""
        child = subprocess.Popen(command, cwd=self.current, stdout=subprocess.PIPE, text=True,
                                 preexec_fn=machine.pin(core), start_new_session=True)
        line = child.stdout.readline()
        if not line.startswith(LISTENING):
            raise RuntimeError(f"{name} does not listen: {line}")
        return Server(name, int(line[len(LISTENING):]), child.pid, child)

    def redis(self, core):
        port = machine.free_port()
        directory = self.new_directory("redis")
        child = subprocess.Popen(redis_command(port, directory), preexec_fn=machine.pin(core),
                                 start_new_session=True)
        server = Redis("redis", port, child.pid, child, directory)
        if not until(server.answers, START_SECONDS):
            raise RuntimeError("redis-server does not answer")
        return server

    def loop_floor(self, core, reply):
        """Answers everything with the given reply."""
        file = self.new_directory("floor") / "reply"
        file.write_bytes(reply)
        return self.floor(core, "loop", "--reply", str(file))


class Redis(Server):
    """Asked with the inline form of PING, so that the same load generator serves."""

    terminator = ord("\n")
    ping = "PING\r"
    expect = "+PONG"

    def answers(self):
        try:
            return self.ask(self.ping) == b"+PONG\r"
        except OSError:
            return False


def redis_command(port, directory):
    return ["/usr/bin/env", "redis-server", "--port", str(port), "--bind", "127.0.0.1", "--save",
            "", "--appendonly", "no", "--dir", str(directory), "--logfile", "redis.log"]


def find_program(programs, name):
    for path in (programs / "bench" / name, programs / name, programs / "src" / "app" / name,
                 programs / "bin" / name):
        if path.is_file():
            return path
    raise RuntimeError(f"{name} is not built in {programs}")


def port_in(log):
    """The port of the last "Listening on" line of the log, or None."""
    text = log.read_text(errors="replace") if log.exists() else ""
    if LISTENING not in text:
        return None
    digits = text.rsplit(LISTENING, 1)[1].split("\n", 1)
    return int(digits[0]) if len(digits) == 2 else None


@contextmanager
def running(*servers):
    """Stops the servers at the end, whatever happens; gives them by name."""
    with ExitStack() as stack:
        for server in servers:
            stack.callback(server.stop)
        yield {server.name: server for server in servers}


def require_equal_replies(servers, request):
    """The contenders are only comparable when they do the same work."""
    replies = {server.name: server.ask(request) for server in servers}
    first_name, first = next(iter(replies.items()))
    for name, reply in replies.items():
        if reply != first:
            raise RuntimeError(f"{name} and {first_name} answer {request!r} differently:\n"
                               f"{reply[:400]}\n{first[:400]}")
