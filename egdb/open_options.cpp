#include "egdb/open_options.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr const char* MAXPIECES = "maxpieces";
constexpr const char* MAXKINGS = "maxkings_1side_8pcs";

// The number behind the next "=" behind the word; `number` stays as it is if there is none.
void find_option(const char* options, const char* word, int32_t& number) {
    const char* at = std::strstr(options, word);
    if (at) at = std::strchr(at, '=');
    if (at) number = static_cast<int32_t>(std::strtol(at + 1, nullptr, 10));
}

std::string item(const char* word, int32_t number) {
    char text[64];
    std::snprintf(text, sizeof text, "%s = %d;", word, number);
    return text;
}

}  // namespace

void parse_options(const char* options, int32_t& maxpieces, int32_t& maxkings) {
    maxpieces = 0;
    maxkings = -1;
    find_option(options, MAXPIECES, maxpieces);
    find_option(options, MAXKINGS, maxkings);
}

std::string options_text(const EgdbLimits& limits) {
    std::string text;
    if (limits.maxpieces > 0) text += item(MAXPIECES, limits.maxpieces);
    if (limits.maxkings_1side_8pcs >= 0) text += item(MAXKINGS, limits.maxkings_1side_8pcs);
    return text;
}
