#!/usr/bin/env python3
"""methods_test.py [ROOT]: each command of the server has a handler and a row in its table; the client
libraries, the protocol page and the README have each of them, no command more, and the libraries the
same methods with the same parameters, but for the callback that a promise takes the place of."""

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


def methods(path, pattern, parameter=r"(\w+)\s*:"):
    """The public methods and the names of their parameters."""
    source = (ROOT / path).read_text("utf-8")
    return {
        name: re.findall(parameter, parameters)
        for name, parameters in re.findall(pattern, source, re.DOTALL)
    }


def javascript():
    """Those of the module and those of its types, with the other libraries' name of the constructor."""
    module = methods("clients/js/corvane/client.js", r"\n  (?:async )?(\w+)\(([^)]*)\) \{\n", r"(\w+)(?: = \S+?)?(?:,|$)")
    types = methods("clients/js/corvane/index.d.ts", r"\n  (\w+)\(([^)]*)\)(?:: (?:void|Promise<[^;]*))?;", r"(\w+)\??: ")
    others = {"opened", "received", "lost", "send"}  # of the interfaces that a transport has
    names = {"constructor": "new"}
    return [{names.get(name, name): words for name, words in found.items() if name not in others}
            for found in (module, types)]


def same_parameters(libraries, left_out=()):
    """Prints where the libraries differ; returns whether they do not."""
    well = True
    for name in sorted(set.intersection(*map(set, libraries.values())).difference(left_out)):
        lists = {where: [word for word in found[name] if word not in left_out] for where, found in libraries.items()}
        if len(set(map(tuple, lists.values()))) > 1:
            print(f"{name}: the parameters are {lists}")
            well = False
    return well


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
    module, types = javascript()
    headings = re.findall(r"^### (\w+)$", (ROOT / "docs/protocol.md").read_text("utf-8"), re.MULTILINE)

    well = report("the server's table", commands, handlers) and bool(commands)
    well &= report("README.md", readme_commands(), {"shutdown", *commands})
    well &= report("names in ActionScript that it keeps for itself", words, [])
    well &= report("clients/haxe", haxe, EXTRA.union(commands))
    well &= report("clients/as3", as3, EXTRA.union(commands))
    well &= report("docs/protocol.md", headings, commands)
    well &= report("clients/js", module, EXTRA.union(commands))
    well &= report("the types of clients/js", types, EXTRA.union(commands))
    well &= same_parameters({"Haxe": haxe, "ActionScript": as3})
    well &= same_parameters({"Haxe": haxe, "JavaScript": module, "TypeScript": types}, left_out=("done", "new"))
    sys.exit(0 if well else 1)


if __name__ == "__main__":
    main()
