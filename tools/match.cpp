#include "tools/match.h"

#include <algorithm>
#include <numeric>
#include <random>

#include "core/ballots.h"
#include "core/movegen.h"

namespace {

constexpr int EXTRA_PLIES = 2;
constexpr int EXTRA_ATTEMPTS = 100;
constexpr int KING_VALUE = 3;

using Random = std::mt19937_64;

// Uniform below `limit`, but for what a 64-bit number leaves over; written out, so that every standard
// library draws the same.
size_t random_below(Random& random, size_t limit) { return random() % limit; }

int material(const Position& position, int side) {
    const uint64_t pieces = pieces_of(position, side);
    return bit_count(pieces) + (KING_VALUE - 1) * bit_count(pieces & position.king);
}

// The lead of the side to move when both make the captures they must, and of several the best.
int settled_lead(const Position& position) {
    MoveList list;
    if (generate_captures(position, list, position.side) == 0)
        return material(position, position.side) - material(position, position.side ^ 1);
    int best = -100;
    for (const Move& move : list)
        best = std::max(best, -settled_lead(position_after(move, position.side ^ 1)));
    return best;
}

// Plays random moves on a copy of the position; the copy may be even or not.
Position random_continuation(Random& random, Position position) {
    MoveList list;
    for (int ply = 0; ply < EXTRA_PLIES && generate_moves(position, list, position.side) > 0; ++ply) {
        const size_t index = random_below(random, static_cast<size_t>(list.count));
        position = position_after(list.moves[index], position.side ^ 1);
    }
    return position;
}

void add_work(PlayerWork& work, const PlayerAnswer& answer) {
    ++work.moves;
    work.depth += answer.depth;
    work.nodes += answer.nodes;
    work.seconds += answer.seconds;
}

PairStatus play_game(const Position& start, size_t number, const MatchPlayers& players, bool adjudicate,
                     PairReport& report, int& culprit) {
    const int white_player = number == 0 ? PLAYER_A : PLAYER_B;
    for (const int player : {PLAYER_A, PLAYER_B}) {
        culprit = player;
        if (!players.begin(players.context, player)) return PAIR_PLAYER_FAILED;
    }
    MatchGame game;
    begin_game(game, start);
    int result = 0;
    GameEnd end = game_end(game, adjudicate, result);
    for (; end == GAME_GOES_ON; end = game_end(game, adjudicate, result)) {
        const Position& position = game.line.back();
        culprit = position.side == WHITE ? white_player : white_player ^ 1;
        PlayerAnswer answer{};
        if (!players.ask(players.context, culprit, position, answer)) return PAIR_PLAYER_FAILED;
        if (!play_move(game, answer.move, answer.score)) return PAIR_ILLEGAL_MOVE;
        add_work(report.work[static_cast<size_t>(culprit)], answer);
    }
    report.ends[number] = end;
    report.points[number] = 1 + (white_player == PLAYER_A ? -result : result);
    report.plies += static_cast<int>(game.line.size()) - 1;
    return PAIR_PLAYED;
}

}  // namespace

bool is_even(const Position& position) { return settled_lead(position) == 0; }

MatchPlan make_match_plan(int ballot_moves, uint64_t seed) {
    MatchPlan plan{ballot_moves, seed, std::vector<int>(static_cast<size_t>(ballot_count(ballot_moves)))};
    std::iota(plan.order.begin(), plan.order.end(), 0);
    Random random(seed);
    for (size_t left = plan.order.size(); left > 1; --left)
        std::swap(plan.order[left - 1], plan.order[random_below(random, left)]);
    return plan;
}

Position start_position(const MatchPlan& plan, int64_t pair) {
    const int64_t count = static_cast<int64_t>(plan.order.size());
    Ballot ballot{};
    find_ballot(plan.ballot_moves, plan.order[static_cast<size_t>(pair % count)], ballot);
    if (pair < count) return ballot.position;
    Random random(plan.seed * 0x9e3779b97f4a7c15 + static_cast<uint64_t>(pair));
    for (int attempt = 0; attempt < EXTRA_ATTEMPTS; ++attempt) {
        const Position start = random_continuation(random, ballot.position);
        if (is_even(start)) return start;
    }
    return ballot.position;
}

PairStatus play_pair(const Position& start, const MatchPlayers& players, bool adjudicate, PairReport& report,
                     int& culprit) {
    report = PairReport{};
    for (size_t number = 0; number < 2; ++number) {
        const PairStatus status = play_game(start, number, players, adjudicate, report, culprit);
        if (status != PAIR_PLAYED) return status;
    }
    return PAIR_PLAYED;
}
