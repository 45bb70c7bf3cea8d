// Builds a win/loss/draw database, from two pieces up.
//
// Materials are solved one after the other and kept as files of their own, so that a build that was
// interrupted goes on from the last one. When all that a name of the database holds is solved its two files
// are written, the data file first. At the end the files of solved materials go.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "egdb/numbering.h"
#include "tools/egdb_blocks.h"

// A material must fit in memory to be solved, and with seven pieces there are ones that don't. A set is
// opened once its checksum stands in egdb/identify.cpp, which wants it built once: those of six pieces never
// were.
constexpr int EGDB_MOST_BUILT = 6;

struct EgdbBuildOptions {
    std::string folder;  // made if it isn't there
    int pieces = 4;      // 2 to EGDB_MOST_BUILT
    int threads = 1;
};

// For those who watch a build from another thread.
struct EgdbBuildProgress {
    std::atomic<int64_t> done = 0;
    std::atomic<int64_t> kept = 0;  // of that: what an earlier run had done
    std::atomic<int64_t> all = 0;   // in the same unit, from the start of the build
};

enum EgdbBuildStatus {
    EGDB_BUILT,
    EGDB_BUILD_STOPPED,
    EGDB_BUILD_NO_MEMORY,
    EGDB_BUILD_TOO_LONG,      // the solver has no room for the distances
    EGDB_BUILD_CANNOT_WRITE,  // the file is told
    EGDB_BUILD_CANNOT_READ,   // likewise: a file of the folder that is no database of ours
};

// What a build took and gave, file by file.
struct EgdbBuiltFile {
    std::string name;
    int64_t positions = 0;
    int64_t free_positions = 0;  // of these, never looked up, or without a number of moves
    int64_t data_bytes = 0;
    int64_t index_bytes = 0;
};
struct EgdbBuildResult {
    std::vector<EgdbBuiltFile> files;  // that were written, in order
    std::string failed_file;
};

// The most memory that a build takes, in bytes.
int64_t build_memory(int pieces);

// Builds what is missing. `stop` ends it early.
EgdbBuildStatus build_database(const EgdbBuildOptions& options, const std::atomic<bool>& stop,
                               EgdbBuildProgress& progress, EgdbBuildResult& result);
