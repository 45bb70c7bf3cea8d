// Forced moves.
#pragma once

#include "core/movegen.h"

// True if there is nothing to search: a single capture, or captures that all end, with every capture that
// they force in turn, in one and the same quiet position. A position without a capture is never forced, even
// with one move.
bool is_forced(const Position& position, int side);
