// A file that is open for reading at any place, through the calls of base/file_calls.h, so that tests can let
// each of them fail.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// Owns the descriptor. One thread at a time may read.
struct InputFile {
    int descriptor = -1;

    InputFile() = default;
    ~InputFile() { close(); }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    bool is_open() const { return descriptor >= 0; }
    void close();
};

// Opens a regular file in place of what `file` held. False if it cannot be read; nothing is open then.
bool open_input(const std::string& path, InputFile& file);

enum InputStatus { INPUT_READ = 0, INPUT_NO_SEEK = 1, INPUT_NOT_READ = 2 };

// Reads up to `bytes` bytes from `offset` on, in pieces of at most a megabyte; `got` is how many there were,
// fewer at the file's end.
InputStatus read_input(const InputFile& file, int64_t offset, void* data, size_t bytes, size_t& got);
