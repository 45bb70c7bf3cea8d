// What the console commands share: exit status, error lines, the engine's start, the stop by the interrupt
// key and the progress line.
#pragma once

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <string>

#include "core/board.h"

constexpr int EXIT_BAD_INPUT = 1;
constexpr int EXIT_BAD_USAGE = 2;

// The program's exit status, 0 until a command sets another. The first failure stays.
int exit_status();
void set_exit_status(int status);

// Writes "tessarin-cli: ..." as one line on standard error and sets the exit status to EXIT_BAD_INPUT.
void fail(const char* format, ...) __attribute__((format(printf, 1, 2)));

// The line of `fail` without a change of the status.
void print_error(const char* format, va_list arguments);
// One line on standard output, seen at once.
void print_line(const char* format, va_list arguments);

// Comes up as every front end does: enters the program's folder, takes a number among the running copies,
// empties the log in the data folder and starts the engine. False if it cannot run, which has been told.
// Relative paths of the user's must have been made absolute before.
//
// The user's saved settings play no part: the engine runs with its own defaults and with what the options of
// the command have set, so that a command gives the same answer for everybody.
bool start_console_engine();

// The position of a FEN given by the user. False if it is none, which has been told.
bool read_position(const std::string& fen, Position& position);

// Set by the interrupt key, after `catch_interrupt`: ends the running search.
extern std::atomic<int32_t> stop_flag;
// Also set by it, and never cleared: the user wants the command to end.
extern std::atomic<bool> interrupted;
// From here on the command must look at them; before, the key ends the program at once.
void catch_interrupt();

// Makes the search threads, as many as are asked for even if the machine has fewer processors.
void set_search_threads(int threads);

// Overwrites the progress line on standard error, if that is a terminal; the empty text takes it away.
void show_progress(const std::string& text);

// A file of weights by its size; what it is instead is told as failure.
bool check_weights(const std::string& path);

// A duration for the progress line, as "1:02:03" or "4:05".
std::string duration_text(double seconds);

// The end of a progress line, as ", time left 4:05": what is done was done since that moment of the clock,
// and so much, in the same unit, is left. A dash for the time if nothing is done yet.
std::string time_left_text(int64_t start_ms, double done, double left);
