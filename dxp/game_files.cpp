#include "dxp/game_files.h"

#include <array>
#include <cstdio>
#include <string_view>

#include "base/files.h"
#include "base/program_paths.h"
#include "control/game.h"
#include "dxp/dxp_state.h"
#include "dxp/match.h"
#include "records/game_file.h"
#include "records/pdn_write.h"

namespace {

constexpr const char* GAMES_FILE = "dxpgames";
constexpr size_t EVENT_SIZE = 400;
constexpr std::string_view EVENT_START = "[Event \"Game ";

// Fit for one line.
std::string header_text(const std::string& text) {
    std::string clean = text;
    for (char& c : clean)
        if (static_cast<unsigned char>(c) < ' ') c = ' ';
    return clean;
}

std::string event_text() {
    char text[EVENT_SIZE];
    if (dxp_state.dxp_follower)
        std::snprintf(text, sizeof text, "Game %d", dxp_state.match_games + 1);
    else
        std::snprintf(text, sizeof text, "Game %d, opening %s", dxp_state.match_games + 1,
                      match_plan.opening_text.c_str());
    return text;
}

// The number behind "[Event "Game " at the place; 0 if there is none.
int64_t event_number(std::string_view text, size_t at) {
    int64_t number = 0;
    for (at += EVENT_START.size(); at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at)
        if (number <= INT32_MAX) number = number * 10 + (text[at] - '0');
    return number;
}

// Where the first game with a number above `games` begins that no later game with a lower one follows; the
// end of the text if there is none.
size_t end_of_games(std::string_view text, int32_t games) {
    size_t end = text.size();
    for (size_t at = text.rfind(EVENT_START); at != std::string_view::npos && event_number(text, at) > games;
         at = at == 0 ? std::string_view::npos : text.rfind(EVENT_START, at - 1))
        end = at;
    return end;
}

}  // namespace

std::string match_games_path() {
    return program_paths.data_folder + GAMES_FILE + program_paths.instance_suffix + ".pdn";
}

void append_match_game(const char* black_name, const char* white_name, const char* result_text) {
    std::array<char, GAME_TEXT_SIZE> text{};
    const int length = game_to_pdn_text(text.data(), text.size(), played_history(), event_text().c_str(),
                                        today_text().c_str(), header_text(black_name).c_str(),
                                        header_text(white_name).c_str(), result_text, "\n");
    if (dxp_state.match_games == 0)
        replace_file(match_games_path(), text.data(), static_cast<size_t>(length));
    else
        append_game_text(match_games_path(), text.data());
}

void trim_match_games(int32_t games) {
    const std::string path = match_games_path();
    std::string text;
    if (read_file(path, text) != 0) return;
    const size_t end = end_of_games(text, games);
    if (end < text.size()) replace_file(path, text.data(), end);
}
