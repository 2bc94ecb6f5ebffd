"""Writes a "bill of materials", the list of what a package installs, which Installer keeps as the
package's receipt. The file is a store of numbered blocks, some of which have names; its numbers are
big-endian. Neither Debian nor PyPI has a program that writes one.
"""
import struct

HEADER_ROOM = 512
TREE_BLOCK = 4096
MOST_PATHS = (TREE_BLOCK - 12) // 8  # in one node of a tree; more would need a node above
FILE, DIRECTORY, LINK = 1, 2, 3
ALL_DETAILS = 0xF  # of a path's flags: it has a mode, an owner and so on


def make_crc_table():
    """Of the polynomial of cksum(1), most significant bit first."""
    table = []
    for byte in range(256):
        value = byte << 24
        for _ in range(8):
            value = (value << 1 ^ (0x04C11DB7 if value & 0x80000000 else 0)) & 0xFFFFFFFF
        table.append(value)
    return table


CRC_TABLE = make_crc_table()


def cksum(data):
    """The checksum of cksum(1): a CRC of the data and of their number, its bytes lowest first."""
    length, size = bytearray(), len(data)
    while size:
        length.append(size & 0xFF)
        size >>= 8
    value = 0
    for byte in data + bytes(length):
        value = (value << 8 & 0xFFFFFFFF) ^ CRC_TABLE[value >> 24 ^ byte]
    return value ^ 0xFFFFFFFF


class Store:
    """Numbered blocks, from 1 on, and names for some of them."""

    def __init__(self):
        self.blocks = [b""]  # number 0 stands for none
        self.names = []

    def add(self, data):
        self.blocks.append(data)
        return len(self.blocks) - 1

    def name(self, name, block):
        self.names.append((name, block))

    def to_bytes(self):
        pointers, body, place = [(0, 0)], bytearray(), HEADER_ROOM
        for block in self.blocks[1:]:
            pointers.append((place + len(body), len(block)))
            body += block
        names = struct.pack(">I", len(self.names)) + b"".join(
            struct.pack(">IB", block, len(name)) + name.encode() for name, block in self.names)
        names_place = place + len(body)
        # Behind the blocks' pointers those of free room: two that are empty.
        index = b"".join([struct.pack(">I", len(pointers)),
                          *(struct.pack(">2I", *pointer) for pointer in pointers),
                          struct.pack(">5I", 2, 0, 0, 0, 0)])
        header = struct.pack(">8s6I", b"BOMStore", 1, len(self.blocks) - 1, names_place + len(names),
                             len(index), names_place, len(names))
        return header.ljust(HEADER_ROOM, b"\0") + bytes(body) + names + index


def add_tree(store, pairs, block_size=TREE_BLOCK):
    """A tree of one node with at most MOST_PATHS (key, value) pairs of block numbers."""
    node = struct.pack(">2H2I", 1, len(pairs), 0, 0)
    node += b"".join(struct.pack(">2I", *pair) for pair in pairs)
    root = store.add(node.ljust(block_size, b"\0"))
    return store.add(struct.pack(">4s4IB", b"tree", 1, root, block_size, len(pairs), 0))


def details(entry, owner, time):
    """The block that says what a path is."""
    kind = DIRECTORY if entry.is_directory else LINK if entry.is_link else FILE
    checksum = 0 if entry.is_directory else cksum(entry.data)
    target = entry.data + b"\0" if entry.is_link else b""
    return struct.pack(">2B2H4IB2I", kind, 1, ALL_DETAILS, entry.mode, *owner, time, len(entry.data), 1,
                       checksum, len(target)) + target


def write_bom(entries, owner, time):
    """The list of `entries`, each of which comes behind its parent, the first of them ".". Raises ValueError
    for more than MOST_PATHS."""
    if len(entries) > MOST_PATHS:
        raise ValueError(f"{len(entries)} paths are more than one node of a tree holds")
    store, numbers, pairs = Store(), {}, []
    size = sum(len(entry.data) for entry in entries)
    store.name("BomInfo", store.add(struct.pack(">3I4I", 1, len(entries) + 1, 1, 0, 0, size, 0)))
    for number, entry in enumerate(entries, 1):
        numbers[entry.path] = number
        parent, _, name = entry.path.rpartition("/")
        key = store.add(struct.pack(">2I", number, store.add(details(entry, owner, time))))
        value = store.add(struct.pack(">I", numbers.get(parent, 0)) + name.encode() + b"\0")
        pairs.append((key, value))
    store.name("Paths", add_tree(store, pairs))
    store.name("HLIndex", add_tree(store, []))
    store.name("VIndex", store.add(struct.pack(">3IB", 1, add_tree(store, [], 128), 0, 0)))
    store.name("Size64", add_tree(store, [], 128))
    return store.to_bytes()
