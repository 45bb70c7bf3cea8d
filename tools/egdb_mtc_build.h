// Builds a database of moves to conversion, from two pieces up, solving the values that it rests on beside.
//
// A build that was interrupted goes on from the last file that it wrote; until its end it keeps the solved
// values in files of their own.
#pragma once

#include "tools/egdb_build.h"

// With six pieces all values and the distances of a material would not fit in memory. The checksums in
// egdb/identify.cpp know sets of up to four pieces.
constexpr int EGDB_MOST_MTC_BUILT = 5;

// The most memory that a build takes, in bytes.
int64_t mtc_build_memory(int pieces);

// Builds what is missing. `stop` ends it early.
EgdbBuildStatus build_mtc_database(const EgdbBuildOptions& options, const std::atomic<bool>& stop,
                                   EgdbBuildProgress& progress, EgdbBuildResult& result);
