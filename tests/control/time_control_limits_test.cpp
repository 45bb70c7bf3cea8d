// The time of a move: against numbers worked out by hand, against the rules written down step by step, and
// over whole games.
#include "control/time_control_limits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "search/search_state.h"

namespace {

constexpr double INF = std::numeric_limits<double>::infinity();

using Random = std::mt19937_64;

int below(Random& random, int limit) { return static_cast<int>(random() % static_cast<uint64_t>(limit)); }
double uniform(Random& random, double low, double high) {
    return low + (high - low) * static_cast<double>(random() >> 11) / 9007199254740992.0;
}

ClockControl session(double minutes, int32_t moves, int32_t operator_time = 0, bool pondering = false) {
    ClockControl control;
    control.clock_minutes = minutes;
    control.clock_moves_limit = moves;
    control.operator_time = operator_time;
    control.pondering_on = pondering;
    return control;
}

ClockControl increment(double initial, double step, int32_t operator_time = 0, bool pondering = false) {
    ClockControl control;
    control.increment_mode = true;
    control.initial_seconds = initial;
    control.increment_seconds = step;
    control.operator_time = operator_time;
    control.pondering_on = pondering;
    return control;
}

void expect_time(const MoveTime& time, double target, double min, double step, double max) {
    EXPECT_NEAR(time.search_target_time, target, target * 1e-9);
    EXPECT_NEAR(time.Mintime, min, min * 1e-9);
    EXPECT_NEAR(time.step_time, step, step * 1e-9);
    EXPECT_NEAR(time.max_time, max, max * 1e-9);
}

// The rules one after the other, in wider numbers.
struct SlowTime {
    long double target, min, step, max;
};

SlowTime slow_session(const ClockControl& control, double used, int n, int p) {
    const long double T = control.clock_minutes, op = control.operator_time;
    const int M = control.clock_moves_limit;
    const long double k = control.pondering_on ? 1.5375L : 1.23L;
    if (n >= M) {
        long double t = T * 60 / M - op;
        if (t < 0.1L) t = 0.1L;
        return {t, 0.65L * t, 0.4L * t, 4 * t};
    }
    const int left = M - n;
    int E = static_cast<int>(p * 1.0588235294117647 + 0.6470588235294112);
    if (left < E) E = left;
    const long double a = T * 60 - used - op * left - T * 0.015L * 60;
    long double x = a / E;
    if (x < 0) x = 0;
    x = x * k * 4;
    const long double cap = a / (E < 11 ? 4 : E >= 16 ? 6 : 5);
    if (cap < x) x = cap;
    const long double reserve = T * 0.0009L * 60 * left;
    if (reserve > a - x) x = a - reserve;
    if (x <= 0.005L) x = 0.005L;
    long double t = x / 4;
    if (t < 0.002L) t = 0.002L;
    long double min = 0.65L * t, step = 0.4L * t;
    if (min < 0.002L) min = 0.002L;
    if (step < 0.002L) step = 0;
    return {t, min, step, x};
}

SlowTime slow_increment(const ClockControl& control, double used, int n, int p) {
    const long double I = control.initial_seconds, c = control.increment_seconds, op = control.operator_time;
    const long double k = control.pondering_on ? 1.5375L : 1.23L;
    const long double r = (n + 1) * c + I - used;
    long double hard = r - (c * 0.02L + 0.035L) - op;
    if (hard < 0) hard = 0;
    const int E = static_cast<int>(p * 1.0588235294117647 + 0.6470588235294112);
    long double x = (E * c + r - (c * 0.01L + op) * E) / E * k * 2.6L;
    if (hard < x) x = hard;
    if (x <= 0.005L) x = 0.005L;
    long double t = x / 2.6L;
    if (t <= 0.002L) t = 0.002L;
    long double min = 0.65L * t;
    if (min < 0.002L) min = 0.002L;
    long double step = min * 0.4L / 0.65L;
    if (step < 0.002L) step = 0;
    return {t, min, step, x};
}

// Relative to the size of the numbers that were subtracted on the way.
bool close(double value, long double slow, double size) {
    return std::fabs(static_cast<long double>(value) - slow) <= 1e-12L * (1 + size);
}

TEST(Limits, TheMovesLeftGoByThePieces) {
    EXPECT_EQ(estimated_moves_left(6), 7);
    EXPECT_EQ(estimated_moves_left(23), 25);
    EXPECT_EQ(estimated_moves_left(39), 41);
    EXPECT_EQ(estimated_moves_left(40), 43);
    EXPECT_EQ(estimated_moves_left(1), 1);
    EXPECT_EQ(estimated_moves_left(0), 1);
    EXPECT_EQ(estimated_moves_left(-1), 1);
    EXPECT_EQ(estimated_moves_left(INT32_MIN), 1);
    EXPECT_EQ(estimated_moves_left(INT32_MAX), estimated_moves_left(50));
    for (int p = 0; p < 50; ++p) EXPECT_LE(estimated_moves_left(p), estimated_moves_left(p + 1));
}

TEST(Limits, AFixedTimeIsSharedOut) {
    expect_time(fixed_move_time(3, false), 3, 1.95, 1.2, 12);
    expect_time(fixed_move_time(3, true), 3, 1.95, 0, 12);
    expect_time(fixed_move_time(1000000, false), 1e6, 6.5e5, 4e5, 4e6);
    for (const double none : {0.0, -1.0, -INF, std::nan("")})
        expect_time(fixed_move_time(none, false), 0, 0, 0, 0);
    EXPECT_EQ(fixed_move_time(INF, false).max_time, INF);
}

TEST(Limits, TheyBecomeThoseOfTheSearch) {
    set_move_time({1, 2, 3, 4});
    EXPECT_EQ(search_state.Mintime, 2);
    EXPECT_EQ(search_state.step_time, 3);
    EXPECT_EQ(search_state.max_time, 4);
}

// Worked out by hand, in fractions.
TEST(Limits, MovesInMinutes) {
    expect_time(clock_move_time(session(7, 90), 0, 0, 40), 11.833744186046512, 7.691933720930233,
                4.733497674418605, 47.33497674418605);
    // 3228.5 seconds are there for 32 moves by the pieces; a sixth of them is less than the share.
    expect_time(clock_move_time(session(90, 75, 2, true), 2000.5, 30, 30), 134.52083333333334,
                87.43854166666667, 53.80833333333333, 538.0833333333333);
    // The reserve for the moves to come is kept: 35 seconds are there, 32.4 are reserved.
    expect_time(clock_move_time(session(10, 60), 556, 0, 40), 0.65, 0.4225, 0.26, 2.6);
    expect_time(clock_move_time(session(5, 75), 200, 70, 20), 5.96875, 3.8796875, 2.3875, 23.875);
}

TEST(Limits, AnInitialTimeWithAnIncrement) {
    expect_time(clock_move_time(increment(10, 0.1), 0, 0, 40), 0.4106769767441861, 0.2669400348837209,
                0.16427079069767442, 1.0677601395348837);
    expect_time(clock_move_time(increment(60, 1, 1, true), 70.25, 20, 24), 0.6203221153846153, 0.403209375,
                0.24812884615384614, 1.6128375);
    // 0.06 seconds are on the clock, of which 0.037 are never touched.
    expect_time(clock_move_time(increment(0.5, 0.1), 1.74, 12, 6), 0.023 / 2.6, 0.65 * 0.023 / 2.6,
                0.4 * 0.023 / 2.6, 0.023);
}

TEST(Limits, AreThoseOfTheRules) {
    Random random(1);
    int run_out = 0, short_steps = 0;
    for (int i = 0; i < 200000; ++i) {
        ClockControl control;
        control.increment_mode = below(random, 2) != 0;
        control.clock_minutes = uniform(random, 0.1, below(random, 2) ? 2 : 120);
        control.clock_moves_limit = 1 + below(random, 120);
        control.operator_time = below(random, 3) ? 0 : below(random, 8);
        control.initial_seconds = uniform(random, 0, below(random, 2) ? 2 : 600);
        control.increment_seconds = below(random, 3) ? uniform(random, 0, 5) : 0;
        control.pondering_on = below(random, 2) != 0;
        const int n = below(random, 130), p = 2 + below(random, 39);
        const double whole = control.increment_mode
                                 ? control.initial_seconds + (n + 1) * control.increment_seconds
                                 : control.clock_minutes * 60;
        const double used = uniform(random, 0, 1.05) * whole;
        const MoveTime time = clock_move_time(control, used, n, p);
        const SlowTime slow =
            control.increment_mode ? slow_increment(control, used, n, p) : slow_session(control, used, n, p);
        const double size = whole + 1000;
        ASSERT_TRUE(close(time.search_target_time, slow.target, size)) << i;
        ASSERT_TRUE(close(time.Mintime, slow.min, size)) << i;
        ASSERT_TRUE(close(time.max_time, slow.max, size)) << i;
        // At the bound itself rounding decides between 0 and 0.002.
        const long double steps = 0.4L * slow.min / 0.65L;
        if (std::fabs(steps - 0.002L) > 1e-6L || slow.min < 0.0021L) {
            ASSERT_TRUE(close(time.step_time, slow.step, size)) << i;
        }
        run_out += control_run_out(control, n);
        short_steps += time.step_time == 0;
    }
    EXPECT_GT(run_out, 10000);
    EXPECT_GT(short_steps, 1000);
}

TEST(Limits, AfterTheLastMoveOfTheControlItsAverageIsPlayed) {
    for (const int n : {75, 76, 200, INT32_MAX}) {
        for (const double used : {0.0, 5400.0, 9999.0}) {
            EXPECT_TRUE(control_run_out(session(90, 75), n));
            expect_time(clock_move_time(session(90, 75), used, n, 40), 72, 46.8, 28.8, 288);
            expect_time(clock_move_time(session(90, 75, 5), used, n, 40), 67, 43.55, 26.8, 268);
            expect_time(clock_move_time(session(90, 75, 72), used, n, 40), 0.1, 0.065, 0.04, 0.4);
            expect_time(clock_move_time(session(90, 75, INT32_MAX), used, n, 40), 0.1, 0.065, 0.04, 0.4);
        }
    }
    EXPECT_FALSE(control_run_out(session(90, 75), 74));
    EXPECT_FALSE(control_run_out(increment(90, 75), INT32_MAX));
    EXPECT_EQ(clock_move_time(session(90, 75), 100, 75, 40).search_target_time,
              clock_move_time(session(90, 75, 0, true), 100, 75, 40).search_target_time);
}

TEST(Limits, TheFloorsHoldWhenTimeHasRunOut) {
    for (const double used : {5400.0, 6000.0, 1e300, INF}) {
        expect_time(clock_move_time(session(90, 75), used, 10, 30), 0.002, 0.002, 0, 0.005);
        expect_time(clock_move_time(increment(60, 1), used, 10, 30), 0.002, 0.002, 0, 0.005);
    }
    expect_time(clock_move_time(session(7, 90, 5), 0, 0, 40), 0.002, 0.002, 0, 0.005);
    expect_time(clock_move_time(increment(60, 1, 61), 0, 0, 40), 0.002, 0.002, 0, 0.005);
}

TEST(Limits, NoMovesCountAsOneAndAnEmptyBoardAsOneToCome) {
    const MoveTime one = clock_move_time(session(7, 1), 0, 0, 40);
    const MoveTime none = clock_move_time(session(7, 0), 0, 0, 40);
    EXPECT_EQ(none.max_time, one.max_time);
    EXPECT_NEAR(none.max_time, 420 * 0.985 / 4, 1e-9);
    expect_time(clock_move_time(session(7, 0), 500, 1, 40), 420, 273, 168, 1680);
    EXPECT_TRUE(control_run_out(session(7, 0), 1));
    EXPECT_FALSE(control_run_out(session(7, 0), 0));

    EXPECT_EQ(clock_move_time(session(7, 90), 0, 0, 0).max_time,
              clock_move_time(session(7, 90), 0, 0, 1).max_time);
    EXPECT_EQ(clock_move_time(increment(9, 1), 0, 0, 0).max_time,
              clock_move_time(increment(9, 1), 0, 0, 1).max_time);
    EXPECT_NEAR(clock_move_time(session(7, 0), 0, 0, 0).max_time, 420 * 0.985 / 4, 1e-9);
}

// What one move may take of the available time, where the share of the moves to come would be more.
TEST(Limits, FewMovesToComeMayTakeMoreEach) {
    const double available = 600 * 0.985;
    for (int moves = 1; moves <= 36; ++moves) {
        const double part = moves < 11 ? 4 : moves < 16 ? 5 : 6;
        EXPECT_NEAR(clock_move_time(session(10, moves, 0, true), 0, 0, 40).max_time, available / part, 1e-9)
            << moves;
    }
    EXPECT_NEAR(clock_move_time(session(10, 37, 0, true), 0, 0, 40).max_time, available / 37 * 1.5375 * 4,
                1e-9);
}

TEST(Limits, PonderingAllowsAQuarterMore) {
    EXPECT_NEAR(clock_move_time(session(7, 90, 0, true), 0, 0, 40).max_time /
                    clock_move_time(session(7, 90), 0, 0, 40).max_time,
                1.25, 1e-9);
    EXPECT_NEAR(clock_move_time(increment(60, 0.1, 0, true), 0, 0, 40).max_time /
                    clock_move_time(increment(60, 0.1), 0, 0, 40).max_time,
                1.25, 1e-9);
}

TEST(Limits, MoreTimeUsedNeverGivesMoreTime) {
    for (const ClockControl& control : {session(7, 90), session(1, 30, 1), session(5, 8, 0, true),
                                        increment(60, 1), increment(2, 0.1, 0, true)}) {
        for (int n = 0; n < 90; n += 7) {
            double before = INF;
            for (double used = 0; used < 450; used += 0.37) {
                const MoveTime time = clock_move_time(control, used, n, 26);
                ASSERT_LE(time.max_time, before);
                ASSERT_LE(time.step_time, time.Mintime);
                ASSERT_LE(time.Mintime, time.max_time);
                before = time.max_time;
            }
        }
    }
}

// A record of settings can hold anything.
TEST(Limits, AnyValuesGiveTimesThatASearchCanWorkWith) {
    const std::vector<double> doubles{0,     -0.0,   1,    -1,  1e-320, -1e-320,     0.1,
                                      1e308, -1e308, 7200, INF, -INF,   std::nan("")};
    const std::vector<int32_t> ints{0, 1, -1, 2, 75, INT32_MAX, INT32_MIN};
    for (const bool by_increment : {false, true}) {
        for (const double a : doubles) {
            for (const double b : doubles) {
                for (const double used : doubles) {
                    for (const int32_t limit : ints) {
                        for (const int32_t op : ints) {
                            for (const int32_t n : ints) {
                                ClockControl control = session(a, limit, op, n == 1);
                                control.increment_mode = by_increment;
                                control.initial_seconds = a;
                                control.increment_seconds = b;
                                const MoveTime time = clock_move_time(control, used, n, op);
                                ASSERT_GE(time.search_target_time, 0.002);
                                ASSERT_GE(time.Mintime, 0.002);
                                ASSERT_GE(time.max_time, 0.005);
                                ASSERT_TRUE(time.step_time == 0 || time.step_time >= 0.002);
                            }
                        }
                    }
                }
                if (!by_increment) break;
            }
        }
    }
}

// How much of its budget a player uses on a move.
using Habit = std::function<double(Random&, const MoveTime&)>;

const std::vector<Habit> HABITS{
    [](Random&, const MoveTime& time) { return time.max_time; },
    [](Random&, const MoveTime&) { return 0.0; },
    [](Random&, const MoveTime& time) { return time.Mintime; },
    [](Random& random, const MoveTime& time) { return uniform(random, 0, time.max_time); },
    [](Random& random, const MoveTime& time) { return below(random, 10) ? 0.0 : time.max_time; },
    [](Random& random, const MoveTime& time) {
        return below(random, 5) ? time.max_time : time.search_target_time;
    },
};

int fewer_pieces(Random& random, int pieces) { return below(random, 3) ? pieces : std::max(2, pieces - 1); }

// With moves in minutes all budgets together stay within what is left beside the reserve and the operator's
// part; only the least time of 0.005 seconds a move may go beyond it.
TEST(Games, MovesInMinutesAreKept) {
    Random random(2);
    for (int game = 0; game < 6000; ++game) {
        const int moves = 1 + below(random, below(random, 2) ? 20 : 200);
        const double minutes = uniform(random, 0.01, below(random, 2) ? 1 : 120);
        const int op = below(random, 4) ? 0 : below(random, 4);
        const ClockControl control = session(minutes, moves, op, below(random, 2) != 0);
        const Habit& habit = HABITS[static_cast<size_t>(game) % HABITS.size()];
        const double whole = minutes * 60, kept = whole * 0.985;
        double used = 0;
        int pieces = 40;
        for (int n = 0; n < moves; ++n) {
            const double available = kept - used - op * (moves - n);
            const MoveTime time = clock_move_time(control, used, n, pieces);
            ASSERT_LE(time.max_time, std::max(available / 4, 0.005) + 1e-9);
            const double reserve = whole * 0.0009 * (moves - n);
            if (time.max_time > 0.005) {
                ASSERT_GE(available - time.max_time, reserve - 1e-9);
            }
            used += habit(random, time) + op;
            pieces = fewer_pieces(random, pieces);
        }
        ASSERT_LE(used, std::max(kept, 1.0 * op * moves) + 0.005 * moves + 1e-6) << minutes << " " << moves;
        if (op == 0) {
            ASSERT_LE(used, whole + 0.005 * moves);
        }
    }
}

// With an increment every move that has more than the least time leaves some time on the clock, so the clock
// of a player without an operator never runs down.
TEST(Games, AnIncrementIsKept) {
    Random random(3);
    for (int game = 0; game < 6000; ++game) {
        const double initial = uniform(random, 0.1, below(random, 2) ? 5 : 600);
        const double step = below(random, 4) ? uniform(random, 0.005, 10) : 0;
        const int op = below(random, 4) ? 0 : below(random, 4);
        const ClockControl control = increment(initial, step, op, below(random, 2) != 0);
        const Habit& habit = HABITS[static_cast<size_t>(game) % HABITS.size()];
        double used = 0;
        int pieces = 40;
        for (int n = 0; n < 130; ++n) {
            const MoveTime time = clock_move_time(control, used, n, pieces);
            used += habit(random, time) + op;
            pieces = fewer_pieces(random, pieces);
            const double left = initial + (n + 1) * step - used;
            if (time.max_time > 0.005) {
                ASSERT_GE(left, step * 0.02 + 0.035 - 1e-9);
            }
            if (op == 0) {
                ASSERT_GE(left, step > 0 ? 0 : -0.005 * (n + 1));
            }
        }
    }
}

}  // namespace
