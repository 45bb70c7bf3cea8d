// The values of a Slice as the compressor reads them: for each value a set of the positions that it cannot
// stand for. A position that is never looked up can stand for any value and is in none of the sets, and so is
// everything behind the end.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/bits.h"
#include "tools/egdb_values.h"

constexpr int64_t LONGEST_RUN = 65535;  // of one row of a catalogue

struct ValuePlanes {
    int64_t size = 0;
    int64_t free_positions = 0;                  // that can stand for any value
    std::array<int64_t, 4> counts{};             // positions that have the value, by EgdbValue
    std::array<std::vector<uint64_t>, 4> unfit;  // by EgdbValue
};

// What is never looked up: positions whose side to move can capture, and from seven pieces on those where the
// other side could, as well.
bool is_left_out(const Position& position, const Material& m, int side);

// An all-free sequence of that many positions.
ValuePlanes make_planes(int64_t size);
inline void set_plane_value(ValuePlanes& planes, int64_t index, int value) {
    const uint64_t bit = uint64_t{1} << (index & 63);
    for (int v = 0; v < 4; ++v)
        if (v != value) planes.unfit[static_cast<size_t>(v)][static_cast<size_t>(index >> 6)] |= bit;
}

// The planes of `count` positions from `first` on with `side` to move. The material must be solved.
ValuePlanes planes_of(const SolvedMaterial& solved, int side, int64_t first, int64_t count, int threads);

// How many positions in a row, from `from` on, can stand for the value, at most `LONGEST_RUN`. `from` is not
// far behind the end.
inline int64_t run_length(const ValuePlanes& planes, int value, int64_t from) {
    const std::vector<uint64_t>& unfit = planes.unfit[static_cast<size_t>(value)];
    size_t word = static_cast<size_t>(from >> 6);
    if (word >= unfit.size()) return LONGEST_RUN;
    const uint64_t rest = unfit[word] >> (from & 63);
    if (rest) return lowest_bit(rest);
    int64_t length = 64 - (from & 63);
    for (++word; length < LONGEST_RUN; ++word, length += 64) {
        if (word >= unfit.size()) return LONGEST_RUN;
        if (unfit[word]) return std::min(LONGEST_RUN, length + lowest_bit(unfit[word]));
    }
    return LONGEST_RUN;
}
