"""Runs the completion of bash, and corvanectl's own that stands behind it, with and without a server.

Usage: completion_test.py SERVER CORVANECTL COMPLETION
"""
import socket
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1]))
from support.server_process import ServerProcess

SERVER, CLIENT, COMPLETION = (Path(p).resolve() for p in sys.argv[1:4])


class CompletionTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.home = Path(scratch.name)
        self.dir = self.home / "dir"
        (self.dir / "some dir").mkdir(parents=True)
        for name in "some file", "other", ".hidden", "line\nend":
            (self.dir / name).touch()

    def start_server(self):
        server = ServerProcess(self.home, SERVER, work=self.dir)
        self.addCleanup(server.kill)
        return str(server.port)

    def complete(self, *words):
        result = subprocess.run([CLIENT, "--complete", *words], capture_output=True, text=True, timeout=60,
                                cwd=self.dir, check=False)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return result.stdout.splitlines()

    def test_offers_paths_of_the_server(self):
        port = self.start_server()
        for begin in [f"--port={port}"], ["-x", "-H", "localhost", "-p", port]:
            self.assertEqual(self.complete(*begin, "readText", f"{self.dir}/so"),
                             [f"{self.dir}/some dir/", f"{self.dir}/some file"])
        for command in ["listDir"], ["listDir", "-l"], ["makeDir"]:
            self.assertEqual(self.complete("-p", port, *command, f"{self.dir}/"), [f"{self.dir}/some dir/"])
        for command in ["copy", "a"], ["rename", "--replace", "a"], ["put", "a"], ["get"], ["delete"], ["readText"]:
            self.assertEqual(self.complete("-p", port, *command, "o"), ["other"])
        self.assertEqual(self.complete("-p", port, "readText", "."), [".hidden"])
        self.assertEqual(self.complete("-p", port, "readText", "none/x"), [])

    def test_offers_what_parameters_take(self):
        for words, expected in (["userDir", ""], ["desktop"]), (["copy", "a", "b", "t"], ["true"]), \
                (["log", "c", "E"], ["ERROR"]), (["setWndPos", ""], ["1", "2", "3"]), \
                (["regQueryValue", "HKEY_C"], ["HKEY_CLASSES_ROOT", "HKEY_CURRENT_USER", "HKEY_CURRENT_CONFIG"]), \
                (["help", "list"], ["listDir", "listNet"]), (["copy", "--"], ["--replace"]), \
                (["get", "--b"], ["--bytes"]), (["shut"], ["shutdown"]), (["he"], ["help"]), \
                (["--js"], ["--json"]), (["--port"], ["--port"]), (["--port", "5"], []), \
                (["regQueryValue", "HKEY_USERS", "/"], []), (["unheardOf", "x"], []), ([""], self.complete()):
            self.assertEqual(self.complete(*words), expected, words)

    def test_offers_files_of_this_machine(self):
        self.assertEqual(self.complete("put", "so"), ["some dir/", "some file"])

    def test_offers_nothing_and_says_nothing_without_a_server(self):
        listener = socket.create_server(("127.0.0.1", 0))
        port = str(listener.getsockname()[1])
        began = time.monotonic()
        self.assertEqual(self.complete("-p", port, "readText", "/"), [])
        self.assertLess(time.monotonic() - began, 20)
        listener.close()
        self.assertEqual(self.complete("-p", port, "readText", "/"), [])
        self.assertEqual(self.complete("-p", "none", "-H", "", "readText", "/"), [])

    def in_bash(self, *lines):
        script = f"""
            PATH={CLIENT.parent}:$PATH; cd '{self.dir}'; . '{COMPLETION}'
            complete_words() {{
              COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _corvanectl; (IFS='|'; echo "${{COMPREPLY[*]}}")
            }}
        """ + "\n".join(f"complete_words corvanectl {line}" for line in lines)
        result = subprocess.run(["bash", "--norc", "-c", script], capture_output=True, text=True, timeout=60,
                                check=True)
        self.assertEqual(result.stderr, "")
        return result.stdout.splitlines()

    def test_works_in_bash(self):
        port = self.start_server()
        self.assertEqual(
            self.in_bash("userD", f"--port = {port} readText some", f"-p {port} readText 'some\\ f'",
                         f"-p {port} readText '\"some f'", "put some", "userDir ''", "copy --", "--xm"),
            ["userDir", "some dir/|some file", "some file", "some file", "some dir/|some file", "desktop",
             "--replace", "--xml"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
