"""Prints why tests were skipped, also single ones of those that CTest counts as one.

Usage: skipped_tests.py RESULTS       (a file of ctest --output-junit)
"""
import re
import sys
from xml.etree import ElementTree

REASONS = (
    re.compile(r"^\S+:\d+: Skipped\n(.+)$", re.MULTILINE),  # GoogleTest
    re.compile(r"\.\.\. skipped (['\"])(?P<reason>.*)\1$", re.MULTILINE),  # unittest
    re.compile(r"^skipped: (.+)$", re.MULTILINE),  # scripts of ours
)


def reasons_in(output):
    """Each reason once, in the order of the output."""
    found = (match.groupdict().get("reason") or match[1] for pattern in REASONS for match in pattern.finditer(output))
    return list(dict.fromkeys(found))


def skipped(results):
    """Names of tests, and why they were skipped."""
    for case in results.iter("testcase"):
        reasons = reasons_in(case.findtext("system-out", ""))
        if case.find("skipped") is not None and not reasons:
            reasons = [case.find("skipped").get("message") or "no reason given"]
        for reason in reasons:
            yield reason, case.get("name")


def main(path):
    tests = {}
    for reason, name in skipped(ElementTree.parse(path)):
        tests.setdefault(reason, []).append(name)
    if tests:
        print("\nSkipped, at least in part:")
    for reason, names in sorted(tests.items()):
        print(f"  {reason}: {', '.join(names)}")


if __name__ == "__main__":
    main(sys.argv[1])
