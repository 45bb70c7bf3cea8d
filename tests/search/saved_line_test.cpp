// The lines that a search of all moves keeps beside the table, and the order and text of its moves.
#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "search/pv.h"
#include "search/root_moves.h"
#include "search/table.h"
#include "tests/search/fixtures.h"
#include "tests/search/slow_analysis.h"

namespace {

class SavedLineTest : public SearchTest {
  protected:
    static TTEntry entry_of(const Position& p) {
        const PositionHash hash = position_hash(p, p.side);
        TTEntry entry;
        return tt_probe(hash.hash0, hash.hash1, entry) ? entry : TTEntry{};
    }
};

}  // namespace

TEST_F(SavedLineTest, IsTakenOutMarkedAndWrittenBack) {
    MoveList list;
    generate_moves(START_POSITION, list, WHITE);
    std::vector<Position> line;
    Position p = position_after(list[0], BLACK);
    for (int i = 0; i < 70; ++i) {
        line.push_back(p);
        const PositionHash hash = position_hash(p, p.side);
        tt_store(hash.hash0, hash.hash1, i, 17, i % 2 ? BOUND_LOWER : BOUND_UPPER, 0);
        MoveList moves;
        if (generate_moves(p, moves, p.side) == 0) break;
        p = position_after(moves[0], p.side ^ 1);
    }
    ASSERT_GT(line.size(), 20u);
    tt_mark_pv(WHITE, list[0], 5);
    std::vector<SavedEntry> saved;
    tt_save_line(WHITE, list[0], 9, saved);
    ASSERT_EQ(saved.size(), 9u);
    EXPECT_EQ(tt_count_marked(), 0);
    for (size_t i = 0; i < 9; ++i) {
        EXPECT_EQ(saved[i].hash, position_hash(line[i], line[i].side));
        EXPECT_TRUE(saved[i].entry.pv_mark());
        EXPECT_TRUE(saved[i].entry.belongs_to(saved[i].hash.hash1));
        EXPECT_EQ(saved[i].entry.value(), static_cast<int>(i));
        EXPECT_EQ(entry_of(line[i]).value(), static_cast<int>(i));
        EXPECT_FALSE(entry_of(line[i]).pv_mark());
    }
    // The same positions again: they are replaced, and a longer line is appended.
    const PositionHash third = position_hash(line[2], line[2].side);
    tt_store(third.hash0, third.hash1, 500, 25, BOUND_EXACT, 0);
    tt_save_line(WHITE, list[0], 12, saved);
    ASSERT_EQ(saved.size(), 12u);
    EXPECT_EQ(saved[2].entry.value(), 500);
    EXPECT_EQ(saved[11].hash, position_hash(line[11], line[11].side));
    // Written back they are found again, with the mark.
    tt_clear();
    for (const SavedEntry& entry : saved) tt_restore(entry);
    EXPECT_EQ(tt_count_marked(), 12);
    EXPECT_EQ(entry_of(line[2]).value(), 500);
    EXPECT_EQ(entry_of(line[2]).depth_field(), 25);
}

TEST_F(SavedLineTest, RootMovesKeepTheirOrderWhereTheyAreEqual) {
    MoveList list;
    generate_moves(START_POSITION, list, WHITE);
    for (const int side : {BLACK, WHITE}) {
        RootMoves moves = make_root_moves(list);
        for (size_t i = 0; i < moves.size(); ++i) {
            EXPECT_EQ(moves[i].index, static_cast<int>(i));
            EXPECT_EQ(moves[i].value, 0);
            moves[i].value = static_cast<int>(i * 7 % 3);
        }
        keep_root_values(moves);
        sort_root_moves(moves, side);
        for (size_t i = 1; i < moves.size(); ++i) {
            const int before = moves[i - 1].value, value = moves[i].value;
            EXPECT_TRUE(side == BLACK ? before >= value : before <= value);
            if (before == value) {
                EXPECT_LT(moves[i - 1].index, moves[i].index);
            }
        }
        for (RootMove& move : moves) move.value = 99;
        restore_root_values(moves);
        for (const RootMove& move : moves) EXPECT_EQ(move.value, move.index * 7 % 3);
    }
}

TEST_F(SavedLineTest, ATextThatIsTooLongLosesWholeMoves) {
    MoveList list;
    generate_moves(START_POSITION, list, WHITE);
    const RootMoves moves = make_root_moves(list);
    char whole[500];
    root_moves_text(START_POSITION, moves, list.count, whole, sizeof whole);
    const std::string text = whole;
    EXPECT_EQ(text.substr(0, 18),
              short_text(START_POSITION, list[0]) + ",0  " + short_text(START_POSITION, list[1]) + ",0  ");
    for (size_t size = 1; size < text.size() + 5; ++size) {
        std::string buffer(text.size() + 10, '#');
        root_moves_text(START_POSITION, moves, list.count, buffer.data(), size);
        const std::string got = buffer.c_str();
        EXPECT_LT(got.size(), size);
        EXPECT_EQ(text.substr(0, got.size()), got);
        EXPECT_TRUE(got.empty() || got.ends_with("  "));
        EXPECT_EQ(buffer.find_first_not_of('#', size), std::string::npos);
    }
}
