// The system calls by which files are written and the endgame databases are read, as a table: tests put calls
// in it that fail, or that end the process at a moment of their choice. Nothing else changes it.
#pragma once

#include <sys/types.h>

#include <cstddef>

struct FileCalls {
    int (*open)(const char* path, int flags, mode_t mode);
    ssize_t (*write)(int descriptor, const void* data, size_t bytes);
    int (*flush)(int descriptor);  // to the disk
    int (*close)(int descriptor);
    int (*rename)(const char* from, const char* to);
    int (*remove)(const char* path);
    ssize_t (*read)(int descriptor, void* data, size_t bytes);
    off_t (*seek)(int descriptor, off_t offset, int from);
};
extern FileCalls file_calls;

// The calls of the system.
FileCalls system_file_calls();
