// Searches with the real database open: the same as the slow search, sane with many threads and a cache of a
// few blocks, and in the modes that give every move its value.
#include <algorithm>
#include <array>
#include <cstdlib>

#include "egdb/block_cache.h"
#include "egdb/index_file.h"
#include "egdb/wld_lookup.h"
#include "search/engine_settings.h"
#include "search/near_best.h"
#include "search/search_state.h"
#include "search/table.h"
#include "search/thread_record.h"
#include "search/threads.h"
#include "tests/search/endings.h"
#include "tests/search/slow_search.h"

namespace {

class EndingsSearchTest : public EndingsTest {
  protected:
    void TearDown() override {
        engine_settings.search_threads = 1;
        EndingsTest::TearDown();
    }
};

EgdbValue ask(const Position& p, int side, bool conditional) {
    return egdb_engine.wld->lookup(egdb_engine.wld->handle, p, side, conditional);
}

TEST_F(EndingsSearchTest, TheSlowSearchFindsTheSame) {
    Random random(41);
    SlowSearch slow(1);
    slow.database = {ask, 4, 3, 0, 0, true};
    for (int i = 0; i < 150 && !HasFailure(); ++i) {
        // Up to six pieces: the four-piece database is met inside the tree.
        const Position p = random_setup(random, 2 + i % 2, 25 * (i % 4));
        SCOPED_TRACE(fen_of(p));
        const int depth = 7 + i % 5;
        const Searched fast = search_to(p, depth, SEARCH_QUIET | SEARCH_FULL_DEPTH, i % 2);
        const SlowResult want = slow.search(p, p.side, nullptr, depth, i % 2 ? 1 : 2, true);
        MoveList list;
        generate_moves(p, list, p.side);
        EXPECT_EQ(fast.value, want.value);
        EXPECT_EQ(searched_nodes(), want.nodes);
        EXPECT_EQ(search_state.egdb_lookups, want.lookups);
        // The check may have put another move in its place, which is then no worse.
        if (bit_count(p.black | p.white) > 4) {
            EXPECT_EQ(find_move(list, fast.move), want.best_index);
        }
    }
}

// What a search of a covered position says is what the database says.
void expect_value(const Position& p, int32_t value) {
    const int for_side = p.side == BLACK ? value : -value;
    switch (value_of(p)) {
        case EGDB_WIN:
            EXPECT_GT(for_side, 2000) << fen_of(p);
            break;
        case EGDB_LOSS:
            EXPECT_LT(for_side, -2000) << fen_of(p);
            break;
        default:
            EXPECT_LE(std::abs(value), 7) << fen_of(p);
    }
}

std::vector<Position> endings_of_each_material(Random& random, int each) {
    std::vector<Position> positions;
    for (int pieces = 2; pieces <= 3; ++pieces)
        for (const Material& m : solving_order(pieces))
            for (int i = 0; i < each; ++i) positions.push_back(random_ending(random, m));
    for (const Material& m : {Material{0, 3, 0, 1}, {2, 0, 2, 0}, {0, 2, 0, 2}})
        for (int i = 0; i < each; ++i) positions.push_back(random_ending(random, m));
    MoveList list;
    std::erase_if(positions, [&](const Position& p) { return generate_moves(p, list, p.side) == 0; });
    return positions;
}

TEST_F(EndingsSearchTest, SearchesSayWhatTheDatabaseSays) {
    Random random(42);
    for (const Position& p : endings_of_each_material(random, 8)) {
        ASSERT_EQ(tt_allocate(), 0);
        expect_value(p, search_to(p, 7, SEARCH_QUIET | SEARCH_FULL_DEPTH).value);
    }
}

// The same files read by blocks, through a cache of that many.
struct TinyCache {
    EgdbDatabase database;
    EgdbDriver driver;

    explicit TinyCache(int32_t blocks) {
        database.folder = PROJECT_FOLDER "/data/wld_database/";
        database.cprsubdatabase = std::make_unique<Cprsubdatabase>();
        int64_t memory = 0;
        for (const char* name : {"db2", "db3", "db4"}) {
            DbFile& file = database.files[static_cast<size_t>(database.file_count++)];
            std::copy_n(name, 4, file.name.begin());
            file.pieces = static_cast<uint8_t>(name[2] - '0');
            file.max_one_side = static_cast<uint8_t>(file.pieces - 1);
            EXPECT_EQ(read_index_file(database, file, memory), 0);
            EXPECT_EQ(open_for_blocks(database, file, memory), 0);
        }
        EXPECT_EQ(allocate_cache(database, blocks), 0);
        use_in_engine(database, driver);
    }
    ~TinyCache() { egdb_engine = no_egdb(); }
    TinyCache(const TinyCache&) = delete;
    TinyCache& operator=(const TinyCache&) = delete;
};

TEST_F(EndingsSearchTest, ThreadsShareATinyCache) {
    threads_init(8);
    Random random(43);
    const std::vector<Position> positions = endings_of_each_material(random, 2);
    for (const int threads : {2, 8}) {
        for (const int blocks : {1, 3, 40}) {
            TinyCache tiny(blocks);
            egdb_engine.lookup_depth = 0;
            engine_settings.search_threads = threads;
            uint32_t loads = 0;
            for (size_t i = static_cast<size_t>(blocks) % 3; i < positions.size(); i += 3) {
                ASSERT_EQ(tt_allocate(), 0);
                const Position& p = positions[i];
                const Searched found = search_to(p, 9, SEARCH_QUIET | SEARCH_FULL_DEPTH);
                expect_value(p, found.value);
                const EgdbValue value = value_of(p),
                                reached = value_of(position_after(found.move, p.side ^ 1));
                if (value != EGDB_LOSS) {
                    EXPECT_EQ(reached, value == EGDB_WIN ? EGDB_LOSS : EGDB_DRAW);
                }
                loads = tiny.database.statistics.lru_cache_loads;
            }
            EXPECT_GT(loads, 0u);
        }
    }
}

// Whichever block it is.
TEST_F(EndingsSearchTest, ConditionalLookupsNeverReadTheDisk) {
    TinyCache tiny(40);
    const std::atomic<uint32_t>& loads = tiny.database.statistics.lru_cache_loads;
    Random random(47);
    int absent = 0;
    for (const Position& p : endings_of_each_material(random, 20)) {
        if (has_capture(p, p.side)) continue;
        const uint32_t before = loads;
        const EgdbValue found = ask(p, p.side, true);
        ASSERT_EQ(loads, before) << fen_of(p);
        const EgdbValue value = ask(p, p.side, false);
        ASSERT_EQ(found, loads == before ? value : EGDB_NOT_IN_CACHE) << fen_of(p);
        absent += found == EGDB_NOT_IN_CACHE;
    }
    EXPECT_GT(absent, 10);
    EXPECT_EQ(loads, static_cast<uint32_t>(absent));
}

// A database that is never in the cache: the search is left to its evaluation.
EgdbValue answer_from_disk(void*, const Position& p, int side, bool conditional) {
    return conditional ? EGDB_NOT_IN_CACHE : wld_lookup(real_database(), p, side, false);
}

TEST_F(EndingsSearchTest, TheCheckCorrectsWhatASearchWithoutTheDatabaseChooses) {
    EgdbDriver disk{answer_from_disk, nullptr};
    egdb_engine.wld = &disk;
    Random random(44);
    const std::vector<Position> positions = endings_of_each_material(random, 25);
    const auto slips = [&] {
        int count = 0;
        for (const Position& p : positions) {
            tt_clear();
            const EgdbValue value = value_of(p);
            const Move move = search_to(p, 1, SEARCH_QUIET | SEARCH_FULL_DEPTH).move;
            const EgdbValue reached = value_of(position_after(move, p.side ^ 1));
            count += value != EGDB_LOSS && reached != (value == EGDB_WIN ? EGDB_LOSS : EGDB_DRAW);
        }
        return count;
    };
    EXPECT_EQ(slips(), 0);
    EXPECT_NE(logged.find("egdb move changed from "), std::string::npos);
    egdb_engine.egdb_move_check = [](int, const Position&, const MoveList&, int, int&) { return 0; };
    EXPECT_GT(slips(), 3);
}

TEST_F(EndingsSearchTest, QuiescenceNeverReadsTheDiskAndDeepNodesMay) {
    TinyCache tiny(3);
    egdb_engine.maxpieces = 6;  // the lookup depth is then 2 plies
    const Position p = position_of("W:WK46,31,33:BK5");
    egdb_engine.egdb_move_check = [](int, const Position&, const MoveList&, int, int&) { return 0; };
    search_to(p, 2, SEARCH_QUIET | SEARCH_FULL_DEPTH);
    EXPECT_EQ(egdb_engine.lookup_depth, 2);
    EXPECT_EQ(tiny.database.statistics.lru_cache_loads, 0u);
    search_to(p, 7, SEARCH_QUIET | SEARCH_FULL_DEPTH);
    EXPECT_GT(search_state.egdb_lookups, 0u);
    EXPECT_GT(tiny.database.statistics.lru_cache_loads, 0u);
}

TEST_F(EndingsSearchTest, AllScoresTellTheValueOfEachMove) {
    Random random(45);
    for (const Position& p : endings_of_each_material(random, 3)) {
        ASSERT_EQ(tt_allocate(), 0);
        MoveList list;
        generate_moves(p, list, p.side);
        const Searched found = search_to(p, 7, SEARCH_ALL_SCORES | SEARCH_QUIET);
        expect_value(p, found.value);
        for (const Move& move : list) {
            // " 32-28,17  " stands for each move.
            const std::string name = short_text(p, move) + ",";
            const size_t at = (" " + found.text).find(" " + name);
            ASSERT_NE(at, std::string::npos) << found.text;
            const int value = std::atoi(found.text.c_str() + at + name.size());
            const Position child = position_after(move, p.side ^ 1);
            if (!has_capture(child, child.side)) expect_value(child, value);
        }
    }
}

TEST_F(EndingsSearchTest, NearBestMovesHaveTheValueOfTheBest) {
    Random random(46);
    int several = 0;
    for (const Position& p : endings_of_each_material(random, 2)) {
        ASSERT_EQ(tt_allocate(), 0);
        std::array<Move, MAX_MOVES> moves;
        std::array<int32_t, MAX_MOVES> values;
        std::string text(SEARCH_TEXT_SIZE, '\0');
        std::atomic<int32_t> stop{0};
        int32_t count = 0, msd = 0;
        ASSERT_EQ(near_best_search(p, p.side, LONG_TIME, text.data(), stop, 20, count, moves, values, 8, msd),
                  0);
        ASSERT_GT(count, 0);
        for (size_t i = 0; i < static_cast<size_t>(count); ++i) {
            if (std::abs(values[i] - values[0]) > 20) continue;
            const Position child = position_after(moves[i], p.side ^ 1);
            const EgdbValue value = value_of(p);
            EXPECT_EQ(value_of(child), value == EGDB_WIN    ? EGDB_LOSS
                                       : value == EGDB_LOSS ? EGDB_WIN
                                                            : EGDB_DRAW);
        }
        several += count > 1;
    }
    EXPECT_GT(several, 10);
}

}  // namespace
