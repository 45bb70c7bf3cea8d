// The rules of capturing, on positions small enough to check by hand, and the limits of the lists.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>

#include "core/capture_lines.h"
#include "core/movegen.h"
#include "tests/core/slow_generator.h"
#include "tests/core/test_positions.h"

namespace {

std::vector<std::string> moves_of(const char* text) {
    const Position position = position_of(text);
    MoveList list;
    generate_moves(position, list, position.side);
    std::vector<std::string> texts = texts_of(position, list);
    std::sort(texts.begin(), texts.end());
    return texts;
}

using Texts = std::vector<std::string>;

// A list with a mark behind it that must not change.
struct GuardedList {
    MoveList list;
    std::array<uint64_t, 8> guard;

    GuardedList() { guard.fill(0x5a5a5a5a5a5a5a5a); }
    bool intact() const {
        return std::all_of(guard.begin(), guard.end(),
                           [](uint64_t word) { return word == 0x5a5a5a5a5a5a5a5a; });
    }
};

}  // namespace

TEST(CaptureRules, OnlyTheMostPieces) {
    EXPECT_EQ(moves_of("W:W28,35:B23,30,19,14"), (Texts{"35x13"}));  // 28x19 takes but one
    EXPECT_EQ(moves_of("W:W28:B23,32"), (Texts{"28x19", "28x37"}));
    EXPECT_EQ(moves_of("W:W28:B23,32,13"), (Texts{"28x8"}));
    EXPECT_EQ(moves_of("W:W28:B23,32,13,2,41,46"), (Texts{"28x8"}));
}

TEST(CaptureRules, KingsCountAsOnePiece) {
    // Two kings from 26, or three men from 50.
    EXPECT_EQ(moves_of("W:W26,50:BK21,K12,44,33,23"), (Texts{"50x19"}));
}

TEST(CaptureRules, AManThatPassesTheLastRowStaysAMan) {
    const Position passing = position_of("W:W12:B8,9,29");
    MoveList list;
    ASSERT_EQ(generate_moves(passing, list, WHITE), 1);
    EXPECT_EQ(texts_of(passing, list), (Texts{"12x14"}));
    EXPECT_EQ(list[0].king, 0u);

    const Position ending = position_of("W:W12:B8,29");
    ASSERT_EQ(generate_moves(ending, list, WHITE), 1);
    EXPECT_EQ(texts_of(ending, list), (Texts{"12x3"}));
    EXPECT_EQ(list[0].king, mask_of_square[3 - 1]);

    const Position black = position_of("B:W42,43,20:B37");
    ASSERT_EQ(generate_moves(black, list, BLACK), 1);
    EXPECT_EQ(texts_of(black, list), (Texts{"37x39"}));
    EXPECT_EQ(list[0].king, 0u);
}

TEST(CaptureRules, QuietPromotion) {
    const Position white = position_of("W:W8:B50");
    MoveList list;
    ASSERT_EQ(generate_moves(white, list, WHITE), 2);
    EXPECT_EQ(list[0].king, list[0].white);
    EXPECT_EQ(list[1].king, list[1].white);
    const Position black = position_of("B:W1:B41,31");
    ASSERT_EQ(generate_moves(black, list, BLACK), 4);
    EXPECT_EQ(texts_of(black, list), (Texts{"31-37", "41-47", "31-36", "41-46"}));
    EXPECT_EQ(list[0].king, 0u);
    EXPECT_EQ(list[1].king, mask_of_square[47 - 1]);
    EXPECT_EQ(list[3].king, mask_of_square[46 - 1]);
}

TEST(CaptureRules, ATakenKingLeavesTheSetOfKings) {
    const Position position = position_of("W:W28:BK23,K1");
    MoveList list;
    ASSERT_EQ(generate_moves(position, list, WHITE), 1);
    EXPECT_EQ(list[0].king, mask_of_square[1 - 1]);
}

TEST(CaptureRules, AManMayEndWhereItStarted) {
    const Position position = position_of("W:W28:B12,13,22,23");
    MoveList list;
    ASSERT_EQ(generate_captures(position, list, WHITE), 1);  // the round trip both ways is one move
    EXPECT_EQ(list[0].white, position.white);
    EXPECT_EQ(list[0].black, 0u);
    EXPECT_EQ(texts_of(position, list), (Texts{"28x28"}));
}

TEST(CaptureRules, AManMayPassItsStartSquare) {
    const Position position = position_of("W:W28:B12,13,22,23,33");
    MoveList list;
    ASSERT_EQ(generate_captures(position, list, WHITE), 1);
    EXPECT_EQ(texts_of(position, list), (Texts{"28x39"}));
    EXPECT_EQ(list[0].black, 0u);
}

TEST(CaptureRules, AKingMayEndWhereItStarted) {
    EXPECT_EQ(moves_of("W:WK28:B32,33,42,43"), (Texts{"28x10", "28x11", "28x14", "28x17", "28x19", "28x22",
                                                      "28x23", "28x28", "28x5", "28x6"}));
}

TEST(CaptureRules, NoPieceIsJumpedTwice) {
    // From 2 the king sees 11 again, with 16 empty behind it.
    EXPECT_EQ(moves_of("W:WK6:B8,11,18"), (Texts{"6x2"}));
}

TEST(CaptureRules, ATakenPieceBlocksUntilTheEnd) {
    // On 13 the king looks towards 27, and 22, which it took first, still stands between.
    EXPECT_EQ(moves_of("W:WK6:B19,22,27,29"), (Texts{"6x13", "6x2", "6x8"}));
    EXPECT_EQ(moves_of("B:W19,22,27,29:BK6"), (Texts{"6x13", "6x2", "6x8"}));
}

TEST(CaptureRules, OneMoveForEachLandingSquareOfTheLastRun) {
    EXPECT_EQ(moves_of("W:WK46:B37"), (Texts{"46x10", "46x14", "46x19", "46x23", "46x28", "46x32", "46x5"}));
}

TEST(CaptureRules, RoutesOfFourJumpsWithTheSameResultAreOneMove) {
    const Position position = position_of("W:W28:B12,13,22,23");
    EXPECT_EQ(slow_captures(position, WHITE).size(), 2u);
    MoveList list;
    EXPECT_EQ(generate_captures(position, list, WHITE), 1);
}

// A king turns at right angles, so two routes cannot meet again before the fourth piece: that is why shorter
// captures need no comparison.
TEST(CaptureRules, ShorterRoutesNeverMeet) {
    std::mt19937_64 random(21);
    for (int i = 0; i < 50000; ++i) {
        const Position position = random_position(random, {1, 3, 2, 8, 100, 100});
        MoveList list;
        generate_captures(position, list, position.side);
        if (list.count == 0 || bit_count(pieces_of(position, position.side ^ 1)) -
                                       bit_count(pieces_of(list[0], position.side ^ 1)) >=
                                   4)
            continue;
        for (int k = 0; k < list.count; ++k) EXPECT_EQ(find_move(list, list[k]), k) << letters_of(position);
    }
}

TEST(CaptureRules, NoMoveIsALostGame) {
    EXPECT_TRUE(moves_of("W:W16:B6,7,11,1,2").empty());
    EXPECT_TRUE(moves_of("W:W41,46:B32,36,37").empty());
    EXPECT_TRUE(moves_of("B:W20:B").empty());
}

// 137 captures of four pieces: the first 127 found are kept. The kings are tried in the order of their
// squares, so what is missing belongs to the last ones.
TEST(MoveLists, CapturesBeyondTheLimitAreDropped) {
    const Position position =
        position_of("W:WK1,K2,K5,K6,K16,K42,K45,K47,K48,K50:BK7,K10,K11,K13,K14,K21,K24,K30,K35,K40,K41,K44");
    const std::vector<SlowMove> all = slow_captures(position, WHITE);
    ASSERT_EQ(all.size(), 137u);
    GuardedList guarded;
    ASSERT_EQ(generate_captures(position, guarded.list, WHITE), MAX_CAPTURE_MOVES);
    EXPECT_TRUE(guarded.intact());
    const auto from_of = [&](const Move& move) {
        for (const SlowMove& slow : all)
            if (slow.result == move) return slow.from;
        ADD_FAILURE() << "no capture of the position";
        return 0;
    };
    int last_from = 0;
    for (const Move& move : guarded.list) {
        EXPECT_GE(from_of(move), last_from);
        last_from = from_of(move);
    }
    int missing = 0;
    for (const SlowMove& slow : all) {
        if (find_move(guarded.list, slow.result) >= 0) continue;
        ++missing;
        EXPECT_GE(slow.from, last_from);
    }
    EXPECT_EQ(missing, 10);

    // The lines keep the same ones; the array has room for one more, the working line.
    const auto lines = std::make_unique<CaptureLines>();
    MoveList list;
    EXPECT_EQ(generate_capture_lines(position, list, WHITE, *lines), MAX_CAPTURE_MOVES);
    EXPECT_TRUE(std::equal(list.begin(), list.end(), guarded.list.begin(), guarded.list.end()));
}

// Each empty inner square can be reached from four sides, so kings on all of the edge have the most quiet
// moves that there can be. They fill the list to its last entry.
TEST(MoveLists, TheMostQuietMovesFitExactly) {
    for (const char* text : {"B:W:BK1,K2,K3,K4,K5,K6,K15,K16,K25,K26,K35,K36,K45,K46,K47,K48,K49,K50",
                             "W:WK1,K2,K3,K4,K5,K6,K15,K16,K25,K26,K35,K36,K45,K46,K47,K48,K49,K50:B"}) {
        const Position position = position_of(text);
        GuardedList guarded;
        EXPECT_EQ(generate_noncaptures(position, guarded.list, position.side), MAX_MOVES);
        EXPECT_TRUE(guarded.intact());
        std::vector<SlowMove> slow = slow_quiet_moves(position, position.side);
        EXPECT_EQ(slow.size(), size_t{MAX_MOVES});
        for (const SlowMove& move : slow) EXPECT_GE(find_move(guarded.list, move.result), 0);
    }
}

TEST(MoveLists, ManyKingsStayWithinTheRoom) {
    std::mt19937_64 random(22);
    for (int i = 0; i < 3000; ++i) {
        const Position position = random_position(random, {8, 30, 0, 4, 100});
        GuardedList guarded;
        const int count = generate_noncaptures(position, guarded.list, position.side);
        EXPECT_TRUE(guarded.intact());
        EXPECT_EQ(count, static_cast<int>(slow_quiet_moves(position, position.side).size()));
        generate_captures(position, guarded.list, position.side);
        EXPECT_TRUE(guarded.intact());
    }
}

TEST(MoveLists, FindAndRemove) {
    MoveList list;
    generate_moves(START_POSITION, list, WHITE);
    const MoveList before = list;
    EXPECT_EQ(find_move(list, before[4]), 4);
    remove_move(list, 4);
    ASSERT_EQ(list.count, 8);
    EXPECT_EQ(find_move(list, before[4]), -1);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(list[i], before[i < 4 ? i : i + 1]);
    remove_move(list, 7);
    EXPECT_EQ(list.count, 7);
    EXPECT_EQ(find_move(list, before[8]), -1);
    remove_move(list, 0);
    EXPECT_EQ(list[0], before[1]);
    EXPECT_EQ(list.count, 6);
}

TEST(MoveLists, TheSameEveryTime) {
    std::mt19937_64 random(23);
    for (int i = 0; i < 2000; ++i) {
        const Position position = random_position(random, {1, 12, 1, 12, 30});
        MoveList first, second;
        std::fill(second.moves.begin(), second.moves.end(), Move{~0ull, ~0ull, ~0ull});
        generate_moves(position, first, position.side);
        generate_moves(position, second, position.side);
        EXPECT_TRUE(std::equal(first.begin(), first.end(), second.begin(), second.end()));
    }
}
