"""What a package installs, as its archives need it: the entries of a directory in a fixed order, with
the owner, group and date that they have on the user's machine.
"""
import dataclasses
import os
import pathlib
import stat


@dataclasses.dataclass(frozen=True)
class Entry:
    """One path of the tree, "." for its top, then "./bin" and so on."""

    path: str
    mode: int  # with the bits of the type
    data: bytes  # of a file; the target of a symbolic link

    @property
    def is_directory(self):
        return stat.S_ISDIR(self.mode)

    @property
    def is_link(self):
        return stat.S_ISLNK(self.mode)


def entry_of(top, path):
    """The entry of `path` below `top`; raises ValueError for what a package cannot hold."""
    name = os.path.join(".", path.relative_to(top)) if path != top else "."
    mode = path.lstat().st_mode
    if stat.S_ISLNK(mode):
        return Entry(name, stat.S_IFLNK | 0o755, os.readlink(path).encode())
    if stat.S_ISDIR(mode):
        return Entry(name, stat.S_IFDIR | 0o755, b"")
    if not stat.S_ISREG(mode):
        raise ValueError(f"{path} is neither a file nor a directory nor a link")
    return Entry(name, stat.S_IFREG | (0o755 if mode & stat.S_IXUSR else 0o644), path.read_bytes())


def read_tree(directory):
    """All entries of a directory, each behind its parent, in the order of the bytes of their names."""
    top = pathlib.Path(directory)
    paths = sorted(top.rglob("*"), key=lambda path: [part.encode() for part in path.parts])
    return [entry_of(top, path) for path in [top, *paths]]
