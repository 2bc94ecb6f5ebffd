"""Checks that the unit, the desktop entry and the launchd agent start the launcher wherever it is.

Usage: quoting_test.py CMAKE PACKAGING_DIRECTORY
"""
import plistlib
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CMAKE, PACKAGING = sys.argv[1:3]
SCRIPT = """include("${PACKAGING}/quoting.cmake")
quote_launcher("${LAUNCHER}")
configure_file("${PACKAGING}/systemd/corvane.service.in" "${OUT}/service" @ONLY)
configure_file("${PACKAGING}/autostart/corvane.desktop.in" "${OUT}/desktop" @ONLY)
configure_file("${PACKAGING}/launchd/corvane.plist.in" "${OUT}/plist" @ONLY)
"""
PLAIN = "/opt/corvane-2.7_x+y/bin/corvane"
STRANGE = ["/opt/My Programs/bin/corvane", "/100%/bin/corvane", "/opt/a$HOME/bin/corvane",
           '/opt/"q"/bin/corvane', "/opt/it's/bin/corvane", "/opt/R&D <1>/bin/corvane",
           "/opt/a`b`/bin/corvane", "/opt/~a;b/bin/corvane"]


def value(text, key):
    return re.search(rf"^{key}=(.*)$", text, re.M).group(1)


def unquoted(line):
    """The only word of a command line: plain, or in double quotes with backslashes."""
    quoted = re.fullmatch(r'"((?:[^"\\]|\\.)*)"', line)
    return re.sub(r"\\(.)", r"\1", quoted.group(1)) if quoted else line


def read_as_unit(text):
    """As systemd takes a line apart: quotes and backslashes, then specifiers."""
    return unquoted(value(text, "ExecStart")).replace("%%", "%")


def read_as_entry(text):
    """As a desktop does: a string with escapes, in it a command line, in it field codes."""
    return unquoted(value(text, "Exec").replace("\\\\", "\\")).replace("%%", "%")


class QuotingTest(unittest.TestCase):
    def files(self, launcher):
        with tempfile.TemporaryDirectory() as scratch:
            script = Path(scratch) / "quote.cmake"
            script.write_text(SCRIPT)
            subprocess.run([CMAKE, f"-DPACKAGING={PACKAGING}", f"-DLAUNCHER={launcher}",
                            f"-DOUT={scratch}", "-P", script], check=True)
            return [(Path(scratch) / name).read_text() for name in ("service", "desktop", "plist")]

    def test_every_file_names_the_one_program_wherever_it_is(self):
        for launcher in [PLAIN, *STRANGE]:
            unit, entry, agent = self.files(launcher)
            self.assertEqual(read_as_unit(unit), launcher)
            self.assertEqual(read_as_entry(entry), launcher)
            self.assertEqual(plistlib.loads(agent.encode())["ProgramArguments"], [launcher])

    def test_nothing_that_systemd_or_a_desktop_would_replace_is_left(self):
        for launcher in STRANGE:
            unit, entry, _ = self.files(launcher)
            for line in (value(unit, "ExecStart"), value(entry, "Exec")):
                self.assertNotIn("%", line.replace("%%", ""))

    def test_a_plain_path_stays_plain(self):
        unit, entry, _ = self.files(PLAIN)
        self.assertEqual((value(unit, "ExecStart"), value(entry, "Exec")), (PLAIN, PLAIN))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
