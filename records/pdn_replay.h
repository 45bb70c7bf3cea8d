// The replay of a game list: each written move is matched to a legal move, and so becomes a position.
#pragma once

#include <cstdint>

#include "core/board.h"
#include "records/pdn_game.h"

// A position of a game with the side that moves in it. The setup flag is set in a start position that is not
// the initial one, and in a position that was set up within a game.
struct ReplayState {
    int32_t setup_flag = 0;
    int32_t side = WHITE;
    Position position = START_POSITION;
};

// True if the state is the initial position with white to move.
bool is_initial_state(const ReplayState& state);

// A node that changes the position: a move or an embedded FEN.
bool pdn_is_step(const PdnNode& node);

// Sets the state to where the game starts, which its FEN header or a FEN embedded before the first move
// tells. Returns the first move, or null if the game has none. A null list leaves the state as it is.
PdnNode* pdn_start_position(PdnNode* list, ReplayState& state);

// Replays the node, a move or an embedded FEN, and returns the next such node; null at the end of the game.
// Null too for a move that cannot be matched; the state then stays but for its setup flag, which becomes 0.
PdnNode* pdn_next_move(PdnNode* node, ReplayState& state);

// The state after the node. 0; 1 if there is none, and then `state_out` is untouched. A move without a path
// is the first legal move with its start and end square, and the separator that was written plays no part;
// with a path it is the first capture on it. `is_capture` of the node becomes the number of pieces taken, or
// 1 with a path. No move is legal where a square holds both colours. The two states may be the same.
int pdn_apply_move(PdnNode& node, const ReplayState& state_in, ReplayState& state_out);
