// The two files of a name as they are built: the data file's blocks with a catalogue and a value map chosen
// for each, and the index text beside it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/egdb_coder.h"

constexpr int64_t EGDB_BLOCK_BYTES = 4096;

// A file pair that grows Subslice by Subslice.
struct EgdbFilePair {
    std::vector<uint8_t> data;
    std::string index;
    int64_t positions = 0;       // coded or of a single value
    int64_t free_positions = 0;  // of these, those that are never looked up
    int64_t single_subslices = 0;
    int64_t coded_subslices = 0;
};

// The catalogues of the format as the coder wants them, made once.
struct Coders {
    std::vector<CodeTree> trees;  // by catalogue
};
Coders make_coders();

// The rows of one catalogue of the format.
std::vector<CodeRow> catalogue_rows(int number);

// Appends one Subslice, of which the planes are all there is. For each block all catalogues are tried on its
// beginning, the best of these on all of it, and of the best of those the careful search decides. The result
// is the same whatever the number of threads.
void append_subslice(EgdbFilePair& pair, const Coders& coders, const ValuePlanes& planes, const Material& m,
                     int subslice, int side, int threads);
