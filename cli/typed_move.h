// A move as a user types it.
#pragma once

#include <string>

#include "core/board.h"

// The index of the legal move that the text writes, as "32-28", "19x30" or "19x24x30"; the separator plays no
// part. -1 if there is none or more than one, and then `problem` tells the user why.
int find_typed_move(const std::string& text, const Position& position, int side, std::string& problem);
