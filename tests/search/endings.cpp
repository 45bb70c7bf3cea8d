#include "tests/search/endings.h"

#include <algorithm>
#include <cstdio>
#include <deque>

#include "egdb/wld_lookup.h"
#include "eval/weights.h"
#include "search/score.h"
#include "search/search_state.h"
#include "search/table.h"

namespace {

EgdbDriver driver;

constexpr int WIN_LIMIT = 400;  // plies
constexpr int DRAW_LIMIT = 40;
constexpr int MOST_TRIES = 5000;

void take_values(SolvedSet& set, const Material& m) {
    if (find_solved(set, m)) return;
    for (const Material& next : next_materials(m)) take_values(set, next);
    auto solved = std::make_unique<SolvedMaterial>();
    EXPECT_EQ(values_from_database(real_database(), set, m, 2, *solved), 0);
    set.materials[material_number(m)] = std::move(solved);
}

Material canonical_material(const Position& position) {
    return canonical_position(position, position.side).material;
}

bool is_reversible(const Position& before, const Move& move) {
    Position child;
    make_child(before, child, move, has_capture(before, before.side));
    return child.reversible_plies > 0;
}

Move engine_move(const Position& position, const Thinking& thinking) {
    search_state.Mintime = LONG_TIME;
    search_state.max_time = thinking.checked ? LONG_TIME : 0.9;
    search_state.step_time = 0;
    search_state.node_limit = thinking.nodes;
    search_state.depth_limit = thinking.depth;
    search_state.game_line = &position;
    std::atomic<int32_t> stop{0};
    return search_now(position, stop).move;
}

// The longest resistance: no conversion if there is a choice, and of the rest the most distant one.
Move losers_move(const Position& position, const MoveList& list, Random& random) {
    const bool captures = has_capture(position, position.side);
    Move best{};
    int longest = -1;
    int equal = 0;
    for (const Move& move : list) {
        const Position child = position_after(move, position.side ^ 1);
        const bool converts = captures || !is_reversible(position, move);
        const int distance =
            converts ? 0 : 1 + distance_of(real_distances(canonical_material(position)), child, child.side);
        if (distance > longest) equal = 0;
        if (distance < longest || below(random, ++equal) != 0) continue;
        longest = distance;
        best = move;
    }
    return best;
}

Move drawing_move(const Position& position, const MoveList& list, Random& random) {
    std::vector<Move> moves;
    for (const Move& move : list)
        if (value_of(position_after(move, position.side ^ 1)) != EGDB_WIN) moves.push_back(move);
    return moves[random() % moves.size()];
}

}  // namespace

void EndingsTest::SetUp() {
    SearchTest::SetUp();
    static const bool loaded = load_weights_from(PROJECT_FOLDER "/data/weights.bin") == 0;
    ASSERT_TRUE(loaded);
    static const Weights shipped = weights;
    weights = shipped;
    use_in_engine(real_database(), driver);
}

EgdbDatabase& real_database() {
    static const auto database = open_whole_database(PROJECT_FOLDER "/data/wld_database", 4, nullptr);
    if (!database) {
        ADD_FAILURE() << "the database of the program cannot be read";
        std::abort();
    }
    return *database;
}

const SolvedDistances& real_distances(const Material& m) {
    static SolvedSet values;
    static std::array<std::unique_ptr<SolvedDistances>, EGDB_MATERIALS> all;
    std::unique_ptr<SolvedDistances>& found = all[material_number(m)];
    if (!found) {
        take_values(values, m);
        found = std::make_unique<SolvedDistances>();
        EXPECT_EQ(solve_distances(m, values, SolveControl{2, nullptr, nullptr}, *found), 0);
    }
    return *found;
}

EgdbValue value_of(const Position& position) {
    const int side = position.side;
    if (!pieces_of(position, side)) return EGDB_LOSS;
    if (!pieces_of(position, side ^ 1)) return EGDB_WIN;
    MoveList list;
    if (generate_captures(position, list, side) == 0)
        return wld_lookup(real_database(), position, side, false);
    EgdbValue best = EGDB_LOSS;
    for (const Move& move : list) {
        const EgdbValue reply = value_of(position_after(move, side ^ 1));
        if (reply == EGDB_LOSS) return EGDB_WIN;
        if (reply == EGDB_DRAW) best = EGDB_DRAW;
    }
    return best;
}

Position random_ending(Random& random, const Material& m) {
    const auto index = static_cast<int64_t>(random() % static_cast<uint64_t>(slice_size(m)));
    Position p = position_from_index(index, m);
    p.side = below(random, 2);
    return below(random, 2) ? p : mirror_position(p);
}

PlayedGame play_ending(const Position& start, const Thinking& thinking, int limit, Random& random) {
    PlayedGame game;
    std::deque<Position> line{start};
    const int engine = start.side;
    const EgdbValue expected = value_of(start);
    int wait = 0;
    tt_clear();
    for (; game.plies < limit; ++game.plies) {
        const Position& position = line.back();
        MoveList list;
        if (generate_moves(position, list, position.side) == 0) {
            game.over = position.side != engine;
            break;
        }
        const Move move = position.side == engine ? engine_move(position, thinking)
                          : expected == EGDB_WIN  ? losers_move(position, list, random)
                                                  : drawing_move(position, list, random);
        Position child;
        make_child(position, child, move, has_capture(position, position.side));
        const EgdbValue reached = value_of(child);
        if (position.side == engine && reached != (expected == EGDB_WIN ? EGDB_LOSS : EGDB_DRAW)) {
            game.slipped = true;
            game.slip = position;
            break;
        }
        wait = child.reversible_plies ? wait + 1 : 0;
        game.longest_wait = std::max(game.longest_wait, wait);
        game.conversions += child.reversible_plies == 0;
        line.push_back(child);
    }
    search_state.game_line = nullptr;
    search_state.node_limit = UINT64_MAX;
    return game;
}

namespace {

void add_game(Trials& t, const Position& start, EgdbValue value, const Thinking& thinking, Random& random) {
    const PlayedGame game = play_ending(start, thinking, value == EGDB_WIN ? WIN_LIMIT : DRAW_LIMIT, random);
    t.slips += game.slipped;
    if (game.slipped) ADD_FAILURE() << "slipped at " << fen_of(game.slip) << " from " << fen_of(start);
    if (value == EGDB_DRAW) {
        ++t.drawn_positions;
        return;
    }
    ++t.won_positions;
    t.wins += game.over;
    t.unfinished += !game.over && !game.slipped;
    if (!game.over) {
        std::printf("not won in %d plies: %s\n", game.plies, fen_of(start).c_str());
        return;
    }
    t.win_plies += game.plies;
    t.longest_win = std::max(t.longest_win, game.plies);
    t.longest_wait = std::max(t.longest_wait, game.longest_wait);
}

}  // namespace

void add_games(Trials& trials, const Material& m, EgdbValue value, int games, const Thinking& thinking,
               Random& random) {
    for (int tries = 0; games > 0 && tries < MOST_TRIES; ++tries) {
        const Position start = random_ending(random, m);
        if (has_capture(start, start.side) || value_of(start) != value) continue;
        add_game(trials, start, value, thinking, random);
        --games;
    }
}

void add_trials(Trials& sum, const Trials& t) {
    sum.won_positions += t.won_positions;
    sum.wins += t.wins;
    sum.drawn_positions += t.drawn_positions;
    sum.slips += t.slips;
    sum.unfinished += t.unfinished;
    sum.win_plies += t.win_plies;
    sum.longest_win = std::max(sum.longest_win, t.longest_win);
    sum.longest_wait = std::max(sum.longest_wait, t.longest_wait);
}

void print_trials(const char* name, const Trials& t) {
    std::printf(
        "%s: %d won positions, %d wins, %d unfinished, %d drawn positions, %d slips; plies of a win %.1f on "
        "average, at most %d, between conversions at most %d\n",
        name, t.won_positions, t.wins, t.unfinished, t.drawn_positions, t.slips,
        static_cast<double>(t.win_plies) / std::max(1, t.wins), t.longest_win, t.longest_wait);
}
