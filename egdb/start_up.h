// How a database is opened, of whatever type: its index files are read, memory is shared out, small and often
// used files are loaded whole and the cache of blocks is filled.
#pragma once

#include <cstdint>
#include <string>

#include "egdb/database.h"
#include "egdb/driver.h"

// What a database is opened with.
struct EgdbOpenRequest {
    std::string folder;
    int32_t pieces = 0;                // most pieces of the files to be read
    int32_t maxkings_1side_8pcs = -1;  // negative: no limit
    int32_t cache_megabytes = 0;       // for index, whole files and cache together
    void (*log)(const char* text) = nullptr;

    // For measurements and tests of the cache, which small sets would have no use for.
    bool autoload = true;      // false: no file is held whole
    int32_t cache_blocks = 0;  // 0: what the memory allows

    EgdbType type = EGDB_WLD;
};

// The driver and its database, freed as one. The driver's handle is the whole.
struct DatabaseDriver {
    EgdbDriver driver;
    EgdbDatabase database;
};
inline EgdbDatabase& database_of(void* handle) { return static_cast<DatabaseDriver*>(handle)->database; }

// What a type of database does in its own way.
struct DriverOperations {
    EgdbValue (*lookup)(void* handle, const Position& position, int side, bool conditional);
    int (*get_pieces)(void* handle, int32_t* maxpieces, int32_t* maxpieces_1side, int32_t* maxkings_9pcs,
                      int32_t* maxkings_1side_8pcs);
};

// Null on failure, which the log tells; all that was taken is then given back. Takes as long as the disk
// does. On any thread.
OpenEgdb open_database(const EgdbOpenRequest& request, const DriverOperations& operations);
