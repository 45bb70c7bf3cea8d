// What the endgame databases are opened with.
#pragma once

#include <cstdint>
#include <string>

// The numbers are within the ranges told.
struct DatabaseOptions {
    bool wld_enable = false;
    bool wld_parallel_init = false;  // open beside the search, not before it
    int32_t wld_max_pieces = -1;     // 2 to 9; -1 for no limit
    int32_t wld_max_kings_8 = -1;    // 0 to 4; -1 for no limit
    int32_t wld_cache_mb = 0;        // at least 0
    std::string wld_folder;
    bool mtc_enable = false;
    std::string mtc_folder;

    bool operator==(const DatabaseOptions&) const = default;
};
