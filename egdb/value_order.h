// How values of the database compare, for a negamax over values instead of scores. What is not decided, a
// bound or no answer at all, has a place of its own beside wins, draws and losses, so this is no plain order:
// each function is a table.
#pragma once

#include "egdb/driver.h"

// The value for the other side.
constexpr EgdbValue negated(EgdbValue value) {
    switch (value) {
        case EGDB_WIN:
            return EGDB_LOSS;
        case EGDB_LOSS:
            return EGDB_WIN;
        case EGDB_WIN_OR_DRAW:
            return EGDB_DRAW_OR_LOSS;
        case EGDB_DRAW_OR_LOSS:
            return EGDB_WIN_OR_DRAW;
        default:
            return value;
    }
}

constexpr bool says_nothing(EgdbValue value) {
    return value == EGDB_UNKNOWN || value == EGDB_SUBDB_UNAVAILABLE;
}

constexpr bool is_decided(EgdbValue value) {
    return value == EGDB_WIN || value == EGDB_LOSS || value == EGDB_DRAW;
}

// What a side with the choice between both has: `found` of a move, `best` of the moves before it.
constexpr EgdbValue best_of(EgdbValue found, EgdbValue best) {
    const bool at_least_draw = found == EGDB_WIN || found == EGDB_WIN_OR_DRAW;
    switch (best) {
        case EGDB_LOSS:
            return found;
        case EGDB_DRAW:
            if (at_least_draw) return found;
            return says_nothing(found) ? EGDB_WIN_OR_DRAW : EGDB_DRAW;
        case EGDB_WIN_OR_DRAW:
            return found == EGDB_WIN ? EGDB_WIN : EGDB_WIN_OR_DRAW;
        case EGDB_DRAW_OR_LOSS:
            return found == EGDB_LOSS ? EGDB_DRAW_OR_LOSS : found;
        case EGDB_UNKNOWN:
        case EGDB_SUBDB_UNAVAILABLE:
            if (at_least_draw) return found;
            return found == EGDB_DRAW ? EGDB_WIN_OR_DRAW : best;
        default:
            return best;
    }
}

// True if `a` raises alpha from `b`.
constexpr bool better(EgdbValue a, EgdbValue b) {
    switch (b) {
        case EGDB_WIN:
            return false;
        case EGDB_DRAW:
            return a == EGDB_WIN || a == EGDB_WIN_OR_DRAW;
        case EGDB_LOSS:
        case EGDB_DRAW_OR_LOSS:
            return a != EGDB_LOSS;
        case EGDB_WIN_OR_DRAW:
            return a == EGDB_WIN;
        default:
            return a != EGDB_SUBDB_UNAVAILABLE && a != EGDB_UNKNOWN && a != EGDB_LOSS;
    }
}

// True if `a` reaches `b` as beta.
constexpr bool cuts(EgdbValue a, EgdbValue b) {
    switch (b) {
        case EGDB_WIN:
            return a == EGDB_WIN;
        case EGDB_DRAW:
            return a == EGDB_WIN || a == EGDB_DRAW || a == EGDB_WIN_OR_DRAW;
        case EGDB_WIN_OR_DRAW:
            return a == EGDB_WIN || a == EGDB_WIN_OR_DRAW;
        case EGDB_DRAW_OR_LOSS:
            return a == EGDB_WIN || a == EGDB_DRAW || a == EGDB_DRAW_OR_LOSS || a == EGDB_WIN_OR_DRAW;
        case EGDB_UNKNOWN:
        case EGDB_SUBDB_UNAVAILABLE:
            return a != EGDB_LOSS;
        default:  // a loss is always reached
            return true;
    }
}
