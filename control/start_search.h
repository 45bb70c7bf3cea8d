// What the ways to start a search have in common. Interface thread only.
#pragma once

#include "control/time_control_limits.h"
#include "core/board.h"

// True if the search thread can be given a search now. A search that has just returned is waited for; one
// that has not come back in spite of a wait still owns the position, and nothing may start.
bool search_can_start();

// Has the engine follow the settings. 0; 1 if it has no table to search with.
int prepare_engine();

// The limits of the next search, by the game clock or for a fixed time.
void use_clock_time();
MoveTime use_fixed_time(bool analysis);

// Hands the position over with the game line that was built, and wakes the search thread.
void hand_over_search(const Position& position, int side);

// The positions for the repetition test, for a search of the position on the board.
void build_board_line();
// The same for a position one move ahead of it. What could be reached by stepping forward is dropped.
void build_predicted_line(const Position& position, int side);

// Starts the search that waited for the one before it to come back, which it has; the wait is charged to the
// engine.
void start_waiting_search();

// Starts the game clock, if it does not run; the menu follows.
void start_game_clock();
