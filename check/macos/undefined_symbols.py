"""Lists the undefined symbols of 64-bit Mach-O executables and judges them.

Symbols of macOS's C library are counted, those of the frameworks are listed and are for one program
alone. Any other is an error, but for the names that contain the text of --tolerate.
"""

import argparse
import pathlib
import struct
import sys

MAGIC_64 = 0xFEEDFACF
MACHINES = {0x01000007: "x86_64", 0x0100000C: "arm64"}
LOAD_DYLIB = {0xC, 0x80000018, 0x8000001F}  # plain, weak, re-exported
LOAD_SYMTAB = 0x2

# Of a symbol's type byte and description, as <mach-o/nlist.h> has them.
DEBUG_MASK, TYPE_MASK, EXTERNAL = 0xE0, 0x0E, 0x01
UNDEFINED = 0x0

SYSTEM_LIBRARY = "/usr/lib/libSystem."
FRAMEWORKS = "/System/Library/Frameworks/"
# The only program that may need one: the server forks without executing a program.
FRAMEWORK_PROGRAM = "cvnopen"


def text_at(data, offset):
    return data[offset:data.index(b"\0", offset)].decode()


class MachO:
    """An executable: its machine, and its undefined symbols as (name, library) pairs."""

    def __init__(self, path):
        data = pathlib.Path(path).read_bytes()
        magic, cpu, _, _, commands, _, _, _ = struct.unpack_from("<8I", data)
        if magic != MAGIC_64 or cpu not in MACHINES:
            raise ValueError(f"{path}: not a 64-bit Mach-O file")
        self.machine = MACHINES[cpu]
        self.libraries = []
        self.undefined = []
        offset = 32
        for _ in range(commands):
            command, size = struct.unpack_from("<2I", data, offset)
            if command in LOAD_DYLIB:
                (name,) = struct.unpack_from("<I", data, offset + 8)
                self.libraries.append(text_at(data, offset + name))
            elif command == LOAD_SYMTAB:
                symtab = struct.unpack_from("<3I", data, offset + 8)
            offset += size
        self.read_symbols(data, *symtab)

    def read_symbols(self, data, symbols, count, strings):
        for index in range(count):
            name, kind, _, description, _ = struct.unpack_from("<IBBHQ", data, symbols + 16 * index)
            if kind & EXTERNAL and not kind & DEBUG_MASK and kind & TYPE_MASK == UNDEFINED:
                ordinal = description >> 8
                known = 1 <= ordinal <= len(self.libraries)
                library = self.libraries[ordinal - 1] if known else ""
                self.undefined.append((text_at(data, strings + name), library))


def judge(path, tolerated):
    """Prints what `path` leaves undefined; returns whether all of it is expected."""
    program = MachO(path)
    system = [name for name, library in program.undefined if library.startswith(SYSTEM_LIBRARY)]
    others = [pair for pair in program.undefined if not pair[1].startswith(SYSTEM_LIBRARY)]
    print(f"{program.machine}: {len(system)} undefined symbols of the C library, and:")
    good = True
    for name, library in sorted(others):
        framework = library.startswith(FRAMEWORKS) and pathlib.Path(path).name == FRAMEWORK_PROGRAM
        expected = framework or (tolerated and tolerated in name)
        print(f"  {name} ({pathlib.Path(library).name or 'no library'})"
              f"{'' if expected else ': UNEXPECTED'}")
        good = good and expected
    return bool(good)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--tolerate", default="", help="part of the names that may be undefined")
    parser.add_argument("executables", nargs="+")
    arguments = parser.parse_args()
    results = [judge(path, arguments.tolerate) for path in arguments.executables]
    return 0 if all(results) else 1


if __name__ == "__main__":
    sys.exit(main())
