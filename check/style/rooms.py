#!/usr/bin/env python3
"""Checks that every room of the program includes only what its order allows, and that what differs
between systems stays in src/platform.

    rooms.py ROOT
"""

import re
import sys
from pathlib import Path

# What each room may include besides itself: whole rooms, or single headers. Those of a higher room see
# all of a lower one.
BASE = {"text"}
PLATFORM = BASE | {"platform"}
LOG = PLATFORM | {"log"}
FILES = LOG | {"fileutil"}
COMMANDS = FILES | {"server", "reply", "launch"}
ALLOWED = {
    "src/text": set(),
    "src/platform": BASE,
    "src/log": PLATFORM,
    "src/fileutil": LOG,
    "src/server": LOG,
    "src/reply": FILES,
    "src/launch": FILES,
    "src/commands": COMMANDS,
    "src/app": COMMANDS | {"commands"},
    "src/cmdl": BASE,
    "tools/cvnopen": set(),
    "tools/cvnwinfo": set(),
    # The player reads the server's configuration as the server does, and the size of a movie.
    "tools/corvane-play": FILES | {"launch/movie_size.h", "app/settings.h"},
    # Of the server, the client has nothing but the names of commands and keys.
    "tools/corvanectl": PLATFORM | {"cmdl", "commands/command_syntax.h", "app/setting_keys.h"},
}
INCLUDE = re.compile(r'\s*#\s*include\s+"(([^"/]+)/[^"]*)"')
CONDITION = re.compile(r"\s*#\s*(?:el)?if(?:n?def)?\b.*"
                       r"\b(?:__APPLE__|__MACH__|__linux(?:__)?|__unix(?:__)?|_WIN32|__\w+BSD__)")


def lines_of(root, directory):
    for path in sorted((root / directory).rglob("*")):
        if path.suffix in (".h", ".cpp"):
            for number, line in enumerate(path.read_text().splitlines(), 1):
                yield f"{path.relative_to(root)}:{number}", line


def wrong_includes(root):
    for room, allowed in ALLOWED.items():
        for place, line in lines_of(root, room):
            match = INCLUDE.match(line)
            if match and not {match[1], match[2]} & (allowed | {Path(room).name}):
                yield f"{place}: {room} may not include {match[1]}"


def unknown_rooms(root):
    for top in ("src", "tools"):
        for directory in sorted((root / top).iterdir()):
            if directory.is_dir() and f"{top}/{directory.name}" not in ALLOWED:
                yield f"{top}/{directory.name}: its place in the order is not known here"


def wrong_conditions(root):
    for top in ("src", "tools"):
        for place, line in lines_of(root, top):
            if CONDITION.match(line) and not place.startswith("src/platform/"):
                yield f"{place}: what differs between systems belongs in src/platform"


def main(root):
    problems = [*unknown_rooms(root), *wrong_includes(root), *wrong_conditions(root)]
    print(*problems, sep="\n", end="\n" if problems else "")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1])))
