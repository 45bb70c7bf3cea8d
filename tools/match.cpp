#include "tools/match.h"

#include <algorithm>
#include <random>
#include <set>

#include "core/ballots.h"
#include "core/movegen.h"

namespace {

constexpr int EXTRA_PLIES = 2;
constexpr int ATTEMPTS_FOR_LENGTH = 20;
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

// A position in a form that can be sorted.
using Sets = std::array<uint64_t, 3>;

Sets sets_of(const Position& position) {
    return {position.black, position.white, position.king << 1 | static_cast<uint64_t>(position.side)};
}

// The ballots in random order, each position once. Their sets are put into `seen`.
std::vector<Position> shuffled_ballots(Random& random, int moves, std::set<Sets>& seen) {
    std::vector<Position> ballots;
    Ballot ballot{};
    for (int i = 0; find_ballot(moves, i, ballot); ++i)
        if (seen.insert(sets_of(ballot.position)).second) ballots.push_back(ballot.position);
    for (size_t left = ballots.size(); left > 1; --left)
        std::swap(ballots[left - 1], ballots[random_below(random, left)]);
    return ballots;
}

Position random_continuation(Random& random, Position position, int plies) {
    MoveList list;
    for (int ply = 0; ply < plies && generate_moves(position, list, position.side) > 0; ++ply) {
        const size_t index = random_below(random, static_cast<size_t>(list.count));
        position = position_after(list.moves[index], position.side ^ 1);
    }
    return position;
}

// An even position behind the ballot that has not been seen.
Position new_continuation(Random& random, const Position& ballot, std::set<Sets>& seen) {
    for (int attempt = 0;; ++attempt) {
        const int plies = EXTRA_PLIES + attempt / ATTEMPTS_FOR_LENGTH;
        const Position start = random_continuation(random, ballot, plies);
        if (is_even(start) && seen.insert(sets_of(start)).second) return start;
    }
}

// An empty square of the rows in which men of both colours can stand.
uint64_t random_square(Random& random, const Position& position) {
    for (;;) {
        const uint64_t mask = mask_of_square[5 + random_below(random, SQUARES - 10)];
        if (!((position.black | position.white) & mask)) return mask;
    }
}

Position random_ending(Random& random, int pieces) {
    Position position{0, 0, 0, static_cast<int>(random_below(random, 2)), 0, nullptr};
    const bool kings = random_below(random, 2) == 1;
    for (int i = 0; i < pieces / 2; ++i) {
        for (uint64_t* const set : {&position.black, &position.white}) {
            const uint64_t mask = random_square(random, position);
            *set |= mask;
            if (i == 0 && kings) position.king |= mask;
        }
    }
    return position;
}

bool can_move(const Position& position) {
    MoveList list;
    return generate_moves(position, list, position.side) > 0;
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
        add_work(report.work[static_cast<size_t>(culprit)], {1, answer.depth, answer.nodes, answer.seconds});
    }
    report.ends[number] = end;
    report.points[number] = 1 + (white_player == PLAYER_A ? -result : result);
    report.plies += static_cast<int>(game.line.size()) - 1;
    return PAIR_PLAYED;
}

}  // namespace

bool is_even(const Position& position) { return settled_lead(position) == 0; }

std::vector<Position> match_starts(int ballot_moves, uint64_t seed, int64_t pairs) {
    if (ballot_moves == 0) return std::vector<Position>(static_cast<size_t>(pairs), START_POSITION);
    Random random(seed);
    std::set<Sets> seen;
    const std::vector<Position> ballots = shuffled_ballots(random, ballot_moves, seen);
    std::vector<Position> starts;
    for (size_t pair = 0; starts.size() < static_cast<size_t>(pairs); ++pair) {
        const Position& ballot = ballots[pair % ballots.size()];
        starts.push_back(pair < ballots.size() ? ballot : new_continuation(random, ballot, seen));
    }
    return starts;
}

std::vector<Position> ending_starts(int pieces, uint64_t seed, int64_t pairs) {
    Random random(seed);
    std::set<Sets> seen;
    std::vector<Position> starts;
    while (starts.size() < static_cast<size_t>(pairs)) {
        const Position start = random_ending(random, pieces);
        const bool quiet = !has_capture(start, BLACK) && !has_capture(start, WHITE);
        if (quiet && can_move(start) && seen.insert(sets_of(start)).second) starts.push_back(start);
    }
    return starts;
}

void add_work(PlayerWork& sum, const PlayerWork& more) {
    sum.moves += more.moves;
    sum.depth += more.depth;
    sum.nodes += more.nodes;
    sum.seconds += more.seconds;
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
