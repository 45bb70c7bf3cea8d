#include "tools/match_game.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <random>
#include <utility>

#include "core/movegen.h"

namespace {

uint64_t squares(std::initializer_list<int> numbers) {
    uint64_t set = 0;
    for (const int number : numbers) set |= set_of_square(number);
    return set;
}

struct Pieces {
    std::initializer_list<int> men;
    std::initializer_list<int> kings;
};

Position setup(int side, const Pieces& white, const Pieces& black) {
    Position position;
    position.white = squares(white.men) | squares(white.kings);
    position.black = squares(black.men) | squares(black.kings);
    position.king = squares(white.kings) | squares(black.kings);
    position.side = side;
    return position;
}

Position kings_only() { return setup(WHITE, {{}, {48, 49}}, {{}, {2, 3}}); }

// Moves a king without a capture.
bool slide(MatchGame& game, int from, int to, int32_t score = 0) {
    Move move = move_to(game.line.back());
    (game.line.back().side == WHITE ? move.white : move.black) ^= squares({from, to});
    move.king ^= squares({from, to});
    return play_move(game, move, score);
}

GameEnd end_of(const MatchGame& game) {
    int result = 0;
    return game_end(game, true, result);
}

TEST(MatchGame, OnlyLegalMovesArePlayed) {
    MatchGame game;
    begin_game(game, kings_only());
    EXPECT_FALSE(slide(game, 48, 47));
    EXPECT_FALSE(play_move(game, move_to(game.line.back()), 0));
    EXPECT_EQ(game.line.size(), 1u);
    EXPECT_TRUE(slide(game, 48, 42));
    ASSERT_EQ(game.line.size(), 2u);
    EXPECT_EQ(game.line[1].side, BLACK);
    EXPECT_EQ(game.line[1].previous, &game.line[0]);
    EXPECT_EQ(game.line[1].reversible_plies, 1);
}

TEST(MatchGame, WhoCannotMoveHasLost) {
    MatchGame game;
    int result = 0;
    begin_game(game, setup(WHITE, {{6}, {}}, {{1, 11, 17}, {}}));
    EXPECT_EQ(game_end(game, true, result), GAME_NO_MOVES);
    EXPECT_EQ(result, 1);
    begin_game(game, setup(BLACK, {{6}, {}}, {{}, {}}));
    EXPECT_EQ(game_end(game, true, result), GAME_NO_MOVES);
    EXPECT_EQ(result, -1);
}

TEST(MatchGame, TheThirdOccurrenceIsADraw) {
    MatchGame game;
    begin_game(game, kings_only());
    for (int round = 0; round < 2; ++round)
        for (const auto& [from, to] : {std::pair{48, 42}, {2, 7}, {42, 48}, {7, 2}}) {
            EXPECT_EQ(end_of(game), GAME_GOES_ON);
            ASSERT_TRUE(slide(game, from, to));
        }
    int result = 1;
    EXPECT_EQ(game_end(game, true, result), GAME_THIRD_OCCURRENCE);
    EXPECT_EQ(result, 0);
}

TEST(MatchGame, TheSidesToMoveTellPositionsApart) {
    MatchGame game;
    begin_game(game, kings_only());
    // The pieces stand so for the second time with black to move, then for the third with white.
    for (const auto& [from, to] : {std::pair{48, 42},
                                   {2, 7},
                                   {42, 37},
                                   {7, 2},
                                   {37, 48},
                                   {2, 7},
                                   {48, 42},
                                   {7, 11},
                                   {42, 48},
                                   {11, 2}})
        ASSERT_TRUE(slide(game, from, to)) << from;
    EXPECT_TRUE(same_pieces(game.line.back(), game.line.front()));
    EXPECT_TRUE(same_pieces(game.line[5], game.line.front()));
    EXPECT_EQ(end_of(game), GAME_GOES_ON);
}

TEST(MatchGame, SmallEndingsHaveTheirLimits) {
    const auto limit = [](const Pieces& one, const Pieces& other) {
        const int white = small_ending_limit(setup(WHITE, one, other));
        EXPECT_EQ(small_ending_limit(setup(WHITE, other, one)), white);
        return white;
    };
    const Pieces king = {{}, {25}};
    EXPECT_EQ(limit(king, {{}, {26}}), MATCH_TWO_PIECES_PLIES);
    EXPECT_EQ(limit(king, {{}, {26, 16}}), MATCH_TWO_PIECES_PLIES);
    EXPECT_EQ(limit(king, {{31}, {26}}), MATCH_TWO_PIECES_PLIES);
    EXPECT_EQ(limit(king, {{}, {6, 16, 26}}), MATCH_THREE_PIECES_PLIES);
    EXPECT_EQ(limit(king, {{31}, {16, 26}}), MATCH_THREE_PIECES_PLIES);
    EXPECT_EQ(limit(king, {{31, 32}, {26}}), MATCH_THREE_PIECES_PLIES);
    EXPECT_EQ(limit(king, {{}, {6, 16, 26, 36}}), 0);
    EXPECT_EQ(limit(king, {{31}, {}}), 0);
    EXPECT_EQ(limit(king, {{31, 32, 33}, {}}), 0);
    EXPECT_EQ(limit({{25}, {}}, {{31}, {26}}), 0);
    EXPECT_EQ(limit({{}, {25, 15}}, {{}, {26, 36}}), 0);
    EXPECT_EQ(limit({{15}, {25}}, {{}, {26}}), MATCH_TWO_PIECES_PLIES);
}

TEST(MatchGame, LongGamesAreDrawn) {
    MatchGame game;
    begin_game(game, START_POSITION);
    game.line.resize(MATCH_MAX_PLIES, START_POSITION);
    EXPECT_EQ(end_of(game), GAME_GOES_ON);
    game.line.push_back(START_POSITION);
    EXPECT_EQ(end_of(game), GAME_TOO_LONG);
}

// Plays the scores with alternating king moves that do not repeat; how the game then stands.
GameEnd end_after_scores(const std::vector<int32_t>& scores, bool adjudicate, int& result) {
    MatchGame game;
    begin_game(game, setup(WHITE, {{}, {48, 49}}, {{}, {2, 3}}));
    constexpr std::pair<int, int> SLIDES[] = {{48, 42}, {2, 7},   {42, 37}, {7, 11},
                                              {37, 31}, {11, 16}, {31, 26}, {3, 8}};
    for (size_t i = 0; i < scores.size(); ++i)
        EXPECT_TRUE(slide(game, SLIDES[i].first, SLIDES[i].second, scores[i])) << i;
    return game_end(game, adjudicate, result);
}

TEST(MatchGame, WhatBothHaveLongSeenIsWon) {
    int result = 0;
    EXPECT_EQ(end_after_scores({1000, 1500, 4000, 1000, 1100}, true, result), GAME_GOES_ON);
    EXPECT_EQ(end_after_scores({1000, 1500, 4000, 1000, 1100, 1000}, true, result), GAME_ADJUDICATED);
    EXPECT_EQ(result, 1);
    EXPECT_EQ(end_after_scores({-1000, -1500, -4000, -1000, -1100, -1000}, true, result), GAME_ADJUDICATED);
    EXPECT_EQ(result, -1);
    EXPECT_EQ(end_after_scores({-1000, -1500, -4000, -1000, -1100, -1000}, false, result), GAME_GOES_ON);
    EXPECT_EQ(end_after_scores({1000, 1500, 4000, 999, 1100, 1000, 2000}, true, result), GAME_GOES_ON);
    EXPECT_EQ(end_after_scores({1000, -1000, 1000, -1000, 1000, -1000, 1000}, true, result), GAME_GOES_ON);
    EXPECT_EQ(end_after_scores({-1000, 2000, 2000, 2000, 2000, 2000, 2000}, true, result), GAME_ADJUDICATED);
    EXPECT_EQ(result, 1);
    EXPECT_EQ(end_after_scores({-1000, 2000, 2000, 2000, 2000, 2000}, true, result), GAME_GOES_ON);
}

// The rules again, each from the whole game.
GameEnd slow_end(const std::vector<Position>& line) {
    const Position& last = line.back();
    MoveList list;
    if (generate_moves(last, list, last.side) == 0) return GAME_NO_MOVES;
    int occurrences = 0;
    for (const Position& position : line)
        if (same_pieces(position, last) && position.side == last.side) ++occurrences;
    if (occurrences >= 3) return GAME_THIRD_OCCURRENCE;
    const auto men = [](const Position& p, int side) { return pieces_of(p, side) & ~p.king; };
    size_t king_plies = 0, ending_plies = 0;
    for (size_t i = line.size() - 1; i > 0; --i, ++king_plies)
        if (men(line[i], WHITE) != men(line[i - 1], WHITE) ||
            men(line[i], BLACK) != men(line[i - 1], BLACK) ||
            bit_count(line[i].king) != bit_count(line[i - 1].king))
            break;
    if (king_plies >= 50) return GAME_KING_MOVES;
    const int limit = small_ending_limit(last);
    for (size_t i = line.size() - 1; i > 0 && small_ending_limit(line[i - 1]) == limit; --i) ++ending_plies;
    if (limit > 0 && ending_plies >= static_cast<size_t>(limit)) return GAME_SMALL_ENDING;
    return line.size() - 1 >= 300 ? GAME_TOO_LONG : GAME_GOES_ON;
}

// Few pieces on random squares.
Position random_ending(std::mt19937& random) {
    for (;;) {
        Position position;
        for (const int side : {BLACK, WHITE}) {
            const int count = 1 + static_cast<int>(random() % 3);
            for (int i = 0; i < count; ++i) {
                const uint64_t square = mask_of_square[random() % SQUARES];
                (side == BLACK ? position.black : position.white) |= square;
                if (random() % 3 != 0) position.king |= square;
            }
        }
        position.side = static_cast<int>(random() % 2);
        if (is_legal_setup(position)) return position;
    }
}

// The moves of kings that neither give a capture nor lead back to an earlier position.
std::vector<Move> harmless_moves(const MatchGame& game) {
    const Position& last = game.line.back();
    MoveList list;
    generate_moves(last, list, last.side);
    std::vector<Move> moves;
    std::copy_if(list.begin(), list.end(), std::back_inserter(moves), [&](const Move& move) {
        const Position next = position_after(move, last.side ^ 1);
        const bool seen = std::any_of(game.line.begin(), game.line.end(),
                                      [&](const Position& before) { return same_pieces(before, next); });
        return !seen && bit_count(next.king) == bit_count(last.king) &&
               ((next.black | next.white) & ~next.king) == ((last.black | last.white) & ~last.king) &&
               !has_capture(next, next.side);
    });
    return moves;
}

TEST(MatchGame, FiftyPliesOfKingsAreADraw) {
    std::mt19937 random(4);
    int long_games = 0;
    for (int i = 0; i < 100; ++i) {
        MatchGame game;
        begin_game(game, setup(WHITE, {{36}, {48, 49}}, {{15}, {2, 3}}));
        while (game.line.size() <= 50) {
            ASSERT_EQ(end_of(game), GAME_GOES_ON);
            const std::vector<Move> moves = harmless_moves(game);
            if (moves.empty()) break;
            ASSERT_TRUE(play_move(game, moves[random() % moves.size()], 0));
        }
        if (game.line.size() <= 50) continue;
        ++long_games;
        EXPECT_EQ(end_of(game), GAME_KING_MOVES);
        EXPECT_EQ(slow_end(game.line), GAME_KING_MOVES);
    }
    EXPECT_GT(long_games, 10);
}

TEST(MatchGame, AgreesWithASlowReferee) {
    std::mt19937 random(3);
    std::array<int, GAME_ENDS> ends{};
    for (int i = 0; i < 3000; ++i) {
        MatchGame game;
        begin_game(game, i < 200 ? START_POSITION : random_ending(random));
        int result = 0;
        for (;;) {
            const GameEnd end = game_end(game, true, result);
            ASSERT_EQ(end, slow_end(game.line)) << "game " << i << " ply " << game.line.size() - 1;
            if (end != GAME_GOES_ON) {
                ++ends[end];
                break;
            }
            MoveList list;
            generate_moves(game.line.back(), list, game.line.back().side);
            // Often back and forth, so that positions come again.
            const Position& last = game.line.back();
            int index = static_cast<int>(random() % static_cast<uint32_t>(list.count));
            if (last.reversible_plies > 0 && random() % 4 != 0)
                for (int k = 0; k < list.count; ++k)
                    if (pieces_of(list[k], last.side) == pieces_of(*last.previous, last.side)) index = k;
            if (last.reversible_plies > 1 && random() % 2 != 0)
                for (int k = 0; k < list.count; ++k)
                    if (pieces_of(list[k], last.side) == pieces_of(*last.previous->previous, last.side))
                        index = k;
            ASSERT_TRUE(play_move(game, list[index], 0));
        }
    }
    for (const GameEnd end : {GAME_NO_MOVES, GAME_THIRD_OCCURRENCE, GAME_SMALL_ENDING})
        EXPECT_GT(ends[end], 10) << end;
}

}  // namespace
