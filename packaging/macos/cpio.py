"""Writes the payload of a package: a cpio archive of the portable kind ("odc"), which has all numbers
in octal digits. Installer reads it compressed with gzip.
"""
import gzip

MAGIC = b"070707"
TRAILER = "TRAILER!!!"


def octal(number, digits):
    text = b"%0*o" % (digits, number)
    if len(text) != digits:
        raise ValueError(f"{number} has no room in {digits} octal digits")
    return text


def record(inode, entry_mode, path, data, owner, time):
    """One header with its name and data."""
    name = path.encode() + b"\0"
    uid, gid = owner
    links = 1
    numbers = (0, inode, entry_mode, uid, gid, links, 0)  # device, ..., device of a device file
    return b"".join([MAGIC, *(octal(number, 6) for number in numbers), octal(time, 11),
                     octal(len(name), 6), octal(len(data), 11), name, data])


def write_cpio(entries, owner, time):
    """The archive of `entries`; each gets an inode number of its own, as there are no hard links."""
    records = [record(inode, entry.mode, entry.path, entry.data, owner, time)
               for inode, entry in enumerate(entries, 1)]
    return b"".join([*records, record(0, 0, TRAILER, b"", (0, 0), 0)])


def compressed(data):
    """As gzip -9n: neither a name nor a date."""
    return gzip.compress(data, compresslevel=9, mtime=0)
