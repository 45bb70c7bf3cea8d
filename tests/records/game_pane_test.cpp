#include "records/game_pane.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "positions.h"
#include "records/pdn_write.h"

namespace {

struct Pane {
    std::string text;
    TextRange current;

    std::string coloured() const {
        return text.substr(static_cast<size_t>(current.begin),
                           static_cast<size_t>(current.end - current.begin));
    }
};

Pane pane_of(const std::vector<ReplayState>& history, int current_entry, size_t size = GAME_PANE_SIZE) {
    std::vector<char> room(size);
    Pane pane;
    const int length = game_pane_text(room.data(), size, history, current_entry, pane.current);
    pane.text = room.data();
    EXPECT_EQ(static_cast<size_t>(length), pane.text.size());
    return pane;
}

std::string pane_text(const std::string& game) {
    const std::vector<ReplayState> history = history_of(game);
    return pane_of(history, static_cast<int>(history.size())).text;
}

TEST(PaneForm, TwoMovesALine) {
    EXPECT_EQ(pane_text("32-28 19-23 28x19"), "1. 32-28  19-23  \n2. 28x19");
    EXPECT_EQ(pane_text("32-28 19-23 28x19 14x23"), "1. 32-28  19-23  \n2. 28x19  14x23\n");
    EXPECT_EQ(pane_text("32-28"), "1. 32-28");
}

TEST(PaneForm, WithoutMoves) {
    EXPECT_EQ(pane_of({}, 0).text, "");
    EXPECT_EQ(pane_of({ReplayState{}}, 1).text, "");
    EXPECT_EQ(pane_of({state_of("W:W31:B1", 1)}, 1).text, "FEN\n");
}

TEST(PaneForm, ASetStart) {
    EXPECT_EQ(pane_text("[FEN \"W:W31:B1\"] 31-27 1-6"), "FEN\n1. 31-27  1-6\n");
    EXPECT_EQ(pane_text("[FEN \"B:W31:B1\"] 1-6 31-27 6-11"), "FEN\n1. ... 1-6  \n2. 31-27  6-11\n");
}

TEST(PaneForm, ASetPositionWithinHasItsLine) {
    EXPECT_EQ(pane_text("32-28 /FEN \"W:W31:B1\"/ 31-27 1-6"), "1. 32-28  \nFEN\n2. 31-27  1-6\n");
    EXPECT_EQ(pane_text("32-28 19-23 /FEN \"B:W31:B1\"/ 1-6 31-27"),
              "1. 32-28  19-23  \nFEN\n2. ... 1-6  \n3. 31-27");
    EXPECT_EQ(pane_text("32-28 /FEN \"W:W31:B1\"/ /FEN \"B:W31:B1\"/"), "1. 32-28  \nFEN\nFEN\n");
}

TEST(PaneForm, TheCurrentMoveIsTheRange) {
    const std::vector<ReplayState> history = history_of("32-28 19-23 28x19 14x23");
    EXPECT_EQ(pane_of(history, 1).current, TextRange{});
    EXPECT_EQ(pane_of(history, 2).coloured(), "1. 32-28  ");
    EXPECT_EQ(pane_of(history, 3).coloured(), "19-23  ");
    EXPECT_EQ(pane_of(history, 4).coloured(), "2. 28x19  ");
    EXPECT_EQ(pane_of(history, 5).coloured(), "14x23") << "the last move has neither blanks nor its newline";
    for (const int none : {-1, 0, 6, 1000}) EXPECT_EQ(pane_of(history, none).current, TextRange{}) << none;
}

TEST(PaneForm, ASetPositionIsTheRangeWithItsNewline) {
    const std::vector<ReplayState> set_start = history_of("[FEN \"B:W31:B1\"] 1-6 31-27");
    EXPECT_EQ(pane_of(set_start, 1).coloured(), "FEN\n");
    EXPECT_EQ(pane_of(set_start, 2).coloured(), "1. ... 1-6  ");
    const std::vector<ReplayState> within = history_of("32-28 /FEN \"W:W31:B1\"/ 31-27");
    EXPECT_EQ(pane_of(within, 3).coloured(), "FEN\n");
    EXPECT_EQ(pane_of(within, 3).current, (TextRange{11, 15}));
    EXPECT_EQ(pane_of(within, 4).coloured(), "2. 31-27");
}

TEST(PaneForm, TheRepeatedPositionOfABrokenGame) {
    std::vector<ReplayState> history = history_of("32-28 19-23");
    history.push_back(history.back());
    history.back().setup_flag = 0;
    EXPECT_EQ(pane_of(history, 4).text, "1. 32-28  19-23  \n2. ");
    EXPECT_EQ(pane_of(history, 4).coloured(), "2. ");
    history = history_of("32-28");
    history.push_back(history.back());
    EXPECT_EQ(pane_of(history, 3).text, "1. 32-28  \n");
    EXPECT_EQ(pane_of(history, 3).coloured(), "");
}

TEST(PaneForm, PositionsWithTwoPiecesOnASquareHaveNoMoves) {
    std::vector<ReplayState> history = {state_of("W:W31,32,K40:B31,32,K40", 1)};
    history.push_back(history[0]);
    history[1].setup_flag = 0;
    EXPECT_EQ(pane_of(history, 2).text, "FEN\n1. ");
    char text[GAME_TEXT_SIZE];
    game_to_pdn_text(text, sizeof text, history, "", "", "", "", "*", "\n");
    EXPECT_NE(std::strstr(text, "]\n1.  *\n\n"), nullptr) << text;
    EXPECT_FALSE(pdn_move_node_from_positions(history[0].position, history[1].position, WHITE));
}

TEST(PaneForm, IsCutToItsRoom) {
    const std::vector<ReplayState> history = history_of("[FEN \"B:W31:B1\"] 1-6 31-27 6-11");
    const std::string whole = pane_of(history, 2).text;
    for (size_t size = 1; size <= whole.size() + 2; ++size) {
        std::string room(whole.size() + 3, '#');
        TextRange range;
        const int length = game_pane_text(room.data(), size, history, 2, range);
        ASSERT_EQ(static_cast<size_t>(length), std::min(size - 1, whole.size()));
        EXPECT_EQ(room.substr(0, static_cast<size_t>(length)), whole.substr(0, static_cast<size_t>(length)));
        EXPECT_EQ(room[static_cast<size_t>(length)], '\0');
        EXPECT_EQ(room.substr(size), std::string(room.size() - size, '#')) << size;
        EXPECT_LE(range.begin, range.end);
        EXPECT_LE(range.end, length);
    }
    char untouched = '#';
    TextRange range{3, 4};
    EXPECT_EQ(game_pane_text(&untouched, 0, history, 2, range), 0);
    EXPECT_EQ(untouched, '#');
    EXPECT_EQ(range, TextRange{});
}

TEST(PaneForm, A800EntryGameOfQuietMovesFits) {
    std::string game = "[FEN \"W:WK47:BK15\"]";
    for (int i = 0; i < 199; ++i) game += " 47-36 15-10 36-47 10-15";
    const std::vector<ReplayState> history = history_of(game + " 47-36 15-10 36-47");
    ASSERT_EQ(history.size(), 800u);
    const Pane pane = pane_of(history, 800);
    EXPECT_EQ(pane.coloured(), "400. 36-47");
    EXPECT_EQ(pane.text.substr(pane.text.size() - 10), "400. 36-47");
}

// The rules said a second time: what each step prints, and where lines end.
std::string slow_step(const std::vector<ReplayState>& history, size_t step, int& number) {
    const ReplayState& before = history[step];
    if (history[step + 1].setup_flag) return "FEN\n";
    std::string text;
    if (before.setup_flag && before.side == BLACK) text = std::to_string(++number) + ". ... ";
    if (before.side == WHITE) text = std::to_string(++number) + ". ";
    const PdnGame node =
        pdn_move_node_from_positions(before.position, history[step + 1].position, before.side);
    if (node) {
        text += std::to_string(node->token.from);
        if (node->token.path) {
            for (int i = 2; i <= node->token.path[0]; ++i)
                text += "x" + std::to_string(node->token.path[static_cast<size_t>(i)]);
        } else {
            text += (node->token.is_capture ? "x" : "-") + std::to_string(node->token.to);
        }
    }
    return step + 2 < history.size() ? text + "  " : text;
}

void expect_pane_of_slow_version(const std::vector<ReplayState>& history) {
    std::string whole = history[0].setup_flag ? "FEN\n" : "";
    std::vector<TextRange> ranges = {{0, static_cast<int>(whole.size())}};
    int number = 0;
    for (size_t step = 0; step + 1 < history.size(); ++step) {
        const int begin = static_cast<int>(whole.size());
        whole += slow_step(history, step, number);
        ranges.push_back({begin, static_cast<int>(whole.size())});
        const bool set_next = step + 2 < history.size() && history[step + 2].setup_flag;
        if (!history[step + 1].setup_flag && (history[step].side == BLACK || set_next)) whole += "\n";
    }
    for (size_t entry = 1; entry <= history.size(); ++entry) {
        const Pane pane = pane_of(history, static_cast<int>(entry), 65536);
        ASSERT_EQ(pane.text, whole);
        ASSERT_EQ(pane.current, ranges[entry - 1]) << entry << " of " << whole;
    }
}

TEST(PaneForm, RandomGames) {
    std::mt19937 random(11);
    for (int i = 0; i < 100; ++i) {
        std::vector<ReplayState> history = random_game(random, 40, i % 3 != 0);
        if (i % 5 == 0) {
            history.push_back(history.back());
            history.back().setup_flag = 0;
        }
        expect_pane_of_slow_version(history);
        if (HasFatalFailure()) return;
    }
}

}  // namespace
