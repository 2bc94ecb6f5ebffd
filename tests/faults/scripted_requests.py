"""The scripted requests. Each has a set-up of its own and a check of what it left behind, so that
one that failed does not make another one fail."""

import filecmp
import re
from html import unescape

TEXT = "".join(f"line {i} <&> \"quoted\"\n" for i in range(300))
BIG = bytes(i * 7 % 251 for i in range(300_000))
LONG_TEXT = "0123456789abcdef" * 20_000
WRITTEN = "0123456789abcdef" * 1024

SUCCESS, FAILED, CLOSED = "SUCCESS", "FAILED", "closed"


def prepare(work, home):
    """Makes the files that the requests work on."""
    (work / "in.txt").write_text(TEXT)
    (work / "big.bin").write_bytes(BIG)
    (work / "long.txt").write_text(LONG_TEXT)
    for tree in ("tree", "gonetree"):
        (work / tree / "sub" / "deep").mkdir(parents=True)
        (work / tree / "a.txt").write_text("a" * 100)
        (work / tree / "sub" / "b.txt").write_text("b" * 5000)
        (work / tree / "sub" / "deep" / "c.bin").write_bytes(BIG[:70_000])
    (work / "treecopy").mkdir()
    (work / "movedir").mkdir()
    (work / "gone.txt").write_text("gone")
    (work / "move.txt").write_text(TEXT)
    (home / ".corvane").mkdir()
    (home / ".corvane" / "registry.txt").write_text("HKEY_USERS/a:b=the value\n")


def value_of(reply):
    match = re.search(r'Value="([^"]*)"', reply)
    return match and match[1]



class Request:
    """A request, and check(work, outcome, reply) that returns what is wrong, or None."""

    def __init__(self, *lines, check):
        self.text = "\n".join(lines)
        self.check = check

    def __str__(self):
        return self.text.split("\n", 2)[0] + " " + self.text.partition("\n")[2].split("\n", 1)[0][:20]


def answers(expected):
    """A request that only reads: a success has to carry the right answer."""
    return lambda _work, outcome, reply: None if outcome != SUCCESS or expected(reply) else "wrong answer"


def whole_or_absent(source, target):
    """The target is complete after a success, and never there in part."""

    def check(work, outcome, _reply):
        wanted = source(work)
        path = work / target
        if not path.exists():
            return "target is missing" if outcome == SUCCESS else None
        if path.read_bytes() != wanted:
            return "target is incomplete"
        return "target was left behind" if outcome == FAILED else None

    return check


def moved(work, outcome, _reply):
    source, target = work / "move.txt", work / "moved.txt"
    if target.exists() and target.read_text() != TEXT:
        return "target is incomplete"
    if not target.exists() and (not source.exists() or source.read_text() != TEXT):
        return "the data is lost"
    return "source is still there" if outcome == SUCCESS and source.exists() else None


def tree_copied(work, outcome, _reply):
    for source in (work / "tree").rglob("*"):
        target = work / "treecopy" / source.relative_to(work / "tree")
        if not target.exists():
            if outcome == SUCCESS:
                return f"{target.name} is missing"
        elif source.is_file() and not filecmp.cmp(source, target, shallow=False):
            return f"{target.name} is incomplete"
    return None


def gone(name):
    return lambda work, outcome, _reply: "still there" if outcome == SUCCESS and (work / name).exists() else None


def there(name):
    return lambda work, outcome, _reply: "not there" if outcome == SUCCESS and not (work / name).is_dir() else None


def nothing(_work, _outcome, _reply):
    return None


# Each group has a connection of its own.
GROUPS = [
    [
        Request("userDir", check=answers(lambda reply: value_of(reply).endswith("/home"))),
        Request("write", "out.txt", WRITTEN, check=whole_or_absent(lambda _: WRITTEN.encode(), "out.txt")),
        Request("readText", "in.txt", check=answers(lambda reply: unescape(
            re.search(r'extra="">(.*)</Detail>', reply, re.S)[1]) == TEXT)),
        Request("readText", "long.txt", check=answers(lambda reply: LONG_TEXT in reply)),
        Request("readByte", "in.txt", "5", check=answers(lambda reply: value_of(reply) == str(ord(TEXT[5])))),
        Request("listDir", "tree", check=answers(lambda reply: "a.txt" in reply and "sub" in reply)),
    ],
    [
        Request("makeDir", "newdir", check=there("newdir")),
        Request("copy", "big.bin", "copy.bin", check=whole_or_absent(lambda _: BIG, "copy.bin")),
        Request("copy", "in.txt", "small.txt", check=whole_or_absent(lambda _: TEXT.encode(), "small.txt")),
        Request("copy", "tree", "treecopy", check=tree_copied),
        Request("rename", "move.txt", "moved.txt", check=moved),
        Request("rename", "movedir", "moveddir", check=there("moveddir")),
    ],
    [
        Request("delete", "gone.txt", check=gone("gone.txt")),
        Request("delete", "gonetree", check=gone("gonetree")),
        Request("execute", "program", check=nothing),
        Request("getScreenRect", check=answers(lambda reply: 'Value="1920"' in reply and 'Value="1080"' in reply)),
        Request("regQueryValue", "HKEY_USERS", "a", "b", check=answers(lambda reply: value_of(reply) == "the value")),
    ],
]
