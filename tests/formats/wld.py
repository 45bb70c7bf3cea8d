"""Win/loss/draw databases: .cpr1 and .idx1."""

import bisect
import re
from math import comb

from board import BLACK

BLOCK_SIZE = 4096
VALUES = ("unknown", "win", "loss", "draw")
SINGLE_VALUES = {"+": 1, "-": 2, "=": 3, ".": 0}
END_OF_ROW = 6


def read_catalogues(text):
    """The rows of all catalogues, lists of (symbol, length), from egdb/catalogues_table.cpp."""
    body = text[text.index("catalogue_entries[]"):]
    body = re.sub(r"//[^\n]*", "", body[body.index("{") + 1:body.index("};")])
    numbers = iter(int(number) for number in re.findall(r"\d+", body))
    rows, runs = [], []
    for number in numbers:
        if number == END_OF_ROW:
            rows.append(runs)
            runs = []
        else:
            runs.append((number, next(numbers) | next(numbers) << 8))
    return [rows[i:i + 256] for i in range(0, len(rows), 256)]


class Subslice:
    def __init__(self, place):
        self.single = SINGLE_VALUES.get(place)
        self.blocks = []  # first position, catalogue, value map
        if self.single is None:
            where, catalogue, value_map = place.split(",")
            self.first_block, self.first_byte = (int(number) for number in where.split("/"))
            self.blocks.append((0, int(catalogue), int(value_map)))

    def add_block(self, line):
        self.blocks.append(tuple(int(number) for number in line.split(",")))


def read_index(text):
    subslices, last = {}, None
    for line in text.split():
        if line.startswith("BASE"):
            name, place = line[4:].split(":")
            *numbers, side = name.split(",")
            last = subslices[tuple(int(n) for n in numbers) + (side,)] = Subslice(place)
        else:
            last.add_block(line)
    return subslices


def sorted_sum(numbers):
    return sum(comb(number, i) for i, number in enumerate(sorted(numbers), 1))


def position_number(p):
    """The number of a position in its Slice."""
    bm, wm = [[s - 1 for s in men] for men in (p.black_men, p.white_men)]
    bk, wk = [[s - 1 for s in kings] for kings in (p.black_kings, p.white_kings)]
    low = [s for s in bm if s < 5]
    high = [s - 5 for s in bm if s >= 5]
    base = sum(comb(45 - len(bm) + j, len(wm)) * comb(40, len(bm) - j) * comb(5, j)
               for j in range(len(low) + 1, min(len(bm), 5) + 1))
    white = sorted_sum(49 - s - sum(b > s for b in bm) for s in wm)
    number = base + (white * comb(40, len(high)) + sorted_sum(high)) * comb(5, len(low)) + sorted_sum(low)
    men = bm + wm
    number = number * comb(50 - len(men), len(bk)) + sorted_sum(s - sum(m < s for m in men) for s in bk)
    others = men + bk
    return number * comb(50 - len(others), len(wk)) + sorted_sum(s - sum(o < s for o in others) for s in wk)


def canonical(p):
    black, white = len(p.black_men | p.black_kings), len(p.white_men | p.white_kings)
    if black != white:
        mirror = black < white
    elif len(p.black_kings) != len(p.white_kings):
        mirror = len(p.white_kings) > len(p.black_kings)
    else:
        mirror = p.side != BLACK
    return p.mirrored() if mirror else p


class Pair:
    """One pair of files, of Slices that are not cut into Subslices."""

    def __init__(self, index_text, data, catalogues):
        self.subslices = read_index(index_text)
        self.data = data
        self.catalogues = catalogues

    def value(self, p):
        """Of a position that cannot capture, for the side to move."""
        p = canonical(p)
        sub = self.subslices[(len(p.black_men), len(p.black_kings), len(p.white_men), len(p.white_kings), 0,
                              "b" if p.side == BLACK else "w")]
        if sub.single is not None:
            return VALUES[sub.single]
        number = position_number(p)
        i = bisect.bisect_right([block[0] for block in sub.blocks], number) - 1
        at, catalogue, value_map = sub.blocks[i]
        byte = (sub.first_block + i) * BLOCK_SIZE + (sub.first_byte if i == 0 else 0)
        while True:
            for symbol, length in self.catalogues[catalogue][self.data[byte]]:
                at += length
                if number < at:
                    fields = [value_map >> 2 * s & 3 for s in range(4)]
                    return VALUES[fields[symbol] if len(set(fields)) == 4 else 0]
            byte += 1
