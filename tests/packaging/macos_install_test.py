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
TOOLS = ["cat", "chmod", "cmp", "dirname", "ln", "mkdir", "mktemp", "readlink", "rm", "rmdir", "sed"]
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

    def run_script(self, script, *arguments):
        return subprocess.run(["/bin/sh", script, *arguments], capture_output=True, text=True, timeout=60,
                              check=False, env={"PATH": str(self.tools), "HOME": str(self.top)})

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
        self.assertIn(f"Kept: {self.prefix.resolve()}/{CONFIG}", self.uninstall())
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

    def test_refuses_what_it_does_not_know(self):
        for arguments in (["relative"], ["/a", "/b"]):
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
