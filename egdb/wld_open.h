// How a database of type EGDB_WLD is opened: its index files are read, memory is shared out, small and often
// used files are loaded whole and the cache of blocks is filled.
#pragma once

#include <cstdint>
#include <string>

#include "egdb/database.h"
#include "egdb/driver.h"

// What a database is opened with, whatever its type.
struct EgdbOpenRequest {
    std::string folder;
    int32_t pieces = 0;                // most pieces of the files to be read
    int32_t maxkings_1side_8pcs = -1;  // negative: no limit
    int32_t cache_megabytes = 0;       // for index, whole files and cache together
    void (*log)(const char* text) = nullptr;

    // For measurements and tests of the cache, which small sets would have no use for.
    bool autoload = true;      // false: no file is held whole
    int32_t cache_blocks = 0;  // 0: what the memory allows
};

// Null on failure, which the log tells; all that was taken is then given back. Takes as long as the disk
// does. On any thread.
OpenEgdb open_wld(const EgdbOpenRequest& request);

// What is behind a driver that `open_wld` made.
const EgdbDatabase& wld_database(const EgdbDriver& driver);
