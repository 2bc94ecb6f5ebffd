"""Checks what is said of skipped tests.

Usage: skipped_tests_test.py CHECK_DIRECTORY
"""
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(sys.argv[1]) / "skipped_tests.py"
CASE = '<testcase name="{}" status="{}">{}<system-out>{}</system-out></testcase>'


class SkippedTestsTest(unittest.TestCase):
    def said_of(self, *cases):
        with tempfile.NamedTemporaryFile("w", suffix=".xml") as file:
            file.write(f"<testsuite>{''.join(cases)}</testsuite>")
            file.flush()
            return subprocess.run([sys.executable, "-B", SCRIPT, file.name], stdout=subprocess.PIPE, text=True,
                                  timeout=60, check=True).stdout

    def test_gives_the_reason_and_all_tests_that_have_it(self):
        output = "[ RUN      ] A.B\n/a/b_test.cpp:7: Skipped\nthe superuser may\n\n[  SKIPPED ] A.B (0 ms)\n"
        skipped = '<skipped message="SKIP_REGULAR_EXPRESSION_MATCHED"/>'
        self.assertEqual(self.said_of(CASE.format("A.B", "notrun", skipped, output),
                                      CASE.format("C.D", "notrun", skipped, output)),
                         "\nSkipped, at least in part:\n  the superuser may: A.B, C.D\n")

    def test_finds_single_tests_among_those_of_a_program_that_passes(self):
        output = "test_a (x.X.test_a) ... ok\ntest_b (x.X.test_b) ... skipped 'no nc here'\n\nOK (skipped=1)\n"
        self.assertIn("\n  no nc here: readme\n", self.said_of(CASE.format("readme", "run", "", output)))

    def test_says_what_ctest_says_when_the_test_gives_no_reason(self):
        skipped = '<skipped message="SKIP_RETURN_CODE=77"/>'
        self.assertIn("\n  SKIP_RETURN_CODE=77: A.B\n", self.said_of(CASE.format("A.B", "notrun", skipped, "")))

    def test_says_nothing_when_all_have_run(self):
        self.assertEqual(self.said_of(CASE.format("A.B", "run", "", "skipped over two lines\n")), "")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
