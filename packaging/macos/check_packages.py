"""Checks the packages for macOS: that the programs in them can run there, as far as their files tell, and
that the package and the archive hold what they should.

Usage: check_packages.py RCODESIGN PACKAGES TREE

RCODESIGN is the program that has signed; PACKAGES is the path of the packages without ".pkg" and
".tar.gz"; TREE is what they install.
"""
import gzip
import os
import pathlib
import stat
import struct
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
HERE = pathlib.Path(__file__).resolve().parent
sys.path.append(str(HERE.parents[1] / "check" / "macos"))
from read_bom import read_bom  # noqa: E402
from tree import read_tree  # noqa: E402
from undefined_symbols import FRAMEWORK_PROGRAMS, FRAMEWORKS, MACHINES, OLDEST, MachO  # noqa: E402

MAGIC_FAT = 0xCAFEBABE
NO_CERTIFICATE = "@{}: CMS error: missing further values (at position 0)"
DOCUMENTS = ("share/doc/corvane/LICENSE", "share/doc/corvane/README.md", "share/doc/corvane/licences/third-party.txt",
             "share/corvane/clients/as3/README.md", "share/corvane/clients/haxe/README.md",
             "share/corvane/clients/js/README.md")
SYSTEM_LIBRARIES = ("/usr/lib/libSystem.B.dylib", "/usr/lib/libiconv.2.dylib")


def run(*command, **options):
    return subprocess.run([str(word) for word in command], check=True, stdout=subprocess.PIPE, **options).stdout


def slices(data):
    """The parts of a universal file, each for one machine."""
    _, count = struct.unpack_from(">2I", data)
    for index in range(count):
        _, _, offset, size, alignment = struct.unpack_from(">5I", data, 8 + 20 * index)
        if offset % (1 << alignment):
            raise ValueError("a part does not begin where it has to")
        yield data[offset:offset + size]


def is_program(entry):
    """Whether it is an executable file that is no script."""
    return stat.S_ISREG(entry.mode) and entry.mode & stat.S_IXUSR and not entry.data.startswith(b"#!")


def errors_of_program(path, rcodesign):
    """What is wrong with an installed program; prints what it is for and what it loads."""
    data = path.read_bytes()
    if data[:4] != struct.pack(">I", MAGIC_FAT):
        yield "is not a universal file"
        return
    parts = [MachO(part, path) for part in slices(data)]
    if sorted(part.machine for part in parts) != sorted(MACHINES.values()):
        yield "is not for both processors"
    for part in parts:
        print(f"  {path.name} {part.machine}, macOS {'.'.join(map(str, part.oldest))}: {', '.join(part.libraries)}")
        if part.oldest != OLDEST[part.machine]:
            yield f"{part.machine}: is for macOS {part.oldest} on"
        if not part.signed:
            yield f"{part.machine}: is not signed"
        for library in part.libraries:
            framework = library.startswith(FRAMEWORKS) and path.name in FRAMEWORK_PROGRAMS
            if not framework and library not in SYSTEM_LIBRARIES:
                yield f"{part.machine}: loads {library}"
    yield from errors_of_signature(path, rcodesign)


def errors_of_signature(path, rcodesign):
    """What rcodesign finds: for every part the place of a certificate empty, and nothing else, such as a
    page of the program that is not as it was signed."""
    verdict = subprocess.run([rcodesign, "verify", str(path)], capture_output=True, text=True, check=False)
    problems = [line for line in verdict.stdout.splitlines() if line.startswith("@")]
    if sorted(problems) != [NO_CERTIFICATE.format(part) for part in range(len(MACHINES))]:
        yield "its signature is wrong: " + verdict.stdout + verdict.stderr


def described(entries):
    return {entry.path: (entry.mode, entry.data) for entry in entries}


def checksum(entry):
    """As the system's cksum gives it."""
    return 0 if entry.is_directory else int(run("cksum", input=entry.data).split()[0])


def errors_of_package(package, tree, scratch):
    """What is wrong with the flat package, read with other programs than wrote it."""
    listed = run("bsdtar", "-tf", package, text=True).split()
    if "Distribution" not in listed or "corvane.pkg/Payload" not in listed:
        yield f"the package holds only {listed}"
    run("bsdtar", "-C", scratch, "-xf", package)
    unpacked = scratch / "payload"
    unpacked.mkdir()
    payload = gzip.decompress((scratch / "corvane.pkg" / "Payload").read_bytes())
    run("cpio", "-idm", "--quiet", cwd=unpacked, input=payload)
    if described(read_tree(unpacked)) != described(tree):
        yield "the package's payload is not what it should install"
    bill = read_bom((scratch / "corvane.pkg" / "Bom").read_bytes())
    if bill != {entry.path: (entry.mode, len(entry.data), checksum(entry)) for entry in tree}:
        yield "the package's list of files is not that of its payload"


def errors_of_archive(archive, tree, scratch):
    run("tar", "-C", scratch, "--strip-components=1", "-xzf", archive)
    if described(read_tree(scratch / "files")) != described(tree):
        yield "the archive holds other files than it should install"
    for script in ("install.sh", "files/lib/corvane/uninstall.sh"):
        if not os.access(scratch / script, os.X_OK):
            yield f"the archive's {script} cannot be executed"


def errors(rcodesign, packages, directory):
    """Everything that is wrong."""
    tree = read_tree(directory)
    paths = {entry.path for entry in tree}
    yield from (f"{name} is not in the packages" for name in DOCUMENTS if f"./{name}" not in paths)
    for entry in tree:
        path = pathlib.Path(directory, entry.path)
        if is_program(entry):
            yield from (f"{path.name} {error}" for error in errors_of_program(path, rcodesign))
        if str(HERE.parents[1]).encode() in entry.data:
            yield f"{path} has a path of this machine in it"
    with tempfile.TemporaryDirectory() as first, tempfile.TemporaryDirectory() as second:
        yield from errors_of_package(packages + ".pkg", tree, pathlib.Path(first))
        yield from errors_of_archive(packages + ".tar.gz", tree, pathlib.Path(second))


def main():
    found = list(errors(*sys.argv[1:]))
    for error in found:
        print(f"check_packages: {error}", file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
