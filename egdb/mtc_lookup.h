// The number of moves to conversion of a position, from the files of an open database of type EGDB_MTC.
//
// Unlike values these are asked for by one thread at a time; there is no lock.
#pragma once

#include "egdb/database.h"

// An even number of at least 0, or NO_MTC (mtc_codes.h) where there is none. A conditional lookup never reads
// the disk, and has none for what is not in memory. The statistics count it.
int32_t mtc_lookup(EgdbDatabase& database, const Position& position, int side, bool conditional);
