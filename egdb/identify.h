// Which database a folder holds, if any: told by the checksum of the index of its largest files.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "egdb/file_list.h"

// The folder and its name for paths of files in it: with a "/" at its end unless it is the current one.
std::string folder_prefix(const std::string& folder);

struct EgdbIdentityRow {
    EgdbType type;
    int32_t pieces;
    const char* file;
    uint32_t crc;
};

// The known sets, and behind them those that our own builder makes, which are the same to the byte on every
// machine.
constexpr int EGDB_IDENTITY_ROWS = 39;
extern const std::array<EgdbIdentityRow, EGDB_IDENTITY_ROWS> egdb_identities;

// 0, and the type and the pieces of the largest set that is there, of equal ones that of the earlier row;
// 1 if the folder holds no file of the rows. Reads the disk; any thread may call it.
int identify_egdb(const std::string& folder, EgdbType& type, int32_t& pieces);
