"""weights.bin and what the evaluation makes of it."""

import struct

from board import BLACK

TABLES = 4
ENTRIES = 3**12
WHOLE_SIZE = TABLES * ENTRIES * 4 + 20
REGIONS = (
    (1, 2, 3, 6, 7, 8, 11, 12, 13, 16, 17, 18),
    (3, 4, 5, 8, 9, 10, 13, 14, 15, 18, 19, 20),
    (16, 17, 18, 21, 22, 23, 26, 27, 28, 31, 32, 33),
    (12, 13, 14, 17, 18, 19, 22, 23, 24, 27, 28, 29),
)
PARAMETERS = ("lr_bal", "tempo", "men", "kings", "has_kings")


class Weights:
    def __init__(self, content):
        content = content[:WHOLE_SIZE].ljust(WHOLE_SIZE, b"\0")
        numbers = struct.unpack("<%dh" % (WHOLE_SIZE // 2), content)
        pairs = list(zip(numbers[0::2], numbers[1::2]))
        self.tables = [pairs[t * ENTRIES:(t + 1) * ENTRIES] for t in range(TABLES)]
        self.parameters = dict(zip(PARAMETERS, pairs[TABLES * ENTRIES:]))


def entry_number(region, black_men, white_men):
    number = 0
    for square in region:
        number = number * 3 + (2 if square in black_men else 0 if square in white_men else 1)
    return number


def row(square):
    return (square - 1) // 5


def column(square):
    return (square - 1) % 5 * 2 + (1 if row(square) % 2 == 0 else 0)


def lean(men):
    return abs(sum(2 * column(s) - 9 for s in men))


def features(p):
    return {
        "lr_bal": lean(p.white_men) - lean(p.black_men),
        "tempo": sum(row(s) for s in p.black_men) - sum(9 - row(s) for s in p.white_men),
        "men": len(p.black_men) - len(p.white_men),
        "kings": max(0, len(p.black_kings) - 1) - max(0, len(p.white_kings) - 1),
        "has_kings": bool(p.black_kings) - bool(p.white_kings),
    }


def phase(p):
    def one_side(rows_gone):
        return sum(2 if rows <= 3 else 1 for rows in rows_gone)

    return one_side(row(s) for s in p.black_men) + one_side(9 - row(s) for s in p.white_men)


def toward_zero(number, divisor):
    return number // divisor if number >= 0 else -(-number // divisor)


def blended(weights, p):
    """The score for black before anything is done to large scores and to endings with kings."""
    turned = p.mirrored()
    sums = [0, 0]
    for table, region in zip(weights.tables, REGIONS):
        black = table[entry_number(region, p.black_men, p.white_men)]
        white = table[entry_number(region, turned.black_men, turned.white_men)]
        for i in range(2):
            sums[i] += black[i] - white[i]
    for name, count in features(p).items():
        for i in range(2):
            sums[i] += count * weights.parameters[name][i]
    value = sums[0] * phase(p) + sums[1] * (80 - phase(p))
    return toward_zero(value + (2000 if value >= 0 else -2000), 4000)


def damped(score, p):
    """Of endings in which both sides have kings: the score, and whether nothing more is done to it."""
    fewer = min(len(p.black_kings), len(p.white_kings))
    score = toward_zero(3 * score, fewer + 3)
    black, white = len(p.black_men | p.black_kings), len(p.white_men | p.white_kings)
    if abs(black - white) >= 3:
        return score, False
    if max(black, white) <= 3:
        return (1 if black > white or (black == white and p.side == BLACK) else -1), True
    drawish = (fewer >= 2) + (len(p.black_kings) == len(p.white_kings))
    divisors = {4: (2, 4, 16), 5: (1, 2, 4)}.get(max(black, white), (1, 1, 1))
    return toward_zero(score, divisors[drawish]), False


def evaluate(weights, p):
    """For the side to move."""
    score = blended(weights, p)
    if abs(score) > 1500:
        score = toward_zero(score, 8) + (1500 if score > 0 else -1500)
    final = False
    if phase(p) <= 40 and p.black_kings and p.white_kings:
        score, final = damped(score, p)
    if not final:
        score = toward_zero(score, 2) * 2
    return score if p.side == BLACK else -score
