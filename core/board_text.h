// A position drawn in letters for the log.
#pragma once

#include <string>

#include "core/board.h"

// Ten lines of five signs, each followed by a blank: `B`, `W` for kings, `b`, `w` for men, `-` for an empty
// square, every other row indented by one so that the diagonals show.
std::string board_diagram(const Position& position);

// Appends two newlines and the diagram to the log.
void log_board(const Position& position);
