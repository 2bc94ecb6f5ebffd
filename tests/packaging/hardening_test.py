"""Every installed program is hardened against the exploitation of mistakes: read from the ELF files
as they are installed, and from the commands by which their sources were compiled.

Usage: hardening_test.py CMAKE BUILD_DIRECTORY COMPILER
"""
import json
import platform
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CMAKE, BUILD, COMPILER = sys.argv[1:4]
X86 = platform.machine() in ("x86_64", "i686")
BRANCH_TARGET = b"\xf3\x0f\x1e\xfa" if X86 else None  # endbr64
FLAGS = ["-fstack-protector-strong", "-D_FORTIFY_SOURCE=3", "-D_GLIBCXX_ASSERTIONS",
         "-fstack-clash-protection", "-fPIE",
         "-fcf-protection" if X86 else "-mbranch-protection=standard"]
SAMPLE = """
#include <cstdio>
#include <cstring>
#include <string>
int work(char* text) {
    char room[64];
    std::strcpy(room, text);
    return std::puts(room) + std::string(text)[std::strlen(room) / 2];
}
int main(int, char** arguments) { return work(arguments[0]); }
"""
SAMPLE_LINK = ["-pie", "-Wl,-z,relro,-z,now,-z,noexecstack,-z,separate-code"]


def readelf(program, *options):
    return subprocess.run(["readelf", "-W", *options, program], check=True, stdout=subprocess.PIPE,
                          text=True).stdout


def missing_in(program):
    """What the program has not, as a list of names."""
    segments = re.findall(r"^  (\w+) +0x(\w+) .* ([R ][W ][E ]) 0x\w+$",
                          readelf(program, "--program-headers"), re.M)
    flags_of = {kind: flags for kind, _, flags in segments}
    dynamic = readelf(program, "--dynamic")
    symbols = readelf(program, "--dyn-syms")
    found = {
        "position independent": re.search(r"\(FLAGS_1\).*\bPIE\b", dynamic),
        "relocations read-only": "GNU_RELRO" in flags_of,
        "bound at the start": re.search(r"\(FLAGS_1\).*\bNOW\b", dynamic),
        "no executable stack": "E" not in flags_of.get("GNU_STACK", "E"),
        "no writable code": all(flags != "RWE" for kind, _, flags in segments
                                if kind == "LOAD"),
        "separate code": all("E" not in flags for kind, offset, flags in segments
                             if kind == "LOAD" and int(offset, 16) == 0),
        "stack protector": "__stack_chk_fail" in symbols,
        "checked containers": "__glibcxx_assert_fail" in symbols or "[libstdc++." not in dynamic,
        "fortified functions": re.search(r"\b__(?!stack_chk)\w+_chk\b", symbols),
    }
    if BRANCH_TARGET:
        # The C library's own start has one or two.
        found["control-flow protection"] = Path(program).read_bytes().count(BRANCH_TARGET) > 3
    return [name for name, value in found.items() if not value]


class HardeningTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.scratch = Path(scratch.name)

    def installed_programs(self):
        subprocess.run([CMAKE, "--install", BUILD, "--prefix", self.scratch], check=True,
                       stdout=subprocess.DEVNULL)
        return [path for path in sorted(self.scratch.rglob("*"))
                if path.is_file() and path.read_bytes().startswith(b"\x7fELF")]

    def test_installed_programs_lack_nothing(self):
        programs = self.installed_programs()
        self.assertIn("corvane", [program.name for program in programs])
        for program in programs:
            self.assertEqual(missing_in(program), [], program.name)

    def test_sources_of_installed_programs_are_compiled_with_every_guard(self):
        commands = json.loads((Path(BUILD) / "compile_commands.json").read_text())
        ours = [entry for entry in commands if re.search(r" -o (src|tools)/", entry["command"])]
        self.assertGreater(len(ours), 50)
        for entry in ours:
            self.assertEqual([flag for flag in FLAGS if flag not in entry["command"].split()], [],
                             entry["file"])

    def build_sample(self, compile_flags, link_flags):
        source, program = self.scratch / "sample.cpp", self.scratch / "sample"
        source.write_text(SAMPLE)
        subprocess.run([COMPILER, "-std=c++20", "-O2", "-U_FORTIFY_SOURCE", *FLAGS, *compile_flags, source, "-o",
                        program, *SAMPLE_LINK, *link_flags], check=True)
        return missing_in(program)

    def test_a_program_without_a_guard_is_found(self):
        for lacks, compile_flags, link_flags in (
                ([], [], []),
                (["stack protector"], ["-fno-stack-protector"], []),
                (["fortified functions"], ["-U_FORTIFY_SOURCE"], []),
                (["checked containers"], ["-U_GLIBCXX_ASSERTIONS"], []),
                (["position independent"], ["-fno-pie"], ["-no-pie"]),
                (["bound at the start"], [], ["-Wl,-z,lazy"]),
                (["relocations read-only"], [], ["-Wl,-z,norelro"]),
                (["no executable stack"], [], ["-Wl,-z,execstack"]),
                (["separate code"], [], ["-Wl,-z,noseparate-code"])):
            self.assertEqual(self.build_sample(compile_flags, link_flags), lacks)
        if X86:
            self.assertEqual(self.build_sample(["-fcf-protection=none"], []),
                             ["control-flow protection"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
