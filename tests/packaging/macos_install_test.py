"""Installs with the scripts of the archive for macOS into a scratch prefix, and takes it away again; the
files are those of this build. The scripts find only tools that every Mac has.

Usage: macos_install_test.py CMAKE BUILD_DIRECTORY PACKAGING_DIRECTORY
"""
import os
import plistlib
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CMAKE, BUILD, PACKAGING = sys.argv[1:4]
MACOS = Path(PACKAGING) / "macos"
TOOLS = ["cat", "chmod", "cmp", "dirname", "ln", "mkdir", "mktemp", "mv", "readlink", "rm", "rmdir", "sed"]
CONFIG, SAMPLE = "etc/corvane/corvane.conf", "share/doc/corvane/examples/corvane.conf"
UNINSTALL = "lib/corvane/uninstall.sh"


def tree(top):
    """Every path below a directory with what it is."""
    return {str(path.relative_to(top)): os.readlink(path) if path.is_symlink() else
            None if path.is_dir() else (path.stat().st_mode & 0o777, path.read_bytes())
            for path in Path(top).rglob("*")}


class MacosInstallTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.scratch.cleanup)
        top = Path(cls.scratch.name)
        cls.archive, cls.tools = top / "archive", top / "tools"
        subprocess.run([CMAKE, "--install", BUILD, "--prefix", cls.archive / "files"], check=True,
                       stdout=subprocess.DEVNULL)
        shutil.copy(MACOS / "install.sh", cls.archive)
        subprocess.run([MACOS / "complete_tree.sh", cls.archive / "files"], check=True)
        cls.tools.mkdir()
        for tool in TOOLS:
            (cls.tools / tool).symlink_to(shutil.which(tool))

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.top = Path(scratch.name)
        self.prefix = self.top / "R&D <1>" / "local"
        self.prefix.mkdir(parents=True)

    def run_script(self, script, *arguments, tools=None):
        return subprocess.run(["/bin/sh", script, *arguments], capture_output=True, text=True, timeout=60,
                              check=False, env={"PATH": str(tools or self.tools), "HOME": str(self.top)})

    def install(self, archive=None):
        result = self.run_script((archive or self.archive) / "install.sh", str(self.prefix))
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return result.stdout

    def uninstall(self, *arguments):
        result = self.run_script(self.prefix / UNINSTALL, *arguments)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return result.stdout

    def test_installs_every_file_and_a_configuration(self):
        self.install()
        installed, files = tree(self.prefix), tree(self.archive / "files")
        self.assertEqual(installed.pop(CONFIG), (0o644, files[SAMPLE][1]))
        agent = "share/doc/corvane/examples/example.corvane.plist"
        program = plistlib.loads(installed.pop(agent)[1])["ProgramArguments"]
        self.assertEqual(program, [f"{self.prefix}/bin/corvane"])
        del installed["etc"], installed["etc/corvane"], files[agent]
        self.assertEqual(installed, files)
        self.assertTrue((self.prefix / "lib/corvane/corvane.conf").samefile(self.prefix / CONFIG))

    def test_leaves_nothing_behind(self):
        self.install()
        self.uninstall()
        self.assertEqual(tree(self.prefix), {})

    def test_leaves_what_others_have_there(self):
        (self.prefix / "bin").mkdir()
        (self.prefix / "bin" / "other").write_text("theirs")
        before = tree(self.prefix)
        self.install()
        self.uninstall()
        self.assertEqual(tree(self.prefix), before)

    def test_an_edited_configuration_survives_an_upgrade_and_the_removal(self):
        self.install()
        (self.prefix / CONFIG).write_text("PORT=0\n")
        self.assertIn(f"Kept: {self.prefix}/{CONFIG}", self.install())
        self.assertEqual((self.prefix / CONFIG).read_text(), "PORT=0\n")
        self.assertIn(f"Kept: {self.prefix}/{CONFIG}", self.uninstall())
        self.assertEqual([path for path, what in tree(self.prefix).items() if what], [CONFIG])

    def test_takes_configuration_and_log_away_when_told(self):
        self.install()
        (self.prefix / CONFIG).write_text("PORT=0\n")
        (self.prefix / "lib/corvane/cv0.log").write_text("a line\n")
        self.uninstall("--purge")
        self.assertEqual(tree(self.prefix), {})

    def test_an_upgrade_removes_what_the_new_version_does_not_have(self):
        earlier = self.top / "earlier"
        shutil.copytree(self.archive, earlier, symlinks=True)
        (earlier / "files/share/dropped").write_text("of the earlier version")
        with (earlier / "files/lib/corvane/installed-files.txt").open("a") as names:
            names.write("share/dropped\n")
        self.install(earlier)
        self.assertTrue((self.prefix / "share/dropped").exists())
        self.install()
        self.assertFalse((self.prefix / "share/dropped").exists())

    def test_replaces_a_program_instead_of_writing_into_it(self):
        self.install()
        with (self.prefix / "lib/corvane/corvane").open("rb") as running:
            self.install()
            self.assertEqual(os.fstat(running.fileno()).st_nlink, 0)

    def without_room_for(self, name, copies_before=0):
        """Tools of which cat ends in the middle of a file of this name, after some that it copies."""
        tools, copied = self.top / "tools", self.top / "copied"
        copied.write_text("x" * copies_before)
        shutil.copytree(self.tools, tools, symlinks=True)
        (tools / "cat").unlink()
        (tools / "cat").write_text(f"#!/bin/sh\ncase $1 in */{name})\n    read -r left < {copied} || :\n"
                                   f'    [ "$left" ] || {{ printf half; exit 1; }}\n'
                                   f"    printf %s \"${{left#x}}\" > {copied}\nesac\n"
                                   f'exec {shutil.which("cat")} "$@"\n')
        (tools / "cat").chmod(0o755)
        return tools

    def test_an_upgrade_that_stops_halfway_leaves_no_half_file(self):
        self.install()
        before = tree(self.prefix)
        result = self.run_script(self.archive / "install.sh", str(self.prefix), tools=self.without_room_for("corvanectl"))
        self.assertEqual((result.returncode, result.stderr),
                         (1, f"install.sh: cannot write {self.prefix}/bin/corvanectl\n"))
        self.assertEqual(tree(self.prefix), before)

    def test_an_installation_that_stops_halfway_leaves_no_half_configuration(self):
        result = self.run_script(self.archive / "install.sh", str(self.prefix), tools=self.without_room_for("corvane.conf", 1))
        self.assertEqual(result.returncode, 1)
        self.assertFalse((self.prefix / CONFIG).exists())
        self.install()
        self.assertEqual((self.prefix / CONFIG).read_bytes(), (self.prefix / SAMPLE).read_bytes())

    def test_writes_through_no_link_of_the_user(self):
        (self.prefix / "etc/corvane").mkdir(parents=True)
        elsewhere = self.top / "elsewhere"
        (self.prefix / CONFIG).symlink_to(elsewhere)
        self.assertIn(f"Kept: {self.prefix}/{CONFIG}", self.install())
        subprocess.run([MACOS / "scripts" / "postinstall", "package", self.prefix, "/", "/"], check=True, timeout=60)
        self.assertFalse(elsewhere.exists())

    def test_puts_nothing_into_a_directory_in_the_place_of_a_file(self):
        (self.prefix / "bin/corvanectl").mkdir(parents=True)
        result = self.run_script(self.archive / "install.sh", str(self.prefix))
        self.assertEqual((result.returncode, result.stderr),
                         (1, f"install.sh: {self.prefix}/bin/corvanectl is a directory\n"))
        self.assertEqual(tree(self.prefix / "bin/corvanectl"), {})

    def test_removes_from_the_directory_that_it_was_installed_in_also_behind_links(self):
        disk = self.top / "disk"
        (disk / "lib").mkdir(parents=True)
        (disk / "bin").mkdir()
        (disk / "bin" / "corvane").write_text("somebody else's")
        (self.prefix / "lib").symlink_to(disk / "lib")
        self.install()
        self.uninstall()
        self.assertEqual(tree(disk)["bin/corvane"][1], b"somebody else's")
        self.assertEqual({path for path, what in tree(self.prefix).items() if what}, {"lib"})

    def test_refuses_what_it_does_not_know(self):
        for arguments in (["relative"], ["/a", "/b"], [f"{self.prefix}\n"]):
            self.assertEqual(self.run_script(self.archive / "install.sh", *arguments).returncode, 1)
        self.install()
        before = tree(self.prefix)
        self.assertEqual(self.run_script(self.prefix / UNINSTALL, "--all").returncode, 1)
        self.assertEqual(self.run_script(MACOS / "uninstall.sh").returncode, 1)
        self.assertEqual(tree(self.prefix), before)

    def test_installer_leaves_a_configuration_that_is_there(self):
        self.install()
        script = MACOS / "scripts" / "postinstall"
        for config in ("PORT=0\n", None):
            if config:
                (self.prefix / CONFIG).write_text(config)
            else:
                shutil.rmtree(self.prefix / "etc")
            subprocess.run([script, "package", self.prefix, "/", "/"], check=True, timeout=60)
            expected = config or (self.prefix / SAMPLE).read_text()
            self.assertEqual((self.prefix / CONFIG).read_text(), expected)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
