#include "tools/match.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>

#include "core/ballots.h"
#include "core/movegen.h"
#include "tools/match_protocol.h"

namespace {

using Sets = std::array<uint64_t, 4>;

Sets sets_of(const Position& position) {
    return {position.black, position.white, position.king, static_cast<uint64_t>(position.side)};
}

std::vector<Sets> sets_of(const std::vector<Position>& positions) {
    std::vector<Sets> sets;
    for (const Position& position : positions) sets.push_back(sets_of(position));
    return sets;
}

std::set<Sets> ballot_sets(int moves) {
    std::set<Sets> sets;
    Ballot ballot;
    for (int i = 0; find_ballot(moves, i, ballot); ++i) sets.insert(sets_of(ballot.position));
    return sets;
}

uint64_t squares(std::initializer_list<int> numbers) {
    uint64_t set = 0;
    for (const int number : numbers) set |= set_of_square(number);
    return set;
}

TEST(MatchStarts, TheBallotsComeFirstAndOnce) {
    for (const int moves : {2, 3}) {
        const std::set<Sets> ballots = ballot_sets(moves);
        const auto count = static_cast<int64_t>(ballots.size());
        const std::vector<Sets> starts = sets_of(match_starts(moves, 1, count));
        EXPECT_EQ(std::set<Sets>(starts.begin(), starts.end()), ballots);
    }
    EXPECT_EQ(ballot_sets(2).size(), 79u);
}

TEST(MatchStarts, NoTwoAreAlikeAndAllAreEven) {
    for (const int moves : {2, 3}) {
        const std::set<Sets> ballots = ballot_sets(moves);
        const std::vector<Position> starts = match_starts(moves, 9, 4000);
        ASSERT_EQ(starts.size(), 4000u);
        std::set<Sets> seen;
        for (size_t i = 0; i < starts.size(); ++i) {
            EXPECT_TRUE(seen.insert(sets_of(starts[i])).second) << i;
            EXPECT_EQ(ballots.contains(sets_of(starts[i])), i < ballots.size()) << i;
            EXPECT_TRUE(is_legal_setup(starts[i]));
            EXPECT_TRUE(i < ballots.size() || is_even(starts[i])) << i;
        }
    }
}

TEST(MatchStarts, TheSeedDecidesThem) {
    const std::vector<Sets> starts = sets_of(match_starts(3, 5, 600));
    EXPECT_EQ(sets_of(match_starts(3, 5, 600)), starts);
    EXPECT_NE(sets_of(match_starts(3, 6, 600)), starts);
    // A shorter match is the beginning of a longer one.
    const std::vector<Sets> fewer = sets_of(match_starts(3, 5, 400));
    EXPECT_TRUE(std::equal(fewer.begin(), fewer.end(), starts.begin()));
    EXPECT_TRUE(match_starts(3, 5, 0).empty());
    EXPECT_EQ(sets_of(match_starts(0, 5, 3)), sets_of(std::vector<Position>(3, START_POSITION)));
}

TEST(MatchStarts, EndingsAreEvenAndQuietAndAllDifferent) {
    for (const int pieces : {4, 6, 8}) {
        const std::vector<Position> starts = ending_starts(pieces, 3, 500);
        ASSERT_EQ(starts.size(), 500u);
        std::set<Sets> seen;
        int black_to_move = 0, with_kings = 0;
        for (const Position& p : starts) {
            EXPECT_TRUE(is_legal_setup(p) && is_even(p));
            EXPECT_TRUE(!has_capture(p, BLACK) && !has_capture(p, WHITE));
            EXPECT_EQ(bit_count(p.black), pieces / 2);
            EXPECT_EQ(bit_count(p.white), pieces / 2);
            EXPECT_EQ(bit_count(p.black & p.king), bit_count(p.white & p.king));
            MoveList list;
            EXPECT_GT(generate_moves(p, list, p.side), 0);
            EXPECT_TRUE(seen.insert(sets_of(p)).second);
            black_to_move += p.side == BLACK;
            with_kings += p.king != 0;
        }
        EXPECT_GT(black_to_move, 150);
        EXPECT_LT(black_to_move, 350);
        EXPECT_GT(with_kings, 100);
        EXPECT_LT(with_kings, 400);
        EXPECT_EQ(sets_of(ending_starts(pieces, 3, 500)), sets_of(starts));
        EXPECT_NE(sets_of(ending_starts(pieces, 4, 500)), sets_of(starts));
    }
}

TEST(MatchStarts, EvenMeansAfterTheCaptures) {
    EXPECT_TRUE(is_even(START_POSITION));
    Position position;
    position.side = WHITE;
    position.white = squares({32});
    position.black = squares({28, 1});
    EXPECT_TRUE(is_even(position));  // white takes one and both have one
    position.black = squares({28, 18});
    EXPECT_FALSE(is_even(position));  // white takes both
    position.black = squares({28, 19, 14});
    position.white = squares({32, 47});
    EXPECT_FALSE(is_even(position));  // white takes one, then black takes back
    position.white = squares({32, 47, 48});
    EXPECT_TRUE(is_even(position));
    position.black = squares({1});
    position.white = position.king = squares({50});
    EXPECT_FALSE(is_even(position));  // a king is more than a man
}

// Players that move at random but alike for the same seed, and can be made to fail.
struct ToyPlayers {
    std::mt19937 random{1};
    std::vector<std::string> calls;
    int fails_at = -1;  // call number
    int cheats_at = -1;
    int asked = 0;

    MatchPlayers table() {
        return {this,
                [](void* context, int player) {
                    auto& self = *static_cast<ToyPlayers*>(context);
                    self.calls.push_back(std::string("new ") + "AB"[player]);
                    return true;
                },
                [](void* context, int player, const Position& position, PlayerAnswer& answer) {
                    auto& self = *static_cast<ToyPlayers*>(context);
                    if (self.calls.size() < 100)
                        self.calls.push_back(std::string(1, "AB"[player]) +
                                             (position.side == WHITE ? " white" : " black"));
                    if (self.asked == self.fails_at) return false;
                    MoveList list;
                    generate_moves(position, list, position.side);
                    const auto index = static_cast<int>(self.random() % static_cast<uint32_t>(list.count));
                    answer = {list[index], 0, 3 + player, 10u + static_cast<unsigned>(player), 0.5};
                    if (self.asked == self.cheats_at) answer.move.white ^= 1;
                    ++self.asked;
                    return true;
                }};
    }
};

// White takes the last piece.
Position white_wins_at_once() {
    Position position;
    position.white = squares({32});
    position.black = squares({28});
    position.side = WHITE;
    return position;
}

TEST(MatchPair, BothPlayersHaveEachColour) {
    ToyPlayers toys;
    PairReport report;
    int culprit = -1;
    ASSERT_EQ(play_pair(white_wins_at_once(), toys.table(), true, report, culprit), PAIR_PLAYED);
    EXPECT_EQ(toys.calls,
              (std::vector<std::string>{"new A", "new B", "A white", "new A", "new B", "B white"}));
    EXPECT_EQ(report.points, (std::array<int, 2>{2, 0}));
    EXPECT_EQ(report.ends, (std::array<GameEnd, 2>{GAME_NO_MOVES, GAME_NO_MOVES}));
    EXPECT_EQ(report.plies, 2);
    for (size_t player = 0; player < 2; ++player) {
        EXPECT_EQ(report.work[player].moves, 1);
        EXPECT_EQ(report.work[player].depth, 3 + static_cast<int>(player));
        EXPECT_EQ(report.work[player].nodes, 10u + player);
        EXPECT_EQ(report.work[player].seconds, 0.5);
        PlayerWork sum = report.work[player];
        add_work(sum, {2, 20, 200, 4});
        EXPECT_EQ(sum.moves, 3);
        EXPECT_EQ(sum.depth, 23 + static_cast<int>(player));
        EXPECT_EQ(sum.nodes, 210u + player);
        EXPECT_EQ(sum.seconds, 4.5);
    }
    // With black to move and win, the player with black has the points.
    Position mirrored = white_wins_at_once();
    std::swap(mirrored.white, mirrored.black);
    mirrored.side = BLACK;
    ASSERT_EQ(play_pair(mirrored, toys.table(), true, report, culprit), PAIR_PLAYED);
    EXPECT_EQ(report.points, (std::array<int, 2>{0, 2}));
}

TEST(MatchPair, WholeGamesAreSummedUp) {
    ToyPlayers toys;
    PairReport report;
    int culprit = -1;
    for (const Position& start : match_starts(3, 1, 40)) {
        toys.asked = 0;
        ASSERT_EQ(play_pair(start, toys.table(), true, report, culprit), PAIR_PLAYED);
        EXPECT_EQ(report.plies, toys.asked);
        EXPECT_EQ(report.work[0].moves + report.work[1].moves, toys.asked);
        EXPECT_EQ(report.work[1].depth, 4 * report.work[1].moves);
        for (size_t game = 0; game < 2; ++game) {
            EXPECT_NE(report.ends[game], GAME_GOES_ON);
            EXPECT_EQ(report.points[game] != 1, report.ends[game] == GAME_NO_MOVES);
        }
    }
}

TEST(MatchPair, FailuresAreTold) {
    for (const int at : {0, 1, 6, 7}) {
        PairReport report;
        int culprit = -1;
        ToyPlayers toys;
        toys.fails_at = at;
        EXPECT_EQ(play_pair(START_POSITION, toys.table(), true, report, culprit), PAIR_PLAYER_FAILED);
        EXPECT_EQ(culprit, at % 2);  // A has white
        ToyPlayers cheats;
        cheats.cheats_at = at;
        EXPECT_EQ(play_pair(START_POSITION, cheats.table(), true, report, culprit), PAIR_ILLEGAL_MOVE);
        EXPECT_EQ(culprit, at % 2);
    }
}

void expect_same_line(const Position& position, const std::vector<Position>& read) {
    ASSERT_EQ(static_cast<int>(read.size()), position.reversible_plies + 1);
    const Position* there = &position;
    for (const Position* here = &read.back(); here; here = here->previous, there = there->previous) {
        EXPECT_TRUE(same_pieces(*here, *there));
        EXPECT_EQ(here->side, there->side);
        EXPECT_EQ(here->reversible_plies, there->reversible_plies);
    }
}

TEST(MatchProtocol, PositionsArriveWithTheirHistory) {
    std::mt19937 random(2);
    int longest = 0;
    for (int i = 0; i < 60; ++i) {
        MatchGame game;
        begin_game(game, START_POSITION);
        int result = 0;
        while (game_end(game, true, result) == GAME_GOES_ON) {
            std::vector<Position> read;
            ASSERT_TRUE(read_go_line(go_line(game.line.back()), read));
            expect_same_line(game.line.back(), read);
            longest = std::max(longest, game.line.back().reversible_plies);
            MoveList list;
            generate_moves(game.line.back(), list, game.line.back().side);
            play_move(game, list[static_cast<int>(random() % static_cast<uint32_t>(list.count))], 0);
        }
    }
    EXPECT_GT(longest, 5);
}

TEST(MatchProtocol, WrongQuestionsAreRefused) {
    std::vector<Position> read;
    ASSERT_TRUE(read_go_line("go 1 1 2000000000 0", read));
    EXPECT_EQ(read.back().side, WHITE);
    EXPECT_EQ(read.back().white, 0x2000000000u);
    for (const char* line :
         {"", "go", "go 1", "stop 1 1 2000000000 0", "go 2 1 2000000000 0", "go -1 1 2000000000 0",
          "go 1 1 2000000000", "go 1 1 2000000000 0 1", "go 1 1 2000000000 x", "go 1 1 1 0", "go 1 400 1 0",
          "go 1 1 2000000000 0 1 1 1"})
        EXPECT_FALSE(read_go_line(line, read)) << line;
    std::string endless = "go 1";
    for (int i = 0; i < 5000; ++i) endless += " 1 2000000000 0";
    EXPECT_FALSE(read_go_line(endless, read));
}

TEST(MatchProtocol, AnswersArriveWhole) {
    const PlayerAnswer sent{{BLACK_START, WHITE_START, 0}, -3999, 23, 12345678901234u, 1.25};
    PlayerAnswer read{};
    ASSERT_TRUE(read_move_line(move_line(sent), read));
    EXPECT_EQ(read.move, sent.move);
    EXPECT_EQ(read.score, sent.score);
    EXPECT_EQ(read.depth, sent.depth);
    EXPECT_EQ(read.nodes, sent.nodes);
    EXPECT_EQ(read.seconds, sent.seconds);
    for (const char* line : {"", "move", "move 1 2 0 5 6 7", "move 1 2 0 5 6 7 8 9", "go 1 2 0 5 6 7 8",
                             "move 1 2 g 5 6 7 8", "move 1 2 0 5 6 7 x"})
        EXPECT_FALSE(read_move_line(line, read)) << line;
    EXPECT_EQ(read.score, sent.score);  // what was refused changes nothing
    EXPECT_TRUE(read_move_line("move 1 2 0 5 6 7 8", read));
    EXPECT_EQ(read.score, 5);
}

}  // namespace
