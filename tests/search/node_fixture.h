// Single nodes of the tree, called directly, with what they cost.
#pragma once

#include "search/node_search.h"

#include "eval/evaluation.h"
#include "search/root_search.h"
#include "search/score.h"
#include "search/search_state.h"
#include "search/table.h"
#include "tests/search/fixtures.h"

inline ThreadRecord& me() { return thread_records[0]; }

// Puts history and killers back to where a search begins.
inline void forget_moves() {
    for (auto& entry : search_state.history) entry = 4096;
    me().killers.fill({});
}

struct Answer {
    int value;
    int best_index;
    uint64_t nodes, leaves, leaf_plies;
};

class NodeTest : public SearchTest {
  protected:
    void SetUp() override {
        SearchTest::SetUp();
        search_state.max_time = LONG_TIME;
        search_state.iteration = 9;
    }

    Answer node(const Position& p, int ply, int depth, int alpha, int beta, bool pruning = true) {
        int32_t best_index = -99;
        return counted([&] { return node_search(p, ply, depth, alpha, beta, pruning, best_index, me()); },
                       best_index);
    }
    Answer quiet(const Position& p, int ply, int depth, int alpha, int beta) {
        int32_t none = -1;
        return counted([&] { return quiescence(p, ply, depth, alpha, beta, me()); }, none);
    }
    Answer captures(const Position& p, int ply, int alpha, int beta) {
        int32_t none = -1;
        return counted([&] { return capture_search(p, ply, alpha, beta, p.side, me()); }, none);
    }
    template <typename Call>
    Answer counted(Call call, const int32_t& best_index) {
        const uint64_t nodes = me().nodes, leaves = me().leaf_count, plies = me().leaf_ply_sum;
        const int value = call();
        return {value, best_index, me().nodes - nodes, me().leaf_count - leaves, me().leaf_ply_sum - plies};
    }

    // Answers by the side to move; all pieces are covered.
    void answer_with(EgdbValue black, EgdbValue white) {
        open_database(40, 20, 9, 8, false);
        database_answer = [black, white](const Position&, int side, bool) {
            return side == BLACK ? black : white;
        };
    }
};

inline void expect_leaf(const Answer& answer, int value, int ply) {
    EXPECT_EQ(answer.value, value);
    EXPECT_EQ(answer.best_index, -1);
    EXPECT_EQ(answer.nodes, 1u);
    EXPECT_EQ(answer.leaves, 1u);
    EXPECT_EQ(answer.leaf_plies, static_cast<uint64_t>(ply));
}

inline int evaluation_of(const Position& p) {
    NodeSummary summary;
    summarize(p, summary);
    return evaluate(p, p.side, summary);
}

inline TTEntry entry_of(const Position& p) {
    const PositionHash hash = position_hash(p, p.side);
    TTEntry entry;
    return tt_probe(hash.hash0, hash.hash1, entry) ? entry : TTEntry{};
}

inline void store(const Position& p, int value, int depth_field, BoundType type, int index,
                  bool marked = false) {
    const PositionHash hash = position_hash(p, p.side);
    tt_store(hash.hash0, hash.hash1, value, depth_field, type, index);
    TTEntry entry;
    TTSlot* const slot = tt_probe(hash.hash0, hash.hash1, entry);
    if (marked && !entry.pv_mark()) slot->fetch_xor(uint64_t{1} << 22 | uint64_t{1} << 54);
}
