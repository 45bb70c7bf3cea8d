// Endings with the real database of up to four pieces, and games in them against a perfect opponent.
#pragma once

#include <memory>
#include <vector>

#include "egdb/position_walk.h"
#include "search/search_state.h"
#include "tests/search/fixtures.h"
#include "tools/egdb_mtc_solver.h"
#include "tools/egdb_whole.h"

// The database is open for the whole engine; the weights are the shipped ones.
class EndingsTest : public SearchTest {
  protected:
    void SetUp() override;
};

EgdbDatabase& real_database();

// Distances to conversion, for the opponent; found when they are first asked for.
const SolvedDistances& real_distances(const Material& m);

// Of the database, for the side to move; captures are played out.
EgdbValue value_of(const Position& position);

// A position drawn from all of the material, of either colour and with either side to move.
Position random_ending(Random& random, const Material& m);

// How long the engine thinks.
struct Thinking {
    uint64_t nodes = 5000;
    int depth = MAX_DEPTH;
    bool checked = false;  // the databases correct its moves
};

struct PlayedGame {
    bool slipped = false;  // a move of the engine changed the value of the game
    bool over = false;     // the opponent lost
    int plies = 0;
    int conversions = 0;
    int longest_wait = 0;  // most plies between conversions
    Position slip{};       // before the move that slipped
};

// The engine plays the side to move. The opponent, when he has lost, plays for the longest way to the next
// conversion, and otherwise at random among the moves that keep the draw. At most `limit` plies.
PlayedGame play_ending(const Position& start, const Thinking& thinking, int limit, Random& random);

// What came of many games.
struct Trials {
    int won_positions = 0, wins = 0;
    int drawn_positions = 0;
    int slips = 0;
    int unfinished = 0;
    int64_t win_plies = 0;
    int longest_win = 0;
    int longest_wait = 0;
};

// Plays from so many random positions of the material that have the value for the side to move, which is not
// to capture; fewer where there are hardly any. Won ones at most 400 plies, drawn ones 40. A move that
// changes the value of the game is a failure of the test.
void add_games(Trials& trials, const Material& m, EgdbValue value, int games, const Thinking& thinking,
               Random& random);

void add_trials(Trials& sum, const Trials& trials);
void print_trials(const char* name, const Trials& trials);
