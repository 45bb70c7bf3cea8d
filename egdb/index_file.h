// Reads the text index of a data file: for each Subslice its single value, or where its bytes begin and which
// position, catalogue and value map each block starts with.
#pragma once

#include <cstdint>

#include "egdb/database.h"

// Reads the index of one file of type EGDB_WLD into the database's Slices. 0, also if the file is missing and
// may be: one of six pieces or more. 1 ends the opening; the log tells why. `memory_counter` grows by the
// bytes allocated, those of a failed reading as well.
//
// Everything that lookups rely on is checked here: numbers beyond their ranges, blocks beyond the file's end
// and position numbers that don't rise make the reading fail like text that cannot be read.
int read_index_file(EgdbDatabase& database, DbFile& file, int64_t& memory_counter);

// The same for an index text at hand, for a data file of that many bytes. `path` is for the log.
int read_index_text(EgdbDatabase& database, DbFile& file, const char* text, size_t length, const char* path,
                    int64_t& memory_counter);
