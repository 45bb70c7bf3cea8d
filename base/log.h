// The program's log: free text, one line a call, ending in a newline. Each call opens the file, appends and
// closes it again; nothing is kept open and no lock is taken, so any thread may log and a crash loses
// nothing. A line that cannot be written is lost silently.
#pragma once

#include <string>

// Path of the log file; empty means that no file is kept. Set at start-up, before other threads run.
extern std::string log_path;

// Called with each text that is logged, beside the file; null for none. The console shows the search by it.
// Set while no other thread logs.
extern void (*log_listener)(const char* text);

// Appends the text as it is.
void log_text(const char* text);

// Appends the formatted text. What is longer than 8191 bytes is cut.
void log_printf(const char* format, ...) __attribute__((format(printf, 1, 2)));
