// The place where a node offers its moves to other threads.
#include "search/split.h"

#include <algorithm>

#include "tests/search/node_fixture.h"

namespace {

constexpr char MIDDLE_GAME[] = "W:W28,32,33,35,37,38,39,40,43,47:B3,8,9,13,14,16,17,19,23,24";

int offers;
int smallest_depth;
int fewest_moves;
bool take;

bool record_offer(const SplitOffer& offer) {
    ++offers;
    smallest_depth = std::min(smallest_depth, offer.depth);
    fewest_moves = std::min(fewest_moves, offer.list.count - offer.next_number);
    if (!take) return false;
    offer.best = 77;
    offer.best_index = offer.order[offer.list.count - 1];
    return true;
}

class SplitTest : public NodeTest {
  protected:
    void SetUp() override {
        NodeTest::SetUp();
        offers = 0;
        smallest_depth = fewest_moves = 1000;
        take = false;
        split_help = {record_offer};
    }
    void TearDown() override {
        split_help = no_split_help();
        search_state.active_threads = 1;
        NodeTest::TearDown();
    }
    Answer search(int depth) {
        EXPECT_EQ(tt_allocate(), 0);
        forget_moves();
        return node(position_of(MIDDLE_GAME), 1, depth, -50, 50);
    }
};

TEST_F(SplitTest, OneThreadNeverOffers) {
    search(56);
    EXPECT_EQ(offers, 0);
}

TEST_F(SplitTest, OffersDeepNodesWithTwoMovesLeft) {
    const Answer alone = search(56);
    search_state.active_threads = 2;
    const Answer refused = search(56);
    EXPECT_GT(offers, 0);
    EXPECT_EQ(smallest_depth, 32);
    EXPECT_EQ(fewest_moves, 2);
    // Offers that nobody takes change nothing.
    EXPECT_EQ(refused.value, alone.value);
    EXPECT_EQ(refused.nodes, alone.nodes);
    offers = 0;
    search(31);
    EXPECT_EQ(offers, 0);
}

TEST_F(SplitTest, TakesTheResultOfTheSplit) {
    search_state.active_threads = 2;
    take = true;
    const Answer answer = search(32);
    EXPECT_EQ(offers, 1);
    EXPECT_EQ(answer.value, 77);
    MoveList list;
    const Position position = position_of(MIDDLE_GAME);
    const int count = generate_moves(position, list, position.side);
    // Nothing was known of the moves, so they stood in the order of the list.
    EXPECT_EQ(answer.best_index, count - 1);
    // The move failed high: its history is raised and that of all others lowered.
    const uint64_t before = pieces_of(position, position.side);
    EXPECT_EQ(history_entry(move_squares(before, pieces_of(list[count - 1], position.side))), 4096 + 32);
    EXPECT_EQ(history_entry(move_squares(before, pieces_of(list[0], position.side))), 4096 - 32);
}

}  // namespace
