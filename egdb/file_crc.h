// The checksum of a whole file of a database.
#pragma once

#include <atomic>
#include <cstdint>

#include "base/input_file.h"

// CRC-32 of the file from its start to its end. 0; 1 if it cannot be read or `abort` was set meanwhile, and
// `crc` is then 0. `abort` may be null.
int file_crc(const InputFile& file, const std::atomic<bool>* abort, uint32_t& crc);
