// The two files of a name of a database of moves to conversion, as they are built.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "egdb/numbering.h"

// A file pair that grows Subslice by Subslice.
struct MtcFilePair {
    std::vector<uint8_t> data;
    std::string index;
    int64_t positions = 0;
    int64_t told_positions = 0;  // of these, those with a number of their own
};

// The number that is stored for a distance of the solver, NO_MTC where it is none.
int32_t stored_mtc(int distance);

// Appends one Subslice, whose distances these are.
void append_mtc_subslice(MtcFilePair& pair, std::span<const uint8_t> distances, const Material& m,
                         int subslice, int side);
