// How long the engine is to think, as the user chooses it: the entries of the Time menu, each a fixed time
// per move but for the last, which stands for the game clock; and the dialog of the game clock. What is
// chosen is kept in the settings. Interface thread only.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

enum TimeMenuId : int32_t { TIME_INFINITE = 40021, TIME_GAME_CLOCK = 40080 };

struct TimeMenuRow {
    int32_t id;  // of the command and of the menu's text in language files
    const char* text;
    double seconds;  // 0: the time per move stays as it was
};
constexpr size_t TIME_MENU_ROWS = 17;
extern const std::array<TimeMenuRow, TIME_MENU_ROWS> time_menu;

// Null if no entry has the id.
const TimeMenuRow* time_menu_row(int32_t id);

// Chooses an entry of the menu; the ticked entry is that of `time_menu_id`. An id that no entry has, as a
// record of settings may hold it, leaves the time per move as it was.
void set_time_control(int32_t id);

// The fields of the game clock's dialog. Its box "Increment mode" is not among them: it acts when it is
// clicked.
struct GameClockFields {
    int32_t moves = 0;
    double minutes = 0;
    int32_t operator_time = 0;
    double initial_seconds = 0;
    double increment_seconds = 0;
};
GameClockFields game_clock_fields();

// Takes over the fields and chooses the game clock: 0. If the average time per move is too short, or no
// number, nothing is kept: 1, and the user is to be told with the text of TEXT_AVERAGE_TOO_SHORT.
constexpr int TEXT_AVERAGE_TOO_SHORT = 187;
int set_game_clock(const GameClockFields& fields);

// The minutes as the dialog shows them: whole if they are within 0.05 of a whole number, otherwise with one
// decimal. `size` at least 1; a text that is too long is cut.
void clock_minutes_text(double minutes, char* buffer, size_t size);
