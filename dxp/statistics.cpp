#include "dxp/statistics.h"

#include <string_view>

#include "base/files.h"
#include "base/program_paths.h"
#include "dxp/dxp_state.h"

namespace {

constexpr const char* STATS_FILE = "dxpstats";
constexpr size_t LINE_SIZE = 300;
constexpr int32_t MOST_GAMES = 100'000'000;  // of each kind, so that sums have room

bool is_blank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

void skip_blanks(std::string_view& text) {
    while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
}

// A number that games can have, behind blanks.
bool take_number(std::string_view& text, int32_t& number) {
    skip_blanks(text);
    size_t digits = 0;
    for (number = 0; digits < text.size() && text[digits] >= '0' && text[digits] <= '9'; ++digits) {
        if (number > MOST_GAMES / 10) return false;
        number = number * 10 + (text[digits] - '0');
    }
    text.remove_prefix(digits);
    return digits > 0;
}

bool take_word(std::string_view& text, std::string_view word) {
    skip_blanks(text);
    if (!text.starts_with(word)) return false;
    text.remove_prefix(word.size());
    return true;
}

}  // namespace

int32_t parse_match_stats(std::string_view text, MatchCounters& results) {
    const size_t colon = text.find(':');
    if (colon == std::string_view::npos) return 0;
    std::string_view rest = text.substr(colon + 1);
    MatchCounters read;
    const bool whole = take_number(rest, read.wins) && take_word(rest, "wins,") &&
                       take_number(rest, read.losses) && take_word(rest, "losses,") &&
                       take_number(rest, read.draws) && take_word(rest, "draws,") &&
                       take_number(rest, read.unknowns);
    const int32_t games = read.wins + read.losses + read.draws + read.unknowns;
    if (!whole || games == 0) return 0;
    results = read;
    return games;
}

std::string match_stats_path() {
    return program_paths.data_folder + STATS_FILE + program_paths.instance_suffix + ".txt";
}

void write_match_stats() {
    char line[LINE_SIZE];
    dxp_match_title(line, sizeof line);
    const std::string text = std::string(line) + '\n';
    replace_file(match_stats_path(), text.data(), text.size());
}

int32_t read_match_stats(MatchCounters& results) {
    std::string text;
    return read_file(match_stats_path(), text) == 0 ? parse_match_stats(text, results) : 0;
}
