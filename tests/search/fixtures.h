// What the tests of the search share: a clean engine for each test, positions, a database made of numbers,
// and searches of a fixed shape.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "core/board.h"
#include "core/movegen.h"
#include "egdb/engine_egdb.h"
#include "search/getmove.h"

using Random = std::mt19937_64;

// Begins each test with the settings of a fresh start, seeded random weights and an empty table of a
// megabyte, and gathers what is logged.
class SearchTest : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;
};

// All that was logged since the test began.
extern std::string logged;

// Values that make positions differ: all tables and parameters from one seed.
void randomize_weights(uint64_t seed);

// The FEN's position with its side.
Position position_of(const std::string& fen);
std::string fen_of(const Position& position);

int below(Random& random, int limit);

// Up to `most` pieces a side; `king_percent` of them are kings. Both sides have a piece and the side to move
// has a move.
Position random_setup(Random& random, int most, int king_percent);

// Where random play from the start stands after that many plies, or at the end of the game.
Position random_play(Random& random, int plies);

// Positions of the files of real games, `each` positions out of every game.
std::vector<Position> real_positions(Random& random, int each);

// A line of king moves ending in a root, the newest in front, linked as a game's line is.
std::vector<Position> king_line(Random& random, const Position& start, int plies);

// A hash of the position and the side, for made-up answers.
uint64_t mix_of(const Position& position, int side, uint64_t salt);

// The database of a test behind the engine's table of functions. `answer` is asked in place of files.
extern std::function<EgdbValue(const Position&, int side, bool conditional)> database_answer;
void open_database(int maxpieces, int maxpieces_1side, int maxkings_9pcs, int maxkings_1side_8pcs,
                   bool no_side_captures);

// What the transposition table holds, word for word.
std::vector<uint64_t> table_words();

// A search of `getmove` and what it gave.
struct Searched {
    int32_t value = 0;
    Move move{};
    int32_t searched = -1;
    std::string text;
};

constexpr double LONG_TIME = 1e6;

// To a depth, without limits of time: the iterations go two deeper each, or one with `by_one`.
Searched search_to(const Position& position, int depth, uint32_t flags = SEARCH_QUIET, bool by_one = false);

// Under the limits that stand.
Searched search_now(const Position& position, std::atomic<int32_t>& stop_flag, uint32_t flags = SEARCH_QUIET);

// What the log says is the move text of a move.
std::string short_text(const Position& position, const Move& move);
