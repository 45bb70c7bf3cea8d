#include "core/ballots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/checksum.h"
#include "core/movegen.h"

namespace {

struct TestLine {
    Position position = START_POSITION;
    std::string text;
};

// All lines of so many moves, in generation order, with full move texts.
std::vector<TestLine> all_lines(int moves) {
    std::vector<TestLine> lines(1);
    for (int ply = 0; ply < moves; ++ply) {
        std::vector<TestLine> longer;
        for (const TestLine& line : lines) {
            MoveList list;
            generate_moves(line.position, list, line.position.side);
            for (const Move& move : list) {
                char text[MOVE_TEXT_SIZE];
                full_move_text(line.position, move, line.position.side, text);
                longer.push_back({position_after(move, line.position.side ^ 1),
                                  line.text + (line.text.empty() ? "" : " ") + text});
            }
        }
        lines = longer;
    }
    return lines;
}

// The text of a line in the form in which the left-out lines are kept.
std::string without_captures(std::string text) {
    std::replace(text.begin(), text.end(), 'x', '-');
    return text;
}

std::string text_of(const BallotMove& move) {
    return std::to_string(move.from) + "-" + std::to_string(move.to);
}

std::vector<std::string> left_out_texts() {
    std::vector<std::string> texts;
    for (const LeftOutLines& lines : left_out_lines)
        for (const BallotMove& third : lines.thirds)
            if (third.from != 0)
                texts.push_back(text_of(lines.first) + " " + text_of(lines.second) + " " + text_of(third));
    return texts;
}

std::vector<Ballot> all_ballots(int moves) {
    std::vector<Ballot> ballots;
    for (Ballot ballot; find_ballot(moves, static_cast<int>(ballots.size()), ballot);)
        ballots.push_back(ballot);
    return ballots;
}

void expect_all_but(int moves, const std::set<std::string>& left_out) {
    const std::vector<Ballot> ballots = all_ballots(moves);
    size_t next = 0;
    for (const TestLine& line : all_lines(moves)) {
        if (left_out.contains(without_captures(line.text))) continue;
        ASSERT_LT(next, ballots.size());
        EXPECT_EQ(ballots[next].text.data(), line.text);
        EXPECT_TRUE(same_pieces(ballots[next].position, line.position)) << line.text;
        EXPECT_EQ(ballots[next].position.side, line.position.side);
        ++next;
    }
    EXPECT_EQ(next, ballots.size());
}

TEST(Ballots, ThereAreSoManyLinesAndBallots) {
    EXPECT_EQ(all_lines(2).size(), 81u);
    EXPECT_EQ(all_lines(3).size(), 658u);
    EXPECT_EQ(ballot_count(2), 79);
    EXPECT_EQ(ballot_count(3), 494);
    EXPECT_EQ(all_ballots(2).size(), 79u);
    EXPECT_EQ(all_ballots(3).size(), 494u);
    for (const int moves : {-1, 0, 1, 4}) EXPECT_EQ(ballot_count(moves), 0);
}

TEST(Ballots, TwoMovesLeaveOutTwoLines) { expect_all_but(2, {"31-27 16-21", "32-27 16-21"}); }

TEST(Ballots, ThreeMovesLeaveOutTheTable) {
    const std::vector<std::string> texts = left_out_texts();
    expect_all_but(3, {texts.begin(), texts.end()});
}

// Both sides of a match number the ballots alike only if no line of the table ever changes.
TEST(Ballots, TheTextsAreTheOnesThatTheyAlwaysWere) {
    for (const auto& [moves, checksum] : {std::pair{2, 3995124388u}, {3, 2708737470u}}) {
        std::string texts;
        for (const Ballot& ballot : all_ballots(moves)) texts.append(ballot.text.data()).append("\n");
        EXPECT_EQ(crc32(texts.data(), texts.size()), checksum) << moves;
    }
}

TEST(Ballots, TheTableHoldsRealLinesOnce) {
    const std::vector<std::string> texts = left_out_texts();
    EXPECT_EQ(texts.size(), 164u);
    EXPECT_EQ(std::set<std::string>(texts.begin(), texts.end()).size(), 164u);
    std::set<std::string> lines;
    for (const TestLine& line : all_lines(3)) lines.insert(without_captures(line.text));
    for (const std::string& text : texts) EXPECT_TRUE(lines.contains(text)) << text;
    // A group stands once, and nothing follows its last line.
    std::set<std::string> groups;
    for (const LeftOutLines& group : left_out_lines) {
        EXPECT_TRUE(groups.insert(text_of(group.first) + " " + text_of(group.second)).second);
        EXPECT_TRUE(std::is_partitioned(group.thirds.begin(), group.thirds.end(),
                                        [](const BallotMove& move) { return move.from != 0; }));
    }
}

TEST(Ballots, TheMoversFollowFromTheMoves) {
    for (const Ballot& ballot : all_ballots(2)) EXPECT_EQ(ballot.position.side, WHITE);
    for (const Ballot& ballot : all_ballots(3)) EXPECT_EQ(ballot.position.side, BLACK);
    for (const int moves : {2, 3}) {
        std::set<std::string> texts;
        for (const Ballot& ballot : all_ballots(moves)) {
            EXPECT_TRUE(is_legal_setup(ballot.position));
            EXPECT_EQ(ballot.position.previous, nullptr);
            EXPECT_TRUE(texts.insert(ballot.text.data()).second) << ballot.text.data();
        }
    }
}

TEST(Ballots, TextsAreTheMoves) {
    const std::vector<Ballot> two = all_ballots(2), three = all_ballots(3);
    EXPECT_STREQ(two.front().text.data(), "31-27 17-22");
    EXPECT_STREQ(two.back().text.data(), "35-30 20-24");
    EXPECT_TRUE(std::any_of(three.begin(), three.end(), [](const Ballot& ballot) {
        return std::string(ballot.text.data()) == "32-28 19-23 28x19";
    }));
}

TEST(Ballots, BeyondTheLastThereIsNone) {
    Ballot ballot;
    ASSERT_TRUE(find_ballot(2, 5, ballot));
    const Ballot before = ballot;
    for (const auto& [moves, index] : {std::pair{2, 79}, {2, -1}, {3, 494}, {3, -1}, {1, 0}, {4, 0}}) {
        EXPECT_FALSE(find_ballot(moves, index, ballot));
        EXPECT_TRUE(same_pieces(ballot.position, before.position));
        EXPECT_STREQ(ballot.text.data(), before.text.data());
    }
    EXPECT_TRUE(find_ballot(2, 78, ballot));
    EXPECT_TRUE(find_ballot(3, 493, ballot));
}

}  // namespace
