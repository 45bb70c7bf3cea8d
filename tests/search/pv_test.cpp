// The principal variation as it is read from the table and marked in it.
#include "search/pv.h"

#include <sstream>

#include "search/search_state.h"
#include "search/table.h"
#include "tests/search/fixtures.h"

namespace {

class PvTest : public SearchTest {
  protected:
    static void store(const Position& p, int index, int depth_field = 9, BoundType type = BOUND_EXACT) {
        const PositionHash hash = position_hash(p, p.side);
        tt_store(hash.hash0, hash.hash1, 0, depth_field, type, index);
    }
    static TTEntry entry_of(const Position& p) {
        const PositionHash hash = position_hash(p, p.side);
        TTEntry entry;
        return tt_probe(hash.hash0, hash.hash1, entry) ? entry : TTEntry{};
    }
    // Plays index 0 throughout and gives the positions behind the root; entries stand for all of them.
    std::vector<Position> stored_line(const Position& root, int plies) {
        std::vector<Position> line;
        Position p = root;
        for (int i = 0; i < plies; ++i) {
            MoveList list;
            if (generate_moves(p, list, p.side) == 0) break;
            p = position_after(list[0], p.side ^ 1);
            line.push_back(p);
            store(p, 0);
        }
        return line;
    }
    static std::vector<std::string> words(const Position& root, const Move& first, bool exact_only = false,
                                          int length = 60) {
        char text[1000];
        pv_text(root.side, root, first, text, sizeof text, exact_only, length, "line");
        std::istringstream stream(text);
        std::vector<std::string> result;
        for (std::string word; stream >> word;) result.push_back(word);
        return result;
    }
    Move first_move() {
        MoveList list;
        generate_moves(START_POSITION, list, WHITE);
        return list[0];
    }
};

TEST_F(PvTest, TenMovesAtMost) {
    stored_line(START_POSITION, 25);
    EXPECT_EQ(words(START_POSITION, first_move()).size(), 11u);  // the label too
    EXPECT_EQ(words(START_POSITION, first_move(), false, 3).size(), 5u);
    EXPECT_EQ(words(START_POSITION, first_move())[0], "line");
}

TEST_F(PvTest, TheFirstMoveNeedsNoEntry) {
    const std::vector<std::string> found = words(START_POSITION, first_move());
    EXPECT_EQ(found, (std::vector<std::string>{"line", short_text(START_POSITION, first_move())}));
}

TEST_F(PvTest, EndsAtAMissingOrAgedEntryOrABadIndex) {
    for (int fault = 0; fault < 3; ++fault) {
        ASSERT_EQ(tt_allocate(), 0);
        const std::vector<Position> line = stored_line(START_POSITION, 8);
        const PositionHash hash = position_hash(line[4], line[4].side);
        TTEntry entry;
        if (fault == 0) tt_probe(hash.hash0, hash.hash1, entry)->store(0);
        if (fault == 1) store(line[4], 0, 0);
        if (fault == 2) store(line[4], 127);
        // The label, the first move, and one move from each of the four entries before the fault.
        EXPECT_EQ(words(START_POSITION, first_move()).size(), 6u) << fault;
    }
}

TEST_F(PvTest, ExactOnlyEndsAtABound) {
    const std::vector<Position> line = stored_line(START_POSITION, 8);
    store(line[2], 0, 9, BOUND_LOWER);
    EXPECT_EQ(words(START_POSITION, first_move(), true).size(), 4u);
    EXPECT_GT(words(START_POSITION, first_move(), false).size(), 8u);
}

// Two kings that go to and fro.
TEST_F(PvTest, EndsInACycle) {
    const char* const round[] = {"W:WK45:BK1", "B:WK50:BK1", "W:WK50:BK6", "B:WK45:BK6"};
    for (int i = 0; i < 4; ++i) {
        const Position p = position_of(round[i]), next = position_of(round[(i + 1) % 4]);
        MoveList list;
        generate_moves(p, list, p.side);
        store(p, find_move(list, move_to(next)));
    }
    const Position root = position_of(round[0]);
    const std::vector<std::string> found = words(root, move_to(position_of(round[1])));
    EXPECT_EQ(found, (std::vector<std::string>{"line", "45-50", "1-6", "50-45", "6-1", "45-50"}));
    tt_mark_pv(WHITE, move_to(position_of(round[1])), 63);
    EXPECT_EQ(tt_count_marked(), 4);
}

TEST_F(PvTest, AShortBufferIsNotOverrun) {
    stored_line(START_POSITION, 12);
    for (size_t size = 1; size < 60; ++size) {
        std::string buffer(80, '#');
        pv_text(WHITE, START_POSITION, first_move(), buffer.data(), size, false, 10, "line");
        EXPECT_LT(std::char_traits<char>::length(buffer.c_str()), size);
        EXPECT_EQ(buffer.find_first_not_of('#', size), std::string::npos);
    }
}

TEST_F(PvTest, MarkingGoesAlongTheLine) {
    for (const int length : {0, 1, 5, 12, 63, 200}) {
        ASSERT_EQ(tt_allocate(), 0);
        std::vector<Position> line = stored_line(START_POSITION, 80);
        ASSERT_GT(line.size(), 20u);
        Position stranger = position_of("W:W46:B1");
        store(stranger, 0);
        tt_mark_pv(WHITE, first_move(), length);
        for (size_t i = 0; i < line.size(); ++i) {
            const TTEntry entry = entry_of(line[i]);
            ASSERT_FALSE(entry.free());
            EXPECT_EQ(entry.pv_mark(), static_cast<int>(i) < std::min(length, 63)) << i;
            EXPECT_EQ(entry.depth_field(), 9);
            EXPECT_EQ(entry.move_index(), 0);
        }
        EXPECT_FALSE(entry_of(stranger).pv_mark());
    }
}

TEST_F(PvTest, MarkingTwiceKeepsTheMark) {
    const std::vector<Position> line = stored_line(START_POSITION, 10);
    tt_mark_pv(WHITE, first_move(), 5);
    tt_mark_pv(WHITE, first_move(), 5);
    EXPECT_EQ(tt_count_marked(), 5);
}

// What a real search leaves behind is a line of legal moves, and the mark from iteration 8 on.
TEST_F(PvTest, TheLineOfASearchIsLegal) {
    Random random(41);
    for (int i = 0; i < 40; ++i) {
        const Position root = random_play(random, 2 * i);
        ASSERT_EQ(tt_allocate(), 0);
        const Searched found = search_to(root, 7, SEARCH_QUIET | SEARCH_FULL_DEPTH);
        EXPECT_EQ(tt_count_marked(), 0);
        std::istringstream stream(found.text.substr(found.text.find("pv ") + 3));
        Position p = root;
        int moves = 0;
        for (std::string word; stream >> word; ++moves) {
            MoveList list;
            generate_moves(p, list, p.side);
            int named = -1;
            for (int k = 0; k < list.count; ++k)
                if (short_text(p, list[k]) == word) named = k;
            ASSERT_GE(named, 0) << word << " in " << fen_of(p);
            // Captures of the same squares can be several moves; the line is followed where it is plain.
            int same = 0;
            for (const Move& move : list) same += short_text(p, move) == word;
            if (same > 1) break;
            p = position_after(list[named], p.side ^ 1);
        }
        EXPECT_GE(moves, 1);
        EXPECT_LE(moves, 10);
        search_to(root, 8, SEARCH_QUIET | SEARCH_FULL_DEPTH);
        MoveList replies;
        const Position after = position_after(found.move, root.side ^ 1);
        if (generate_moves(after, replies, after.side) > 1) {
            EXPECT_GT(tt_count_marked(), 0) << fen_of(root);
        }
    }
}

}  // namespace
