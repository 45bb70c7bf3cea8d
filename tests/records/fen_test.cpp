#include "records/fen.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "positions.h"

namespace {

std::string fen_of(const Position& position, int side) {
    char text[FEN_TEXT_SIZE];
    const int length = position_to_fen(position, side, text);
    EXPECT_EQ(static_cast<size_t>(length), std::strlen(text));
    return text;
}

// The text as it is printed after it was read.
std::string reprint(const std::string& fen) {
    Position position;
    int side = -1;
    if (fen_to_position(fen.c_str(), position, side) != 0) return "no FEN";
    EXPECT_EQ(position.side, side);
    return fen_of(position, side);
}

uint64_t squares(std::initializer_list<int> numbers) {
    uint64_t set = 0;
    for (const int number : numbers) set |= set_of_square(number);
    return set;
}

TEST(Fen, PrintsSideColoursAndKings) {
    const Position position{squares({1, 2}), squares({31, 32, 46}), squares({2, 46})};
    EXPECT_EQ(fen_of(position, WHITE), "W:W31,32,K46:B1,K2");
    EXPECT_EQ(fen_of(position, BLACK), "B:W31,32,K46:B1,K2");
    EXPECT_EQ(fen_of(position, 7), "W:W31,32,K46:B1,K2");
    EXPECT_EQ(fen_of(Position{}, BLACK), "B:W:B");
}

TEST(Fen, PrintsEverySquareByItsNumber) {
    for (int square = 1; square <= SQUARES; ++square) {
        Position position;
        position.white = position.king = squares({square});
        EXPECT_EQ(fen_of(position, WHITE), "W:WK" + std::to_string(square) + ":B");
    }
}

TEST(Fen, ReadsSetsSideAndClearsTheRest) {
    const Position before;
    Position position{1, 2, 4, BLACK, 17, &before};
    int side = BLACK;
    ASSERT_EQ(fen_to_position("W:W31,32,K46:B1,K2", position, side), 0);
    EXPECT_EQ(side, WHITE);
    EXPECT_EQ(position.side, WHITE);
    EXPECT_EQ(position.white, squares({31, 32, 46}));
    EXPECT_EQ(position.black, squares({1, 2}));
    EXPECT_EQ(position.king, squares({2, 46}));
    EXPECT_EQ(position.reversible_plies, 0);
    EXPECT_EQ(position.previous, nullptr);
}

TEST(Fen, ShorthandIsTheInitialPosition) {
    int side = BLACK;
    EXPECT_TRUE(same_pieces(position_of("W:W31-50:B1-20", &side), START_POSITION));
    EXPECT_EQ(side, WHITE);
}

TEST(Fen, ForgivingForms) {
    const char* const plain = "W:W31,K32:B1";
    for (const char* text : {"w:w31,k32:b1",
                             "\"W:W31,K32:B1\"",
                             " \t\r\n\" \nW:W31,K32:B1\" trailing",
                             "W:B1:W31,K32",
                             "W:W31 K32:B1",
                             "W:W31,K32.:B1.",
                             "W:W31.K32:B1.",
                             "W:W31\tK32\r\n:B1\n",
                             "WxW31,K32:B1",
                             "W W31,K32B1",
                             "W:W31,W,K32:B1",
                             "W::,.W31,,K32:B1",
                             "W:W31K32:B1",
                             "W:W\"31\",\"K32\":B1",
                             "W:W031,K00032:B01",
                             "W:W31,32,K32:B1",
                             "W:KW31,K32:B1",
                             "W:W0,31,K32,51,99999999999999999999:B1,0-3",
                             "W:W31-31:K32-32:B1-1",
                             "W:W31,K32:B1-",
                             "W:W31,K32:B1x2",
                             "W:1W31,K32"})
        EXPECT_EQ(reprint(text), plain) << text;
}

TEST(Fen, BlanksInsteadOfCommas) { EXPECT_EQ(reprint("W:W31 32 33:B1"), "W:W31,32,33:B1"); }

TEST(Fen, PiecesBeforeAColourLetterAreBlack) { EXPECT_EQ(reprint("B:5,K6:W31"), "B:W31:B5,K6"); }

TEST(Fen, EmptyBoards) {
    for (const char* text : {"W:W:B", "W", "W:", "w:", "\"W:W:B\"", "White", "Wx"})
        EXPECT_EQ(reprint(text), "W:W:B") << text;
    EXPECT_EQ(reprint("b"), "B:W:B");
    EXPECT_EQ(reprint("B:"), "B:W:B");
}

TEST(Fen, Ranges) {
    EXPECT_EQ(reprint("W:WK1-3:B"), "W:WK1,K2,K3:B");
    EXPECT_EQ(reprint("W:W31-33,40-41.45-46 48-48:50:B1-2"), "W:W31,32,33,40,41,45,46,48,50:B1,2");
    EXPECT_EQ(reprint("W:W5-3:B1"), "W:W:B1");
    EXPECT_EQ(reprint("W:W0-5:B1"), "W:W:B1");
    EXPECT_EQ(reprint("W:W-5:B1"), "W:W:B1");
    EXPECT_EQ(reprint("W:W1-2-3:B4"), "W:W1,2:B4") << "what follows a range is another item, a range from 0";
    EXPECT_EQ(reprint("W:W31- 33:B1"), "W:W31:B") << "no digit behind the dash, so the walk stops at it";
    EXPECT_EQ(reprint("W:W31 -33:B1"), "W:W31:B1")
        << "the blank ends the item; what follows is a range from 0";
    EXPECT_EQ(reprint("W:W31-K33:B1"), "W:W31:B");
}

TEST(Fen, NumbersAboveTheBoardPlaceNothingAndEndAtOnce) {
    EXPECT_EQ(reprint("W:W51,100,256,257,4294967297,18446744073709551617:B1"), "W:W:B1");
    EXPECT_EQ(reprint("W:W49-4000000000:B1"), "W:W49,50:B1");
    EXPECT_EQ(reprint("W:W49-99999999999999999999999999:B1"), "W:W49,50:B1");
    EXPECT_EQ(reprint("W:W99999999999-999999999999:B1"), "W:W:B1");
    EXPECT_EQ(reprint("W:W" + std::string(1000000, '9') + "-" + std::string(1000000, '9') + ":B1"), "W:W:B1");
    EXPECT_EQ(reprint("W:W" + std::string(1000000, '0') + "5:B1"), "W:W5:B1");
}

TEST(Fen, AnUnknownCharacterEndsThePositionQuietly) {
    EXPECT_EQ(reprint("W:W31x:B1"), "W:W31:B");
    EXPECT_EQ(reprint("W:W31:B1!,2"), "W:W31:B1");
    EXPECT_EQ(reprint("W:W31\v:B1"), "W:W31:B") << "white space is four characters and no more";
    EXPECT_EQ(reprint("W:W31\xff:B1"), "W:W31:B");
}

TEST(Fen, TellsAPositionFromAGame) {
    for (const char* text : {"", " ", "\"", "\"\"W:W:B", "[FEN \"W:W31:B1\"]", "1. 32-28", "x", ":W",
                             "\vW:W:B", "{W:W:B}", "\xc2W"}) {
        const Position before;
        Position position{1, 2, 2, BLACK, 3, &before};
        int side = 5;
        EXPECT_EQ(fen_to_position(text, position, side), 1) << text;
        EXPECT_FALSE(begins_like_fen(text)) << text;
        EXPECT_EQ(side, 5);
        EXPECT_EQ(position.black, 1u);
        EXPECT_EQ(position.white, 2u);
        EXPECT_EQ(position.king, 2u);
        EXPECT_EQ(position.reversible_plies, 3);
        EXPECT_EQ(position.previous, &before);
    }
    for (const char* text : {"W", "b:", " \" w"}) EXPECT_TRUE(begins_like_fen(text)) << text;
}

TEST(Fen, ASquareOfBothColoursIsLeftToTheLegalityTest) {
    EXPECT_FALSE(is_legal_setup(position_of("W:W31:B31")));
    EXPECT_FALSE(is_legal_setup(position_of("W:W3:B31")));
    EXPECT_TRUE(is_legal_setup(position_of("W:WK3:B31")));
}

TEST(Fen, PrintedTextIsBounded) {
    Position kings{BOARD_MASK, 0, BOARD_MASK};
    EXPECT_LT(fen_of(kings, WHITE).size(), FEN_TEXT_SIZE - 1) << "one piece a square fits";
    const Position both{BOARD_MASK, BOARD_MASK, BOARD_MASK};
    EXPECT_EQ(fen_of(both, WHITE).size(), FEN_TEXT_SIZE - 1);
    const Position outside{~uint64_t{0}, 0, 0};
    EXPECT_EQ(fen_of(outside, WHITE), fen_of(Position{BOARD_MASK, 0, 0}, WHITE));
}

TEST(Fen, TagLine) {
    char text[FEN_TAG_TEXT_SIZE];
    const Position position = position_of("B:W31:BK2");
    EXPECT_EQ(fen_tag_text(position, BLACK, text, "\r\n"), 19);
    EXPECT_STREQ(text, "[FEN \"B:W31:BK2\"]\r\n");
    fen_tag_text(position, WHITE, text, "");
    EXPECT_STREQ(text, "[FEN \"W:W31:BK2\"]");
    const Position both{BOARD_MASK, BOARD_MASK, BOARD_MASK};
    const std::string long_end(50, 'e');
    EXPECT_EQ(fen_tag_text(both, WHITE, text, long_end.c_str()), static_cast<int>(FEN_TAG_TEXT_SIZE) - 1);
    EXPECT_EQ(std::strlen(text), FEN_TAG_TEXT_SIZE - 1);
}

TEST(Fen, RoundTripOfRandomPositions) {
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        const Position position = random_position(random, 25, 1 + i % 10);
        const std::string fen = fen_of(position, position.side);
        Position read;
        int side = -1;
        ASSERT_EQ(fen_to_position(fen.c_str(), read, side), 0);
        ASSERT_TRUE(same_pieces(position, read)) << fen;
        ASSERT_EQ(side, position.side);
        char tag[FEN_TAG_TEXT_SIZE];
        fen_tag_text(position, position.side, tag, "\r\n");
        ASSERT_EQ(reprint(tag + 5), fen) << "the value of the tag, in its quotes";
    }
}

// Ranges, blanks and letters of either case stand for the same pieces.
TEST(Fen, RoundTripInTheShorthand) {
    std::mt19937 random(2);
    for (int i = 0; i < 2000; ++i) {
        const Position position = random_position(random, 25, 3);
        std::string text = position.side ? "w:" : "b:";
        for (const int colour : {BLACK, WHITE}) {
            text += colour == WHITE ? "w" : "b";
            for (int square = 1; square <= SQUARES; ++square) {
                const uint64_t mask = squares({square});
                if (!(pieces_of(position, colour) & mask)) continue;
                int last = square;
                while (last < SQUARES && (pieces_of(position, colour) & squares({last + 1})) &&
                       !(position.king & mask) == !(position.king & squares({last + 1})))
                    ++last;
                if (position.king & mask) text += "k";
                text += std::to_string(square);
                if (last > square) text += "-" + std::to_string(last);
                text += random_below(random, 2) ? "\n" : ",";
                square = last;
            }
        }
        ASSERT_EQ(reprint(text), fen_of(position, position.side)) << text;
    }
}

}  // namespace
