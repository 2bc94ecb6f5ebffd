"""Checks that every test and file that docs/security.md refers to is there.

Usage: references_test.py SOURCE_DIRECTORY
"""
import re
import sys
import unittest
from pathlib import Path

ROOT = Path(sys.argv[1])


class ReferencesTest(unittest.TestCase):
    def test_everything_that_is_referred_to_exists(self):
        text = (ROOT / "docs" / "security.md").read_text()
        references = re.findall(r"`(tests/[\w./]+)(?::(\w+))?`", text)
        self.assertGreater(len(references), 20)
        for path, name in references:
            with self.subTest(path=path, name=name):
                self.assertTrue((ROOT / path).exists())
                if name:
                    self.assertIn(f", {name})", (ROOT / path).read_text())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
