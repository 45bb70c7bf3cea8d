// How the memory that a database may use is shared out at its opening: which files are held whole, and how
// many blocks of the others the cache holds. Few kings and few pieces come first, as such material is most
// used in play.
#pragma once

#include <cstdint>

#include "egdb/database.h"

constexpr int64_t MEGABYTE = 1 << 20;

// What differs between the types of databases.
struct CacheRules {
    int32_t always_autoload_below;  // pieces: such files are held whole whatever they need, and come first
    int64_t bytes_per_block;        // a buffer and what goes with it
    int32_t least_blocks;           // made even where there is no memory for them
    bool autoload = true;           // files may be held whole
    bool limited = true;            // the cache has no more blocks than the files
};
constexpr CacheRules cache_rules(EgdbType type) {
    switch (type) {
        case EGDB_MTC:
            return {0, 16416, 640, false, false};
        case EGDB_WLD_FIXED_CODES:
            return {5, 4384, 2560};
        case EGDB_WLD_VALUE_LISTS:
            return {5, 4428, 2560};
        default:
            return {6, 4384, 2560};
    }
}

// Megabytes for files that are held whole, of a database of `db_mb` where `avail_mb`, which may be negative,
// are there for it.
int64_t autoload_budget_mb(int64_t db_mb, int64_t avail_mb);

// Fills in `autoload_order`; that of the list where no file is held whole.
void order_files(EgdbDatabase& database, const CacheRules& rules);

// Marks the files that are to be held whole, and logs them.
void choose_autoload(EgdbDatabase& database, const CacheRules& rules, int64_t budget_mb);

struct CacheSize {
    int32_t blocks = 0;
    bool least = false;  // there was no memory for more than the least number
};
// Of a database that has taken `memory` bytes already, with `cacheable` blocks that are not held whole.
CacheSize cache_size(const CacheRules& rules, int64_t memory, int64_t cache_megabytes, int64_t cacheable);
