// The move of the position that a received one means. Plain and re-entrant.
#pragma once

#include "core/movegen.h"
#include "dxp/messages.h"

struct MoveMatch {
    int moves = 0;             // legal ones
    int index = -1;            // of the one that is meant; negative if none is
    bool wrong_count = false;  // a capture was told as a quiet move, or the other way round
    Move move{};               // the one meant, or else the first legal one
};

// Start and end must be those of the move, and the captured squares, in any order, those of the capture.
MoveMatch match_received_move(const DxpMove& received, const Position& position, int side);
