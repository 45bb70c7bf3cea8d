// Whole files in and out. Small integer statuses, 0 for success; errno tells the reason of a failure.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

// A file of the C library that closes itself; empty if it could not be opened.
struct OpenFileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, OpenFileCloser>;

// Size of the file in bytes, or -1 if there is no such regular file.
int64_t file_size(const std::string& path);

// The file, which is no folder, can be opened for reading.
bool can_read_file(const std::string& path);

bool folder_exists(const std::string& path);

// Both are there and are one and the same, whatever they are called.
bool same_file(const std::string& path, const std::string& other);

// Makes the folder and those above it that are missing, for the user alone. True if it is there then.
bool make_folders(const std::string& path);

// Reads the whole file into `text`, which is left as it was on failure.
// 0; 1 if the file cannot be opened or read; 2 if its size is below 1; 3 if memory runs out.
int read_file(const std::string& path, std::string& text);

// Writes `bytes` bytes aside, flushes them to the disk and renames the new file over `path`, so that the file
// is at every moment the old one or the new one, also when several threads or processes write it at once: the
// last one stands. A link stays one, and the file that it leads to is replaced, but one that leads nowhere is
// a name like any other; the new file has the rights of the old one. 0, or 1 if it could not be written, or
// `path` is no regular file; what was there then stands.
int replace_file(const std::string& path, const void* data, size_t bytes);

// True if `replace_file` would find its way: nothing in the path but the last name is missing, and a file can
// be made there.
bool can_replace_file(const std::string& path);

// Locks the open file against all others who lock it, until it is closed, without waiting: 0, EWOULDBLOCK if
// another process or another opening of the file has it, or what else the system's `errno` says. Programs
// that this process starts do not get the file, so they do not keep it locked.
int try_lock(int descriptor);

// Keeps all others that ask for it from the open file, until it is closed. False if another process or
// another opening of the file has it. On a file system without such locks everyone gets it.
bool lock_file(std::FILE* file);
