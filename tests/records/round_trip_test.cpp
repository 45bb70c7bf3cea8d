// Games that are printed and read back must give the same entries: from the initial position and set ones,
// with positions set within them, black first, and with captures that need their path.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "core/capture_lines.h"
#include "core/notation.h"
#include "positions.h"
#include "records/pdn_write.h"

namespace {

constexpr size_t ROOM = 65536;

std::string line_form(const std::vector<ReplayState>& history, const char* line_end) {
    std::vector<char> text(ROOM);
    const int length =
        game_to_pdn_text(text.data(), text.size(), history, "event", "2000", "black", "white", "*", line_end);
    EXPECT_LT(length, static_cast<int>(ROOM) - 1);
    return text.data();
}

std::string column_form(PdnNode* list) {
    char* text = nullptr;
    size_t size = 0;
    std::FILE* const file = open_memstream(&text, &size);
    pdn_print_game(file, list, PDN_COMMENT_LINES);
    std::fclose(file);
    const std::string result(text, size);
    std::free(text);
    return result;
}

void expect_same_game(const std::vector<ReplayState>& history, PdnNode* list, const std::string& text) {
    bool broken = false;
    const std::vector<ReplayState> read = replay(list, broken);
    ASSERT_FALSE(broken) << text;
    ASSERT_EQ(read.size(), history.size()) << text;
    for (size_t i = 0; i < history.size(); ++i) {
        // A game from a set position that has no moves keeps its tag all the same.
        ASSERT_TRUE(same_pieces(read[i].position, history[i].position)) << i << " of " << text;
        ASSERT_EQ(read[i].side, history[i].side) << i << " of " << text;
        ASSERT_EQ(read[i].setup_flag, history[i].setup_flag) << i << " of " << text;
    }
}

// Reads the text both ways: as the one game of the text and with all its comments.
void expect_reads_back(const std::vector<ReplayState>& history, const std::string& text) {
    const PdnGame one = pdn_parse_game(text.c_str());
    expect_same_game(history, one.get(), text);
    PdnTable table;
    ASSERT_EQ(pdn_parse_games(text.c_str(), table), 0);
    ASSERT_EQ(pdn_game_count(table), 1) << text;
    expect_same_game(history, table[0].get(), text);
}

// What the games hold, so that a generator that went lame is seen.
struct Seen {
    int paths = 0, setups = 0, black_first = 0, comments = 0;
};

void add_comments(std::mt19937& random, PdnNode* list, Seen& seen) {
    for (; list; list = list->next) {
        if (list->kind == PDN_MOVE && list->token.path) ++seen.paths;
        if (list->kind == PDN_EMBEDDED_FEN) ++seen.setups;
        if (list->kind != PDN_HEADER && random_below(random, 3) == 0) {
            list = pdn_insert_after(list,
                                    pdn_make_comment(random_below(random, 2) ? "(0.25)" : "{32-28 {1-0}}"));
            ++seen.comments;
        }
    }
}

TEST(RoundTrip, RandomGames) {
    std::mt19937 random(6);
    Seen seen;
    for (int i = 0; i < 1500; ++i) {
        const std::vector<ReplayState> history = random_game(random, 60, i % 3 != 0);
        seen.black_first += history[0].side == BLACK;
        expect_reads_back(history, line_form(history, i % 2 ? "\n" : "\r\n"));
        const PdnGame list = game_to_pdn_list(history, GameHeaders{});
        expect_same_game(history, list.get(), "the list itself");
        expect_reads_back(history, column_form(list.get()));
        add_comments(random, list.get(), seen);
        expect_reads_back(history, column_form(list.get()));
        if (HasFatalFailure()) return;
    }
    EXPECT_GT(seen.paths, 100);
    EXPECT_GT(seen.setups, 500);
    EXPECT_GT(seen.black_first, 200);
    EXPECT_GT(seen.comments, 1000);
}

TEST(RoundTrip, RealGames) {
    int games = 0;
    for (const auto& file : std::filesystem::directory_iterator(TEST_DATA "/games")) {
        PdnTable table;
        ASSERT_EQ(pdn_read_file(file.path().string(), table), 0);
        for (int i = 0; i < pdn_game_count(table); ++i, ++games) {
            PdnNode* const list = table[static_cast<size_t>(i)].get();
            bool broken = false;
            const std::vector<ReplayState> history = replay(list, broken);
            expect_reads_back(history, line_form(history, "\n"));
            expect_reads_back(history, column_form(list));
            expect_reads_back(history, column_form(game_to_pdn_list(history, GameHeaders{}).get()));
            if (HasFatalFailure()) return;
        }
    }
    EXPECT_GT(games, 200);
}

// Every legal move of many positions, the crowded captures of kings above all, as text and as node.
TEST(RoundTrip, EveryMoveOfRandomPositions) {
    std::mt19937 random(7);
    int with_path = 0;
    for (int i = 0; i < 30000; ++i) {
        const Position position = random_position(random, 12, 1 + i % 4);
        const ReplayState before{1, position.side, position};
        MoveList list;
        generate_moves(position, list, position.side);
        for (const Move& move : list) {
            char text[MOVE_TEXT_SIZE];
            ASSERT_GT(full_move_text(position, move, position.side, text), 0);
            ReplayState after;
            const PdnGame read = pdn_parse_game(text);
            ASSERT_TRUE(read) << text;
            ASSERT_EQ(pdn_apply_move(*read, before, after), 0) << text;
            ASSERT_EQ(move_to(after.position), move) << text;
            ASSERT_EQ(after.side, position.side ^ 1);
            const PdnGame node = pdn_move_node_from_positions(position, after.position, position.side);
            ASSERT_TRUE(node);
            with_path += node->token.path != nullptr;
            ASSERT_EQ(pdn_apply_move(*node, before, after), 0) << text;
            ASSERT_EQ(move_to(after.position), move) << text;
        }
    }
    EXPECT_GT(with_path, 500);
}

// A path that the user writes may name any square on which each capture lands in the lines of the generator.
TEST(RoundTrip, EveryLineIsFoundByItsOwnSquares) {
    std::mt19937 random(8);
    int lines_seen = 0;
    for (int i = 0; i < 30000; ++i) {
        const Position position = random_position(random, 12, 2);
        const ReplayState before{1, position.side, position};
        MoveList list;
        CaptureLines lines;
        const int count = generate_capture_lines(position, list, position.side, lines);
        for (int index = 0; index < count; ++index) {
            const int jumps = lines[static_cast<size_t>(index)].length;
            if (jumps < 2) continue;
            std::string text;
            for (int step = 1; step <= jumps; ++step) {
                uint64_t from = 0, to = 0;
                move_step_squares(step, index, position.side, position, list, lines, from, to);
                if (step == 1)
                    text = std::to_string(square_of_bit[static_cast<size_t>(lowest_bit(from))] + 1);
                text += "x" + std::to_string(square_of_bit[static_cast<size_t>(lowest_bit(to))] + 1);
            }
            const PdnGame node = pdn_parse_game(text.c_str());
            ReplayState after;
            ASSERT_EQ(pdn_apply_move(*node, before, after), 0) << text;
            ASSERT_EQ(move_to(after.position), list[index]) << text;
            ++lines_seen;
        }
    }
    EXPECT_GT(lines_seen, 5000);
}

}  // namespace
