// Reads the text index of a data file: for each Subslice its single value, or where its bytes begin and which
// position each block starts with, and how the bytes are to be read. The types of databases differ in the
// lines behind a Subslice's first one.
#pragma once

#include <cstdint>

#include "egdb/database.h"

// Reads the index of one file of the database's type into its Slices. 0, also if the data file is missing and
// may be, by its number of pieces. 1 ends the opening; the log tells why. `memory_counter` grows by the bytes
// allocated, but for those of a Subslice that failed.
//
// Everything that lookups rely on is checked here: numbers beyond their ranges, blocks beyond the file's end
// and position numbers that don't rise make the reading fail like text that cannot be read.
int read_index_file(EgdbDatabase& database, DbFile& file, int64_t& memory_counter);

// The same for an index text at hand, for a data file of that many bytes. `path` is for the log.
int read_index_text(EgdbDatabase& database, DbFile& file, const char* text, size_t length, const char* path,
                    int64_t& memory_counter);
