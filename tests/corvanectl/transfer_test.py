"""Runs "corvanectl put" and "get" against the real server: files of all kinds, and what is refused.

Usage: transfer_test.py SERVER CORVANECTL
"""
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1]))
from support.server_process import ServerProcess

SERVER, CLIENT = (Path(p).resolve() for p in sys.argv[1:3])
TEXT = bytes(range(2, 256)) + b"\r\n<&>\xff\r"
MIXED = b"\0\0head\0\1er\0\0\0" + TEXT * 3 + b"\0tail\0"


class TransferTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.home = Path(scratch.name)
        self.here, self.there = self.home / "here", self.home / "there"
        self.here.mkdir()
        self.there.mkdir()
        self.server = ServerProcess(self.home, SERVER, work=self.there)
        self.addCleanup(self.server.kill)

    def run_client(self, *arguments):
        result = subprocess.run([CLIENT, "--port", str(self.server.port), *arguments], cwd=self.here,
                                stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60, check=False)
        self.assertEqual(result.stdout, "")
        return result.returncode, result.stderr.removeprefix("corvanectl: ").removesuffix("\n")

    def expect(self, status, message, *arguments):
        self.assertEqual(self.run_client(*arguments), (status, message))

    def get(self, contents, *options):
        (self.there / "file").write_bytes(contents)
        self.expect(0, "", "get", *options, "file")
        self.assertEqual((self.here / "file").read_bytes(), contents)
        self.assertEqual(os.listdir(self.here), ["file"])
        (self.here / "file").unlink()

    def test_puts_a_file_under_its_name_and_under_others(self):
        (self.here / "file").write_bytes(TEXT)
        (self.there / "sub").mkdir()
        self.expect(0, "", "put", "file")
        self.expect(0, "", "put", "file", "other")
        self.expect(0, "", "put", "file", "sub")
        self.expect(0, "", "put", "file", "sub\\second")
        for name in "file", "other", "sub/file", "sub/second":
            self.assertEqual((self.there / name).read_bytes(), TEXT)

    def test_puts_an_empty_file(self):
        (self.here / "file").touch()
        self.expect(0, "", "put", "file")
        self.assertEqual((self.there / "file").read_bytes(), b"")

    def test_sends_nothing_that_cannot_be_carried(self):
        for byte in 0, 1:
            (self.here / "file").write_bytes(b"abc" + bytes([byte]))
            (self.there / "file").write_bytes(b"kept")
            self.expect(2, f"'file' has the byte 0x0{byte} at offset 3, which no request can carry; "
                        "nothing was sent", "put", "file")
            self.assertEqual((self.there / "file").read_bytes(), b"kept")

    def test_puts_nothing_under_a_name_that_the_server_would_change(self):
        (self.here / "file").write_bytes(b"x")
        self.expect(2, "'a?b' has \"?\" or \"*\", which the server drops from names", "put", "file", "a?b")
        self.assertEqual(os.listdir(self.there), [])

    def test_says_why_nothing_can_be_put(self):
        self.expect(2, "cannot open 'none': No such file or directory", "put", "none")
        self.expect(2, "cannot read '.': Is a directory", "put", ".")
        (self.here / "file").write_bytes(b"x")
        status, message = self.run_client("put", "file", "none/x")
        self.assertEqual(status, 1)
        self.assertIn("fail (2) to open file 'none/x'", message)
        self.assertIn("No such file or directory", message)

    def test_gets_texts(self):
        for contents in b"", b"x", TEXT, b"\1", TEXT * 5000:
            self.get(contents)
            self.get(contents, "--bytes")

    def test_gets_files_of_any_kind_byte_by_byte(self):
        for contents in b"\0", b"\0" * 3000, b"x\0", b"\0x", MIXED, MIXED * 3:
            self.get(contents, "--bytes")

    def test_says_that_bytes_are_missing_and_how_to_get_them(self):
        (self.there / "file").write_bytes(MIXED)
        status, message = self.run_client("get", "file")
        self.assertEqual(status, 2)
        self.assertIn(f"'file' has {MIXED.count(0)} bytes 0x00, which readText leaves out; 'get --bytes' reads it "
                      f"with up to {len(MIXED)} requests, in about ", message)
        self.assertEqual(os.listdir(self.here), [])

    def test_leaves_an_existing_file_alone_unless_it_may_be_replaced(self):
        (self.there / "file").write_bytes(b"new")
        (self.here / "file").write_bytes(b"old, and longer")
        (self.here / "file").chmod(0o640)
        self.expect(2, "'file' is there already, --force replaces it", "get", "file")
        self.assertEqual((self.here / "file").read_bytes(), b"old, and longer")
        self.expect(0, "", "get", "--force", "file")
        self.assertEqual((self.here / "file").read_bytes(), b"new")
        self.assertEqual((self.here / "file").stat().st_mode & 0o777, 0o640)

    def test_replaces_what_a_link_leads_to_and_nothing_special(self):
        (self.there / "file").write_bytes(b"new")
        (self.here / "real").write_bytes(b"old")
        (self.here / "link").symlink_to("real")
        self.expect(0, "", "get", "--force", "file", "link")
        self.assertTrue((self.here / "link").is_symlink())
        self.assertEqual((self.here / "real").read_bytes(), b"new")
        os.mkfifo(self.here / "pipe")
        self.expect(2, "'pipe' is no file that can be replaced", "get", "--force", "file", "pipe")

    def test_gets_into_a_directory(self):
        (self.there / "file").write_bytes(b"x")
        (self.here / "sub").mkdir()
        self.expect(0, "", "get", "file", "sub")
        self.assertEqual((self.here / "sub" / "file").read_bytes(), b"x")
        self.expect(2, f"cannot make a file beside 'none/file': No such file or directory", "get", "file", "none/")

    def test_leaves_nothing_behind_when_there_is_nothing_to_get(self):
        status, message = self.run_client("get", "none")
        self.assertEqual(status, 1)
        self.assertTrue(message.startswith("readText: FAILED"), message)
        self.assertEqual(message, "readText: FAILED; cannot open file 'none' for read (No such file or directory)")
        self.assertEqual(os.listdir(self.here), [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
