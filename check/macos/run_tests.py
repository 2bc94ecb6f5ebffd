"""Runs GoogleTest programs, each test in a process of its own, so that one that crashes or hangs costs no other.

Usage: run_tests.py LIST SECTION PROGRAM...

LIST names the tests that are left out, or whole programs: a line has the section, the name and the
reason. One that is no longer there is an error. Prints what fails, and fails when anything does.
"""

import os
import pathlib
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

TIME_LIMIT = 120  # seconds for one test


def left_out(path, section):
    """The names that LIST has for this section."""
    lines = (line.split() for line in pathlib.Path(path).read_text().splitlines())
    return {words[1] for words in lines if len(words) > 1 and words[0] == section}


def tests_of(program):
    """The full names of a program's tests."""
    listing = subprocess.run([program, "--gtest_list_tests"], check=True, capture_output=True, text=True,
                             timeout=TIME_LIMIT).stdout
    names, suite = [], ""
    for line in listing.splitlines():
        if line.startswith("  "):
            names.append(suite + line.split()[0])
        elif line.split("#")[0].strip().endswith("."):
            suite = line.split()[0]
    return names


def run(program, name):
    """Runs one test; returns its output when it failed."""
    try:
        result = subprocess.run([program, f"--gtest_filter={name}", "--gtest_brief=1"], cwd=pathlib.Path(program).parent,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL,
                                timeout=TIME_LIMIT)
    except subprocess.TimeoutExpired as late:
        return f"not done after {TIME_LIMIT} s\n" + (late.stdout or b"").decode(errors="replace")
    if result.returncode == 0:
        return None
    return f"status {result.returncode}\n" + result.stdout.decode(errors="replace")


def main():
    path, section, *programs = sys.argv[1:]
    excluded = left_out(path, section)
    absent = excluded & {os.path.basename(program) for program in programs}
    programs = [program for program in programs if os.path.basename(program) not in absent]
    tests = [(os.path.abspath(program), name) for program in programs for name in tests_of(program)]
    unknown = excluded - absent - {name for _, name in tests}
    wanted = [test for test in tests if test[1] not in excluded]
    failed = 0
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        for (_, name), output in zip(wanted, pool.map(lambda test: run(*test), wanted)):
            if output is not None:
                failed += 1
                print(f"FAILED {name}: {output}")
    for name in sorted(unknown):
        print(f"{path} names a test that is not there: {name}")
    print(f"{len(wanted) - failed} of {len(wanted)} tests passed, {len(tests) - len(wanted)} are left out")
    return 1 if failed or unknown else 0


if __name__ == "__main__":
    sys.exit(main())
