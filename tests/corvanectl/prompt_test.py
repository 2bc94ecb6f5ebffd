"""Runs corvanectl's prompt on a terminal, against the real server.

Usage: prompt_test.py SERVER CORVANECTL EDITOR
EDITOR is "libedit", or "plain" for a build without it.
"""
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1]))
from on_terminal import OnTerminal
from support.server_process import ServerProcess

SERVER, CLIENT = (Path(p).resolve() for p in sys.argv[1:3])
EDITED = sys.argv[3] == "libedit"
PROMPT = "corvanectl> "


class PromptTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.home = Path(scratch.name)
        (self.home / "dir" / "some dir").mkdir(parents=True)
        (self.home / "dir" / "file").write_text("here\n")
        self.server = ServerProcess(self.home, SERVER, environment={"LC_ALL": "C.UTF-8"})
        self.addCleanup(self.server.kill)
        self.history = self.home / "state" / "corvanectl_history"
        self.history.parent.mkdir()

    def prompt(self, **environment):
        environment = {"HOME": str(self.home), "XDG_STATE_HOME": str(self.history.parent)} | environment
        terminal = OnTerminal([CLIENT, "--port", str(self.server.port)], environment=environment, cwd=self.home)
        self.addCleanup(terminal.__exit__)
        terminal.expect(PROMPT)
        return terminal

    def run_line(self, terminal, line):
        """What is printed between the line and the next prompt."""
        terminal.type(line + "\n")
        terminal.expect("\n")
        return terminal.expect(PROMPT).removesuffix(PROMPT).removeprefix("\r")

    def test_runs_commands_until_exit(self):
        terminal = self.prompt()
        self.assertEqual(self.run_line(terminal, "readText dir/file"), "here\n")
        self.assertEqual(self.run_line(terminal, "listdir /"),
                         "corvanectl: unknown command 'listdir', did you mean listDir?\n")
        self.assertTrue(self.run_line(terminal, "help userDir").startswith("Usage: corvanectl userDir [which]\n"))
        self.assertIn("directory", self.run_line(terminal, "-l listDir dir"))
        terminal.type("exit\n")
        self.assertEqual(terminal.rest()[1], 0)

    def test_takes_quit_for_exit(self):
        terminal = self.prompt()
        terminal.type("quit\n")
        self.assertEqual(terminal.rest()[1], 0)

    def test_ends_with_the_input_and_the_status_of_the_last_command(self):
        terminal = self.prompt()
        self.run_line(terminal, "readText none")
        terminal.type("\x04")
        self.assertEqual(terminal.rest()[1], 1)

    def test_takes_quotes_as_a_shell_does(self):
        terminal = self.prompt()
        for line in "makeDir 'dir/a b'", 'makeDir "dir/c\\"d"', "makeDir dir/e\\ f":
            self.assertEqual(self.run_line(terminal, line), "")
        self.assertEqual(sorted(os.listdir(self.home / "dir")), ["a b", 'c"d', "e f", "file", "some dir"])
        self.assertEqual(self.run_line(terminal, "makeDir 'dir"), "corvanectl: a quote is not closed\n")

    def test_drops_a_line_with_ctrl_c(self):
        terminal = self.prompt()
        terminal.type("delete dir")
        terminal.expect("delete dir")
        terminal.type("\x03")
        self.assertEqual(terminal.expect(PROMPT), "^C\n" + PROMPT)
        self.assertEqual(self.run_line(terminal, "readText dir/file"), "here\n")

    @unittest.skipUnless(EDITED, "this build reads lines without libedit")
    def test_completes_commands_and_paths_of_the_server(self):
        terminal = self.prompt()
        self.assertEqual(self.run_line(terminal, "readT\tdir/fi\t"), "here\n")
        self.run_line(terminal, "makeDir dir/\tnew")
        self.assertEqual(os.listdir(self.home / "dir" / "some dir"), ["new"])
        terminal.type("list\t")
        terminal.expect("listDir  listNet\n")

    @unittest.skipUnless(EDITED, "this build reads lines without libedit")
    def test_repeats_lines_of_this_time_and_the_last(self):
        terminal = self.prompt()
        self.run_line(terminal, "readText dir/file")
        terminal.type("\x1b[A\n")
        terminal.expect("here\n")
        terminal.expect(PROMPT)
        terminal.type("exit\n")
        terminal.rest()
        self.assertEqual(self.history.read_text(), "readText dir/file\nreadText dir/file\nexit\n")
        terminal = self.prompt()
        terminal.type("\x1b[A\x1b[A\n")
        terminal.expect("here\n")

    def test_keeps_its_lines_where_nobody_else_reads_them(self):
        terminal = self.prompt()
        self.run_line(terminal, "userName")
        self.run_line(terminal, " tempDir")
        self.assertEqual(self.history.read_text(), "userName\n")
        self.assertEqual(self.history.stat().st_mode & 0o777, 0o600)

    def test_keeps_its_lines_in_the_home_directory_else(self):
        terminal = self.prompt(XDG_STATE_HOME="")
        self.run_line(terminal, "userName")
        self.assertEqual((self.home / ".corvanectl_history").read_text(), "userName\n")

    def test_keeps_no_lines_on_request(self):
        terminal = self.prompt(CORVANECTL_HISTORY="")
        self.run_line(terminal, "userName")
        self.assertFalse(self.history.exists())
        self.assertFalse((self.home / ".corvanectl_history").exists())

    def test_keeps_the_last_lines_only(self):
        self.history.write_text("".join(f"line{i}\n" for i in range(1500)))
        terminal = self.prompt()
        self.run_line(terminal, "userName")
        lines = self.history.read_text().splitlines()
        self.assertEqual((len(lines), lines[0], lines[-1]), (1001, "line500", "userName"))

    def test_needs_a_terminal(self):
        result = subprocess.run([CLIENT, "--port", str(self.server.port)], stdin=subprocess.DEVNULL,
                                capture_output=True, timeout=60, check=False)
        self.assertEqual((result.returncode, result.stdout, result.stderr),
                         (2, b"", b"corvanectl: no command given, try --help\n"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[4:])
