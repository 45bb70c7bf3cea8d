// What a lookup in an endgame database answers, and the operations of an open database.
#pragma once

#include <cstdint>
#include <memory>

#include "core/board.h"
#include "egdb/file_list.h"
#include "egdb/statistics.h"
#include "egdb/verify.h"

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

// An open database, whatever its type. The first two members are all that a search needs.
struct EgdbDriver {
    // The value of a position for `side`. A conditional lookup answers from blocks that are in memory and
    // never reads the disk. Any search thread may call it.
    EgdbValue (*lookup)(void* handle, const Position& position, int side, bool conditional);
    void* handle;

    void (*reset_stats)(void* handle) = nullptr;
    EgdbStatistics* (*get_stats)(void* handle) = nullptr;
    // Checks the files that the opening asks for against the known checksums, as `verify_files` does. On any
    // thread, also while lookups run.
    int (*verify)(void* handle, const VerifyListener& listener, const std::atomic<bool>* abort,
                  const VerifyTexts& texts) = nullptr;
    // Frees all that the database owns, the driver too. While no lookup runs.
    int (*close)(void* handle) = nullptr;
    // The material that the files which are there hold: most pieces, most of one side, most kings of both
    // sides with nine pieces, and of each side with eight, which is left as it was below eight pieces.
    int (*get_pieces)(void* handle, int32_t* maxpieces, int32_t* maxpieces_1side, int32_t* maxkings_9pcs,
                      int32_t* maxkings_1side_8pcs) = nullptr;
    EgdbType type = EGDB_WLD;
};

// Closes the database that it owns.
struct CloseEgdbDriver {
    void operator()(EgdbDriver* driver) const { driver->close(driver->handle); }
};
using OpenEgdb = std::unique_ptr<EgdbDriver, CloseEgdbDriver>;
