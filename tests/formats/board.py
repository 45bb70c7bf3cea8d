"""Squares, sets of squares and positions, as docs/formats.md has them."""

from dataclasses import dataclass

BLACK, WHITE = 0, 1


def set_of_squares(squares):
    """Square s is bit (s - 1) + (s - 1) / 10 of a set."""
    return sum(1 << ((s - 1) + (s - 1) // 10) for s in squares)


def squares_of_set(bits):
    return frozenset(s for s in range(1, 51) if bits >> ((s - 1) + (s - 1) // 10) & 1)


@dataclass(frozen=True)
class Position:
    side: int
    black_men: frozenset
    black_kings: frozenset
    white_men: frozenset
    white_kings: frozenset

    def mirrored(self):
        """The board turned by half a circle with the colours exchanged."""

        def turned(squares):
            return frozenset(51 - s for s in squares)

        return Position(1 - self.side, turned(self.white_men), turned(self.white_kings),
                        turned(self.black_men), turned(self.black_kings))


def position_from_sets(side, black, white, king):
    black, white, king = squares_of_set(black), squares_of_set(white), squares_of_set(king)
    return Position(side, black - king, black & king, white - king, white & king)


def position_from_fen(text):
    """A position as it is written; the reader of the program takes much more."""
    side, *lists = text.split(":")
    men, kings = {}, {}
    for pieces in lists:
        items = [item for item in pieces[1:].split(",") if item]
        men[pieces[0]] = frozenset(int(item) for item in items if item[0] != "K")
        kings[pieces[0]] = frozenset(int(item[1:]) for item in items if item[0] == "K")
    return Position(WHITE if side == "W" else BLACK, men["B"], kings["B"], men["W"], kings["W"])


def fen_of_position(position):
    def pieces(men, kings):
        return ",".join(("K" if s in kings else "") + str(s) for s in sorted(men | kings))

    return "%s:W%s:B%s" % ("W" if position.side == WHITE else "B",
                           pieces(position.white_men, position.white_kings),
                           pieces(position.black_men, position.black_kings))
