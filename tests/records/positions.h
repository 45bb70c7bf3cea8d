// Positions and games for the tests of the records.
#pragma once

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "core/movegen.h"
#include "records/fen.h"
#include "records/pdn_replay.h"

inline Position position_of(const char* fen, int* side_out = nullptr) {
    Position position;
    int side = WHITE;
    EXPECT_EQ(fen_to_position(fen, position, side), 0) << fen;
    if (side_out) *side_out = side;
    return position;
}

inline ReplayState state_of(const char* fen, int setup_flag) {
    ReplayState state;
    state.position = position_of(fen, &state.side);
    state.setup_flag = setup_flag;
    return state;
}

inline int random_below(std::mt19937& random, int bound) {
    return static_cast<int>(random() % static_cast<uint32_t>(bound));
}

// A legal position with up to `most` pieces of each colour; one piece in `king_share` is a king.
inline Position random_position(std::mt19937& random, int most, int king_share) {
    Position position{0, 0, 0, random_below(random, 2), 0, nullptr};
    for (const int colour : {WHITE, BLACK}) {
        for (int n = random_below(random, most + 1); n > 0; --n) {
            const uint64_t mask = mask_of_square[static_cast<size_t>(random_below(random, SQUARES))];
            if ((position.black | position.white) & mask) continue;
            (colour == WHITE ? position.white : position.black) |= mask;
            const uint64_t row = colour == WHITE ? WHITE_PROMOTION_ROW : BLACK_PROMOTION_ROW;
            if ((mask & row) || random_below(random, king_share) == 0) position.king |= mask;
        }
    }
    return position;
}

inline ReplayState random_setup(std::mt19937& random) {
    // Few men and many kings make the captures that need their path.
    const Position position =
        random_below(random, 2) ? random_position(random, 12, 2) : random_position(random, 20, 6);
    return {1, position.side, position};
}

// The entries of a random game: from the initial position or a set one, and with positions set within it.
inline std::vector<ReplayState> random_game(std::mt19937& random, int steps, bool with_setups) {
    std::vector<ReplayState> history(1);
    if (with_setups && random_below(random, 2)) history[0] = random_setup(random);
    history[0].setup_flag = is_initial_state(history[0]) ? 0 : 1;
    for (int i = 0; i < steps; ++i) {
        const ReplayState& now = history.back();
        MoveList list;
        const int count = generate_moves(now.position, list, now.side);
        // A set position in front of the first move would be read as the start of the game.
        if (with_setups && i > 0 && (count == 0 || random_below(random, 20) == 0)) {
            history.push_back(random_setup(random));
            continue;
        }
        if (count == 0) break;
        const int side = now.side ^ 1;
        history.push_back({0, side, position_after(list[random_below(random, count)], side)});
    }
    return history;
}

inline void expect_same_state(const ReplayState& expected, const ReplayState& actual) {
    EXPECT_EQ(expected.side, actual.side);
    EXPECT_EQ(expected.setup_flag, actual.setup_flag);
    EXPECT_EQ(expected.position.black, actual.position.black);
    EXPECT_EQ(expected.position.white, actual.position.white);
    EXPECT_EQ(expected.position.king, actual.position.king);
}

// The entries that a replay of the list gives, up to its end or the move that cannot be matched. `broken`
// tells of the latter.
inline std::vector<ReplayState> replay(PdnNode* list, bool& broken) {
    std::vector<ReplayState> history(1);
    broken = false;
    PdnNode* node = pdn_start_position(list, history[0]);
    ReplayState state = history[0];
    while (node) {
        ReplayState out;
        broken = pdn_apply_move(*node, state, out) != 0;
        if (broken) break;
        node = pdn_next_move(node, state);
        // The flag of a step that is a set position comes with the step.
        history.push_back(state);
    }
    return history;
}

// The entries of the game of a text, which is whole.
inline std::vector<ReplayState> history_of(const std::string& text) {
    const PdnGame list = pdn_parse_game(text.c_str());
    bool broken = false;
    const std::vector<ReplayState> history = replay(list.get(), broken);
    EXPECT_FALSE(broken) << text;
    return history;
}
