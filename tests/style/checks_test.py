#!/usr/bin/env python3
"""The checks of check/style find what is wrong, and nothing else.

    checks_test.py CHECKS
"""

import sys
import tempfile
import unittest
from pathlib import Path

CHECKS = sys.argv.pop(1)
sys.path.insert(0, CHECKS)

import rooms  # noqa: E402
import sizes  # noqa: E402


class Tree(unittest.TestCase):
    def setUp(self):
        self._directory = tempfile.TemporaryDirectory(prefix="corvane-")
        self.root = Path(self._directory.name)
        for room in rooms.ALLOWED:
            (self.root / room).mkdir(parents=True)

    def tearDown(self):
        self._directory.cleanup()

    def put(self, name, *lines):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("".join(line + "\n" for line in lines))
        return path


class RoomsTest(Tree):
    def test_include_against_the_order(self):
        self.put("src/server/a.cpp", '#include "server/a.h"', '#include "log/log.h"', '#include "fileutil/paths.h"')
        self.put("tools/corvanectl/b.cpp", '#include "server/server.h"')
        self.assertEqual(list(rooms.wrong_includes(self.root)),
                         ["src/server/a.cpp:3: src/server may not include fileutil/paths.h",
                          "tools/corvanectl/b.cpp:1: tools/corvanectl may not include server/server.h"])

    def test_include_of_the_one_header_that_is_allowed(self):
        self.put("tools/corvanectl/a.cpp", '#include "commands/command_syntax.h"', '#include "commands/wndutil.h"')
        self.assertEqual(list(rooms.wrong_includes(self.root)),
                         ["tools/corvanectl/a.cpp:2: tools/corvanectl may not include commands/wndutil.h"])

    def test_system_outside_platform(self):
        for condition in ("#ifdef __APPLE__", "#if defined(__linux__)", "#elif !defined(_WIN32)"):
            self.put("src/text/a.cpp", condition)
            self.assertEqual(len(list(rooms.wrong_conditions(self.root))), 1, condition)
        self.put("src/text/a.cpp", "#ifdef NDEBUG")
        self.put("src/platform/b.h", "#ifdef __APPLE__")
        self.assertEqual(list(rooms.wrong_conditions(self.root)), [])

    def test_unknown_room(self):
        (self.root / "src" / "cellar").mkdir()
        self.assertEqual(len(list(rooms.unknown_rooms(self.root))), 1)


class SizesTest(Tree):
    def problems(self, name, *lines):
        return len(list(sizes.problems_of(self.put(name, *lines))))

    def test_long_file(self):
        self.assertEqual(self.problems("a.h", *["//"] * 250), 0)
        self.assertEqual(self.problems("a.h", *["//"] * 251), 1)

    def test_long_function(self):
        for name, first, last in (
                ("a.cpp", "int f(int x) {", "}"),
                ("a.cpp", "TEST_F(A, B) {", "}"),
                ("a.cpp", "A::A(int x) : x_{x}, y_(\"{\") {", "}"),
                ("a.cpp", "auto f() const noexcept -> std::size_t {", "}"),
                ("a.cpp", "const auto f = [](char c) {", "};"),
                ("a.mjs", "export const f = async (x) => {", "};"),
                ("a.mjs", "async function f({x}) {", "}"),
                ("a.hx", "class A { function f(x:Int):Array<Int> {", "} }"),
                ("a.sh", "f() {", "}"),
                ("a.py", "def f():", "    pass")):
            filler = "    pass" if name == "a.py" else "    g"
            self.assertEqual(self.problems(name, first, *[filler] * 38, last), 0, first)
            self.assertEqual(self.problems(name, first, *[filler] * 39, last), 1, first)

    def test_what_is_no_function(self):
        for first in ("namespace a {", "class A : public B<int(char)> {", "struct A {", "const int a[] = {",
                      "enum class A : int {"):
            self.assertEqual(self.problems("a.cpp", first, *["    1,"] * 100, "};"), 0, first)


unittest.main()
