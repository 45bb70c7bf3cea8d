// The search once more, slow and obvious, to compare the engine's with: nothing is shared but the board, the
// generators and the evaluation. Values, best moves, node counts and leaf counts have to be equal, search
// after search, since both keep their table.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

#include "core/movegen.h"
#include "egdb/driver.h"
#include "eval/node_summary.h"

// An entry as a plain record; one that was never written has `used` false.
struct SlowEntry {
    bool used = false;
    uint32_t hash1 = 0;
    int value = 0;
    int depth_field = 0;
    bool mark = false;
    int index = 127;
    int type = 0;  // 0 exact, 1 upper bound, 2 lower bound
};

// The database of a test: no answer function means that none is open.
struct SlowDatabase {
    std::function<EgdbValue(const Position&, int side, bool conditional)> lookup;
    int maxpieces = 0;
    int maxpieces_1side = 0;
    int maxkings_9pcs = 0;
    int maxkings_1side_8pcs = 0;
    bool no_side_captures = false;
};

struct SlowResult {
    int value = 0;
    int best_index = 0;
    bool forced = false;
    int completed_depth = 0;
    uint64_t nodes = 0;
    uint64_t leaves = 0;  // of the last iteration
    uint64_t leaf_plies = 0;
    int highest_ply = 0;
    uint32_t lookups = 0;
};

struct SlowSearch {
    explicit SlowSearch(int size_mb);

    // A whole search of a position with at least one legal move. `previous` is the game's line, the root
    // itself at its front; null for none. `step` is added to the iteration number each time.
    SlowResult search(const Position& position, int side, const Position* game_line, int depth_limit,
                      int step, bool full_depth);

    int node(const Position& p, int ply, int depth, int alpha, int beta, bool pruning, int& best_index);
    int quiet(const Position& p, int ply, int depth, int alpha, int beta);
    int captures(const Position& p, int ply, int alpha, int beta);
    int root(const Position& root, const MoveList& list, int alpha, int beta, int& best_index);

    SlowEntry* probe(const PositionHash& key);
    void store(const PositionHash& key, int value, int depth_field, int type, int index);
    void age();
    void mark_pv(const Position& root, const Move& first, int length);
    // The walk of the principal variation: the entries along it, and the moves behind the first one.
    std::vector<Move> line(const Position& root, const Move& first, int length,
                           std::vector<SlowEntry*>& entries);

    int score_of(const Position& p, EgdbValue value);
    bool covered(const Position& p) const;
    bool direct(const Position& p) const;
    EgdbValue look_up(const Position& p, bool conditional);
    int leaf(int ply, int value);
    void fail_high(const Position& p, const MoveList& list, const std::vector<int>& order, size_t rank,
                   int ply, bool had_capture);
    std::vector<int> ordered(const Position& p, const MoveList& list, int first, int ply);

    SlowDatabase database;
    std::vector<SlowEntry> slots;
    uint32_t mask;
    std::array<std::array<int, 54>, 54> history{};
    struct Killer {
        int from = 0, to = 0;  // cleared, it is that of a king that captures around back to his square
    };
    std::array<Killer, 63> killers{};
    int iteration = 0;
    int lookup_depth = 0;
    SlowResult result;
};

// The rules that stand by themselves.
bool slow_forced(const Position& position, int side);
int slow_reduction(const Position& parent, const Position& child, int depth, int number, bool pv,
                   bool capture);
int slow_lookup_depth(int maxpieces, int pieces);
