// The game clock. It only counts what each side has used: it ends no game and stops at no limit. From it and
// from the settings comes the engine's time for a move.
//
// The interface thread owns the clock; the search thread starts the engine's lap and charges it at the end of
// a real search, one that does not ponder. Every `now_ms` is a reading of `clock_ms`.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "control/time_control_limits.h"
#include "core/board.h"

struct ClockState {
    std::atomic<double> white_used = 0;  // seconds
    std::atomic<double> black_used = 0;
    int32_t clock_moves = 0;  // of the engine, while the clock ran; interface thread only
    // The menu offers "Stop" while it is set and otherwise "Start".
    std::atomic<bool> clock_running = false;
    std::atomic<int32_t> clock_side = BLACK;     // the side that the engine plays
    std::atomic<int64_t> engine_lap_start = 0;   // when the real search began, in milliseconds
    int64_t user_lap_start = 0;                  // when the user's time or a ponder search began; interface
                                                 // thread only
    std::atomic<int32_t> lap_operator_time = 0;  // seconds, from the settings, for the search thread
};
extern ClockState clock_state;

// The clock as at the start of the program.
void reset_clock_state();

enum ClockAction { CLOCK_START, CLOCK_STOP, CLOCK_RESET };

// The commands of the menu.
//   clock_mode   the mode is NORMAL_MODE or DXP_MODE; the clock starts in no other
//   engines_lap  the lap is the engine's, otherwise the user's
void clock_command(ClockAction action, bool clock_mode, bool engines_lap, int64_t now_ms);

// Begins the lap of the engine, or of the user.
void start_engine_lap(int64_t now_ms);
void start_user_lap(int64_t now_ms);

// While the clock runs, adds the lap to the side that is not `clock_side` and begins the next. When the user
// has moved, and before a search.
void charge_user_time(int64_t now_ms);

// While the clock runs, adds the lap and the operator time to `clock_side` and begins the next lap. By the
// search thread, at the end of a real search. A lap that "Stop" is charging at that moment is charged once.
void charge_engine_time(int64_t now_ms);

// While the clock runs, adds the lap to `clock_side` and begins the user's. Behind a wait of the engine's,
// before its search.
void charge_engine_wait(int64_t now_ms);

// While the clock runs: counts a move of the engine and begins the user's lap.
void count_engine_move(int64_t now_ms);

// While the clock runs: a step back takes away a move of the engine when it is again to move, a step forward
// adds one when it has moved.
void count_step_back(int side_to_move);
void count_step_forward(int side_to_move);

// Seconds used by a side, without the lap in progress.
double clock_used(int side);

// The game clock's part of the settings.
ClockControl clock_control();

// The time for the engine's next move with so many pieces on the board. It becomes the limits of the next
// search; in the first moves and once later the transposition table is fitted to it. While no search runs.
MoveTime compute_move_time(int pieces);

// The text of the clock's window, with the lap in progress. `size` at least 1; a text that is too long is
// cut.
void clock_text(bool engines_lap, int64_t now_ms, char* buffer, size_t size);
