#!/usr/bin/env python3
"""Checks that no source file has more than 250 lines and no function more than 40, from the line of
its name to its closing brace.

    sizes.py ROOT
"""

import sys
from pathlib import Path

from functions import functions

LONGEST_FILE = 250
LONGEST_FUNCTION = 40
PLACES = ("src", "tools", "tests", "bench", "check", "script", "clients", "packaging", ".ci")
SUFFIXES = (".h", ".cpp", ".py", ".mjs", ".js", ".ts", ".hx", ".as")


def is_source(path):
    if "node_modules" in path.parts or not path.is_file():
        return False
    if path.suffix in SUFFIXES:
        return True
    with path.open("rb") as file:
        return path.suffix in ("", ".sh", ".in") and file.read(2) == b"#!"


def problems_of(path):
    text = path.read_text()
    count = text.count("\n")
    if count > LONGEST_FILE:
        yield f"{path}: {count} lines"
    for first, last in functions(text, path.suffix):
        if last - first + 1 > LONGEST_FUNCTION:
            yield f"{path}:{first}: a function of {last - first + 1} lines"


def main(root):
    sources = [path for place in PLACES for path in sorted((root / place).rglob("*")) if is_source(path)]
    problems = [problem for path in sources
                for problem in problems_of(path)]
    print(*problems, sep="\n", end="\n" if problems else "")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1])))
