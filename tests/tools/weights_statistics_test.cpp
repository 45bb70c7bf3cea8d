#include "tools/weights_statistics.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

TEST(WeightsStatistics, CountsMagnitudesInPoints) {
    const auto record = std::make_unique<Weights>();
    auto& table = record->patterns[2];
    // Both sides of each boundary, of either sign.
    const int16_t values[]{1, -49, 50, -99, 100, 199, -200, 399, 400, 3199, -3200, 6399, 6400, -32768};
    for (size_t i = 0; i < std::size(values); ++i) table[i * 7] = {values[i], 0};
    const Magnitudes found = magnitudes(*record, 2, true);
    const std::array<int64_t, MAGNITUDE_BINS> expected{
        static_cast<int64_t>(PATTERN_ENTRIES - std::size(values)), 2, 2, 2, 2, 1, 0, 1, 2, 2};
    EXPECT_EQ(found.bins, expected);
    EXPECT_NEAR(found.mean,
                (1 + 49 + 50 + 99 + 100 + 199 + 200 + 399 + 400 + 3199 + 3200 + 6399 + 6400 + 32768) / 50.0 /
                    PATTERN_ENTRIES,
                1e-9);
    EXPECT_EQ(magnitudes(*record, 2, false).bins[0], static_cast<int64_t>(PATTERN_ENTRIES));
    EXPECT_EQ(magnitudes(*record, 1, true).bins[0], static_cast<int64_t>(PATTERN_ENTRIES));
}

}  // namespace
