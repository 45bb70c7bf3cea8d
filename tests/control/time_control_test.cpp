// The Time menu and the dialog of the game clock, with the settings they leave behind.
#include "control/time_control.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <set>
#include <string>

#include "control/settings.h"
#include "tests/control/settings_fixture.h"

namespace {

class TimeControlTest : public SettingsTest {
  protected:
    void SetUp() override {
        SettingsTest::SetUp();
        settings.time_menu_id = 40008;
        settings.time_per_move = 3;
        settings.clock_minutes = 7;
        settings.clock_moves_limit = 90;
        settings2.initial_seconds = 1;
        settings2.increment_seconds = 0.1;
    }
};

// What the text of an entry says.
double seconds_said(const std::string& text) {
    int number = 0;
    char unit[8] = "";
    if (std::sscanf(text.c_str(), "%d %7[a-z]/move", &number, unit) != 2) return text == "Infinite" ? 1e6 : 0;
    return number * (std::string(unit) == "sec" ? 1 : std::string(unit) == "min" ? 60 : 3600);
}

TEST_F(TimeControlTest, TheMenuIsComplete) {
    const std::string ids =
        "40006 40007 40008 40009 40044 40010 40011 40012 40013 40014 40015 40017 40018 40019 40020 40021 40080 ";
    const std::string texts =
        "1 sec/move|2 sec/move|3 sec/move|5 sec/move|7 sec/move|10 sec/move|15 sec/move|20 sec/move|30 sec/move|"
        "1 min/move|2 min/move|5 min/move|10 min/move|30 min/move|1 hour/move|Infinite|Game clock...|";
    std::string found_ids, found_texts;
    double before = 0;
    for (const TimeMenuRow& row : time_menu) {
        found_ids += std::to_string(row.id) + " ";
        found_texts += std::string(row.text) + "|";
        EXPECT_EQ(row.seconds, seconds_said(row.text));
        if (row.id != TIME_GAME_CLOCK) {
            EXPECT_GT(row.seconds, before);
        }
        before = row.seconds;
        EXPECT_EQ(time_menu_row(row.id), &row);
    }
    EXPECT_EQ(found_ids, ids);
    EXPECT_EQ(found_texts, texts);
    for (const int32_t none : {0, -1, 40005, 40016, 40022, 40081, INT32_MIN, INT32_MAX})
        EXPECT_EQ(time_menu_row(none), nullptr);
}

TEST_F(TimeControlTest, AnEntrySetsItsTime) {
    for (const TimeMenuRow& row : time_menu) {
        settings.time_per_move = 17;
        settings.use_game_clock = 1;
        set_time_control(row.id);
        EXPECT_EQ(settings.time_menu_id, row.id);
        EXPECT_EQ(settings.time_per_move, row.id == 40080 ? 17 : row.seconds);
        EXPECT_EQ(settings.use_game_clock, row.id == 40080 ? 1 : 0);
    }
}

TEST_F(TimeControlTest, TheClockKeepsTheTimePerMoveForLater) {
    set_time_control(40015);
    set_time_control(40080);
    EXPECT_EQ(settings.time_per_move, 120);
    EXPECT_EQ(settings.use_game_clock, 1);
    set_time_control(40006);
    EXPECT_EQ(settings.time_per_move, 1);
    EXPECT_EQ(settings.use_game_clock, 0);
}

TEST_F(TimeControlTest, AnIdOfNoEntryLeavesTheTimePerMove) {
    settings.use_game_clock = 1;
    set_time_control(12345);
    EXPECT_EQ(settings.time_menu_id, 12345);
    EXPECT_EQ(settings.time_per_move, 3);
    EXPECT_EQ(settings.use_game_clock, 0);
}

TEST_F(TimeControlTest, TheDialogStoresItsFields) {
    EXPECT_EQ(set_game_clock({75, 90.5, 5, 12.5, 0.25}), 0);
    EXPECT_EQ(settings.clock_moves_limit, 75);
    EXPECT_EQ(settings.clock_minutes, 90.5);
    EXPECT_EQ(settings.operator_time, 5);
    EXPECT_EQ(settings2.initial_seconds, 12.5);
    EXPECT_EQ(settings2.increment_seconds, 0.25);
    EXPECT_EQ(settings.time_menu_id, 40080);
    EXPECT_EQ(settings.use_game_clock, 1);
    EXPECT_EQ(settings.time_per_move, 3);
    const GameClockFields fields = game_clock_fields();
    EXPECT_EQ(fields.moves, 75);
    EXPECT_EQ(fields.minutes, 90.5);
    EXPECT_EQ(fields.operator_time, 5);
    EXPECT_EQ(fields.initial_seconds, 12.5);
    EXPECT_EQ(fields.increment_seconds, 0.25);
}

void expect_refused(const GameClockFields& fields) {
    const Settings before = settings;
    const Settings2 before2 = settings2;
    EXPECT_EQ(set_game_clock(fields), 1);
    EXPECT_EQ(settings.clock_moves_limit, before.clock_moves_limit);
    EXPECT_EQ(settings.clock_minutes, before.clock_minutes);
    EXPECT_EQ(settings.operator_time, before.operator_time);
    EXPECT_EQ(settings.time_menu_id, before.time_menu_id);
    EXPECT_EQ(settings.use_game_clock, before.use_game_clock);
    EXPECT_EQ(settings2.initial_seconds, before2.initial_seconds);
    EXPECT_EQ(settings2.increment_seconds, before2.increment_seconds);
}

TEST_F(TimeControlTest, TooLittleTimeForAMoveIsRefusedWhole) {
    settings.operator_time = 1;
    expect_refused({90, 7, 5, 10, 1});
    expect_refused({90, 0, 0, 10, 1});
    expect_refused({-90, 7, 0, 10, 1});
    expect_refused({90, std::nan(""), 0, 10, 1});
    expect_refused({90, -std::numeric_limits<double>::infinity(), 0, 10, 1});
}

// The message speaks of 0.1 seconds, and 0.05 are enough.
TEST_F(TimeControlTest, TheLeastAverageIsHalfOfWhatIsSaid) {
    EXPECT_EQ(set_game_clock({120, 0.12, 0, 1, 0.1}), 0);
    EXPECT_EQ(set_game_clock({120, 0.1001, 0, 1, 0.1}), 0);
    EXPECT_EQ(set_game_clock({60, 0.05, 0, 1, 0.1}), 0) << "just so much";
    expect_refused({120, 0.0999, 0, 1, 0.1});
    EXPECT_EQ(set_game_clock({60, 5.0625, 5, 1, 0.1}), 0);
    expect_refused({60, 5.0375, 5, 1, 0.1});
    EXPECT_EQ(TEXT_AVERAGE_TOO_SHORT, 187);
}

TEST_F(TimeControlTest, NoMovesPassAsAnEndlessAverage) {
    EXPECT_EQ(set_game_clock({0, 7, 0, 1, 0.1}), 0);
    EXPECT_EQ(settings.clock_moves_limit, 0);
    EXPECT_EQ(set_game_clock({0, 0.01, 1000, 1, 0.1}), 0);
    expect_refused({0, -1, 0, 1, 0.1});
    expect_refused({0, std::nan(""), 0, 1, 0.1});
}

std::string minutes_text(double minutes) {
    char text[400];
    clock_minutes_text(minutes, text, sizeof text);
    return text;
}

TEST_F(TimeControlTest, MinutesAreShownWholeNearAWholeNumber) {
    EXPECT_EQ(minutes_text(7), "7");
    EXPECT_EQ(minutes_text(0), "0");
    EXPECT_EQ(minutes_text(7.04), "7");
    EXPECT_EQ(minutes_text(6.96), "7");
    EXPECT_EQ(minutes_text(7.06), "7.1");
    EXPECT_EQ(minutes_text(6.94), "6.9");
    EXPECT_EQ(minutes_text(7.5), "7.5");
    EXPECT_EQ(minutes_text(0.1), "0.1");
    EXPECT_EQ(minutes_text(120), "120");
    EXPECT_EQ(minutes_text(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(minutes_text(1e308).size(), 309u);
    char small[4];
    clock_minutes_text(12345.5, small, sizeof small);
    EXPECT_STREQ(small, "123");
}

}  // namespace
