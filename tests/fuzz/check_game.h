// What holds of the game of the program whatever was done to it.
#pragma once

#include "check.h"
#include "control/game.h"
#include "core/movegen.h"

inline bool has_both_colours(const Position& position) { return (position.black & position.white) != 0; }

// Index of the move between two entries, or -1.
inline int step_index(const ReplayState& before, const ReplayState& after) {
    if (has_both_colours(before.position) || after.side != (before.side ^ 1)) return -1;
    MoveList list;
    generate_moves(before.position, list, before.side);
    return find_move(list, move_to(after.position));
}

// Each entry is a legal step from the one before, a set position, or the repeated end of a game that broke:
// the user may have played on from it.
inline void check_history() {
    const auto history = whole_history();
    FUZZ_CHECK(!history.empty() && history.size() <= MAX_HISTORY);
    FUZZ_CHECK(game.history_count >= 1 && game.history_count <= game.history_last);
    FUZZ_CHECK(history[0].setup_flag == !is_initial_state(history[0]));
    for (size_t i = 0; i + 1 < history.size(); ++i) {
        const ReplayState &before = history[i], &after = history[i + 1];
        FUZZ_CHECK(after.setup_flag || step_index(before, after) >= 0 ||
                   (before.side == after.side && same_pieces(before.position, after.position)));
    }
}

// The board is the entry that is shown.
inline void check_board() {
    FUZZ_CHECK(game.board_side == WHITE || game.board_side == BLACK);
    FUZZ_CHECK(((game.board.black | game.board.white) & ~BOARD_MASK) == 0);
    FUZZ_CHECK((game.board.king & ~(game.board.black | game.board.white)) == 0);
    const ReplayState& entry = played_history().back();
    FUZZ_CHECK(entry.side == game.board_side && same_pieces(entry.position, game.board));
}
