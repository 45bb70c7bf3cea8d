#include "cli/match_report.h"

#include <cmath>
#include <cstdio>

#include "core/board.h"
#include "records/pdn_game.h"
#include "tools/match_statistics.h"

namespace {

constexpr int POINTS_OF_DRAW = 1;
constexpr int POINTS_OF_WIN = 2;

// The number in "Game 7, opening ...", from 0; -1 if there is none.
int32_t game_number(const GameHeaders& headers) {
    int32_t number = 0;
    return std::sscanf(headers.event.data(), "Game %9d", &number) == 1 ? number - 1 : -1;
}

MatchResults results_of_pairs(const GamePoints& points) {
    MatchResults results;
    for (const auto& [number, first] : points) {
        const auto second = points.find(number + 1);
        if (number % 2 == 0 && second != points.end()) add_pair(results, first, second->second);
    }
    return results;
}

}  // namespace

int half_points(int32_t result, int side) {
    if (result != RESULT_WHITE_WINS && result != RESULT_BLACK_WINS) return POINTS_OF_DRAW;
    return (result == RESULT_WHITE_WINS) == (side == WHITE) ? POINTS_OF_WIN : 0;
}

GamePoints points_in_file(const std::string& path, int32_t games) {
    GamePoints points;
    PdnTable table;
    if (pdn_read_file(path, table) != 0) return points;
    for (const PdnGame& list : table) {
        if (!list) continue;
        GameHeaders headers;
        pdn_game_headers(list.get(), headers);
        const int32_t number = game_number(headers);
        if (number >= 0 && number < games)
            points[number] = half_points(headers.result, number % 2 == 0 ? WHITE : BLACK);
    }
    return points;
}

std::string score_text(const GamePoints& points) {
    if (points.empty()) return "no games yet";
    int64_t sum = 0;
    for (const auto& [number, half] : points) sum += half;
    char text[160];
    int length = std::snprintf(text, sizeof text, "score %.1f%%",
                               100.0 * static_cast<double>(sum) / static_cast<double>(2 * points.size()));
    const MatchResults pairs = results_of_pairs(points);
    const double elo = elo_of_score(match_score(pairs)), error = elo_error(pairs);
    const auto room = [&] { return sizeof text - static_cast<size_t>(length); };
    if (match_pairs(pairs) > 0 && std::isfinite(elo))
        length += std::snprintf(text + length, room(), ", Elo %+.1f", elo);
    if (match_pairs(pairs) > 0 && std::isfinite(elo) && std::isfinite(error))
        length += std::snprintf(text + length, room(), " +- %.1f", error);
    std::snprintf(text + length, room(), " (%lld pairs)", static_cast<long long>(match_pairs(pairs)));
    return text;
}
