// What differs between the files of the types of databases.
#pragma once

#include <cstdint>

#include "egdb/file_list.h"

struct EgdbFormat {
    const char* data_extension;
    const char* index_extension;
    int32_t block_bytes;    // read and kept in memory as one
    int32_t unit_bytes;     // what the index counts in; one of its lines tells about each
    int32_t optional_from;  // files of that many pieces or more may be missing
};

constexpr EgdbFormat egdb_format(EgdbType type) {
    switch (type) {
        case EGDB_MTC:
            return {".cpr_mtc", ".idx_mtc", 16384, 4096, 0};
        case EGDB_WLD_FIXED_CODES:
        case EGDB_WLD_VALUE_LISTS:
            return {".cpr", ".idx", 4096, 1024, 5};
        default:
            return {".cpr1", ".idx1", 4096, 4096, 6};
    }
}
