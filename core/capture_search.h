// The depth-first search for captures that both generators share. What differs is the `LineKeeper`: the
// engine's generator keeps nothing but the resulting positions, the other the path of each capture as well.
//
// A sequence is recorded on the way back out of the recursion, where it could not go on: any longer
// continuation has by then raised `best`, so the test against it drops the shorter ones, and a list that held
// shorter moves is emptied as soon as a longer one is found. Captured pieces stay on the board until the move
// ends: they block landing and rays and cannot be jumped twice.
//
// A LineKeeper has these functions, in which `count` is the number of moves recorded before the line at hand:
//   begin(count, position)          before a new start
//   reach(count, jumps, after)      on each landing square, with the position there
//   restart(count)                  before a longer sequence empties the list
//   finish(count, jumps, promoted)  when the sequence gets recorded; false if the line had no room for it
#pragma once

#include "core/movegen.h"
#include "core/rays.h"

namespace capture_tree {

// What the recursion carries, one a generator call.
template <typename LineKeeper>
struct CaptureState {
    MoveList* list;
    uint64_t empty;  // empty squares, and the square that the capturing piece came from
    uint64_t black;  // without the capturing piece, if it is black
    uint64_t white;  // without the capturing piece, if it is white
    uint64_t king;   // without the capturing piece, if it is a king
    int32_t best;    // most pieces captured so far by any sequence
    LineKeeper lines;
};

template <int SIDE, typename State>
uint64_t enemies(const State& state) {
    return SIDE == BLACK ? state.white : state.black;
}

// The position with the capturing piece on `at`, the captured pieces off the board; `king_at` is `at` if the
// capturing piece is a king or becomes one there, otherwise empty.
template <int SIDE, typename State>
Move position_at(const State& state, uint64_t at, uint64_t king_at, uint64_t captured) {
    return {SIDE == BLACK ? state.black | at : state.black & ~captured,
            SIDE == BLACK ? state.white & ~captured : state.white | at, (state.king & ~captured) | king_at};
}

// Records the sequence if it is among the longest and new. From four captures on two routes can take the same
// pieces and end on the same square; below that there is no such test.
template <int SIDE, typename State>
void record(State& state, uint64_t at, uint64_t king_at, uint64_t promoted, uint64_t captured, int captures) {
    if (captures < state.best) return;
    MoveList& list = *state.list;
    if (captures > state.best) {
        state.lines.restart(list.count);
        list.count = 0;
        state.best = captures;
    }
    if (list.count >= MAX_CAPTURE_MOVES) return;
    const Move move = position_at<SIDE>(state, at, king_at | promoted, captured);
    if (captures >= 4 && find_move(list, move) >= 0) return;
    if (!state.lines.finish(list.count, captures, promoted)) return;
    list[list.count] = move;
    ++list.count;
}

template <int SIDE, typename State>
void further_man_captures(State& state, uint64_t captured, uint64_t at, int captures);

// The landing of a man. Most sequences end after a jump or two: one branch finds that out for all four
// directions, and only then is there a call.
template <int SIDE, typename State>
[[gnu::always_inline]] inline void man_captures(State& state, uint64_t captured, uint64_t at, int captures) {
    state.lines.reach(state.list->count, captures, position_at<SIDE>(state, at, 0, captured));
    const uint64_t takeable = enemies<SIDE>(state) & ~captured;
    const uint64_t landings = step<0>(step<0>(at) & takeable) | step<1>(step<1>(at) & takeable) |
                              step<2>(step<2>(at) & takeable) | step<3>(step<3>(at) & takeable);
    if (landings & state.empty) {
        // What follows is longer and raises the best, so this sequence is not recorded.
        further_man_captures<SIDE>(state, captured, at, captures);
        return;
    }
    // Only the last square counts: a man that passes over the row in mid-capture stays a man.
    record<SIDE>(state, at, 0, at & (SIDE == BLACK ? BLACK_PROMOTION_ROW : WHITE_PROMOTION_ROW), captured,
                 captures);
}

template <int SIDE, int DIRECTION, typename State>
inline void man_capture_along(State& state, uint64_t captured, uint64_t at, int captures) {
    const uint64_t piece = step<DIRECTION>(at) & enemies<SIDE>(state) & ~captured;
    const uint64_t landing = step<DIRECTION>(piece) & state.empty;
    if (landing) man_captures<SIDE>(state, captured | piece, landing, captures + 1);
}

template <int SIDE, typename State>
[[gnu::noinline]] void further_man_captures(State& state, uint64_t captured, uint64_t at, int captures) {
    man_capture_along<SIDE, 0>(state, captured, at, captures);
    man_capture_along<SIDE, 1>(state, captured, at, captures);
    man_capture_along<SIDE, 2>(state, captured, at, captures);
    man_capture_along<SIDE, 3>(state, captured, at, captures);
}

// All captures of men whose first jump goes in the direction.
template <int SIDE, int DIRECTION, typename State>
inline void first_man_captures(State& state, const Position& position, uint64_t men) {
    uint64_t landings = step<DIRECTION>(step<DIRECTION>(men) & enemies<SIDE>(state)) & state.empty;
    while (landings) {
        const uint64_t landing = lowest_set(landings);
        landings &= landings - 1;
        const uint64_t piece = step_back<DIRECTION>(landing);
        const uint64_t start = step_back<DIRECTION>(piece);
        uint64_t& own = SIDE == BLACK ? state.black : state.white;
        own &= ~start;
        state.empty |= start;
        state.lines.begin(state.list->count, position);
        man_captures<SIDE>(state, piece, landing, 1);
        own |= start;
        state.empty &= ~start;
    }
}

template <int SIDE, int DIRECTION, typename State>
void king_captures(State& state, uint64_t captured, uint64_t landing, int captures);

// Goes on in the direction from the square that the king is on, if there is a piece to take.
template <int SIDE, int DIRECTION, typename State>
inline void king_capture_along(State& state, uint64_t captured, uint64_t at, int captures) {
    const uint64_t piece = first_on_ray<DIRECTION>(lowest_bit(at), ~state.empty);
    const uint64_t landing = step<DIRECTION>(piece & enemies<SIDE>(state) & ~captured) & state.empty;
    if (landing) king_captures<SIDE, DIRECTION>(state, captured | piece, landing, captures + 1);
}

template <int SIDE, int DIRECTION, typename State>
void king_captures(State& state, uint64_t captured, uint64_t landing, int captures) {
    for (;;) {
        uint64_t at = landing;
        do {
            state.lines.reach(state.list->count, captures, position_at<SIDE>(state, at, at, captured));
            king_capture_along<SIDE, FIRST_ACROSS<DIRECTION>>(state, captured, at, captures);
            king_capture_along<SIDE, SECOND_ACROSS<DIRECTION>>(state, captured, at, captures);
            record<SIDE>(state, at, at, 0, captured, captures);
            at = step<DIRECTION>(at);
        } while (at & state.empty);
        // Beyond the run stands a piece or the edge. A further capture straight on goes on in this loop.
        landing = step<DIRECTION>(at & enemies<SIDE>(state) & ~captured) & state.empty;
        if (!landing) return;
        captured |= at;
        ++captures;
    }
}

template <int SIDE, typename State>
[[gnu::noinline]] void all_king_captures(State& state, const Position& position, uint64_t kings) {
    while (kings) {
        const uint64_t start = lowest_set(kings);
        kings &= kings - 1;
        uint64_t& own = SIDE == BLACK ? state.black : state.white;
        own &= ~start;
        state.king &= ~start;
        state.empty |= start;
        state.lines.begin(state.list->count, position);
        king_capture_along<SIDE, 0>(state, 0, start, 0);
        king_capture_along<SIDE, 1>(state, 0, start, 0);
        king_capture_along<SIDE, 2>(state, 0, start, 0);
        king_capture_along<SIDE, 3>(state, 0, start, 0);
        own |= start;
        state.king |= start;
        state.empty &= ~start;
    }
}

// Writes all captures of SIDE that take the most pieces to `list` and returns their number.
template <int SIDE, typename LineKeeper>
[[gnu::always_inline]] inline int search_captures(const Position& position, MoveList& list,
                                                  LineKeeper lines) {
    const uint64_t own = pieces_of(position, SIDE);
    CaptureState<LineKeeper> state{&list,          ~(position.black | position.white) & BOARD_MASK,
                                   position.black, position.white,
                                   position.king,  0,
                                   lines};
    list.count = 0;
    const uint64_t men = own & ~position.king;
    const uint64_t enemy = pieces_of(position, SIDE ^ 1);
    // Most positions have no capture by a man: one branch finds that out for all four directions.
    const uint64_t landings = step<0>(step<0>(men) & enemy) | step<1>(step<1>(men) & enemy) |
                              step<2>(step<2>(men) & enemy) | step<3>(step<3>(men) & enemy);
    if (landings & state.empty) {
        first_man_captures<SIDE, 0>(state, position, men);
        first_man_captures<SIDE, 1>(state, position, men);
        first_man_captures<SIDE, 2>(state, position, men);
        first_man_captures<SIDE, 3>(state, position, men);
    }
    const uint64_t kings = own & position.king;
    if (kings) all_king_captures<SIDE>(state, position, kings);
    return list.count;
}

}  // namespace capture_tree
