// The bisection driver against sequences worked out by hand, and its end against every possible value.
#include "search/window.h"

#include <gtest/gtest.h>

#include <random>

namespace {

struct Pass {
    int result;
    int bound;  // what `next_window` returns
    int lower, upper, alpha, beta;
};

void expect_passes(int start, std::initializer_list<Pass> passes) {
    WindowState w = first_window(start);
    EXPECT_EQ(w.alpha, start - 1);
    EXPECT_EQ(w.beta, start);
    EXPECT_EQ(w.lower, -4000);
    EXPECT_EQ(w.upper, 4000);
    EXPECT_EQ(w.step, 1);
    EXPECT_EQ(w.max_step, 128);
    EXPECT_EQ(w.mode, 2);
    int number = 0;
    for (const Pass& pass : passes) {
        SCOPED_TRACE("pass " + std::to_string(++number));
        EXPECT_EQ(next_window(w, pass.result), pass.bound);
        EXPECT_EQ(w.lower, pass.lower);
        EXPECT_EQ(w.upper, pass.upper);
        EXPECT_EQ(w.alpha, pass.alpha);
        EXPECT_EQ(w.beta, pass.beta);
    }
}

TEST(Window, StaysAtAStrideOfTwoNearZero) {
    expect_passes(0, {{-1, -1, -4000, -1, -2, -1},
                      {-5, -5, -4000, -5, -6, -5},
                      {-9, -9, -4000, -9, -10, -9},
                      {-9, -9, -9, -9, -9, -8}});
}

TEST(Window, DoublesUpwardsAndThenClosesFromAbove) {
    expect_passes(100, {{120, 120, 120, 4000, 120, 121},
                        {125, 125, 125, 4000, 127, 128},
                        {140, 140, 140, 4000, 146, 147},
                        {160, 160, 160, 4000, 174, 175},
                        {170, 170, 160, 170, 166, 167},
                        {165, 165, 160, 165, 164, 165},
                        {165, 165, 165, 165, 165, 166}});
}

TEST(Window, DoublesDownwardsUpToATenthOfTheScore) {
    // 2, 4, 8, and then a tenth of 110 in place of 16.
    expect_passes(-100, {{-101, -101, -4000, -101, -102, -101},
                         {-103, -103, -4000, -103, -106, -105},
                         {-107, -107, -4000, -107, -114, -113},
                         {-115, -115, -4000, -115, -125, -124}});
}

TEST(Window, StridesAreCappedAt128) {
    WindowState w = first_window(2500);
    int result = 2500;
    for (const int stride : {2, 4, 8, 16, 32, 64, 128, 128, 128}) {
        EXPECT_EQ(next_window(w, result), result);
        EXPECT_EQ(w.step, stride);
        EXPECT_EQ(w.beta, result + stride - 1);
        EXPECT_EQ(w.alpha, w.beta - 1);
        result = w.beta;
    }
}

TEST(Window, TheStrideIsAtMostHalfOfWhatIsOpen) {
    WindowState w = first_window(3900);
    next_window(w, 3920);
    next_window(w, 3960);
    next_window(w, 3990);
    EXPECT_EQ(w.step, 5);  // (4000 - 3990) / 2, not 8
    EXPECT_EQ(w.beta, 3994);
}

TEST(Window, ResultsBeyondTheBoundsAreClipped) {
    WindowState low = first_window(0);
    low.lower = -3;
    EXPECT_EQ(next_window(low, -10), -3);
    EXPECT_EQ(low.upper, -3);
    WindowState high = first_window(0);
    high.upper = 7;
    EXPECT_EQ(next_window(high, 20), 7);
    EXPECT_EQ(high.lower, 7);
}

// A search that answers honestly, as hard or as soft as it likes, is always pinned down.
TEST(Window, FindsEveryValueFromEveryStart) {
    std::mt19937 random(5);
    for (int value = -3999; value <= 3999; value += 1 + static_cast<int>(random() % 7)) {
        const int start = static_cast<int>(random() % 7999) - 3999;
        WindowState w = first_window(start);
        int bound = 0;
        int passes = 0;
        while (w.lower < w.upper) {
            ASSERT_LT(++passes, 4100);
            ASSERT_EQ(w.beta, w.alpha + 1);
            const int slack = static_cast<int>(random() % 9);
            bound = next_window(
                w, value < w.beta ? std::min(w.alpha, value + slack) : std::max(w.beta, value - slack));
        }
        EXPECT_EQ(bound, value) << "from " << start;
        EXPECT_EQ(w.lower, value);
    }
}

}  // namespace
