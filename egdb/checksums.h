// The checksums of the known database files.
//
// Of the sets from elsewhere with codes in `.cpr1` files or with value lists all names are known but only
// some checksums, of those with fixed codes five index files; of the values that our own builder makes, up to
// five pieces, all are known; of moves to conversion none. Several may stand for one name.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "egdb/file_list.h"

constexpr int MOST_CHECKSUMS = 4;  // of a name

struct FileChecksums {
    bool listed = false;
    int count = 0;  // 0: listed at most by name
    std::array<uint32_t, MOST_CHECKSUMS> crcs{};
};

// What is known of a file of the type, by its name with the extension. Any thread may call it.
FileChecksums checksums_of(EgdbType type, std::string_view file);
