"""Writes a xar archive: a header, a compressed table of contents in XML, then a heap with the bytes of
the files, uncompressed. The heap begins with the SHA-1 sum of the compressed table.
"""
import datetime
import hashlib
import struct
import zlib
from xml.sax.saxutils import escape

HEADER_SIZE = 28
SHA1, SHA1_SIZE = 1, 20


class Xar:
    """An archive in the making. Its files and folders get the date `time`, in seconds since 1970."""

    def __init__(self, time):
        self.date = datetime.datetime.fromtimestamp(time, datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")
        self.heap = bytearray(SHA1_SIZE)
        self.entries = 0

    def opening(self, name, kind, mode):
        self.entries += 1
        return (f'<file id="{self.entries}"><name>{escape(name)}</name><type>{kind}</type><mode>0{mode:o}</mode>'
                f"<uid>0</uid><gid>0</gid><user>root</user><group>wheel</group>"
                f"<mtime>{self.date}</mtime>")

    def file(self, name, data):
        """The XML of a file; its data go to the heap."""
        place, checksum = len(self.heap), hashlib.sha1(data).hexdigest()
        self.heap += data
        return (self.opening(name, "file", 0o644) + f"<data><length>{len(data)}</length><offset>{place}</offset>"
                f'<size>{len(data)}</size><encoding style="application/octet-stream"/>'
                f'<extracted-checksum style="sha1">{checksum}</extracted-checksum>'
                f'<archived-checksum style="sha1">{checksum}</archived-checksum></data></file>\n')

    def folder(self, name, files):
        """The XML of a folder of files, given as (name, data) pairs."""
        opening = self.opening(name, "directory", 0o755)
        return opening + "".join(self.file(*pair) for pair in files) + "</file>\n"

    def to_bytes(self, contents):
        """The archive with this XML of its files and folders."""
        table = (f'<?xml version="1.0" encoding="UTF-8"?>\n<xar><toc><checksum style="sha1"><size>{SHA1_SIZE}</size>'
                 f"<offset>0</offset></checksum><creation-time>{self.date.rstrip('Z')}</creation-time>\n"
                 f"{contents}</toc></xar>\n").encode()
        packed = zlib.compress(table, 9)
        self.heap[:SHA1_SIZE] = hashlib.sha1(packed).digest()
        header = struct.pack(">4s2H2QI", b"xar!", HEADER_SIZE, 1, len(packed), len(table), SHA1)
        return header + packed + bytes(self.heap)
