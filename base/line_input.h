// Lines of an input such as standard input, read without keeping the program from its other work.
#pragma once

#include <string>

// A line that is longer arrives in parts of this size.
constexpr size_t LINE_INPUT_LIMIT = 65536;

// Used by one thread. The descriptor stays the caller's.
struct LineInput {
    int descriptor = 0;
    std::string unread;
    bool ended = false;
};

enum LineStatus {
    LINE_READ = 0,
    LINE_WAITING = 1,  // no whole line yet
    LINE_ENDED = 2,    // no line will come
};

// Waits for the next line for so many milliseconds at most, less if a signal or a part of a line arrives.
// `line` is without its line end; a last line without one counts as a line.
LineStatus read_input_line(LineInput& input, int milliseconds, std::string& line);

// A user types at standard input.
bool input_is_terminal();
