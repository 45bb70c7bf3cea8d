// The engine's own copies of the settings it follows. Game control or the console writes them while no search
// runs; the engine never reads the program's settings.
#pragma once

#include <cstdint>

#include "core/board.h"
#include "egdb/database_options.h"

struct EngineSettings {
    int32_t search_threads = 1;
    int32_t hash_size_mb = 64;
    int32_t book_mode = 0;  // 0: the book is not asked
    DatabaseOptions database;
    // Changes that wait for the next start of a search, which reopens all databases with the table allocated
    // anew before, or the distances to conversion alone, and clears them.
    bool reopen_wld = false;
    bool reopen_mtc = false;

    // Writes the position as one FEN tag line to `text`, which has 300 bytes. Filled in by what can print
    // FEN; null leaves the line out of the log.
    void (*position_line)(const Position& position, int side, char* text) = nullptr;
};
extern EngineSettings engine_settings;
