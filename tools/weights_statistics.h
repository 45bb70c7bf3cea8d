// How large the values of a weights file are: a table whose values are noise, or empty, shows here.
#pragma once

#include <array>
#include <cstdint>

#include "eval/weights.h"

// Bins of a histogram of magnitudes, in points: 0, below 1, below 2, below 4, ... below 128, and the rest.
constexpr int MAGNITUDE_BINS = 10;

struct Magnitudes {
    std::array<int64_t, MAGNITUDE_BINS> bins{};
    double mean = 0;  // of the magnitudes, in points
};

// Of table `table`, for the opening or for the endgame.
Magnitudes magnitudes(const Weights& record, size_t table, bool opening);
