"""Makes a package for macOS of a small tree, and reads it with other programs.

Usage: flat_package_test.py PACKAGING_DIRECTORY
"""
import gzip
import shutil
import subprocess
import sys
import tempfile
import unittest
import unittest.mock
from pathlib import Path
from xml.etree import ElementTree

MACOS = Path(sys.argv[1]) / "macos"
sys.path.append(str(MACOS))
from bom import MOST_PATHS, cksum, write_bom  # noqa: E402
from check_packages import errors_of_program, is_program  # noqa: E402
from flat_package import make_package  # noqa: E402
from read_bom import read_bom  # noqa: E402
from tree import read_tree  # noqa: E402

TIME = 1_700_000_000


class FlatPackageTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.top = Path(scratch.name)
        self.tree = self.top / "tree"
        (self.tree / "bin").mkdir(parents=True)
        (self.tree / "bin" / "program").write_bytes(b"\xcf\xfa\xed\xfe" * 20000)
        (self.tree / "bin" / "program").chmod(0o750)
        (self.tree / "bin" / "link").symlink_to("program")
        (self.tree / "share" / "doc" / "corvane").mkdir(parents=True)
        (self.tree / "share" / "doc" / "corvane" / "LICENSE").write_text("the licence\n")
        (self.tree / "share" / "empty \N{SNOWMAN}").write_text("")

    def make(self):
        return make_package(self.tree, MACOS / "scripts", "1.2.3", TIME)

    def unpacked(self):
        """The package's own files."""
        (self.top / "a.pkg").write_bytes(self.make())
        to = self.top / "unpacked"
        to.mkdir()
        subprocess.run(["bsdtar", "-C", to, "-xf", self.top / "a.pkg"], check=True)
        return to

    def test_lists_what_it_installs_with_modes_sizes_and_checksums(self):
        entries = read_tree(self.tree)
        self.assertEqual(read_bom(write_bom(entries, (0, 0), TIME)),
                         {entry.path: (entry.mode, len(entry.data), 0 if entry.is_directory else cksum(entry.data))
                          for entry in entries})
        self.assertEqual([entry.path for entry in entries],
                         [".", "./bin", "./bin/link", "./bin/program", "./share", "./share/doc",
                          "./share/doc/corvane", "./share/doc/corvane/LICENSE", "./share/empty \N{SNOWMAN}"])

    def test_checksums_are_those_of_cksum(self):
        for data in (b"", b"a", b"\0" * 255, b"\xff" * 70000):
            output = subprocess.run(["cksum"], input=data, capture_output=True, check=True).stdout
            self.assertEqual(cksum(data), int(output.split()[0]))

    def test_lists_no_more_paths_than_fit(self):
        with self.assertRaises(ValueError):
            write_bom(read_tree(self.tree) * MOST_PATHS, (0, 0), TIME)

    def test_is_the_same_whoever_makes_it_when(self):
        first = self.make()
        (self.tree / "bin" / "program").touch()
        (self.tree / "bin" / "program").chmod(0o700)
        with unittest.mock.patch("time.time", return_value=TIME):
            self.assertEqual(self.make(), first)

    def test_the_check_takes_a_program_for_one_processor_for_none(self):
        program = next(entry for entry in read_tree(self.tree) if entry.path == "./bin/program")
        self.assertTrue(is_program(program))
        self.assertEqual(list(errors_of_program(self.tree / "bin/program", "rcodesign")), ["is not a universal file"])
        (self.tree / "bin/program").write_text("#!/bin/sh\n")
        self.assertFalse(any(map(is_program, read_tree(self.tree))))

    @unittest.skipUnless(shutil.which("bsdtar"), "no bsdtar here")
    def test_is_an_archive_of_what_installer_expects(self):
        unpacked = self.unpacked()
        names = sorted(str(path.relative_to(unpacked)) for path in unpacked.rglob("*"))
        self.assertEqual(names, ["Distribution", "Resources", "Resources/LICENSE", "corvane.pkg", "corvane.pkg/Bom",
                                 "corvane.pkg/PackageInfo", "corvane.pkg/Payload", "corvane.pkg/Scripts"])
        info = ElementTree.parse(unpacked / "corvane.pkg" / "PackageInfo").getroot()
        self.assertEqual([info.get(key) for key in ("identifier", "version", "install-location",
                                                    "overwrite-permissions")],
                         ["example.corvane", "1.2.3", "/usr/local", "false"])
        distribution = ElementTree.parse(unpacked / "Distribution").getroot()
        self.assertEqual(distribution.find("options").get("hostArchitectures"), "x86_64,arm64")
        self.assertEqual([element.text for element in distribution.iter("pkg-ref") if element.text],
                         ["#corvane.pkg"])

    @unittest.skipUnless(shutil.which("bsdtar") and shutil.which("cpio"), "no bsdtar or cpio here")
    def test_holds_the_files_as_they_are(self):
        unpacked = self.unpacked() / "corvane.pkg"
        for part, original in (("Payload", self.tree), ("Scripts", MACOS / "scripts")):
            to = self.top / part
            to.mkdir()
            subprocess.run(["cpio", "-idm", "--quiet"], cwd=to, check=True,
                           input=gzip.decompress((unpacked / part).read_bytes()))
            self.assertEqual(read_tree(to), read_tree(original))
            dates = {int(path.stat().st_mtime) for path in to.rglob("*") if path.is_file()}
            self.assertEqual(dates, {TIME})


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
