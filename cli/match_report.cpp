#include "cli/match_report.h"

#include <cmath>
#include <cstdio>

#include "core/board.h"
#include "records/pdn_game.h"

namespace {

constexpr int POINTS_OF_DRAW = 1;
constexpr int POINTS_OF_WIN = 2;

// The number in "Game 7, opening ...", from 0; -1 if there is none.
int32_t game_number(const GameHeaders& headers) {
    int32_t number = 0;
    return std::sscanf(headers.event.data(), "Game %9d", &number) == 1 ? number - 1 : -1;
}

}  // namespace

int half_points(int32_t result, int side) {
    if (result != RESULT_WHITE_WINS && result != RESULT_BLACK_WINS) return POINTS_OF_DRAW;
    return (result == RESULT_WHITE_WINS) == (side == WHITE) ? POINTS_OF_WIN : 0;
}

void add_game(MatchScore& score, int32_t number, int points) {
    ++score.games;
    score.half_points += points;
    if (number % 2 == 1 && number - 1 == score.first_game) add_pair(score.pairs, score.first_points, points);
    score.first_game = number % 2 == 0 ? number : -1;
    score.first_points = points;
}

MatchScore score_in_file(const std::string& path, int32_t games) {
    MatchScore score;
    PdnTable table;
    if (pdn_read_file(path, table) != 0) return score;
    for (const PdnGame& list : table) {
        if (!list) continue;
        GameHeaders headers;
        pdn_game_headers(list.get(), headers);
        const int32_t number = game_number(headers);
        if (number >= 0 && number < games)
            add_game(score, number, half_points(headers.result, number % 2 == 0 ? WHITE : BLACK));
    }
    return score;
}

std::string score_text(const MatchScore& score) {
    if (score.games == 0) return "no games yet";
    char text[160];
    int length =
        std::snprintf(text, sizeof text, "score %.1f%%",
                      50.0 * static_cast<double>(score.half_points) / static_cast<double>(score.games));
    const double elo = elo_of_score(match_score(score.pairs)), error = elo_error(score.pairs);
    const auto room = [&] { return sizeof text - static_cast<size_t>(length); };
    if (match_pairs(score.pairs) > 0 && std::isfinite(elo))
        length += std::snprintf(text + length, room(), ", Elo %+.1f", elo);
    if (match_pairs(score.pairs) > 0 && std::isfinite(elo) && std::isfinite(error))
        length += std::snprintf(text + length, room(), " +- %.1f", error);
    std::snprintf(text + length, room(), " (%lld pairs)", static_cast<long long>(match_pairs(score.pairs)));
    return text;
}
