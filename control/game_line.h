// The game's recent positions in the form in which the search tests for repetition.
#pragma once

#include <span>
#include <vector>

#include "core/board.h"
#include "records/pdn_replay.h"

// Fills `line` with the last position of the history and those before it, newest first, as far back as every
// step was a king move without a capture, and links each to the one behind it. The newest is `line.front()`;
// it is what `search_state.game_line` is to point to. An empty history gives an empty line. The links hold
// while `line` is not changed.
void build_game_line(std::span<const ReplayState> history, std::vector<Position>& line);
