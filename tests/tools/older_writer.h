// Writes databases of the older forms, for tests of their readers. There is no other way to have such files.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "egdb/file_list.h"
#include "egdb/numbering.h"
#include "tools/egdb_values.h"

// A file pair that grows Subslice by Subslice.
struct OlderFilePair {
    EgdbType type = EGDB_WLD_FIXED_CODES;
    std::vector<uint8_t> data;
    std::string index;
};

// Appends one Subslice with these values, 0 to 5; with comments, and as a single value if it has just one.
void append_older_subslice(OlderFilePair& pair, std::span<const uint8_t> values, const Material& m,
                           int subslice, int side);

// Writes db2 and so on up to that many pieces, 4 at most, from the solved values. Positions with captures get
// any value.
void write_older_database(const std::string& folder, EgdbType type, const SolvedSet& set, int pieces);
