"""Checks that the licence is the same everywhere: the file, the Debian package, the one for npm and the
manual pages.

Usage: licence_test.py SOURCE_DIRECTORY
"""
import json
import re
import sys
import unittest
from pathlib import Path

ROOT = Path(sys.argv[1])
TITLE, HOLDER, TERMS = (ROOT / "LICENSE").read_text().rstrip("\n").split("\n\n", 2)


class LicenceTest(unittest.TestCase):
    def test_is_mit_of_the_developers(self):
        self.assertEqual(TITLE, "MIT License")
        self.assertEqual(HOLDER, "Copyright (c) 2026 the Corvane developers")

    def test_has_the_same_terms_in_the_debian_package(self):
        text = (ROOT / "packaging" / "deb" / "copyright").read_text()
        terms = text.split("\nLicense: Expat\n")[-1].rstrip("\n")
        self.assertEqual(re.sub("^ [.]?", "", terms, flags=re.M), TERMS)
        self.assertIn("Copyright: " + HOLDER.removeprefix("Copyright (c) "), text)

    def test_lies_in_the_package_for_npm(self):
        client = ROOT / "clients" / "js"
        self.assertEqual((client / "LICENSE").read_text(), (ROOT / "LICENSE").read_text())
        self.assertEqual(json.loads((client / "package.json").read_text())["license"], "MIT")

    def test_is_named_in_every_manual_page(self):
        for page in sorted((ROOT / "docs" / "man").iterdir()):
            with self.subTest(page=page.name):
                self.assertIn(f".Sh COPYRIGHT\n{HOLDER}.\nUnder the MIT License", page.read_text())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
