// What a search may spend on its move: from a fixed time, or from what is left on the game clock. All of it
// is plain arithmetic on the arguments. Any value may come in, also what is no number: what comes out then is
// short, or endless where an endless time was asked for, and never a division by zero.
//
// All times are seconds.
#pragma once

#include <cstdint>

struct MoveTime {
    double search_target_time = 0;  // aimed at
    double Mintime = 0;             // no new iteration after it
    double step_time = 0;           // up to it the next iteration goes two deeper
    double max_time = 0;            // the search is cut off
};

// The settings that bear on the game clock.
struct ClockControl {
    bool increment_mode = false;  // an initial time and an increment, or else moves in a number of minutes
    double initial_seconds = 0;
    double increment_seconds = 0;
    double clock_minutes = 0;
    int32_t clock_moves_limit = 0;  // 0 counts as 1
    int32_t operator_time = 0;      // added to the time that the engine uses on each move
    bool pondering_on = false;
};

// The moves that the game will still take, by the pieces on the board: 7 with six, 43 with forty; at least 1.
int estimated_moves_left(int pieces);

// All moves of the control have been made. Never with an increment.
bool control_run_out(const ClockControl& control, int32_t clock_moves);

// The time for the next move when so much was used on the moves counted so far.
MoveTime clock_move_time(const ClockControl& control, double used, int32_t clock_moves, int pieces);

// A fixed time per move. In the analysis modes every iteration goes one deeper.
MoveTime fixed_move_time(double seconds, bool analysis);

// Makes the limits those of the next search.
void set_move_time(const MoveTime& time);
