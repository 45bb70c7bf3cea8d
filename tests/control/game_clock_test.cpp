// The game clock: its commands, what they charge to whom, and its text.
#include "control/game_clock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <thread>

#include "base/text.h"
#include "control/settings.h"
#include "search/engine_settings.h"
#include "search/search_state.h"
#include "search/table.h"
#include "search/threads.h"
#include "tests/control/settings_fixture.h"

namespace {

constexpr double INF = std::numeric_limits<double>::infinity();

const char* clock_format = "";

void give_clock_format(int id, char* buffer, size_t size) {
    std::snprintf(buffer, size, "%s", id == 211 ? clock_format : "another text");
}

class GameClockTest : public SettingsTest {
  protected:
    void SetUp() override {
        SettingsTest::SetUp();
        settings.clock_minutes = 7;
        settings.clock_moves_limit = 90;
        clock_format = "W %02d:%02d   B %02d:%02d\r\nmoves %d\r\n";
        text_source = give_clock_format;
    }

    static void start(bool real_search, int64_t now) { clock_command(CLOCK_START, true, real_search, now); }
    static void stop(bool real_search, int64_t now) { clock_command(CLOCK_STOP, true, real_search, now); }
    static void reset() { clock_command(CLOCK_RESET, true, false, 0); }
    static void engine_plays(int side) { clock_state.clock_side = side; }
    static void expect_used(double white, double black) {
        EXPECT_NEAR(clock_used(WHITE), white, 1e-9);
        EXPECT_NEAR(clock_used(BLACK), black, 1e-9);
    }
    static void set_used(double white, double black) {
        clock_state.white_used = white;
        clock_state.black_used = black;
    }
    static std::string text(bool real_search = false, int64_t now = 0, size_t size = 300) {
        std::string buffer(size, '?');
        clock_text(real_search, now, buffer.data(), size);
        return buffer.c_str();
    }
};

TEST_F(GameClockTest, ItStartsAtNothing) {
    EXPECT_FALSE(clock_state.clock_running);
    EXPECT_EQ(clock_state.clock_moves, 0);
    expect_used(0, 0);
}

TEST_F(GameClockTest, TheUsersLapIsChargedToTheSideThatTheEngineDoesNotPlay) {
    for (const int side : {BLACK, WHITE}) {
        reset();
        engine_plays(side);
        start(false, 1000);
        EXPECT_TRUE(clock_state.clock_running);
        charge_user_time(3500);
        charge_user_time(3600);
        side == WHITE ? expect_used(0, 2.6) : expect_used(2.6, 0);
    }
}

TEST_F(GameClockTest, TheEnginesLapIsChargedToItsSide) {
    for (const int side : {BLACK, WHITE}) {
        reset();
        engine_plays(side);
        start(false, 1000);
        start_engine_lap(2000);
        charge_engine_time(2750);
        side == WHITE ? expect_used(0.75, 0) : expect_used(0, 0.75);
    }
}

TEST_F(GameClockTest, TheOperatorsTimeIsAddedToEachLapOfTheEngineAndToNothingElse) {
    settings.operator_time = 5;
    engine_plays(WHITE);
    start(false, 0);
    for (int64_t move = 0; move < 10; ++move) {
        charge_user_time(move * 1000 + 400);
        start_engine_lap(move * 1000 + 400);
        charge_engine_time(move * 1000 + 1000);
        start_user_lap(move * 1000 + 1000);
    }
    expect_used(10 * 5.6, 10 * 0.4);
    stop(false, 10500);
    expect_used(56, 4.5);
}

// The search thread does not read the settings: what counts is what stood there when the search was prepared.
TEST_F(GameClockTest, TheOperatorsTimeOfASearchIsThatOfItsBeginning) {
    engine_plays(WHITE);
    start(false, 0);
    settings.operator_time = 3;
    charge_user_time(0);
    settings.operator_time = 7;
    start_engine_lap(0);
    charge_engine_time(1000);
    expect_used(4, 0);
    compute_move_time(40);
    charge_engine_time(1000);
    expect_used(11, 0);
}

TEST_F(GameClockTest, NothingIsChargedWhileItStands) {
    set_used(5, 6);
    charge_user_time(1000);
    charge_engine_time(1000);
    count_engine_move(2000);
    count_step_forward(WHITE);
    count_step_forward(BLACK);
    expect_used(5, 6);
    EXPECT_EQ(clock_state.clock_moves, 0);
    EXPECT_EQ(clock_state.user_lap_start, 0);
    clock_state.clock_moves = 3;
    count_step_back(WHITE);
    count_step_back(BLACK);
    EXPECT_EQ(clock_state.clock_moves, 3);
}

TEST_F(GameClockTest, StoppingChargesTheRunningLap) {
    settings.operator_time = 5;
    engine_plays(WHITE);
    start(false, 1000);
    stop(false, 2500);
    EXPECT_FALSE(clock_state.clock_running);
    expect_used(0, 1.5);
    stop(false, 9000);
    expect_used(0, 1.5);

    start(true, 10000);
    stop(true, 10250);
    expect_used(0.25, 1.5);
    charge_engine_time(20000);  // the search that was on ends after the clock was stopped
    expect_used(0.25, 1.5);
}

TEST_F(GameClockTest, TheTimeWhileItStoodIsNobodys) {
    engine_plays(BLACK);
    start(false, 0);
    stop(false, 1000);
    start(false, 50000);
    charge_user_time(51000);
    expect_used(2, 0);
    stop(false, 51000);
    start(true, 90000);
    charge_engine_time(90500);
    expect_used(2, 0.5);
}

TEST_F(GameClockTest, StartingTwiceKeepsTheLap) {
    start(false, 1000);
    start(false, 5000);
    start(true, 6000);
    EXPECT_EQ(clock_state.user_lap_start, 1000);
    EXPECT_EQ(clock_state.engine_lap_start, 0);
}

TEST_F(GameClockTest, ItStartsOnlyWhereAGameIsPlayed) {
    clock_command(CLOCK_START, false, false, 1000);
    EXPECT_FALSE(clock_state.clock_running);
    EXPECT_EQ(clock_state.user_lap_start, 0);
    start(false, 1000);
    clock_command(CLOCK_STOP, false, false, 2000);
    EXPECT_FALSE(clock_state.clock_running);
    expect_used(1, 0);
    clock_command(CLOCK_RESET, false, false, 2000);
    expect_used(0, 0);
}

TEST_F(GameClockTest, ResettingClearsTimesAndMovesAndStops) {
    engine_plays(WHITE);
    start(false, 1000);
    count_engine_move(2000);
    set_used(5, 6);
    reset();
    EXPECT_FALSE(clock_state.clock_running);
    EXPECT_EQ(clock_state.clock_moves, 0);
    expect_used(0, 0);
    EXPECT_EQ(clock_state.clock_side, WHITE);
}

TEST_F(GameClockTest, AStoppedClockKeepsItsCounts) {
    engine_plays(BLACK);
    start(false, 0);
    charge_user_time(4000);
    count_engine_move(5000);
    stop(false, 5000);
    EXPECT_EQ(clock_state.clock_moves, 1);
    expect_used(4, 0);
    EXPECT_EQ(text(), "W 00:04   B 00:00\r\nmoves 1\r\n");
}

TEST_F(GameClockTest, MovesAreCountedAndCorrected) {
    engine_plays(WHITE);
    start(false, 0);
    count_engine_move(1000);
    count_engine_move(2000);
    EXPECT_EQ(clock_state.clock_moves, 2);
    EXPECT_EQ(clock_state.user_lap_start, 2000);
    count_step_back(BLACK);  // the user's move is taken back
    EXPECT_EQ(clock_state.clock_moves, 2);
    count_step_back(WHITE);
    EXPECT_EQ(clock_state.clock_moves, 1);
    count_step_forward(WHITE);
    EXPECT_EQ(clock_state.clock_moves, 1);
    count_step_forward(BLACK);
    EXPECT_EQ(clock_state.clock_moves, 2);
    for (int i = 0; i < 5; ++i) count_step_back(WHITE);
    EXPECT_EQ(clock_state.clock_moves, 0);
}

TEST_F(GameClockTest, TheTextAtItsBounds) {
    EXPECT_EQ(text(), "W 00:00   B 00:00\r\nmoves 0\r\n");
    set_used(59.999, 60);
    EXPECT_EQ(text(), "W 00:59   B 01:00\r\nmoves 0\r\n");
    set_used(599.99, 600);
    EXPECT_EQ(text(), "W 09:59   B 10:00\r\nmoves 0\r\n");
    set_used(3599.999, 3600);
    clock_state.clock_moves = 75;
    EXPECT_EQ(text(), "W 59:59   B 60:00\r\nmoves 75\r\n");
    set_used(5999.5, 6000);
    EXPECT_EQ(text(), "W 99:59   B 100:00\r\nmoves 75\r\n");
    set_used(-1, std::nan(""));
    clock_state.clock_moves = INT32_MAX;
    EXPECT_EQ(text(), "W 00:00   B 00:00\r\nmoves 2147483647\r\n");
    set_used(INF, 1e300);
    clock_state.clock_moves = INT32_MIN;
    EXPECT_EQ(text(), "W 16666666:40   B 16666666:40\r\nmoves -2147483648\r\n");
}

TEST_F(GameClockTest, TheLapInProgressIsShownAndNotCharged) {
    engine_plays(WHITE);
    set_used(60, 120);
    clock_state.user_lap_start = 1000;
    EXPECT_EQ(text(false, 9000), "W 01:00   B 02:00\r\nmoves 0\r\n");
    start(false, 1000);
    EXPECT_EQ(text(false, 5999), "W 01:00   B 02:04\r\nmoves 0\r\n");
    start_engine_lap(6000);
    EXPECT_EQ(text(true, 8000), "W 01:02   B 02:00\r\nmoves 0\r\n");
    expect_used(60, 120);
    engine_plays(BLACK);
    EXPECT_EQ(text(false, 2000), "W 01:01   B 02:00\r\nmoves 0\r\n");
    EXPECT_EQ(text(true, 7000), "W 01:00   B 02:01\r\nmoves 0\r\n");
}

TEST_F(GameClockTest, ATextThatIsTooLongIsCut) {
    EXPECT_EQ(text(false, 0, 1), "");
    EXPECT_EQ(text(false, 0, 6), "W 00:");
    const std::string whole = text();
    EXPECT_EQ(text(false, 0, whole.size() + 1), whole);
    EXPECT_EQ(text(false, 0, whole.size()), whole.substr(0, whole.size() - 1));
}

// A language file may say anything.
TEST_F(GameClockTest, AForeignFormatIsNotTrusted) {
    set_used(61, 122);
    clock_state.clock_moves = 9;
    clock_format = "%d.%02d|%d.%02d|%02d";
    EXPECT_EQ(text(), "1.01|2.02|09");
    clock_format = "%s %n %d %1000000d %%";
    EXPECT_EQ(text(), "%s %n 1 %1000000d %%");
    clock_format = "%d %d %d %d %d %d %d";
    EXPECT_EQ(text(), "1 1 2 2 9 %d %d");
    clock_format = "%";
    EXPECT_EQ(text(), "%");
    clock_format = "";
    EXPECT_EQ(text(), "");
}

// Any play of a game: what is charged to both sides is the time that passed while the clock ran, and the
// operator's part.
TEST_F(GameClockTest, AllTimeIsChargedOnce) {
    std::mt19937_64 random(5);
    for (int game = 0; game < 500; ++game) {
        reset_clock_state();
        settings.operator_time = static_cast<int32_t>(random() % 3);
        engine_plays(static_cast<int>(random() % 2));
        int64_t now = 1000, running = 0;
        int searches = 0;
        bool thinks = false;
        for (int i = 0; i < 200; ++i) {
            const int64_t passed = static_cast<int64_t>(random() % 5000);
            now += passed;
            if (clock_state.clock_running) running += passed;
            switch (random() % 6) {
                case 0:
                    start(thinks, now);
                    break;
                case 1:
                    stop(thinks, now);
                    break;
                default:
                    if (thinks) {
                        searches += clock_state.clock_running;
                        charge_engine_time(now);
                        count_engine_move(now);
                    } else {
                        charge_user_time(now);
                        if (clock_state.clock_running) start_engine_lap(now);
                    }
                    thinks = !thinks;
            }
        }
        stop(thinks, now);
        const double all = static_cast<double>(running) / 1000 + searches * settings.operator_time;
        ASSERT_NEAR(clock_used(WHITE) + clock_used(BLACK), all, 1e-6);
        ASSERT_EQ(clock_state.clock_moves, searches);
    }
}

// The interface shows the clock and stops it just when searches end: all time up to the last charge is
// charged once, whoever charges it.
TEST_F(GameClockTest, TwoThreadsShareTheEnginesLap) {
    constexpr int64_t SECOND = 1000;  // of which sums are exact, however many
    for (int round = 0; round < 300; ++round) {
        reset_clock_state();
        engine_plays(WHITE);
        start(true, 0);
        std::atomic<int64_t> now = 0;
        std::thread searching([&] {
            while (clock_state.clock_running) charge_engine_time(now += SECOND);
        });
        while (now < 20 * SECOND) EXPECT_FALSE(text(true, now).empty());
        stop(true, now += SECOND);
        searching.join();
        ASSERT_EQ(clock_used(WHITE), static_cast<double>(clock_state.engine_lap_start) / SECOND);
        ASSERT_EQ(clock_used(BLACK), 0);
    }
}

class MoveTimeTest : public GameClockTest {
  protected:
    // A table that any short time shrinks and any long one grows.
    static void slow_table() {
        engine_settings.hash_size_mb = 32;
        ASSERT_EQ(tt_allocate(), 0);
        again();
    }
    static void again() {
        transposition_table.effective_mb = 16;
        tt_set_geometry();
        transposition_table.age_ms.fill(1000);
        transposition_table.age_count = AGE_TIMES;
    }
    void TearDown() override {
        transposition_table = TranspositionTable{};
        GameClockTest::TearDown();
    }
};

TEST_F(MoveTimeTest, TheSettingsAreTheControl) {
    settings.clock_minutes = 11;
    settings.clock_moves_limit = 22;
    settings.operator_time = 3;
    settings.pondering_on = 1;
    settings2.increment_mode = 1;
    settings2.initial_seconds = 44;
    settings2.increment_seconds = 5;
    const ClockControl control = clock_control();
    EXPECT_EQ(control.clock_minutes, 11);
    EXPECT_EQ(control.clock_moves_limit, 22);
    EXPECT_EQ(control.operator_time, 3);
    EXPECT_TRUE(control.pondering_on);
    EXPECT_TRUE(control.increment_mode);
    EXPECT_EQ(control.initial_seconds, 44);
    EXPECT_EQ(control.increment_seconds, 5);
}

TEST_F(MoveTimeTest, TheClockOfTheEnginesSideCounts) {
    set_used(100, 300);
    clock_state.clock_moves = 20;
    for (const int side : {BLACK, WHITE}) {
        engine_plays(side);
        const MoveTime time = compute_move_time(30);
        EXPECT_EQ(time.max_time,
                  clock_move_time(clock_control(), side == WHITE ? 100 : 300, 20, 30).max_time);
        EXPECT_EQ(search_state.Mintime, time.Mintime);
        EXPECT_EQ(search_state.step_time, time.step_time);
        EXPECT_EQ(search_state.max_time, time.max_time);
    }
}

TEST_F(MoveTimeTest, TheFirstMoveAfterAResetHasTheWholeTime) {
    set_used(100, 300);
    clock_state.clock_moves = 20;
    reset();
    EXPECT_EQ(compute_move_time(40).max_time, clock_move_time(clock_control(), 0, 0, 40).max_time);
}

TEST_F(MoveTimeTest, TheTableIsFittedInTheFirstMovesAndOnceLater) {
    slow_table();
    for (const bool by_increment : {false, true}) {
        settings2.increment_mode = by_increment;
        for (int n = 0; n < 90; ++n) {
            again();
            clock_state.clock_moves = n;
            compute_move_time(40);
            EXPECT_EQ(transposition_table.effective_mb, n <= 3 || n == 55 ? 8 : 16) << n;
        }
    }
}

TEST_F(MoveTimeTest, TheTableIsLeftAloneAfterTheControl) {
    slow_table();
    settings.clock_moves_limit = 55;
    clock_state.clock_moves = 55;
    compute_move_time(40);
    EXPECT_EQ(transposition_table.effective_mb, 16);
    settings.clock_moves_limit = 56;
    compute_move_time(40);
    EXPECT_EQ(transposition_table.effective_mb, 8);
    again();
    settings.clock_moves_limit = 2;
    clock_state.clock_moves = 2;
    compute_move_time(40);
    EXPECT_EQ(transposition_table.effective_mb, 16);
}

// 16 MB in a second are kept for a target of 450 seconds by one thread, and doubled for that of eight.
TEST_F(MoveTimeTest, TheTableIsFittedToTheTargetAndTheThreads) {
    slow_table();
    settings2.increment_mode = 1;
    settings2.initial_seconds = 450 / 1.23 * 43;
    ASSERT_NEAR(compute_move_time(40).search_target_time, 450, 1);
    EXPECT_EQ(transposition_table.effective_mb, 16);
    engine_settings.search_threads = 8;
    if (created_threads() == 1) {
        compute_move_time(40);
        EXPECT_EQ(transposition_table.effective_mb, 16) << "threads that are not there search nothing";
    }
    ASSERT_EQ(threads_init(8), 8);
    compute_move_time(40);
    EXPECT_EQ(transposition_table.effective_mb, 32);
}

}  // namespace
