"""Reads a "bill of materials" from its blocks, independently of what bom.py would write: through every
node of the tree of paths, by the block numbers in the file.
"""
import struct

HEADER = ">8s6I"


class Blocks:
    """The blocks of a file by their numbers, and the numbers of those that have names."""

    def __init__(self, data):
        self.data = data
        magic, version, _, index, _, names, _ = struct.unpack_from(HEADER, data)
        if (magic, version) != (b"BOMStore", 1):
            raise ValueError("not a bill of materials")
        (count,) = struct.unpack_from(">I", data, index)
        self.places = [struct.unpack_from(">2I", data, index + 4 + 8 * number) for number in range(count)]
        (count,) = struct.unpack_from(">I", data, names)
        self.names, place = {}, names + 4
        for _ in range(count):
            number, length = struct.unpack_from(">IB", data, place)
            self.names[data[place + 5:place + 5 + length].decode()] = number
            place += 5 + length

    def __getitem__(self, number):
        place, length = self.places[number]
        return self.data[place:place + length]


def pairs_of_tree(blocks, name):
    """The (key, value) pairs of the tree with this name, by their blocks."""
    magic, _, node, _, count, _ = struct.unpack_from(">4s4IB", blocks[blocks.names[name]])
    if magic != b"tree":
        raise ValueError(f"{name} is not a tree")
    while not struct.unpack_from(">H", blocks[node])[0]:  # down to the first leaf
        (node,) = struct.unpack_from(">I", blocks[node], 12)
    found = []
    while node:
        _, entries, node_after, _ = struct.unpack_from(">2H2I", blocks[node])
        found += [struct.unpack_from(">2I", blocks[node], 12 + 8 * index) for index in range(entries)]
        node = node_after
    if len(found) != count:
        raise ValueError(f"{name} has {len(found)} entries, not {count}")
    return [(blocks[key], blocks[value]) for key, value in found]


def read_bom(data):
    """Of each path: its mode, size and checksum."""
    blocks = Blocks(data)
    paths, found = {}, {}
    for key, value in pairs_of_tree(blocks, "Paths"):
        number, block = struct.unpack(">2I", key)
        (parent,) = struct.unpack_from(">I", value)
        name = value[4:value.index(b"\0", 4)].decode()
        paths[number] = f"{paths[parent]}/{name}" if parent else name
        _, _, _, mode, _, _, _, size, _, checksum, _ = struct.unpack_from(">2B2H4IB2I", blocks[block])
        found[paths[number]] = (mode, size, checksum)
    return found
