// The log of the endgame databases: a file of its own, opened, appended to and closed at each call, without a
// lock. A line that cannot be written is lost silently.
#pragma once

#include <string>

// Path of the file; empty, as at first, means that none is kept. What is too long for a path is cut. Set
// while no database is being opened.
void set_egdb_log_path(const std::string& path);

void empty_egdb_log();

// Appends the text as it is.
void egdb_log_text(const char* text);
