"""Makes the package that macOS's Installer reads, on any system.

Usage: flat_package.py TREE SCRIPTS VERSION TIME PACKAGE

TREE is what lies under /usr/local afterwards, SCRIPTS a directory with the program "postinstall"; TIME,
in seconds since 1970, is the date of everything. The same input gives the same bytes.
"""
import pathlib
import sys

sys.dont_write_bytecode = True
from bom import write_bom  # noqa: E402
from cpio import compressed, write_cpio  # noqa: E402
from tree import read_tree  # noqa: E402
from xar import Xar  # noqa: E402

IDENTIFIER = "example.corvane"
COMPONENT = "corvane.pkg"
PREFIX = "/usr/local"
ROOT_AND_WHEEL = (0, 0)

# Directories of the prefix that are there keep their owner and mode: under /usr/local they may be
# Homebrew's.
PACKAGE_INFO = """<?xml version="1.0" encoding="utf-8"?>
<pkg-info overwrite-permissions="false" relocatable="false" identifier="{identifier}" postinstall-action="none" \
version="{version}" format-version="2" install-location="{prefix}" auth="root">
    <payload numberOfFiles="{files}" installKBytes="{kilobytes}"/>
    <scripts>
        <postinstall file="./postinstall"/>
    </scripts>
</pkg-info>
"""

# Both processors are named because Installer asks for Rosetta where a package with a script does not
# name arm64.
DISTRIBUTION = """<?xml version="1.0" encoding="utf-8"?>
<installer-gui-script minSpecVersion="1">
    <title>Corvane {version}</title>
    <options customize="never" require-scripts="false" hostArchitectures="x86_64,arm64"/>
    <domains enable_anywhere="false" enable_currentUserHome="false" enable_localSystem="true"/>
    <allowed-os-versions><os-version min="10.13"/></allowed-os-versions>
    <license file="LICENSE" mime-type="text/plain"/>
    <choices-outline><line choice="default"/></choices-outline>
    <choice id="default" title="Corvane"><pkg-ref id="{identifier}"/></choice>
    <pkg-ref id="{identifier}" version="{version}" installKBytes="{kilobytes}" auth="root" \
onConclusion="none">#{component}</pkg-ref>
</installer-gui-script>
"""


def make_package(tree, scripts, version, time):
    """The bytes of the package."""
    entries, programs = read_tree(tree), read_tree(scripts)
    values = {"identifier": IDENTIFIER, "version": version, "prefix": PREFIX, "component": COMPONENT,
              "files": len(entries), "kilobytes": sum(len(entry.data) for entry in entries) // 1024}
    licence = next(entry.data for entry in entries if entry.path == "./share/doc/corvane/LICENSE")
    archive = Xar(time)
    contents = archive.file("Distribution", DISTRIBUTION.format(**values).encode())
    contents += archive.folder("Resources", [("LICENSE", licence)])
    contents += archive.folder(COMPONENT, [
        ("PackageInfo", PACKAGE_INFO.format(**values).encode()),
        ("Bom", write_bom(entries, ROOT_AND_WHEEL, time)),
        ("Payload", compressed(write_cpio(entries, ROOT_AND_WHEEL, time))),
        ("Scripts", compressed(write_cpio(programs, ROOT_AND_WHEEL, time)))])
    return archive.to_bytes(contents)


def main():
    tree, scripts, version, time, package = sys.argv[1:]
    pathlib.Path(package).write_bytes(make_package(tree, scripts, version, int(time)))


if __name__ == "__main__":
    main()
