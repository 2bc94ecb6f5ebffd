"""SAMEUSER=true with real users, and with a client in a network of its own. What needs the superuser,
or a tool that is not here, is left out with a reason.

Usage: same_user_test.py SERVER
"""
import os
import shutil
import socket
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parent.parent))
from support.server_process import PATIENCE, ServerProcess, ask, wait_until

SERVER = Path(sys.argv[1]).resolve()
KIOSK, STRANGER = 4321, 4322
SUCCESS = 'Result="SUCCESS"'


def exchange(port, host="127.0.0.1"):
    """All that a client gets for one request: nothing when it is refused."""
    try:
        with socket.socket() as connection:
            connection.settimeout(PATIENCE)
            connection.connect((host, port))
            return ask(connection, "userDir")
    except ConnectionError:
        return ""


class Client:
    """A process of this user that makes connections, one after the other, while this one goes on."""

    def __init__(self, user, port, count=1):
        self.reader, writer = os.pipe()
        self.process = os.fork()
        if self.process == 0:
            try:
                os.setgroups([])
                os.setresgid(user, user, user)
                os.setresuid(user, user, user)
                for _ in range(count):
                    os.write(writer, exchange(port).encode())
            finally:
                os._exit(0)
        os.close(writer)

    def is_done(self):
        return os.waitid(os.P_PID, self.process, os.WEXITED | os.WNOHANG | os.WNOWAIT) is not None

    def replies(self):
        """Of all its connections, when it has ended."""
        with open(self.reader, encoding="utf-8") as replies:
            text = replies.read()
        os.waitpid(self.process, 0)
        return text


def can(*command):
    return shutil.which(command[0]) and subprocess.run(command, capture_output=True).returncode == 0


@unittest.skipUnless(os.geteuid() == 0, "only the superuser can be several users")
class SameUserTest(unittest.TestCase):
    def start(self, configuration="SAMEUSER=true\n", wrapper=()):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        server = ServerProcess(scratch.name, SERVER, configuration, wrapper=wrapper)
        self.addCleanup(server.kill)
        return server

    def start_as_kiosk(self):
        change = ["setpriv", "--reuid", str(KIOSK), "--regid", str(KIOSK), "--clear-groups"]
        if not can(*change, "test", "-x", SERVER):
            self.skipTest("another user cannot run the server here")
        return self.start(wrapper=["sh", "-c", f'chmod 755 . && chown {KIOSK} program && exec "$@"',
                                   "sh", *change])

    def refusals(self, server):
        return [line for line in server.log().splitlines() if ": refused, " in line]

    def test_serves_its_own_user_and_root_and_no_other(self):
        server = self.start_as_kiosk()
        self.assertIn(SUCCESS, Client(KIOSK, server.port).replies())
        self.assertIn(SUCCESS, Client(0, server.port).replies())
        self.assertEqual(self.refusals(server), [])
        self.assertEqual(Client(STRANGER, server.port).replies(), "")
        self.assertRegex(self.refusals(server)[0],
                         rf"WARN,.*: refused, of user {STRANGER} \(\)$")

    def test_serves_on_while_hundreds_of_others_come(self):
        server = self.start()
        strangers = [Client(STRANGER, server.port, 200) for _ in range(3)]
        with server.connect() as own:
            served = 0
            while not all(client.is_done() for client in strangers):
                self.assertIn(SUCCESS, ask(own, "userDir"))
                served += 1
        self.assertEqual([client.replies() for client in strangers], [""] * 3)
        self.assertEqual(len(self.refusals(server)), 1)
        self.assertEqual(server.log().count("request data 'userDir'"), served)
        self.assertEqual(server.log().count("accepted connection from"), 1)

    def test_refuses_a_network_of_its_own(self):
        if not can("ip", "link") or not can("unshare", "--net", "ip", "link", "set", "lo", "up"):
            self.skipTest("no network namespaces here")
        server = self.start("SAMEUSER=true\nADDRESS=any\n", wrapper=["unshare", "--net"])
        other = subprocess.Popen(["unshare", "--net", "sleep", "1000"])
        self.addCleanup(other.wait)
        self.addCleanup(other.kill)  # before it is waited for
        wait_until(lambda: os.readlink(f"/proc/{other.pid}/ns/net") !=
                   os.readlink("/proc/self/ns/net"), "network")
        self.lay_cable(server.process.pid, other.pid)
        self.assertIn(SUCCESS, self.exchange_inside(server.process.pid, server.port))
        self.assertEqual(self.exchange_inside(other.pid, server.port), "")
        self.assertRegex(self.refusals(server)[0],
                         r"Client 10\.1\.2\.2:\d+: refused, its user cannot be told \(2\)$")

    def lay_cable(self, here, there):
        for process, command in (
                (here, f"link add cable type veth peer name cable netns {there}"),
                (here, "address add 10.1.2.1/24 dev cable"), (here, "link set cable up"),
                (here, "link set lo up"),
                (there, "address add 10.1.2.2/24 dev cable"), (there, "link set cable up")):
            subprocess.run(["nsenter", "--net", "--target", str(process), "ip", *command.split()],
                           check=True)

    def exchange_inside(self, process, port):
        return subprocess.run(
            ["nsenter", "--net", "--target", str(process), sys.executable, __file__, "--exchange",
             "10.1.2.1", str(port)], check=True, stdout=subprocess.PIPE, text=True).stdout

    def test_is_asked_for_by_a_key_only(self):
        server = self.start("")
        self.assertIn(SUCCESS, Client(STRANGER, server.port).replies())


if __name__ == "__main__":
    if sys.argv[1] == "--exchange":
        sys.stdout.write(exchange(int(sys.argv[3]), sys.argv[2]))
    else:
        unittest.main(argv=sys.argv[:1], verbosity=2)
