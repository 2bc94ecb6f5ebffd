"""Checks that every test, script and file that the documents refer to is there, and that the tables
of faults in docs/security.md name a test, or a reason for having none, in every row.

Usage: references_test.py SOURCE_DIRECTORY
"""
import re
import sys
import unittest
from pathlib import Path

ROOT = Path(sys.argv[1])

REFERENCE = re.compile(r"`((?:tests|script)/[\w./-]+)(?::(\w+))?(?: [^`]*)?`")
# What a name may stand for, by the kind of file.
DEFINITIONS = {
    ".cpp": r"^(?:TEST(?:_F|_P)?\(\w+,\s*{name}\)|void {name}\()",
    ".mjs": r"^(?:async )?function {name}\(",
    ".py": r"^ *def {name}\(",
    ".txt": r"^test_with\({name} ",
}


def documents():
    return [*ROOT.glob("*.md"), *(ROOT / "docs").rglob("*.md")]


def defines(path, name):
    pattern = DEFINITIONS[path.suffix].format(name=name)
    return re.search(pattern, path.read_text(), re.MULTILINE) is not None


def proofs():
    """The last column of every table of faults."""
    text = (ROOT / "docs" / "security.md").read_text()
    for table in re.findall(r"^\|[^\n]*\| Shown by \|\n\|[-|]+\|\n((?:\|.*\n?)+)", text, re.MULTILINE):
        for row in table.splitlines():
            yield row.strip("| ").split(" | ")[-1]


class ReferencesTest(unittest.TestCase):
    def test_everything_that_is_referred_to_exists(self):
        seen = 0
        for document in documents():
            for path, name in REFERENCE.findall(document.read_text()):
                with self.subTest(document=document.name, path=path, name=name):
                    self.assertTrue((ROOT / path).exists())
                    self.assertTrue(not name or defines(ROOT / path, name))
                seen += 1
        self.assertGreater(seen, 80)

    def test_every_fault_has_a_test_or_a_reason(self):
        rows = list(proofs())
        self.assertGreater(len(rows), 40)
        for proof in rows:
            with self.subTest(proof=proof):
                if proof.startswith("None: "):
                    continue
                for reference in proof.split(", "):
                    match = REFERENCE.fullmatch(reference)
                    self.assertIsNotNone(match)
                    self.assertTrue((ROOT / match[1]).is_file())
                    # A file with many tests shows nothing by itself.
                    self.assertTrue(match[2] or not match[1].endswith("_test.cpp"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
