// What deeper searches in the opening alone are worth in a match, and so what a book of such searches can
// gain if it has an answer to everything.
//
//   opening_gain WEIGHTS GAMES MOVES TIMES [NODES]
//
// Both players search NODES a move, but A in its first MOVES of each game TIMES as many. The games begin at
// the three-move ballots, each with both colours.
#include <cstdio>
#include <cstdlib>

#include "core/movegen.h"
#include "eval/weights.h"
#include "search/engine_settings.h"
#include "search/table.h"
#include "tools/book_analysis.h"
#include "tools/match.h"
#include "tools/match_statistics.h"

namespace {

constexpr int USAGE_STATUS = 2;
constexpr int BALLOT_MOVES = 3;
constexpr uint64_t SEED = 1;
constexpr int HASH_MB = 8;
constexpr int64_t REPORT_PAIRS = 10;
constexpr double TWO_SIDED_95 = 1.96;

struct Terms {
    uint64_t nodes = 200000;
    int moves = 0;
    uint64_t times = 1;
    int made = 0;  // A's moves in this game
};

bool begin_game(void* context, int player) {
    if (player == PLAYER_A) static_cast<Terms*>(context)->made = 0;
    return true;
}

bool search_move(void* context, int player, const Position& position, PlayerAnswer& answer) {
    Terms& terms = *static_cast<Terms*>(context);
    const bool deeper = player == PLAYER_A && terms.made++ < terms.moves;
    const BookAnalysis analysis =
        analyse_book_position({position, deeper ? terms.nodes * terms.times : terms.nodes}, 1);
    MoveList list;
    generate_moves(position, list, position.side);
    answer = {list[analysis.best], analysis.value, 0, analysis.nodes, 0};
    return true;
}

void print(const MatchResults& results) {
    std::printf("games %lld, wins %lld, draws %lld, losses %lld, score %.2f%% +- %.2f\n",
                static_cast<long long>(match_games(results)), static_cast<long long>(results.wins),
                static_cast<long long>(results.draws), static_cast<long long>(results.losses),
                100 * match_score(results), 100 * TWO_SIDED_95 * score_error(results));
    std::fflush(stdout);
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 5 || count > 6) {
        std::fputs("usage: opening_gain WEIGHTS GAMES MOVES TIMES [NODES]\n", stderr);
        return USAGE_STATUS;
    }
    Terms terms;
    terms.moves = std::atoi(arguments[3]);
    terms.times = std::strtoull(arguments[4], nullptr, 10);
    if (count > 5) terms.nodes = std::strtoull(arguments[5], nullptr, 10);
    engine_settings.hash_size_mb = HASH_MB;
    if (load_weights_from(arguments[1]) != 0 || tt_allocate() != 0) {
        std::fputs("the weights cannot be read\n", stderr);
        return EXIT_FAILURE;
    }
    const MatchPlayers players{&terms, begin_game, search_move};
    MatchResults results;
    for (const Position& start : match_starts(BALLOT_MOVES, SEED, std::atoll(arguments[2]) / 2)) {
        PairReport report;
        int culprit = PLAYER_A;
        if (play_pair(start, players, true, report, culprit) != PAIR_PLAYED) return EXIT_FAILURE;
        add_pair(results, report.points[0], report.points[1]);
        if (match_pairs(results) % REPORT_PAIRS == 0) print(results);
    }
    print(results);
    return EXIT_SUCCESS;
}
