// The choice of a root move by numbers of moves that a function makes up. A white man on 31 and a king on 46
// play against a man on 45.
#include "egdb/mtc_choice.h"

#include "egdb/mtc_codes.h"
#include "tests/egdb/engine_fixture.h"

namespace {

class MtcChoice : public EngineEgdbTest {
  protected:
    void SetUp() override {
        EngineEgdbTest::SetUp();
        open(4, true);
        position = position_with(WHITE, {45}, {}, {31}, {46});
        generate_moves(position, moves, WHITE);
        mtc_driver.handle = this;
        mtc_driver.lookup = [](void* handle, const Position& p, int side, bool conditional) {
            EXPECT_FALSE(conditional);
            EXPECT_EQ(p.side, side);
            EXPECT_FALSE(has_capture(p, side));
            return static_cast<EgdbValue>(static_cast<MtcChoice*>(handle)->number(p));
        };
        egdb_engine.mtc = &mtc_driver;
        // White wins, or loses, whatever he moves.
        asked.answer = [this](const Position&, int side) {
            return (side == WHITE) == white_wins ? EGDB_WIN : EGDB_LOSS;
        };
    }

    // By where the king or the man is.
    int32_t number(const Position& p) const {
        if (same_pieces(p, position)) return root;
        if (p.white & set_of_square(27)) return man_27;
        if (p.white & set_of_square(26)) return man_26;
        return p.white & set_of_square(41) ? king_41 : p.white & set_of_square(37) ? king_37 : others;
    }

    int choose() {
        best = mtc = -1;
        std::snprintf(text, sizeof text, "untouched");
        return mtc_choose_move(position, WHITE, moves, best, mtc, text);
    }
    void expect_none() {
        EXPECT_EQ(choose(), 0);
        EXPECT_EQ(best, -1);
        EXPECT_EQ(mtc, -1);
        EXPECT_STREQ(text, "untouched");
    }
    bool begins(const std::string& beginning) const { return std::string(text).find(beginning) == 0; }
    Position chosen() const { return position_after(moves[best], BLACK); }

    Position position{};
    MoveList moves;
    EgdbDriver mtc_driver{nullptr, nullptr};
    bool white_wins = true;
    int32_t root = 14, king_41 = 12, king_37 = 14, others = 16, man_26 = 18, man_27 = 20;
    int best = -1, mtc = -1;
    char text[MTC_TEXT_SIZE] = "";
};

}  // namespace

TEST_F(MtcChoice, TheWinnerTakesTheShortestWay) {
    ASSERT_EQ(choose(), 1);
    EXPECT_TRUE(chosen().white & set_of_square(41));
    EXPECT_EQ(mtc, 12);
    EXPECT_TRUE(begins("46-41(12)*  46-37(14)  46-")) << text;
    EXPECT_NE(std::string(text).find("(16)  31-26(18)  31-27(20)  "), std::string::npos) << text;
    // The position itself has the same even number: each is one less.
    root = 12;
    king_37 = 12;
    ASSERT_EQ(choose(), 1);
    EXPECT_EQ(mtc, 11);
    EXPECT_TRUE(begins("46-41(11)*  46-37(11)*  46-") || begins("46-37(11)*  46-41(11)*  46-")) << text;
}

TEST_F(MtcChoice, ANearWinHasItsNumberToo) {
    king_41 = 8;
    ASSERT_EQ(choose(), 1);
    EXPECT_EQ(mtc, 8);
    EXPECT_TRUE(begins("46-41(8)*  46-37(14)  46-")) << text;
}

TEST_F(MtcChoice, MovesThatDoNotWinAreLeftOut) {
    asked.answer = [](const Position& p, int side) {
        if (p.white & set_of_square(41)) return EGDB_DRAW;
        if (p.white & set_of_square(37)) return EGDB_WIN;
        return side == WHITE ? EGDB_WIN : EGDB_LOSS;
    };
    ASSERT_EQ(choose(), 1);
    EXPECT_EQ(mtc, 16);
    EXPECT_EQ(std::string(text).find("46-41("), std::string::npos) << text;
    EXPECT_EQ(std::string(text).find("46-37("), std::string::npos) << text;
}

TEST_F(MtcChoice, NoneInAnyDoubt) {
    man_27 = NO_MTC;  // it may be the best of all
    expect_none();
    man_27 = 20;
    root = NO_MTC;
    expect_none();
    root = 14;
    // Of a move nobody knows whether it wins.
    const auto answer = asked.answer;
    asked.answer = [&](const Position& p, int side) {
        return p.white & set_of_square(27) ? EGDB_UNKNOWN : answer(p, side);
    };
    expect_none();
    asked.answer = [](const Position&, int) { return EGDB_DRAW; };
    expect_none();
    asked.answer = [](const Position&, int) { return EGDB_UNKNOWN; };
    expect_none();
    asked.answer = answer;
    EXPECT_EQ(choose(), 1);
    egdb_engine.maxpieces = 2;
    expect_none();
    egdb_engine.maxpieces = 4;
    egdb_engine.mtc = nullptr;
    expect_none();
    egdb_engine.mtc = &mtc_driver;
    egdb_engine.wld = nullptr;
    expect_none();
}

TEST_F(MtcChoice, TheLoserConvertsLast) {
    white_wins = false;
    others = 8;
    ASSERT_EQ(choose(), 1);
    EXPECT_TRUE(chosen().white & set_of_square(37));
    EXPECT_EQ(mtc, 13);  // as the position itself has 14
    EXPECT_TRUE(begins("46-37(13)*  46-41(11)  46-")) << text;
    // Farther away, but they convert at once.
    EXPECT_NE(std::string(text).find("(?)  31-27(19)  31-26(17)  "), std::string::npos) << text;
    root = 16;
    ASSERT_EQ(choose(), 1);
    EXPECT_EQ(mtc, 14);
    // All that does not convert is near.
    king_41 = king_37 = 8;
    expect_none();
}

// Where the side to move has a capture no number is asked for, whatever the files would tell.
TEST_F(MtcChoice, ACaptureHasNoNumber) {
    position = position_with(WHITE, {22}, {}, {32}, {46});
    moves.count = 0;
    generate_moves(position, moves, WHITE);
    expect_none();  // 32-27 wins, and is taken at once
    position = position_with(WHITE, {28}, {}, {32}, {46});
    moves.count = 0;
    generate_moves(position, moves, WHITE);
    expect_none();
    // The loser's move into a capture has none either, and stands behind those that have one.
    white_wins = false;
    position = position_with(WHITE, {22}, {}, {32}, {46});
    moves.count = 0;
    generate_moves(position, moves, WHITE);
    ASSERT_EQ(choose(), 1);
    EXPECT_NE(std::string(text).find("32-27(?)"), std::string::npos) << text;
}
