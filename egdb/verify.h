// The check of a database's files against the known checksums. It opens the files anew and touches nothing of
// a database that may be open, so it can run beside lookups. It takes as long as the disk takes to read them
// all.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "egdb/file_list.h"

// Words for what is told of each file, and at the end.
struct VerifyTexts {
    const char* failed = "CRC failed";
    const char* good = "OK";
    const char* errors = "errors";  // behind their number
    const char* no_errors = "No errors";
    const char* unchecked = "not checked, no checksum is known";  // of a file that is known by name only
};

// Who is told, on the thread of the check. A text is part of a line or the rest of it.
struct VerifyListener {
    void (*message)(void* context, const char* text) = nullptr;
    void* context = nullptr;
};

// Which files are checked: those of the list for the opening, whether they are open or not.
struct VerifyFiles {
    EgdbType type = EGDB_WLD;
    std::string folder;
    int32_t max_pieces = 0;
    int32_t maxkings_1side_8pcs = -1;  // negative for no limit
    void (*log)(const char* text) = nullptr;
};

// The number of errors; the listener is told of each file. Of the types with fixed codes and of moves to
// conversion hardly any checksum is known: the log alone is told, and the result is 1 if anything was wrong.
// Once `abort`, which may be null, is set, each file fails at once.
int verify_files(const VerifyFiles& files, const VerifyListener& listener, const std::atomic<bool>* abort,
                 const VerifyTexts& texts);
