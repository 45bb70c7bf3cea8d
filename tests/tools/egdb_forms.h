// The same values in all forms of database: each must answer as the solver does, and so as each other.
#pragma once

#include <array>
#include <string>

#include "egdb/driver.h"

constexpr std::array<EgdbType, 2> OLDER{EGDB_WLD_FIXED_CODES, EGDB_WLD_VALUE_LISTS};

// How a database is read: files whole or through a cache of so many blocks, 0 for what the memory allows; and
// every how many positions are asked for.
struct Way {
    EgdbType type;
    bool autoload;
    int32_t blocks;
    int64_t stride;
};

// Opens the folder, with the log in `database_log`.
OpenEgdb open_form(const Way& way, const std::string& folder, int32_t pieces);

// Looks up the positions of that many pieces of which the form has values: of the older forms, as our writer
// makes them, all; of the newest those whose side to move has no capture. Each is looked up by a lookup that
// may read, with the colours exchanged, and by one that may not; where such a one answers before, it must be
// the same.
void expect_as_solved(const EgdbDriver& driver, const Way& way, int pieces);
