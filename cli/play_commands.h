// What a user can type during a game on a terminal: moves, and the commands of game control by name.
#pragma once

#include <cstdint>
#include <string>

struct PlayCommands {
    bool quit = false;
    bool waiting = false;     // "wait" was typed: nothing is read until no search runs
    int64_t sleep_until = 0;  // reading of `clock_ms`: nothing is read before
    // After a line that was a move: the number of its entry in the history. Entries behind it are moves of an
    // engine that had its answer ready. -1 after any other line.
    int engine_moves_behind = -1;
};
extern PlayCommands play_commands;

// The line may be run while the engine is to move; of a script, other lines wait until it has.
bool runs_at_once(const std::string& line);

// Runs a line. What cannot be done is said on standard error.
void run_play_line(const std::string& line);

// Takes the modes by the names that users type. False if it is none.
bool set_mode_by_name(const std::string& name);
bool set_book_by_name(const std::string& name);
