"""Runs corvanectl against the real server: what users see, exit statuses, shell completion.

Usage: end_to_end_test.py SERVER CORVANECTL COMPLETION
"""
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1]))
from support.server_process import ServerProcess

SERVER, CLIENT, COMPLETION = (Path(p).resolve() for p in sys.argv[1:4])


class CorvanectlTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.home = Path(scratch.name)
        (self.home / "Desktop").mkdir()
        self.server = ServerProcess(self.home, SERVER, "log4cpp.priority=NOTICE\n",
                                    environment={"HOME": str(self.home)})
        self.addCleanup(self.server.kill)
        self.port = str(self.server.port)

    def run_client(self, *arguments, data=b""):
        return subprocess.run([CLIENT, "--port", self.port, *arguments], input=data,
                              capture_output=True, timeout=60, check=False)

    def expect(self, status, output, *arguments, data=b""):
        result = self.run_client(*arguments, data=data)
        self.assertEqual((result.returncode, result.stdout), (status, output), result.stderr)
        return result.stderr.decode()

    def test_prints_the_value_of_a_query(self):
        self.expect(0, f"{self.home}\n".encode(), "userDir")
        self.expect(0, f"{self.home}/Desktop\n".encode(), "userDir", "desktop")

    def test_writes_and_reads_a_file_byte_for_byte(self):
        data = b"\r\n<b attr=\"1\">'&amp;'\xff\n"
        name = str(self.home / "-file")
        self.expect(0, b"", "write", name, data=data)
        self.assertEqual((self.home / "-file").read_bytes(), data)
        self.expect(0, data, "readText", name)

    def test_lists_a_directory_by_names(self):
        (self.home / "dir" / "sub").mkdir(parents=True)
        (self.home / "dir" / "a\"<b>").touch()
        self.expect(0, b"sub/\na\"<b>\n", "listDir", str(self.home / "dir"))

    def test_prints_the_raw_reply_on_demand(self):
        self.expect(1, b'<CorvaneMsg><Header id="info" Type="RESULT" Action="clipboardGet" '
                       b'Result="FAILED" hint="clipboardGet"></Header></CorvaneMsg>\n',
                    "--xml", "clipboardGet")

    def test_tells_why_a_command_failed(self):
        missing = str(self.home / "missing" / "x")
        self.assertIn("error 2", self.expect(1, b"", "write", missing))
        self.assertIn(missing, self.expect(1, b"", "makeDir", missing))

    def test_stops_the_server(self):
        self.expect(0, b"", "shutdown")
        self.assertEqual(self.server.wait_for_end(), 0)
        self.assertIn("cannot connect", self.expect(2, b"", "userDir"))

    def test_sends_nothing_that_would_break_the_request(self):
        name = str(self.home / "file")
        self.expect(2, b"", "write", name, data=b"a\x01")
        self.assertFalse(Path(name).exists())
        self.expect(2, b"", "readText", "a\nb")
        self.expect(2, b"", "unheardOf")

    def test_sends_nothing_when_its_input_cannot_be_read(self):
        file = self.home / "file"
        file.write_bytes(b"kept")
        for redirection, reason in ("< /", "Is a directory"), ("<&-", "Bad file descriptor"):
            script = f'exec "$0" --port {self.port} write "$1" {redirection}'
            result = subprocess.run(["sh", "-c", script, CLIENT, file], capture_output=True,
                                    text=True, timeout=60, check=False)
            self.assertEqual((result.returncode, result.stdout), (2, ""))
            self.assertEqual(result.stderr, f"corvanectl: cannot read standard input: {reason}\n")
            self.assertEqual(file.read_bytes(), b"kept")

    @unittest.skipUnless(os.path.exists("/dev/full"), "this system has no /dev/full")
    def test_fails_when_its_output_cannot_be_written(self):
        query = ["--port", self.port, "userDir"]
        for arguments in ["--help"], ["--version"], ["--complete"], query, ["--xml", *query]:
            with open("/dev/full", "wb") as full:
                result = subprocess.run([CLIENT, *arguments], stdout=full, stderr=subprocess.PIPE,
                                        timeout=60, check=False)
            self.assertEqual((result.returncode, result.stderr),
                             (2, b"corvanectl: cannot write to standard output\n"))

    def test_answers_help_and_version_without_a_server(self):
        for option, text in ("--help", b"Usage: corvanectl"), ("--version", b"corvanectl "):
            result = subprocess.run([CLIENT, option], capture_output=True, check=True)
            self.assertTrue(result.stdout.startswith(text))

    def test_completes_commands_options_and_files(self):
        (self.home / "some file").touch()
        script = f"""
            PATH={CLIENT.parent}:$PATH; cd '{self.home}'; . '{COMPLETION}'
            complete_words() {{
              COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _corvanectl; echo "${{COMPREPLY[*]}}"
            }}
            complete_words corvanectl userD
            complete_words corvanectl --host localhost shut
            complete_words corvanectl -H localhost -p 1 -t 5 --port 1 --timeout 5 -x shut
            complete_words corvanectl --host = localhost -t = 5 shut
            complete_words corvanectl --port =
            complete_words corvanectl --timeout = 5
            complete_words corvanectl --p
            complete_words corvanectl put some
        """
        result = subprocess.run(["bash", "--norc", "-c", script], capture_output=True, text=True,
                                check=True)
        self.assertEqual(result.stdout.splitlines(),
                         ["userDir", *["shutdown"] * 3, "", "", "--port", "some file"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
