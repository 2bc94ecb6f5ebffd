"""Runs "corvanectl copy --replace" and "rename --replace": the target is replaced as a whole, and no
contents are lost, whatever is refused or fails.

Usage: replace_test.py SERVER CORVANECTL
"""
import os
import socket
import subprocess
import sys
import tempfile
import threading
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1]))
from support.server_process import ServerProcess

SERVER, CLIENT = (Path(p).resolve() for p in sys.argv[1:3])
SUCCESS = b'<CorvaneMsg><Header id="info" Type="RESULT" Action="%s" Result="SUCCESS"></Header></CorvaneMsg>\0'
REPLACING = "copy", "rename"


class Relay:
    """Stands between client and server, and answers FAILED in the server's place where `fails`
    says so; notes all requests."""

    def __init__(self, port, fails):
        self.port, self.fails, self.requests = port, fails, []
        self.listener = socket.create_server(("127.0.0.1", 0))
        threading.Thread(target=self.serve, daemon=True).start()

    def serve(self):
        client, _ = self.listener.accept()
        with client, socket.create_connection(("127.0.0.1", self.port)) as server:
            for request in iter(lambda: self.read(client), b""):
                self.requests.append(request[:-1].decode().splitlines())
                if self.fails(self.requests):
                    client.sendall(SUCCESS.replace(b"SUCCESS", b"FAILED") % request.split(b"\n")[0])
                else:
                    server.sendall(request)
                    client.sendall(self.read(server))

    @staticmethod
    def read(peer):
        data = b""
        while not data.endswith(b"\0"):
            piece = peer.recv(65536)
            if not piece:
                return b""
            data += piece
        return data


class ReplaceTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.home = Path(scratch.name)
        self.dir = self.home / "dir"
        self.dir.mkdir()
        self.source, self.target = self.dir / "source", self.dir / "target"
        self.source.write_text("abc")
        self.target.write_text("12345")
        self.server = ServerProcess(self.home, SERVER)
        self.addCleanup(self.server.kill)

    def replace(self, command, source=None, target=None, port=None):
        result = subprocess.run(
            [CLIENT, "--port", str(port or self.server.port), command, "--replace", source or self.source,
             target or self.target], stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60,
            check=False)
        self.assertEqual(result.stdout, "")
        return result.returncode, result.stderr.removeprefix("corvanectl: ").removesuffix("\n")

    def contents(self):
        return {path.name: path.read_text() for path in self.dir.iterdir() if path.is_file()}

    def expect_refusal(self, message, *arguments):
        before = self.contents()
        for command in REPLACING:
            status, text = self.replace(command, *arguments)
            self.assertEqual((status, text), (2, message))
            self.assertEqual(self.contents(), before)

    def test_copies_over_a_longer_file_without_its_tail(self):
        self.assertEqual(self.replace("copy"), (0, ""))
        self.assertEqual(self.contents(), {"source": "abc", "target": "abc"})

    def test_moves_over_a_longer_file_without_its_tail(self):
        self.assertEqual(self.replace("rename"), (0, ""))
        self.assertEqual(self.contents(), {"target": "abc"})

    def test_leaves_the_tail_without_it(self):
        subprocess.run([CLIENT, "--port", str(self.server.port), "copy", self.source, self.target], check=True)
        self.assertEqual(self.target.read_text(), "abc45")

    def test_copies_to_a_name_that_is_free(self):
        self.target.unlink()
        self.assertEqual(self.replace("copy"), (0, ""))
        self.assertEqual(self.contents(), {"source": "abc", "target": "abc"})

    def test_replaces_empty_files_by_empty_files(self):
        self.source.write_text("")
        self.target.write_text("")
        self.assertEqual(self.replace("copy"), (0, ""))
        self.assertEqual(self.contents(), {"source": "", "target": ""})

    def test_puts_a_file_into_a_directory(self):
        (self.dir / "sub").mkdir()
        (self.dir / "sub" / "source").write_text("12345")
        self.assertEqual(self.replace("copy", target=self.dir / "sub"), (0, ""))
        self.assertEqual((self.dir / "sub" / "source").read_text(), "abc")

    def test_refuses_a_file_by_all_its_names(self):
        (self.dir / "link").symlink_to(self.source)
        (self.dir / "hard").hardlink_to(self.source)
        (self.home / "other").symlink_to(self.dir)
        for name in (self.source, f"{self.dir}/./../dir//source", self.dir / "link", self.dir / "hard",
                     self.home / "other" / "source", str(self.source).replace("/", "\\"), self.dir):
            seen = f"{name}/source" if name == self.dir else str(name).replace("\\", "/")
            self.expect_refusal(f"'{self.source}' and '{seen}' are the same file", None, name)

    def test_refuses_directories(self):
        (self.dir / "sub" / "source").mkdir(parents=True)
        self.expect_refusal(f"'{self.dir}' is a directory, --replace is for files", self.dir)
        self.expect_refusal(f"'{self.dir}/sub/source' is a directory, which is not deleted", None, self.dir / "sub")

    def test_refuses_a_source_that_is_not_there(self):
        self.expect_refusal(f"'{self.dir}/none' cannot be read", self.dir / "none")

    def test_refuses_a_target_that_is_no_file(self):
        os.mkfifo(self.dir / "pipe")
        (self.dir / "dangling").symlink_to("nowhere")
        for name in "pipe", "dangling", "missing/x":
            self.expect_refusal(f"what '{self.dir}/{name}' is cannot be told, it is not deleted", None, self.dir / name)

    def test_refuses_names_that_the_server_would_change(self):
        self.expect_refusal(f"'{self.dir}/targ?et' has \"?\" or \"*\", which the server drops from names",
                            None, self.dir / "targ?et")

    def fail_at(self, command, name, counted=1):
        """The message when the request fails whose command is this one, the `counted`-th of its kind."""
        def fails(requests):
            return requests[-1][0] == name and sum(r[0] == name for r in requests) == counted

        relay = Relay(self.server.port, fails)
        self.addCleanup(relay.listener.close)
        status, text = self.replace(command, port=relay.listener.getsockname()[1])
        self.assertEqual(status, 1)
        return text

    def test_changes_nothing_when_the_first_step_fails(self):
        for command in REPLACING:
            self.assertEqual(self.fail_at(command, command), f"{command}: FAILED, nothing was changed")
            self.assertEqual(self.contents(), {"source": "abc", "target": "12345"})

    def test_changes_nothing_when_the_target_cannot_be_deleted(self):
        for command in REPLACING:
            self.assertEqual(self.fail_at(command, "delete"),
                             f"{command}: '{self.target}' cannot be deleted, nothing was changed")
            self.assertEqual(self.contents(), {"source": "abc", "target": "12345"})

    def test_says_where_the_contents_are_when_the_last_step_fails(self):
        for command, counted in ("copy", 1), ("rename", 2):
            self.source.write_text("abc")
            self.target.write_text("12345")
            text = self.fail_at(command, "rename", counted)
            left = next(name for name in self.contents() if name.startswith(".corvanectl-"))
            self.assertEqual(text, f"{command}: the file could not get the name '{self.target}', it is "
                             f"'{self.dir}/{left}' now")
            self.assertEqual((self.dir / left).read_text(), "abc")
            (self.dir / left).unlink()


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
