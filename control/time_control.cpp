#include "control/time_control.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "control/settings.h"

namespace {

constexpr double LEAST_AVERAGE = 0.05;  // the message speaks of twice that
constexpr double WHOLE_MINUTES = 0.05;

// Without a number of moves the average has no end, so whatever the operator takes of it.
bool average_is_enough(const GameClockFields& fields) {
    if (fields.moves == 0) return fields.minutes >= 0;
    return fields.minutes * 60 / fields.moves - fields.operator_time >= LEAST_AVERAGE;
}

}  // namespace

const std::array<TimeMenuRow, TIME_MENU_ROWS> time_menu{{
    {40006, "1 sec/move", 1},
    {40007, "2 sec/move", 2},
    {40008, "3 sec/move", 3},
    {40009, "5 sec/move", 5},
    {40044, "7 sec/move", 7},
    {40010, "10 sec/move", 10},
    {40011, "15 sec/move", 15},
    {40012, "20 sec/move", 20},
    {40013, "30 sec/move", 30},
    {40014, "1 min/move", 60},
    {40015, "2 min/move", 120},
    {40017, "5 min/move", 300},
    {40018, "10 min/move", 600},
    {40019, "30 min/move", 1800},
    {40020, "1 hour/move", 3600},
    {TIME_INFINITE, "Infinite", 1000000},
    {TIME_GAME_CLOCK, "Game clock...", 0},
}};

const TimeMenuRow* time_menu_row(int32_t id) {
    const auto row = std::find_if(time_menu.begin(), time_menu.end(),
                                  [id](const TimeMenuRow& candidate) { return candidate.id == id; });
    return row == time_menu.end() ? nullptr : &*row;
}

void set_time_control(int32_t id) {
    const TimeMenuRow* const row = time_menu_row(id);
    if (row && row->seconds != 0) settings.time_per_move = row->seconds;
    settings.time_menu_id = id;
    settings.use_game_clock = id == TIME_GAME_CLOCK;
}

GameClockFields game_clock_fields() {
    return {settings.clock_moves_limit, settings.clock_minutes, settings.operator_time,
            settings2.initial_seconds, settings2.increment_seconds};
}

int set_game_clock(const GameClockFields& fields) {
    if (!average_is_enough(fields)) return 1;
    settings.clock_minutes = fields.minutes;
    settings.clock_moves_limit = fields.moves;
    settings.operator_time = fields.operator_time;
    set_time_control(TIME_GAME_CLOCK);
    settings2.initial_seconds = fields.initial_seconds;
    settings2.increment_seconds = fields.increment_seconds;
    return 0;
}

void clock_minutes_text(double minutes, char* buffer, size_t size) {
    const bool whole = std::fabs(minutes - std::round(minutes)) < WHOLE_MINUTES;
    std::snprintf(buffer, size, whole ? "%.0f" : "%.1f", minutes);
}
