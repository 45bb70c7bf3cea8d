#include "tests/eval/slow_evaluation.h"

#include <cstdlib>

#include "eval/weights.h"

namespace {

// The squares of the four regions.
constexpr int REGION_SQUARES[4][12] = {{1, 2, 3, 6, 7, 8, 11, 12, 13, 16, 17, 18},
                                       {3, 4, 5, 8, 9, 10, 13, 14, 15, 18, 19, 20},
                                       {16, 17, 18, 21, 22, 23, 26, 27, 28, 31, 32, 33},
                                       {12, 13, 14, 17, 18, 19, 22, 23, 24, 27, 28, 29}};

// The weight of the column of a square is that of the first or second row's square below it: 1 to 10.
constexpr int COLUMN_WEIGHTS[10] = {-7, -3, 1, 5, 9, -9, -5, -1, 3, 7};

enum class Piece { NONE, MAN, KING };

Piece piece_on(const Position& position, int color, int square) {
    const uint64_t mask = set_of_square(square);
    if (!(pieces_of(position, color) & mask)) return Piece::NONE;
    return position.king & mask ? Piece::KING : Piece::MAN;
}

bool man_on(const Position& position, int color, int square) {
    return piece_on(position, color, square) == Piece::MAN;
}

int count(const Position& position, int color, Piece piece) {
    int result = 0;
    for (int square = 1; square <= 50; ++square) result += piece_on(position, color, square) == piece;
    return result;
}

int row(int square) { return (square - 1) / 5; }

int forward_index(const Position& position, const int (&squares)[12]) {
    int index = 0;
    for (const int square : squares)
        index = 3 * index + 1 + man_on(position, BLACK, square) - man_on(position, WHITE, square);
    return index;
}

int rotated_index(const Position& position, const int (&squares)[12]) {
    int index = 0;
    for (const int square : squares)
        index = 3 * index + 1 + man_on(position, WHITE, 51 - square) - man_on(position, BLACK, 51 - square);
    return index;
}

int moment(const Position& position, int color) {
    int result = 0;
    for (int square = 1; square <= 50; ++square)
        if (man_on(position, color, square)) result += COLUMN_WEIGHTS[(square - 1) % 10];
    return result;
}

int tempo(const Position& position, int color) {
    int result = 0;
    for (int square = 1; square <= 50; ++square)
        if (man_on(position, color, square)) result += color == BLACK ? row(square) : 9 - row(square);
    return result;
}

int further_kings(int kings) { return kings > 1 ? kings - 1 : 0; }

// The ending rule for small numbers of kings; `exact` is set if the result is final for the side asked.
int64_t damped(int64_t s, const Position& position, int side, bool& exact) {
    const int bk = count(position, BLACK, Piece::KING);
    const int wk = count(position, WHITE, Piece::KING);
    const int k = bk < wk ? bk : wk;
    if (k == 0) return s;
    const int tb = bk + count(position, BLACK, Piece::MAN);
    const int tw = wk + count(position, WHITE, Piece::MAN);
    s = 3 * s / (k + 3);
    if (std::abs(tb - tw) >= 3) return s;
    const int m = tb > tw ? tb : tw;
    const int c = (k >= 2 ? 1 : 0) + (bk == wk ? 1 : 0);
    if (m <= 3) {
        exact = true;
        if (tb > tw) return side == BLACK ? 1 : -1;
        if (tb < tw) return side == BLACK ? -1 : 1;
        return 1;
    }
    if (m == 4) return c == 0 ? s / 2 : c == 1 ? s / 4 : s / 16;
    if (m == 5) return c == 0 ? s : c == 1 ? s / 2 : s / 4;
    return s;
}

}  // namespace

int32_t slow_phase(const Position& position) {
    int phase = 0;
    for (int square = 1; square <= 50; ++square) {
        const int r = row(square);
        if (man_on(position, BLACK, square) && r <= 8) phase += r <= 3 ? 2 : 1;
        if (man_on(position, WHITE, square) && r >= 1) phase += r >= 6 ? 2 : 1;
    }
    return phase;
}

int32_t slow_evaluate(const Position& position, int side) {
    int64_t opening = 0;
    int64_t endgame = 0;
    for (size_t table = 0; table < 4; ++table) {
        const auto forward = static_cast<size_t>(forward_index(position, REGION_SQUARES[table]));
        const auto rotated = static_cast<size_t>(rotated_index(position, REGION_SQUARES[table]));
        opening += weights.patterns[table][forward].opening;
        opening -= weights.patterns[table][rotated].opening;
        endgame += weights.patterns[table][forward].endgame;
        endgame -= weights.patterns[table][rotated].endgame;
    }
    const int bk = count(position, BLACK, Piece::KING);
    const int wk = count(position, WHITE, Piece::KING);
    const int features[5] = {std::abs(moment(position, WHITE)) - std::abs(moment(position, BLACK)),
                             tempo(position, BLACK) - tempo(position, WHITE),
                             count(position, BLACK, Piece::MAN) - count(position, WHITE, Piece::MAN),
                             further_kings(bk) - further_kings(wk), (bk > 0 ? 1 : 0) - (wk > 0 ? 1 : 0)};
    const EvalParams& p = weights.params;
    const int16_t params[10] = {p.lr_bal_opening,    p.lr_bal_endgame,   p.tempo_opening, p.tempo_endgame,
                                p.men_opening,       p.men_endgame,      p.kings_opening, p.kings_endgame,
                                p.has_kings_opening, p.has_kings_endgame};
    for (int i = 0; i < 5; ++i) {
        opening += features[i] * int64_t{params[2 * i]};
        endgame += features[i] * int64_t{params[2 * i + 1]};
    }

    const int64_t phase = slow_phase(position);
    const int64_t v = (opening - endgame) * phase + 80 * endgame;
    int64_t s = v >= 0 ? (v + 2000) / 4000 : (v - 2000) / 4000;
    if (s > 1500)
        s = s / 8 + 1500;
    else if (s < -1500)
        s = s / 8 - 1500;
    bool exact = false;
    if (phase <= 40 && bk + wk > 0) s = damped(s, position, side, exact);
    if (exact) return static_cast<int32_t>(s);
    const int64_t r = s / 2;
    return static_cast<int32_t>(side == BLACK ? 2 * r : -2 * r);
}
