#include "tools/weights_statistics.h"

#include <algorithm>
#include <bit>
#include <cstdlib>

namespace {

constexpr int UNITS = 50;  // of the file in a point

int bin_of(int magnitude) {
    if (magnitude == 0) return 0;
    const unsigned points = static_cast<unsigned>(magnitude / UNITS);
    return std::min(static_cast<int>(std::bit_width(points)) + 1, MAGNITUDE_BINS - 1);
}

}  // namespace

Magnitudes magnitudes(const Weights& record, size_t table, bool opening) {
    Magnitudes result;
    int64_t sum = 0;
    for (const PatternEntry& entry : record.patterns[table]) {
        const int magnitude = std::abs(opening ? entry.opening : entry.endgame);
        ++result.bins[static_cast<size_t>(bin_of(magnitude))];
        sum += magnitude;
    }
    result.mean = static_cast<double>(sum) / UNITS / static_cast<double>(PATTERN_ENTRIES);
    return result;
}
