#include "records/pdn_write.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "base/files.h"
#include "core/movegen.h"
#include "positions.h"

namespace {

constexpr const char* TAGS = "[Event \"e\"]\n[Date \"d\"]\n[White \"w\"]\n[Black \"b\"]\n[Result \"2-0\"]\n";

std::string line_form(const std::vector<ReplayState>& history, const char* line_end = "\n") {
    char text[GAME_TEXT_SIZE];
    const int length = game_to_pdn_text(text, sizeof text, history, "e", "d", "b", "w", "2-0", line_end);
    EXPECT_EQ(static_cast<size_t>(length), std::strlen(text));
    return text;
}

// What the function prints into a file.
template <typename Function>
std::string printed(Function function) {
    char* text = nullptr;
    size_t size = 0;
    std::FILE* const file = open_memstream(&text, &size);
    function(file);
    std::fclose(file);
    const std::string result(text, size);
    std::free(text);
    return result;
}

std::string column_form(const PdnGame& game, uint32_t flags = PDN_COMMENT_LINES) {
    return printed([&](std::FILE* file) { pdn_print_game(file, game.get(), flags); });
}

std::string move_form(const PdnGame& node) {
    int length = 0;
    const std::string text = printed([&](std::FILE* file) { length = pdn_print_move(file, *node); });
    EXPECT_EQ(static_cast<size_t>(length), text.size());
    return text;
}

// All games of the text as parsed with comments, the first of them replayed so that its moves have their
// sides.
PdnGame replayed(const std::string& text) {
    PdnTable table;
    EXPECT_EQ(pdn_parse_games(text.c_str(), table), 0);
    bool broken = false;
    replay(table[0].get(), broken);
    EXPECT_FALSE(broken) << text;
    return std::move(table[0]);
}

GameHeaders some_headers() {
    GameHeaders headers;
    set_game_header(headers, "Event", "e");
    set_game_header(headers, "Date", "d");
    set_game_header(headers, "White", "w");
    set_game_header(headers, "Black", "b");
    set_game_header(headers, "Result", "\"1-0\"");
    return headers;
}

TEST(LineForm, Plain) {
    EXPECT_EQ(line_form(history_of("32-28 18-23 33-29")),
              std::string(TAGS) + "1. 32-28 18-23 2. 33-29 *\n\n");
    EXPECT_EQ(line_form(history_of("32-28 18-23"), "\r\n"),
              "[Event \"e\"]\r\n[Date \"d\"]\r\n[White \"w\"]\r\n[Black \"b\"]\r\n[Result \"2-0\"]\r\n"
              "1. 32-28 18-23 *\r\n\r\n");
}

TEST(LineForm, NoMoves) {
    EXPECT_EQ(line_form({}), std::string(TAGS) + " *\n\n");
    EXPECT_EQ(line_form({ReplayState{}}), std::string(TAGS) + " *\n\n");
    EXPECT_EQ(line_form({state_of("B:W31:B1", 1)}), std::string(TAGS) + "[FEN \"B:W31:B1\"]\n *\n\n");
}

TEST(LineForm, ASetStart) {
    EXPECT_EQ(line_form(history_of("[FEN \"W:W31:B1\"] 31-27 1-6")),
              std::string(TAGS) + "[FEN \"W:W31:B1\"]\n1. 31-27 1-6 *\n\n");
    EXPECT_EQ(line_form(history_of("[FEN \"B:W31:B1\"] 1-6 31-27 6-11")),
              std::string(TAGS) + "[FEN \"B:W31:B1\"]\n1. ... 1-6 2. 31-27 6-11 *\n\n");
    std::vector<ReplayState> black_first = {state_of("B:W31-50:B1-20", 1)};
    EXPECT_NE(line_form(black_first).find("[FEN \"B:"), std::string::npos)
        << "the side alone asks for the tag";
    black_first[0].setup_flag = 0;
    EXPECT_NE(line_form(black_first).find("[FEN \"B:"), std::string::npos) << "whatever the flag says";
    EXPECT_NE(column_form(game_to_pdn_list(black_first, some_headers())).find("[FEN \"B:"),
              std::string::npos);
}

TEST(LineForm, ASetPositionWithin) {
    EXPECT_EQ(line_form(history_of("32-28 /FEN \"B:W31:B1\"/ 1-6 31-27")),
              std::string(TAGS) + "1. 32-28 /FEN \"B:W31:B1\"/ 2. ... 1-6 3. 31-27 *\n\n");
    EXPECT_EQ(line_form(history_of("32-28 /FEN \"W:W31:B1\"/ 31-27 1-6")),
              std::string(TAGS) + "1. 32-28 /FEN \"W:W31:B1\"/ 2. 31-27 1-6 *\n\n");
    EXPECT_EQ(line_form(history_of("32-28 18-23 /FEN \"W:W31:B1\"/")),
              std::string(TAGS) + "1. 32-28 18-23 /FEN \"W:W31:B1\"/ *\n\n");
    const std::vector<ReplayState> set_at_once = {ReplayState{}, state_of("W:W31:B1", 1),
                                                  state_of("B:W27:B1", 0)};
    EXPECT_EQ(line_form(set_at_once), std::string(TAGS) + "/FEN \"W:W31:B1\"/ 1. 31-27 *\n\n");
}

TEST(LineForm, CapturesThatNeedTheirPath) {
    const char* const fen = "[FEN \"W:WK3,26:B9,K19,21,24\"] ";
    EXPECT_NE(line_form(history_of(std::string(fen) + "3x14x32x16")).find("1. 3x14x32x16 *"),
              std::string::npos);
    EXPECT_NE(line_form(history_of(std::string(fen) + "3x20x38x16")).find("1. 3x20x38x16 *"),
              std::string::npos);
    EXPECT_NE(line_form(history_of("[FEN \"W:W47:B41,31,21\"] 47x36x27x16")).find("1. 47x16 *"),
              std::string::npos);
}

TEST(LineForm, IsCutToItsRoom) {
    const std::vector<ReplayState> history = history_of("[FEN \"B:W31:B1\"] 1-6 31-27 6-11");
    const std::string whole = line_form(history);
    for (size_t size = 1; size <= whole.size() + 2; ++size) {
        std::string room(whole.size() + 3, '#');
        const int length = game_to_pdn_text(room.data(), size, history, "e", "d", "b", "w", "2-0", "\n");
        ASSERT_EQ(static_cast<size_t>(length), std::min(size - 1, whole.size()));
        EXPECT_EQ(room.substr(0, static_cast<size_t>(length)), whole.substr(0, static_cast<size_t>(length)));
        EXPECT_EQ(room[static_cast<size_t>(length)], '\0');
        EXPECT_EQ(room.substr(size), std::string(room.size() - size, '#')) << size;
    }
    char untouched = '#';
    EXPECT_EQ(game_to_pdn_text(&untouched, 0, history, "e", "d", "b", "w", "2-0", "\n"), 0);
    EXPECT_EQ(untouched, '#');
}

TEST(LineForm, ALongGameStaysInItsRoom) {
    std::vector<ReplayState> history(1);
    while (history.size() < 800) history.push_back(state_of("W:WK31-50:BK1-20", 1));
    std::vector<char> room(GAME_TEXT_SIZE + 1, '#');
    EXPECT_EQ(game_to_pdn_text(room.data(), GAME_TEXT_SIZE, history, "e", "d", "b", "w", "*", "\n"),
              static_cast<int>(GAME_TEXT_SIZE) - 1);
    EXPECT_EQ(room[GAME_TEXT_SIZE - 1], '\0');
    EXPECT_EQ(room[GAME_TEXT_SIZE], '#');
}

TEST(MoveNode, FromPositions) {
    const std::vector<ReplayState> history = history_of("32-28 19-23 28x19 14x23");
    const PdnGame quiet = pdn_move_node_from_positions(history[0].position, history[1].position, WHITE);
    ASSERT_TRUE(quiet);
    EXPECT_EQ(quiet->kind, PDN_MOVE);
    EXPECT_EQ(quiet->token.side, WHITE);
    EXPECT_EQ(quiet->token.is_capture, 0);
    EXPECT_EQ(move_form(quiet), "32-28");
    const PdnGame capture = pdn_move_node_from_positions(history[3].position, history[4].position, BLACK);
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->token.side, BLACK);
    EXPECT_EQ(capture->token.is_capture, 1);
    EXPECT_FALSE(capture->token.path);
    EXPECT_EQ(move_form(capture), "14x23");
}

TEST(MoveNode, NoLegalMove) {
    const std::vector<ReplayState> history = history_of("32-28 19-23 28x19");
    EXPECT_FALSE(pdn_move_node_from_positions(history[0].position, history[1].position, BLACK));
    EXPECT_FALSE(pdn_move_node_from_positions(history[0].position, history[2].position, WHITE));
    EXPECT_FALSE(pdn_move_node_from_positions(history[0].position, history[0].position, WHITE));
    Position king = history[1].position;
    king.king = mask_of_square[27];
    EXPECT_FALSE(pdn_move_node_from_positions(history[0].position, king, WHITE)) << "all three sets count";
}

TEST(MoveNode, ThePathIsThereWhereItIsNeeded) {
    const Position before = position_of("W:WK3,26:B9,K19,21,24");
    MoveList list;
    ASSERT_EQ(generate_captures(before, list, WHITE), 2);
    std::string texts;
    for (const Move& move : list) {
        const PdnGame node = pdn_move_node_from_positions(before, position_after(move, BLACK), WHITE);
        ASSERT_TRUE(node && node->token.path);
        EXPECT_EQ(node->token.path[0], 4);
        EXPECT_EQ(node->token.from, 3);
        EXPECT_EQ(node->token.to, 16);
        EXPECT_EQ(node->token.is_capture, 1);
        texts += move_form(node) + " ";
    }
    EXPECT_EQ(texts, "3x14x32x16 3x20x38x16 ");
    const PdnGame alone =
        pdn_move_node_from_positions(position_of("W:W47:B41,31,21"), position_of("B:W16:B"), WHITE);
    ASSERT_TRUE(alone);
    EXPECT_FALSE(alone->token.path);
    EXPECT_EQ(move_form(alone), "47x16");
}

TEST(GameList, HasHeadersAndSteps) {
    const PdnGame list = game_to_pdn_list(history_of("32-28 18-23 /FEN \"B:W31:B1\"/ 1-6"), some_headers());
    EXPECT_EQ(column_form(list),
              std::string(TAGS) + "1. 32-28\n   18-23\n/FEN \"B:W31:B1\"/\n   1-6\n*\n\n\n");
}

TEST(GameList, ASetStartHasItsTag) {
    EXPECT_EQ(column_form(game_to_pdn_list(history_of("[FEN \"B:W31:B1\"] 1-6 31-27 6-11"), some_headers())),
              std::string(TAGS) + "[FEN \"B:W31:B1\"]\n1. ...\n   1-6\n2. 31-27\n   6-11\n*\n\n\n");
}

TEST(GameList, WithoutEntries) {
    EXPECT_EQ(column_form(game_to_pdn_list({}, GameHeaders{})),
              "[Event \"\"]\n[Date \"\"]\n[White \"\"]\n[Black \"\"]\n[Result \"*\"]\n*\n\n\n");
}

TEST(GameList, EndsBeforeAStepThatNoMoveMakes) {
    std::vector<ReplayState> history = history_of("32-28 18-23 33-29 23x32");
    history[2].position.white ^= mask_of_square[49];
    EXPECT_EQ(column_form(game_to_pdn_list(history, some_headers())),
              std::string(TAGS) + "1. 32-28\n*\n\n\n");
}

TEST(ColumnForm, MovesAndComments) {
    EXPECT_EQ(column_form(replayed("1. 32-28 {a} 19-23 (b) 2. 28x19 14x23 {c} 1-0"), PDN_COMMENT_LINES),
              "1. 32-28 {a}\n   19-23 (b)\n2. 28x19\n   14x23 {c}\n*\n\n\n");
    EXPECT_EQ(column_form(replayed("1. 32-28 {a} 19-23 (b) 2. 28x19"), 0),
              "1. 32-28 {a}\n   19-23 (b)\n2. 28x19\n*\n\n\n");
}

TEST(ColumnForm, ASecondCommentStandsUnderTheFirst) {
    EXPECT_EQ(column_form(replayed("32-28 {a} {b} {c} 19-23 {d}")),
              "1. 32-28 {a}\n         {b}\n         {c}\n   19-23 {d}\n*\n\n\n");
    EXPECT_EQ(column_form(replayed("32-28 {a} {b} 19-23"), 0), "1. 32-28 {a} {b}\n   19-23\n*\n\n\n");
}

TEST(ColumnForm, ACommentBehindAHeaderStandsAtTheLeft) {
    EXPECT_EQ(column_form(replayed("[Event \"x\"] {a} {b} 32-28 {c}")),
              "[Event \"x\"]\n {a}\n {b}\n1. 32-28 {c}\n*\n\n\n");
}

TEST(ColumnForm, AHeaderBehindMovesBeginsALine) {
    const PdnGame game = replayed("32-28 {a}");
    PdnToken token;
    token.key = copy_text("Site", 4);
    token.value = copy_text("\"s\"", 3);
    PdnNode* const header = pdn_insert_after(game.get()->next, pdn_make_node(PDN_HEADER, std::move(token)));
    pdn_insert_after(header, pdn_make_comment("{b}"));
    EXPECT_EQ(column_form(game), "1. 32-28 {a}\n[Site \"s\"]\n {b}\n*\n\n\n")
        << "the comment column is forgotten";
    EXPECT_EQ(column_form(game, 0), "1. 32-28 {a}\n[Site \"s\"]\n {b}*\n\n\n");
}

TEST(ColumnForm, BlackFirst) {
    EXPECT_EQ(column_form(replayed("[FEN \"B:W31:B1\"] 1-6 {a} 31-27")),
              "[FEN \"B:W31:B1\"]\n1. ...\n   1-6 {a}\n2. 31-27\n*\n\n\n");
}

TEST(ColumnForm, EmbeddedFenHasALineOfItsOwn) {
    EXPECT_EQ(column_form(replayed("32-28 /FEN \"W:W31:B1\"/ {a} 31-27")),
              "1. 32-28\n/FEN \"W:W31:B1\"/\n {a}\n2. 31-27\n*\n\n\n");
}

TEST(ColumnForm, TerminatorsAreNotPrinted) {
    for (const char* result : {"", " *", " 1-0", " 0-1", " 1/2-1/2"})
        EXPECT_EQ(column_form(replayed(std::string("32-28") + result)), "1. 32-28\n*\n\n\n");
    EXPECT_EQ(column_form(nullptr), "*\n\n\n");
}

TEST(ColumnForm, IndentsAreAsWideAsTheNumbers) {
    EXPECT_EQ(column_form(replayed("[FEN \"W:WK47:BK15\"] 47-36 15-4 36-47 4-15")),
              "[FEN \"W:WK47:BK15\"]\n1. 47-36\n   15-4\n2. 36-47\n   4-15\n*\n\n\n");
    std::string game = "[FEN \"W:WK47:BK15\"]";
    for (int i = 0; i < 51; ++i) game += " 47-36 15-4 36-47 4-15";
    const std::string columns = column_form(replayed(game));
    for (const char* lines :
         {"\n9. 47-36\n   15-4\n10. 36-47\n    4-15\n", "\n99. 47-36\n    15-4\n100. 36-47\n     4-15\n"})
        EXPECT_NE(columns.find(lines), std::string::npos) << lines;
}

TEST(ColumnForm, CommentsLineUpBehindWideNumbersAndPaths) {
    EXPECT_EQ(column_form(replayed("[FEN \"W:WK3,26:B9,K19,21,24\"] 3x14x32x16 {a} {b}")),
              "[FEN \"W:WK3,26:B9,K19,21,24\"]\n1. 3x14x32x16 {a}\n              {b}\n*\n\n\n");
}

TEST(LineForm, QuotationMarksInHeadersAreReadBackAsApostrophes) {
    GameHeaders headers{};
    std::snprintf(headers.event.data(), headers.event.size(), "Open \"Brunssum\" 2024");
    std::snprintf(headers.black.data(), headers.black.size(), "\"");
    char text[GAME_TEXT_SIZE];
    game_to_pdn_text(text, sizeof text, {}, headers, "\n");
    const PdnGame list = game_to_pdn_list({}, headers);
    for (const std::string& written : {std::string(text), column_form(list)}) {
        GameHeaders read{};
        pdn_game_headers(pdn_parse_game(written.c_str()).get(), read);
        EXPECT_STREQ(read.event.data(), "Open 'Brunssum' 2024") << written;
        EXPECT_STREQ(read.black.data(), "'") << written;
    }
}

class GameFile : public testing::Test {
  protected:
    std::string path = testing::TempDir() + "pdn_write_test_" + std::to_string(getpid()) + ".pdn";
    PdnTable table;

    void SetUp() override { ASSERT_EQ(pdn_parse_games("[a \"1\"] * [a \"2\"] * [a \"3\"] *", table), 0); }
    void TearDown() override { std::remove(path.c_str()); }

    std::string content() const {
        std::string text;
        EXPECT_EQ(read_file(path, text), 0);
        return text;
    }
};

TEST_F(GameFile, BeginsAfreshAndGrows) {
    const std::string end = "*\n\n\n";
    EXPECT_EQ(pdn_write_games(path, table, PDN_COMMENT_LINES, 1), 0);
    EXPECT_EQ(content(), "[a \"2\"]\n" + end);
    EXPECT_EQ(pdn_write_games(path, table, PDN_COMMENT_LINES | PDN_NEW_FILE, 0), 0);
    EXPECT_EQ(content(), "[a \"1\"]\n" + end);
    EXPECT_EQ(pdn_write_games(path, table, PDN_COMMENT_LINES, 2), 0);
    EXPECT_EQ(content(), "[a \"1\"]\n" + end + "[a \"3\"]\n" + end);
    EXPECT_EQ(pdn_write_games(path, table, PDN_ALL_GAMES | PDN_NEW_FILE, -1), 0);
    EXPECT_EQ(content(), "[a \"1\"]\n" + end + "[a \"2\"]\n" + end + "[a \"3\"]\n" + end);
    EXPECT_EQ(PDN_COMMENT_LINES, 1u);
    EXPECT_EQ(PDN_ALL_GAMES, 2u);
    EXPECT_EQ(PDN_NEW_FILE, 4u);
}

TEST_F(GameFile, AFileThatCannotBeOpenedAndAnIndexBeyondTheTable) {
    EXPECT_EQ(pdn_write_games(path + "/no/folder", table, PDN_NEW_FILE, 0), 1);
    EXPECT_EQ(file_size(path), -1);
    EXPECT_EQ(pdn_write_games(path, table, 0, 0), 0);
    const std::string before = content();
    for (const int index : {-1, 3, 1000}) EXPECT_EQ(pdn_write_games(path, table, 0, index), 0);
    EXPECT_EQ(content(), before);
}

TEST_F(GameFile, ADiskThatIsFullIsTold) {
    EXPECT_EQ(pdn_write_games("/dev/full", table, PDN_ALL_GAMES, 0), 2);
}

}  // namespace
