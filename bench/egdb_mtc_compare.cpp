// Compares a database of moves to conversion with the distances that the solver finds, and plays by it.
//
//   egdb_mtc_compare MTC VALUES SOLVED PIECES GAMES [MATERIAL...]
//
// Of each material of that many pieces, or of those named, such as 0311: every position is looked up and
// compared. Then from up to GAMES won and as many lost positions in which the database has a move to choose,
// spread evenly over all such, the engine chooses the moves of one side by the database, the solver those of
// the other: the winner takes the shortest way to a conversion, the loser the longest. Near the conversion,
// where the database has no numbers, the solver moves for both. Each game must convert after just as many
// plies as the database told at its start, or, where two moves had the same even number though their
// distances are one apart, one ply from that. Half of the games have the colours exchanged. VALUES is the
// win/loss/draw database beside it, SOLVED a folder that keeps solved values; what is missing there is solved
// first.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/system_info.h"
#include "bench/egdb_solved.h"
#include "egdb/engine_egdb.h"
#include "egdb/mtc_choice.h"
#include "egdb/mtc_codes.h"
#include "egdb/mtc_open.h"
#include "egdb/position_walk.h"
#include "tools/egdb_mtc_blocks.h"
#include "tools/egdb_mtc_solver.h"
#include "tools/egdb_whole.h"

namespace {

constexpr int USAGE_STATUS = 2;

struct Comparison {
    SolvedSet set;
    std::unique_ptr<EgdbDatabase> values;
    EgdbDriver values_driver{nullptr, nullptr};
    OpenEgdb mtc;
    std::mt19937_64 random{1};
    int64_t positions = 0, told = 0, games = 0, won = 0, chosen = 0, rounded = 0, wrong = 0;
    int longest = 0;
};

void print_position(const char* text, const Position& p) {
    std::printf("%s: black %llx white %llx king %llx side %d\n", text,
                static_cast<unsigned long long>(p.black), static_cast<unsigned long long>(p.white),
                static_cast<unsigned long long>(p.king), p.side);
}

// Positions of a material with a move to choose.
struct Starts {
    std::vector<Position> won, lost;
};

// Every position of the material.
void compare_material(Comparison& c, const SolvedDistances& solved, Starts& starts) {
    const Material& m = solved.material;
    for (PositionWalk walk(m, 0);; walk.advance()) {
        for (int side = 0; side < (is_symmetric(m) ? 1 : 2); ++side) {
            const int distance = solved.distances[static_cast<size_t>(side)][static_cast<size_t>(walk.index)];
            const int32_t number = c.mtc->lookup(c.mtc->handle, walk.position, side, false);
            Position position = walk.position;
            position.side = side;
            ++c.positions;
            c.told += number != NO_MTC;
            if (distance >= MTC_THRESHOLD && distance != NO_DISTANCE)
                (solved_value(c.set, position, side) == EGDB_WIN ? starts.won : starts.lost)
                    .push_back(position);
            if (number == stored_mtc(distance)) continue;
            ++c.wrong;
            print_position("another number", position);
        }
        if (walk.index + 1 == slice_size(m)) return;
    }
}

// The moves that keep to the distance of the position; with a distance of 1 those that convert.
std::vector<Move> exact_moves(const Comparison& c, const SolvedDistances& solved, const Position& position) {
    const int side = position.side;
    const EgdbValue value = solved_value(c.set, position, side);
    const int distance = distance_of(solved, position, side);
    MoveList list;
    generate_moves(position, list, side);
    std::vector<Move> exact;
    for (const Move& move : list) {
        const Position child = position_after(move, side ^ 1);
        if (value == EGDB_WIN && solved_value(c.set, child, side ^ 1) != EGDB_LOSS) continue;
        const bool converts = is_conversion(position, child);
        if (distance == 1 ? converts : !converts && distance_of(solved, child, side ^ 1) == distance - 1)
            exact.push_back(move);
    }
    return exact;
}

// A game as it goes: the engine has the side that moves first.
struct Game {
    Position position;
    int engine;
    bool by_database = true;  // as long as there are numbers
    bool rounded = false;     // a chosen move is as good as the best by its number only
    int told = 0;             // by the first choice
};

// The engine's move in place of `move`. False if it is not as the distances tell.
bool choose_move(Comparison& c, const SolvedDistances& solved, Game& game, Move& move) {
    const Position& position = game.position;
    const int distance = distance_of(solved, position, game.engine);
    MoveList list;
    generate_moves(position, list, game.engine);
    int best = -1, number = -1;
    char text[MTC_TEXT_SIZE];
    game.by_database = mtc_choose_move(position, game.engine, list, best, number, text) == 1;
    if (game.by_database != (distance >= MTC_THRESHOLD)) return false;
    if (!game.by_database) return true;
    ++c.chosen;
    move = list[best];
    const Position child = position_after(move, game.engine ^ 1);
    if (number != distance - 1 || is_conversion(position, child)) return false;
    if (game.told == 0) game.told = number + 1;
    const int reached = distance_of(solved, child, child.side);
    if (reached != distance - 1) game.rounded = true;
    return stored_mtc(reached) == stored_mtc(distance - 1);
}

// False if a move or the end is not as told.
bool play_game(Comparison& c, const SolvedDistances& solved, const Position& start) {
    Game game{start, start.side};
    int plies = 0;
    for (bool converted = false; !converted; ++plies) {
        const Position& position = game.position;
        const std::vector<Move> exact = exact_moves(c, solved, position);
        if (exact.empty()) return false;
        Move move = exact[c.random() % exact.size()];
        const bool asked = game.by_database && position.side == game.engine;
        if (asked && !choose_move(c, solved, game, move)) return false;
        const Position child = position_after(move, position.side ^ 1);
        converted = is_conversion(position, child);
        game.position = child;
    }
    c.rounded += game.rounded;
    const int32_t number = c.mtc->lookup(c.mtc->handle, start, start.side, false);
    const int distance = distance_of(solved, start, start.side);
    if (number != stored_mtc(distance) || (game.told != 0 && game.told != distance)) return false;
    return game.rounded ? std::abs(plies - distance) == 1 : plies == distance;
}

void play_from(Comparison& c, const SolvedDistances& solved, const std::vector<Position>& starts,
               int64_t games) {
    const auto all = static_cast<int64_t>(starts.size());
    games = std::min(games, all);
    for (int64_t i = 0; i < games; ++i) {
        const Position& place = starts[static_cast<size_t>(i * all / games)];
        const Position start = i % 2 == 0 ? place : mirror_position(place);
        ++c.games;
        c.won += solved_value(c.set, start, start.side) == EGDB_WIN;
        c.longest = std::max(c.longest, distance_of(solved, start, start.side));
        if (play_game(c, solved, start)) continue;
        ++c.wrong;
        print_position("not as told", start);
    }
}

bool open_all(Comparison& c, char** argv, int pieces) {
    c.values = open_whole_database(argv[2], pieces, nullptr);
    EgdbOpenRequest request;
    request.folder = argv[1];
    request.pieces = pieces;
    request.cache_megabytes = 1;
    request.log = [](const char* text) { std::fputs(text, stderr); };
    c.mtc = open_mtc(request);
    if (!c.values || !c.mtc) return false;
    use_in_engine(*c.values, c.values_driver);
    egdb_engine.mtc = c.mtc.get();
    return have_solved(c.set, argv[3], pieces);
}

bool is_named(const Material& m, int count, char** names) {
    char name[48];
    std::snprintf(name, sizeof name, "%d%d%d%d", m.bm, m.bk, m.wm, m.wk);
    return count == 0 ||
           std::any_of(names, names + count, [&](const char* n) { return std::string(n) == name; });
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 6) {
        std::fprintf(stderr, "usage: egdb_mtc_compare MTC VALUES SOLVED PIECES GAMES [MATERIAL...]\n");
        return USAGE_STATUS;
    }
    const int pieces = std::atoi(argv[4]);
    Comparison c;
    if (pieces < 2 || pieces > 5 || !open_all(c, argv, pieces)) return USAGE_STATUS;
    const int64_t start = clock_ms();
    for (const Material& m : solving_order(pieces)) {
        if (!is_named(m, argc - 6, argv + 6)) continue;
        SolvedDistances solved;
        if (solve_distances(m, c.set, {processor_count()}, solved) != 0) return USAGE_STATUS;
        Starts starts;
        compare_material(c, solved, starts);
        for (const std::vector<Position>& list : {starts.won, starts.lost})
            play_from(c, solved, list, std::atoll(argv[5]));
        std::printf(
            "%d%d%d%d: by now %lld with a number, %lld positions, %lld games, %lld rounded, %lld wrong\n",
            m.bm, m.bk, m.wm, m.wk, static_cast<long long>(c.told), static_cast<long long>(c.positions),
            static_cast<long long>(c.games), static_cast<long long>(c.rounded),
            static_cast<long long>(c.wrong));
        std::fflush(stdout);
    }
    std::printf(
        "%lld positions compared, %lld with a number; %lld games, %lld of them from won positions, %lld moves "
        "chosen, at most %d plies to conversion, %lld a ply off by rounding; %lld wrong, %.0f seconds\n",
        static_cast<long long>(c.positions), static_cast<long long>(c.told), static_cast<long long>(c.games),
        static_cast<long long>(c.won), static_cast<long long>(c.chosen), c.longest,
        static_cast<long long>(c.rounded), static_cast<long long>(c.wrong),
        static_cast<double>(clock_ms() - start) / 1000);
    return c.wrong == 0 ? 0 : 1;
}
