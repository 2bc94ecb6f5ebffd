#!/usr/bin/env python3
"""methods_test.py [ROOT]: each command of the server has a handler and a row in its table; both client
libraries, the protocol page and the README have each of them, no command more, and the two libraries the
same methods with the same parameters."""

import pathlib
import re
import sys

ROOT = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parents[2]

# What the libraries have besides the commands.
EXTRA = {"new", "setTimeout", "close", "shutdown"}

# Words that ActionScript 3 compilers refuse or misread as names: reserved ones and those that mean
# something in some places only.
AS3_WORDS = set("""as break case catch class const continue default delete do else extends false
finally for function if implements import in instanceof interface internal is native new null package
private protected public return super switch this throw to true try typeof use var void while with
each get set namespace include dynamic final override static""".split())


def server_commands():
    """The names in the table, and those of the handlers."""
    header = (ROOT / "src/commands/corvane_server.h").read_text("utf-8")
    rows = re.findall(r'^ *\{"(\w+)", &CorvaneServer::cmd(\w+),', header, re.MULTILINE)
    handlers = re.findall(r"^ *void cmd(\w+)\(", header, re.MULTILINE)
    return [name for name, _ in rows], [name[0].lower() + name[1:] for name in handlers]


def readme_commands():
    section = re.search(r"^\| Command \|.*?\n\n", (ROOT / "README.md").read_text("utf-8"), re.DOTALL | re.MULTILINE)
    return re.findall(r"^\| `(\w+)` \|", section.group(0), re.MULTILINE)


def methods(path, pattern):
    """The public methods and the names of their parameters."""
    source = (ROOT / path).read_text("utf-8")
    return {
        name: re.findall(r"(\w+)\s*:", parameters)
        for name, parameters in re.findall(pattern, source, re.DOTALL)
    }


def report(what, found, expected):
    """Prints what is missing and what is too much; returns whether all is well."""
    missing, surplus = sorted(set(expected) - set(found)), sorted(set(found) - set(expected))
    if missing:
        print(f"{what}: missing {', '.join(missing)}")
    if surplus:
        print(f"{what}: nothing that belongs there: {', '.join(surplus)}")
    return not missing and not surplus


def main():
    commands, handlers = server_commands()
    haxe = methods("clients/haxe/corvane/CorvaneClient.hx", r"\n  public function (\w+)\((.*?)\)(?::Void)? \{\n")
    as3 = methods("clients/as3/corvane/CorvaneClient.as", r"\n    public function (\w+)\((.*?)\)(?::void)? \{\n")
    words = AS3_WORDS.intersection(name for method in as3.items() for name in (method[0], *method[1]))
    as3 = {{"CorvaneClient": "new", "delete_": "delete"}.get(name, name): names for name, names in as3.items()}
    headings = re.findall(r"^### (\w+)$", (ROOT / "docs/protocol.md").read_text("utf-8"), re.MULTILINE)

    well = report("the server's table", commands, handlers) and bool(commands)
    well &= report("README.md", readme_commands(), {"shutdown", *commands})
    well &= report("names in ActionScript that it keeps for itself", words, [])
    well &= report("clients/haxe", haxe, EXTRA.union(commands))
    well &= report("clients/as3", as3, EXTRA.union(commands))
    well &= report("docs/protocol.md", headings, commands)
    for name in sorted(haxe.keys() & as3.keys()):
        if haxe[name] != as3[name]:
            print(f"{name}: the parameters are {haxe[name]} in Haxe, {as3[name]} in ActionScript")
            well = False
    sys.exit(0 if well else 1)


if __name__ == "__main__":
    main()
