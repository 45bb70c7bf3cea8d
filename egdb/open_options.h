// The text of options that a database is opened with: items "%s = %d;", of which the unknown are passed over.
#pragma once

#include <cstdint>
#include <string>

struct EgdbLimits {
    int32_t maxpieces = 0;             // 0: no limit
    int32_t maxkings_1side_8pcs = -1;  // negative: no limit
};

void parse_options(const char* options, int32_t& maxpieces, int32_t& maxkings);

// The text for these limits, in which what is no limit has no item.
std::string options_text(const EgdbLimits& limits);
