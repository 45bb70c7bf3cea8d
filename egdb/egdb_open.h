// Opens the database of a folder, of whatever type it is.
#pragma once

#include <cstdint>
#include <string>

#include "egdb/driver.h"

// Distances are looked up at the root alone.
constexpr int32_t MTC_CACHE_MB = 1;

// The largest database of the folder with the limits of the options (open_options.h). Null if there is none
// or it cannot be opened, which `log` is told. Takes as long as the disk does; on any thread.
OpenEgdb egdb_open(const char* options, int32_t cache_megabytes, const std::string& folder,
                   void (*log)(const char* text));
