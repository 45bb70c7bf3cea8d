#include "tests/tools/egdb_sequences.h"

std::vector<int> random_sequence(Random& random, size_t length) {
    std::vector<int> sequence;
    const auto common = static_cast<int>(1 + random() % 3);
    const uint64_t longest = 1 + random() % 200, rarity = 1 + random() % 10;
    while (sequence.size() < length) {
        const bool rare = random() % rarity == 0;
        const int value = random() % 4 == 0 ? -1 : rare ? static_cast<int>(1 + random() % 3) : common;
        for (uint64_t run = 1 + random() % (rare ? 3 : longest); run > 0 && sequence.size() < length; --run)
            sequence.push_back(value);
    }
    return sequence;
}

ValuePlanes planes_of_sequence(const std::vector<int>& sequence) {
    ValuePlanes planes = make_planes(static_cast<int64_t>(sequence.size()));
    for (size_t i = 0; i < sequence.size(); ++i) {
        if (sequence[i] < 0) {
            ++planes.free_positions;
            continue;
        }
        set_plane_value(planes, static_cast<int64_t>(i), sequence[i]);
        ++planes.counts[static_cast<size_t>(sequence[i])];
    }
    return planes;
}

bool row_fits(const std::vector<int>& sequence, const CodeRow& row, const SymbolValues& values, size_t at) {
    for (const SymbolRun& run : row)
        for (int i = 0; i < run.length; ++i, ++at)
            if (at < sequence.size() && sequence[at] >= 0 && sequence[at] != values[run.symbol]) return false;
    return true;
}

int64_t row_length(const CodeRow& row) {
    int64_t sum = 0;
    for (const SymbolRun& run : row) sum += run.length;
    return sum;
}
