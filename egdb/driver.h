// What a lookup in an endgame database answers, and the operations of an open database.
#pragma once

#include <cstdint>

#include "core/board.h"

// Always from the point of view of the side to move.
enum EgdbValue : int32_t {
    EGDB_SUBDB_UNAVAILABLE = -2,  // the material is outside what the open database holds
    EGDB_NOT_IN_CACHE = -1,       // a conditional lookup: the block is not in memory
    EGDB_UNKNOWN = 0,
    EGDB_WIN = 1,
    EGDB_LOSS = 2,
    EGDB_DRAW = 3,
    EGDB_DRAW_OR_LOSS = 4,  // at best a draw
    EGDB_WIN_OR_DRAW = 5,   // at worst a draw
};

// An open database, whatever its type.
struct EgdbDriver {
    // The value of a position for `side`. A conditional lookup answers from blocks that are in memory and
    // never reads the disk. Any search thread may call it.
    EgdbValue (*lookup)(void* handle, const Position& position, int side, bool conditional);
    void* handle;
};
