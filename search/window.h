// The driver of the root: the value is found by null windows of width 1, which first touch the last value and
// then step away from the proven bound with doubling strides, until the bounds meet. All scores are relative
// to black.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "search/score.h"

struct WindowState {
    int32_t max_step;
    int32_t lower;  // proven bounds of the root's value
    int32_t upper;
    int32_t alpha;  // the next pass
    int32_t beta;
    int32_t step;
    int32_t mode;  // always 2
};

// The window of an iteration's first pass.
inline WindowState first_window(int32_t value) {
    return {128, -MATE_SCORE, MATE_SCORE, value - 1, value, 1, 2};
}

// Takes the result of a pass, moves the bounds and the window, and returns the new bound.
inline int32_t next_window(WindowState& w, int32_t result) {
    const bool failed_low = result < w.beta;
    if (failed_low)
        w.upper = std::max(result, w.lower);
    else
        w.lower = std::min(result, w.upper);
    const int32_t bound = failed_low ? w.upper : w.lower;
    const int32_t doubled = std::min(2 * w.step, (w.upper - w.lower) / 2);
    // Near a score of 0 the stride stays at 2.
    w.step = std::max(2, std::min(std::abs(bound) / 10, std::min(doubled, w.max_step)));
    if (failed_low) {
        w.alpha = w.upper - w.step + 1;
        w.beta = w.upper - w.step + 2;
    } else {
        w.beta = w.lower + w.step - 1;
        w.alpha = w.beta - 1;
    }
    return bound;
}
