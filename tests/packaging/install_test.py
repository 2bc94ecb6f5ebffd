"""Installs the build into a scratch prefix and uses it from there.

Usage: install_test.py CMAKE BUILD_DIRECTORY PACKAGING_DIRECTORY
"""
import contextlib
import os
import re
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CMAKE, BUILD, PACKAGING = sys.argv[1:4]


class InstallTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.home = Path(scratch.name) / "home"
        self.home.mkdir()
        self.prefix = Path(scratch.name) / "prefix"
        self.install()

    def install(self):
        subprocess.run([CMAKE, "--install", BUILD, "--prefix", self.prefix], check=True,
                       stdout=subprocess.DEVNULL)

    def launcher(self, *arguments):
        return subprocess.run([self.prefix / "bin" / "corvane", *arguments], capture_output=True,
                              text=True, timeout=60, check=False)

    def install_configuration(self, prefix, destination, *definitions):
        """As the installation with this prefix does, whatever prefix the build was made for."""
        subprocess.run([CMAKE, f"-DCMAKE_INSTALL_PREFIX={prefix}", *definitions, "-P",
                        Path(PACKAGING) / "install_config.cmake"], check=True,
                       env=dict(os.environ, DESTDIR=str(destination)), stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)

    def first_line(self, command, **options):
        """What a server that is found prints first."""
        environment = dict(os.environ, HOME=str(self.home), **options.pop("environment", {}))
        result = subprocess.run(command, env=environment, capture_output=True, text=True,
                                timeout=60, check=False, **options)
        return result.stdout.partition("\n")[0], result.stderr

    def test_the_launcher_answers_help_and_version_itself(self):
        self.assertIn("Usage: corvane", self.launcher("--help").stdout)
        self.assertRegex(self.launcher("--version").stdout, r"^corvane \d+(\.\d+)+\n$")
        unknown = self.launcher("--unknown")
        self.assertEqual((unknown.returncode, unknown.stdout), (2, ""))

    def test_an_edited_configuration_survives_another_installation(self):
        config = self.prefix / "etc" / "corvane" / "corvane.conf"
        config.write_text("PORT=0\n")
        self.install()
        self.assertEqual(config.read_text(), "PORT=0\n")
        self.assertEqual((self.prefix / "lib/corvane/corvane.conf").read_text(), "PORT=0\n")

    def test_the_place_of_the_configuration_is_that_of_the_installations_prefix(self):
        elsewhere, system = self.home / "elsewhere", self.home / "system"
        self.install_configuration(elsewhere, "")
        self.assertTrue((elsewhere / "etc/corvane/corvane.conf").is_file())
        self.assertEqual(os.readlink(elsewhere / "lib/corvane/corvane.conf"),
                         "../../etc/corvane/corvane.conf")
        self.install_configuration("/usr", system)
        self.assertTrue((system / "etc/corvane/corvane.conf").is_file())
        self.assertEqual(os.readlink(system / "usr/lib/corvane/corvane.conf"),
                         "/etc/corvane/corvane.conf")
        self.assertFalse((system / "usr/etc").exists())

    def test_the_place_of_the_configuration_can_be_that_of_all_versions(self):
        version, shared = self.home / "Cellar" / "1", self.home / "etc" / "corvane"
        for config in ("PORT=0\n", None):
            self.install_configuration(version, "", f"-DCORVANE_CONFIG_DIR={shared}")
            self.assertFalse((version / "etc").exists())
            self.assertTrue((version / "lib/corvane/corvane.conf").samefile(shared / "corvane.conf"))
            if config:
                (shared / "corvane.conf").write_text(config)
            version = self.home / "Cellar" / "2"
        self.assertEqual((shared / "corvane.conf").read_text(), "PORT=0\n")

    def test_the_build_leaves_that_choice_to_the_installation(self):
        script = (Path(BUILD) / "packaging" / "cmake_install.cmake").read_text()
        self.assertIn("install_config.cmake", script)
        self.assertNotRegex(script, r"[\"} ]/etc/corvane")

    def test_the_launcher_finds_the_server_through_links(self):
        (self.prefix / "etc" / "corvane" / "corvane.conf").write_text("PORT=70000\n")
        started = ("Initializing app", "")
        (self.home / "programs").symlink_to("../prefix/bin")
        self.assertEqual(self.first_line([self.home / "programs" / "corvane"]), started)
        (self.home / "first").symlink_to("../prefix/bin/corvane")
        (self.home / "second").symlink_to("first")
        self.assertEqual(self.first_line([self.home / "second"]), started)
        (self.home / "lib").mkdir()
        search = {"CDPATH": str(self.prefix)}
        self.assertEqual(self.first_line(["sh", "bin/corvane"], cwd=self.prefix,
                                         environment=search), started)

    def test_every_link_of_the_documents_leads_to_what_is_installed(self):
        documents = sorted(self.prefix.rglob("*.md"))
        names = {str(path.relative_to(self.prefix / "share")) for path in documents}
        self.assertLessEqual({"doc/corvane/README.md", "doc/corvane/protocol.md", "corvane/clients/as3/README.md",
                              "corvane/clients/haxe/README.md", "corvane/clients/js/README.md"}, names)
        seen = 0
        for document in documents:
            for link in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", document.read_text()):
                with self.subTest(document=document.name, link=link):
                    self.assertTrue((document.parent / link).exists())
                seen += 1
        self.assertGreater(seen, 40)

    def test_the_client_libraries_are_whole(self):
        source, installed = Path(PACKAGING).parent / "clients", self.prefix / "share/corvane/clients"
        for client in ("as3/corvane", "haxe/corvane", "js/corvane", "js/package.json"):
            files = [path for path in [source / client, *(source / client).rglob("*")] if path.is_file()]
            self.assertTrue(files)
            for path in files:
                self.assertEqual((installed / path.relative_to(source)).read_bytes(), path.read_bytes())

    @contextlib.contextmanager
    def running(self, command):
        """The server, and the port that it listens on."""
        (self.prefix / "etc" / "corvane" / "corvane.conf").write_text("PORT=0\n")
        environment = dict(os.environ, HOME=str(self.home))
        with subprocess.Popen([command], env=environment, stdin=subprocess.DEVNULL, text=True,
                              stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                              start_new_session=True) as server:
            try:
                yield server, next(found.group(1) for line in server.stderr
                                   if (found := re.search(r"Listening on [\d.]+:(\d+)", line)))
            finally:
                with contextlib.suppress(ProcessLookupError):
                    os.killpg(server.pid, signal.SIGKILL)

    def test_the_installed_server_answers_when_started_through_a_link(self):
        link = self.home / "start"
        link.symlink_to("../prefix/bin/corvane")
        with self.running(link) as (server, port):
            client = [self.prefix / "bin" / "corvanectl", "--port", port]
            answer = subprocess.run([*client, "userDir"], capture_output=True, text=True,
                                    timeout=60, check=True)
            self.assertEqual(answer.stdout, f"{self.home}\n")
            subprocess.run([*client, "shutdown"], timeout=60, check=True)
            server.stderr.read()
            self.assertEqual(server.wait(timeout=60), 0)

    def test_who_has_started_the_launcher_can_stop_the_server(self):
        with self.running(self.prefix / "bin" / "corvane") as (server, _):
            server.terminate()
            self.assertEqual(server.wait(timeout=60), 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
