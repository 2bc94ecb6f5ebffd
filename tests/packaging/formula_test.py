"""Keeps the Homebrew formula in step with the project: its version, its name, the variables of the build
that it sets, and the programs that it starts.

Usage: formula_test.py SOURCE_DIRECTORY
"""
import re
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

ROOT = Path(sys.argv[1])
FORMULA = ROOT / "packaging" / "homebrew" / "corvane.rb"
TEXT = FORMULA.read_text()
NAME, VERSION, DESCRIPTION = re.search(r'^project\((\w+) VERSION ([\d.]+) DESCRIPTION "([^"]+)"',
                                       (ROOT / "CMakeLists.txt").read_text(), re.M).groups()


def only(pattern):
    """The text that a pattern finds, which must be there once."""
    (found,) = re.findall(pattern, TEXT, re.M)
    return found


class FormulaTest(unittest.TestCase):
    def test_is_for_this_version_of_this_project(self):
        self.assertEqual(FORMULA.stem, NAME)
        self.assertEqual(only(r"^class (\w+) < Formula$"), NAME.capitalize())
        self.assertEqual(only(r'^  desc "(.*)"$'), DESCRIPTION)
        self.assertEqual(only(r'^  url "https://.*/(.*)"$'), f"{NAME}-{VERSION}.tar.gz")
        self.assertEqual(only(r'^  license "(.*)"$'), "MIT")

    def test_leaves_the_checksum_to_the_release(self):
        self.assertEqual(only(r'^  sha256 "(.*)"$'), "0" * 64)

    def test_sets_only_variables_that_the_build_knows(self):
        files = [ROOT / "CMakeLists.txt", *(ROOT / "packaging").glob("*.txt")]
        known = "".join(path.read_text() for path in files)
        for variable in re.findall(r'"-D(CORVANE_\w+)=', TEXT):
            with self.subTest(variable=variable):
                self.assertRegex(known, rf"(?:option|set)\({variable}\b")

    def test_depends_on_what_the_build_wants(self):
        bootstrap = (ROOT / "script" / "bootstrap").read_text()
        for library in re.search(r"formulae=\((.*)\)$", bootstrap, re.M)[1].split():
            with self.subTest(library=library):
                self.assertIn(f'  depends_on "{library}"', TEXT)

    def test_installs_the_same_part_as_the_package(self):
        package = (ROOT / "script" / "package-macos").read_text()
        self.assertEqual(re.search(r"cmake --install .* --component (\w+)", package)[1],
                         only(r'"--install", .*"--component", "(\w+)"$'))

    def test_service_and_agent_run_in_the_same_way(self):
        service = TEXT.split("service do\n")[1].split("  end\n")[0]
        agent = (ROOT / "packaging/launchd/corvane.plist.in").read_text()
        self.assertIn('run [opt_bin/"corvane"]', service)
        self.assertIn("keep_alive crashed: true", service)
        self.assertRegex(agent, r"<key>Crashed</key>\s*<true/>")
        self.assertIn("process_type :interactive", service)
        self.assertRegex(agent, r"<key>ProcessType</key>\s*<string>Interactive</string>")

    @unittest.skipUnless(shutil.which("ruby"), "no ruby here")
    def test_is_ruby(self):
        subprocess.run(["ruby", "-c", FORMULA], check=True, stdout=subprocess.DEVNULL, timeout=60)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
