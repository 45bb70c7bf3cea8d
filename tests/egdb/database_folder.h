// Folders with database files: those that come with the program, copied so that a test may damage them, and
// files that are made to have a wanted checksum.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "egdb/database.h"
#include "tests/base/scratch_folder.h"

// The folders that come with the program; only to be read.
std::string shipped_database();
std::string shipped_distances();

// A copy of it.
struct DatabaseFolder : ScratchFolder {
    DatabaseFolder();

    void remove(const std::string& name) const;
    void write(const std::string& name, const std::string& bytes) const;
    std::string read(const std::string& name) const;
};

// The database of a folder as it stands inside a driver, read by blocks through a cache of that many. Its
// files are those of up to so many pieces.
std::unique_ptr<EgdbDatabase> database_by_blocks(EgdbType type, const std::string& folder, int pieces,
                                                 int32_t blocks);

// `text` with blanks and tabulators behind it that give the whole the checksum: an index stays what it is.
std::string with_crc(const std::string& text, uint32_t crc);

// Everything that was logged since it was cleared.
extern std::string database_log;
void keep_log(const char* text);
