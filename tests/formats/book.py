"""Tessarin.odb."""

import struct
from collections import namedtuple

from board import position_from_sets

HEADER_SIZE = 32
NO_MOVE = 127

Entry = namedtuple("Entry", "position best second value")


def plain(content):
    table = bytes(((b - 0x50) & 0xF0) | ((b - 0x05) & 0x0F) for b in range(256))
    return content[:HEADER_SIZE] + content[HEADER_SIZE:].translate(table)


def mix(a, b, c):
    a = ((a - b - c) ^ (c >> 13)) & 0xFFFFFFFF
    b = ((b - c - a) ^ (a << 8)) & 0xFFFFFFFF
    c = ((c - a - b) ^ (b >> 13)) & 0xFFFFFFFF
    a = ((a - b - c) ^ (c >> 12)) & 0xFFFFFFFF
    b = ((b - c - a) ^ (a << 16)) & 0xFFFFFFFF
    c = ((c - a - b) ^ (b >> 5)) & 0xFFFFFFFF
    a = ((a - b - c) ^ (c >> 3)) & 0xFFFFFFFF
    b = ((b - c - a) ^ (a << 10)) & 0xFFFFFFFF
    c = ((c - a - b) ^ (b >> 15)) & 0xFFFFFFFF
    return a, b, c


def position_hash(black, white, king, side):
    words = struct.unpack("<6I", struct.pack("<3Q", black, white, king))
    a, b, c = 0x9E3779B9, 0x9E3779B9, side
    for i in (0, 3):
        a, b, c = mix((a + words[i]) & 0xFFFFFFFF, (b + words[i + 1]) & 0xFFFFFFFF,
                      (c + words[i + 2]) & 0xFFFFFFFF)
    return mix(a, b, (c + 24) & 0xFFFFFFFF)[2]


class Book:
    def __init__(self, content):
        content = plain(content)
        self.version = content[:16].split(b"\0")[0].decode("ascii")
        self.positions, self.slots, self.probes, king_sets = struct.unpack_from("<4i", content, 16)
        self.king_sets = struct.unpack_from("<%dQ" % king_sets, content, HEADER_SIZE)
        self.table = [struct.unpack_from("<IQQ", content, HEADER_SIZE + 8 * king_sets + 20 * i)
                      for i in range(self.slots)]

    def key(self, slot):
        """Black, white, kings and side of a slot that is not empty."""
        info, black, white = self.table[slot]
        king = self.king_sets[info >> 9 & 0x7FF] if info & 1 else 0
        return black, white, king, info >> 1 & 1

    def entry(self, slot):
        info = self.table[slot][0]
        black, white, king, side = self.key(slot)
        value = info >> (20 if info & 1 else 16) & 0xFFF
        return Entry(position_from_sets(side, black, white, king), info >> 2 & 0x7F,
                     NO_MOVE if info & 1 else info >> 9 & 0x7F, value - 4096 if value > 2047 else value)

    def filled_slots(self):
        return [slot for slot in range(self.slots) if self.table[slot][1]]

    def find(self, key):
        """The slot of the position, or None."""
        slot = position_hash(*key) % self.slots
        for _ in range(self.probes):
            if not self.table[slot][1]:
                return None
            if self.key(slot) == key:
                return slot
            slot = (slot + 1) % self.slots
        return None
