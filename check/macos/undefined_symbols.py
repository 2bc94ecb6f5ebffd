"""Lists the undefined symbols of 64-bit Mach-O executables and judges them.

Symbols of macOS's C library are counted, those of other libraries are listed. It is an error when

- another program than cvnopen and cvnwinfo needs a framework;
- the C library of the oldest system that an executable is for has no such symbol, as far as
  system_symbols.txt beside this file tells; weak references are for newer systems and may be missing,
  and what --tests names, which nobody installs, may need a newer system;
- a symbol belongs to no library of the system, but for the names that contain the text of --tolerate;
- an executable is for another oldest system than it should be.
"""

import argparse
import fnmatch
import pathlib
import struct
import sys

MAGIC_64 = 0xFEEDFACF
MACHINES = {0x01000007: "x86_64", 0x0100000C: "arm64"}
OLDEST = {"x86_64": (10, 13), "arm64": (11, 0)}
LOAD_DYLIB = {0xC, 0x80000018, 0x8000001F}  # plain, weak, re-exported
LOAD_SYMTAB = 0x2
CODE_SIGNATURE = 0x1D
VERSION_MIN, BUILD_VERSION = 0x24, 0x32

# Of a symbol's type byte and description, as <mach-o/nlist.h> has them.
DEBUG_MASK, TYPE_MASK, EXTERNAL = 0xE0, 0x0E, 0x01
UNDEFINED = 0x0
WEAK_REFERENCE = 0x40

SYSTEM_LIBRARY = "/usr/lib/libSystem."
FRAMEWORKS = "/System/Library/Frameworks/"
# The only programs that may need one: the server forks without executing a program.
FRAMEWORK_PROGRAMS = ("cvnopen", "cvnwinfo")
OTHER_LIBRARIES = ("/usr/lib/libiconv.2.",)
KNOWN = pathlib.Path(__file__).with_name("system_symbols.txt")


def text_at(data, offset):
    return data[offset:data.index(b"\0", offset)].decode()


class MachO:
    """An executable for one machine: which, its oldest system as (major, minor), the libraries that it
    loads, whether it is signed, and its undefined symbols as (name, library) pairs, without weak
    references. `path` is for messages."""

    def __init__(self, data, path):
        magic, cpu, _, _, commands, _, _, _ = struct.unpack_from("<8I", data)
        if magic != MAGIC_64 or cpu not in MACHINES:
            raise ValueError(f"{path}: not a 64-bit Mach-O file")
        self.machine = MACHINES[cpu]
        self.oldest = None
        self.libraries = []
        self.undefined = []
        self.signed = False
        offset = 32
        for _ in range(commands):
            command, size = struct.unpack_from("<2I", data, offset)
            if command in LOAD_DYLIB:
                (name,) = struct.unpack_from("<I", data, offset + 8)
                self.libraries.append(text_at(data, offset + name))
            elif command == LOAD_SYMTAB:
                symtab = struct.unpack_from("<3I", data, offset + 8)
            elif command == CODE_SIGNATURE:
                self.signed = True
            elif command in (VERSION_MIN, BUILD_VERSION):
                (version,) = struct.unpack_from("<I", data, offset + (8 if command == VERSION_MIN else 12))
                self.oldest = (version >> 16, version >> 8 & 0xFF)
            offset += size
        self.read_symbols(data, *symtab)

    def read_symbols(self, data, symbols, count, strings):
        for index in range(count):
            name, kind, _, description, _ = struct.unpack_from("<IBBHQ", data, symbols + 16 * index)
            if kind & EXTERNAL and not kind & DEBUG_MASK and kind & TYPE_MASK == UNDEFINED \
                    and not description & WEAK_REFERENCE:
                ordinal = description >> 8
                known = 1 <= ordinal <= len(self.libraries)
                library = self.libraries[ordinal - 1] if known else ""
                self.undefined.append((text_at(data, strings + name), library))


def known_symbols():
    """A function that tells whether system_symbols.txt has a name for a machine."""
    lines = [line for line in KNOWN.read_text().split("\n") if line and not line.startswith("#")]
    only = {machine: {name for each, _, name in (line.partition(" ") for line in lines)
                      if each == machine} for machine in MACHINES.values()}
    names = [line for line in lines if " " not in line]
    plain = set(names)
    patterns = [name for name in names if "*" in name]
    return lambda name, machine: name in plain or name in only[machine] or \
        any(fnmatch.fnmatchcase(name, each) for each in patterns)


def judge(path, tolerated, known):
    """Prints what `path` leaves undefined; returns whether all of it is expected."""
    program = MachO(pathlib.Path(path).read_bytes(), path)
    system = [name for name, library in program.undefined if library.startswith(SYSTEM_LIBRARY)]
    others = [pair for pair in program.undefined if not pair[1].startswith(SYSTEM_LIBRARY)]
    print(f"{program.machine} {pathlib.Path(path).name}: {len(system)} undefined symbols of the C "
          f"library{', and:' if others else ''}")
    errors = [f"{name}: not known to be in the C library of macOS "
              f"{'.'.join(map(str, OLDEST[program.machine]))}, see {KNOWN.name}"
              for name in sorted(system) if not known(name, program.machine)]
    for name, library in sorted(others):
        print(f"  {name} ({pathlib.Path(library).name or 'no library'})")
        framework = library.startswith(FRAMEWORKS) and pathlib.Path(path).name in FRAMEWORK_PROGRAMS
        if not (framework or library.startswith(OTHER_LIBRARIES) or (tolerated and tolerated in name)):
            errors.append(f"{name}: UNEXPECTED")
    if program.oldest != OLDEST[program.machine]:
        errors.append(f"for macOS {program.oldest} on, not {OLDEST[program.machine]}")
    for error in errors:
        print(f"{path}: {error}", file=sys.stderr)
    return not errors


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--tolerate", default="", help="part of the names that may be undefined")
    parser.add_argument("--tests", nargs="*", default=[], help="executables that are not installed")
    parser.add_argument("executables", nargs="+")
    arguments = parser.parse_args()
    known = known_symbols()
    results = [judge(path, arguments.tolerate, known) for path in arguments.executables]
    results += [judge(path, arguments.tolerate, lambda name, machine: True) for path in arguments.tests]
    return 0 if all(results) else 1


if __name__ == "__main__":
    sys.exit(main())
