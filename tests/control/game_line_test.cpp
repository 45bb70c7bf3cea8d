// The game's positions as the search wants them for repetitions.
#include "control/game_line.h"

#include <gtest/gtest.h>

#include "records/fen.h"

namespace {

ReplayState state(const char* fen) {
    ReplayState s;
    EXPECT_EQ(fen_to_position(fen, s.position, s.side), 0) << fen;
    s.position.side = s.side;
    return s;
}

void expect_line(const std::vector<ReplayState>& history, size_t length) {
    std::vector<Position> line(3);
    build_game_line(history, line);
    ASSERT_EQ(line.size(), length);
    for (size_t i = 0; i < length; ++i) {
        const ReplayState& entry = history[history.size() - 1 - i];
        EXPECT_TRUE(same_pieces(line[i], entry.position)) << i;
        EXPECT_EQ(line[i].side, entry.side);
        EXPECT_EQ(line[i].reversible_plies, static_cast<int>(length - 1 - i));
        EXPECT_EQ(line[i].previous, i + 1 < length ? &line[i + 1] : nullptr);
    }
}

}  // namespace

TEST(GameLine, OneEntryIsALineOfOne) { expect_line({state("W:W31,K32:B1,2")}, 1); }

TEST(GameLine, NoEntryIsNoLine) { expect_line({}, 0); }

TEST(GameLine, KingMovesAreGathered) {
    expect_line(
        {state("W:WK46:BK5,6"), state("B:WK41:BK5,6"), state("W:WK41:BK10,6"), state("B:WK46:BK10,6")}, 4);
}

TEST(GameLine, AManMoveEndsTheLineBehindIt) {
    // The position after the man's move is still in the line, the one before it is not.
    expect_line(
        {state("W:WK46:BK5,6"), state("B:WK41:BK5,6"), state("W:WK41:BK5,11"), state("B:WK46:BK5,11")}, 2);
}

TEST(GameLine, APromotionEndsTheLine) {
    expect_line({state("W:W6,K46:BK10"), state("B:WK1,K46:BK10"), state("W:WK1,K46:BK5")}, 2);
}

TEST(GameLine, ACaptureEndsTheLine) {
    // The king of the last step left his square too, but a piece is gone.
    expect_line(
        {state("W:WK46:BK5,30"), state("B:WK41:BK5,30"), state("W:WK41:BK10,30"), state("B:WK46:BK10")}, 1);
}

TEST(GameLine, TheFirstEntryEndsTheLine) {
    std::vector<ReplayState> history;
    for (int i = 0; i < 30; ++i) history.push_back(state(i % 2 == 0 ? "W:WK46:BK5" : "B:WK41:BK5"));
    expect_line(history, 30);
}
