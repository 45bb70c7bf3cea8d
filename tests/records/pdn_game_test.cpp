#include "records/pdn_game.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>

namespace {

// One letter a node: h header, c comment, m move, f embedded FEN, = * B W results.
std::string shape(const PdnNode* list) {
    std::string letters;
    for (; list; list = list->next) letters += "hc?=*BWm?f"[list->kind];
    return letters;
}

std::string shapes(const std::string& text) {
    PdnTable table;
    EXPECT_EQ(pdn_parse_games(text.c_str(), table), 0);
    std::string all;
    for (int i = 0; i < pdn_game_count(table); ++i) {
        if (i) all.push_back(' ');
        all.append(shape(table[static_cast<size_t>(i)].get()));
    }
    EXPECT_FALSE(table.back());
    return all;
}

std::string one(const std::string& text) { return shape(pdn_parse_game(text.c_str()).get()); }

PdnOffsets index_of(const std::string& text) {
    PdnOffsets offsets;
    EXPECT_EQ(pdn_index_games(text.c_str(), offsets), 0);
    return offsets;
}

TEST(PdnGame, OneGameWithoutTags) {
    EXPECT_EQ(shapes("1. 32-28 19-23 2. 37-32 *"), "mmm*");
    EXPECT_EQ(index_of("1. 32-28 19-23 2. 37-32 *"), (PdnOffsets{2, -1}))
        << "behind the number, which is ignored";
    EXPECT_EQ(one("1. 32-28 19-23 2. 37-32 *"), "mmm*");
}

TEST(PdnGame, NothingIsNoGame) {
    for (const char* text : {"", " \n", "1. 2. 3.", "* * 1-0", "1. 1/2-1/2 2. 0-1"}) {
        EXPECT_EQ(shapes(text), "") << text;
        EXPECT_EQ(index_of(text), PdnOffsets{-1}) << text;
        EXPECT_FALSE(pdn_parse_game(text)) << text;
    }
}

// The table of states and tokens, one entry after another.
TEST(PdnGame, OutsideAGame) {
    EXPECT_EQ(shapes("[a \"b\"]"), "h");
    EXPECT_EQ(shapes("{a}"), "c");
    EXPECT_EQ(shapes("1."), "");
    for (const char* result : {"1/2-1/2", "*", "0-1", "1-0", "0-2", "2-0"})
        EXPECT_EQ(shapes(result), "") << result;
    EXPECT_EQ(shapes("32-28"), "m");
    EXPECT_EQ(shapes("/FEN \"B\"/"), "f");
}

TEST(PdnGame, AmongHeaders) {
    const std::string headers = "[a \"b\"] ";
    EXPECT_EQ(shapes(headers + "[c \"d\"]"), "hh");
    EXPECT_EQ(shapes(headers + "{c}"), "hc");
    EXPECT_EQ(shapes(headers + "1."), "h");
    EXPECT_EQ(shapes(headers + "1/2-1/2 {x}"), "h= c");
    EXPECT_EQ(shapes(headers + "* {x}"), "h* c");
    EXPECT_EQ(shapes(headers + "0-1 {x}"), "hB c");
    EXPECT_EQ(shapes(headers + "2-0 {x}"), "hW c");
    EXPECT_EQ(shapes(headers + "32-28 [c \"d\"]"), "hm h") << "the move leads on to the moves";
    EXPECT_EQ(shapes(headers + "/FEN \"B\"/ [c \"d\"]"), "hf h");
}

TEST(PdnGame, AmongMoves) {
    EXPECT_EQ(shapes("32-28 [a \"b\"]"), "m h");
    EXPECT_EQ(shapes("32-28 {a} 1. 19-23 /FEN \"B\"/ 1-6"), "mcmfm");
    EXPECT_EQ(shapes("32-28 1/2-1/2 1-0 {x}"), "m= c");
    EXPECT_EQ(shapes("32-28 * 0-1 {x}"), "m* c");
    EXPECT_EQ(shapes("32-28 0-2 33-29"), "mB m");
    EXPECT_EQ(shapes("32-28 1-0 /FEN \"B\"/"), "mW f");
}

TEST(PdnGame, ACommentBeforeTheTagsBelongsToTheirGame) {
    EXPECT_EQ(shapes("{a} [b \"c\"] 32-28 * some words [d \"e\"] 33-29 *"), "chm* chm*");
    EXPECT_EQ(index_of("{a} [b \"c\"] 32-28 * some words [d \"e\"] 33-29 *"), (PdnOffsets{0, 19, -1}));
}

TEST(PdnGame, GamesWithResultsAndWithout) {
    EXPECT_EQ(shapes("[a \"b\"] 1. 32-28 1-0 [a \"b\"] 1. 33-28 2-0"), "hmW hmW");
    EXPECT_EQ(shapes("[a \"b\"] 1. 32-28 [a \"b\"] 1. 33-28"), "hm hm");
    EXPECT_EQ(shapes("32-28 * 33-28 * 34-29"), "m* m* m");
    EXPECT_EQ(shapes("32-28 1-1 33-28 *"), "mmm*") << "1-1 is read as a move";
}

TEST(PdnGame, OffsetsAreWhereTheCursorStoodBeforeTheToken) {
    EXPECT_EQ(index_of("\n\n[a \"b\"] 1. 32-28 *\n\n\n[a \"b\"]"), (PdnOffsets{0, 20, -1}));
}

TEST(PdnGame, ManyGames) {
    std::string text;
    for (int i = 0; i < 5001; ++i) text += "32-28*";
    EXPECT_EQ(pdn_game_count(index_of(text)), 5001);
    PdnTable table;
    ASSERT_EQ(pdn_parse_games(text.c_str(), table), 0);
    EXPECT_EQ(pdn_game_count(table), 5001);
    pdn_free_games(table);
    EXPECT_EQ(pdn_game_count(table), 0);
    EXPECT_EQ(pdn_game_count(PdnOffsets{}), 0);
}

TEST(PdnGame, OneGameHasNoCommentsAndEndsWithItsResult) {
    EXPECT_EQ(one("{a} [b \"c\"] {d} 1. 32-28 {e} 19-23 word 1-0 33-29 *"), "hmmW");
    EXPECT_EQ(one("* 1-0 {a} 32-28 0-1 32-28"), "mB") << "results before the game are passed over";
    EXPECT_EQ(one("{a} * [b \"c\"] 1/2-1/2"), "h=") << "a comment alone does not begin the game";
    EXPECT_EQ(one("{a} {b}"), "");
    EXPECT_EQ(one("[a \"b\"] *"), "h*");
}

TEST(PdnGame, OneGameEndsBeforeALaterHeader) {
    EXPECT_EQ(one("[a \"b\"] [c \"d\"] 32-28 [e \"f\"] 33-29"), "hhm");
    EXPECT_EQ(one("[a \"b\"] /FEN \"B\"/ [e \"f\"] 33-29"), "hf") << "an embedded FEN is a move here";
    EXPECT_EQ(one("/FEN \"B\"/ 1-6"), "fm");
}

TEST(PdnGame, NodesKeepTheTokens) {
    const PdnGame game = pdn_parse_game("[Event \"x y\"] 12x23x34 /FEN \"B:W1\"/ *");
    const PdnNode* node = game.get();
    EXPECT_STREQ(node->token.key.get(), "Event");
    EXPECT_STREQ(node->token.value.get(), "\"x y\"");
    node = node->next;
    EXPECT_EQ(node->token.from, 12);
    EXPECT_EQ(node->token.to, 34);
    EXPECT_EQ(node->token.side, 0);
    ASSERT_TRUE(node->token.path);
    EXPECT_EQ(node->token.path[0], 3);
    EXPECT_EQ(node->token.path[2], 23);
    EXPECT_STREQ(node->next->token.text.get(), "B:W1");
    EXPECT_EQ(node->next->next->kind, PDN_UNKNOWN);
    EXPECT_FALSE(node->next->next->next);
}

// A list that is freed node by node needs no stack; a million nodes would overrun it otherwise.
TEST(PdnGame, LongListsAreFreed) {
    std::string text;
    for (int i = 0; i < 1000000; ++i) text += "1-6 ";
    PdnTable table;
    ASSERT_EQ(pdn_parse_games(text.c_str(), table), 0);
    ASSERT_EQ(pdn_game_count(table), 1);
    pdn_free_games(table);
    pdn_free_game(nullptr);
    pdn_free_game(pdn_parse_game(text.c_str()).release());
}

TEST(PdnGame, InsertedComments) {
    const PdnGame game = pdn_parse_game("32-28 19-23");
    PdnNode* const comment = pdn_insert_after(game.get(), pdn_make_comment("(0.1)"));
    EXPECT_EQ(shape(game.get()), "mcm");
    EXPECT_STREQ(comment->token.text.get(), "(0.1)");
    pdn_insert_after(comment->next, pdn_make_comment("{end}"));
    EXPECT_EQ(shape(game.get()), "mcmc");
}

class PdnFile : public testing::Test {
  protected:
    std::string path = testing::TempDir() + "pdn_file_test_" + std::to_string(getpid()) + ".pdn";

    void TearDown() override { std::remove(path.c_str()); }

    void write(const std::string& text) const {
        std::FILE* const file = std::fopen(path.c_str(), "wb");
        ASSERT_TRUE(file);
        EXPECT_EQ(std::fwrite(text.data(), 1, text.size(), file), text.size());
        std::fclose(file);
    }
};

TEST_F(PdnFile, Reads) {
    write("[a \"b\"]\r\n1. 32-28 *\r\n33-29");
    PdnTable table;
    ASSERT_EQ(pdn_read_file(path, table), 0);
    ASSERT_EQ(pdn_game_count(table), 2);
    EXPECT_EQ(shape(table[0].get()), "hm*");
    EXPECT_EQ(shape(table[1].get()), "m");
}

TEST_F(PdnFile, MissingEmptyAndClosedFiles) {
    PdnTable table;
    ASSERT_EQ(pdn_parse_games("32-28", table), 0);
    EXPECT_EQ(pdn_read_file(path, table), 2);
    write("");
    EXPECT_EQ(pdn_read_file(path, table), 2);
    EXPECT_EQ(pdn_read_file(testing::TempDir(), table), 2);
    write("32-28 * 33-28");
    if (geteuid() != 0) {
        ASSERT_EQ(chmod(path.c_str(), 0), 0);
        EXPECT_EQ(pdn_read_file(path, table), 1);
    }
    EXPECT_EQ(pdn_game_count(table), 1) << "the output is untouched";
}

TEST_F(PdnFile, AZeroByteEndsTheText) {
    write(std::string("32-28 *\0 33-28 *", 16));
    PdnTable table;
    ASSERT_EQ(pdn_read_file(path, table), 0);
    EXPECT_EQ(pdn_game_count(table), 1);
}

TEST_F(PdnFile, BinaryAndCutText) {
    std::mt19937 random(4);
    std::string binary;
    for (int i = 0; i < 200000; ++i) binary += static_cast<char>(1 + random() % 255);
    std::replace(binary.begin(), binary.end(), '\x1a', 'a');  // it would end the text of the file
    write(binary);
    PdnTable table;
    ASSERT_EQ(pdn_read_file(path, table), 0);
    EXPECT_EQ(pdn_game_count(table), pdn_game_count(index_of(binary)));
    const std::string game = "[a \"b\"] {c (d)} 1. 32-28 12x23x34 /FEN \"B:W31:B1\"/ 1-6 1/2-1/2";
    for (size_t length = 0; length <= game.size(); ++length) {
        const std::string cut = game.substr(0, length);
        EXPECT_EQ(pdn_game_count(index_of(cut)), length ? 1 : 0) << cut;
        EXPECT_LE(shapes(cut).size(), 9u) << cut;
    }
}

TEST_F(PdnFile, OneHugeToken) {
    for (const char* start : {"{", "[a \"", "x", "1"}) {
        write(start + std::string(25000000 - 10, start[0] == '1' ? '2' : 'a'));
        PdnTable table;
        ASSERT_EQ(pdn_read_file(path, table), 0);
        ASSERT_EQ(pdn_game_count(table), 1) << start;
        EXPECT_EQ(shape(table[0].get()), "c");
        EXPECT_EQ(std::string_view(table[0]->token.text.get()).size(),
                  25000000 - 10 + std::string_view(start).size());
    }
}

// The index and the lists agree: as many games, and the list of each begins as the text at its offset does.
TEST(PdnGame, IndexAgreesWithLists) {
    static const char* const pieces[] = {
        "[a \"b\"]",   "{c}",   "1. ",   "*",  "1-0 ", "0-2 ", "1/2-1/2", "32-28 ",      "12x23x34",
        "/FEN \"B\"/", "/FEN ", "word ", "\n", "{",    "[",    "\"",      "/FEN \"W:W/", "] "};
    std::mt19937 random(5);
    int games = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (uint32_t n = static_cast<uint32_t>(random()) % 30; n > 0; --n)
            text += pieces[static_cast<uint32_t>(random()) % (random() % 8 ? 14 : std::size(pieces))];
        const PdnOffsets offsets = index_of(text);
        PdnTable table;
        ASSERT_EQ(pdn_parse_games(text.c_str(), table), 0);
        ASSERT_EQ(pdn_game_count(offsets), pdn_game_count(table)) << text;
        for (int game = 0; game < pdn_game_count(table); ++game) {
            const PdnNode* const head = table[static_cast<size_t>(game)].get();
            const char* at = text.c_str() + offsets[static_cast<size_t>(game)];
            PdnToken token;
            ASSERT_EQ(pdn_next_token(at, token, true), head->kind) << text;
            ASSERT_STREQ(token.key ? token.key.get() : "", head->token.key ? head->token.key.get() : "");
            ASSERT_STREQ(token.text ? token.text.get() : "", head->token.text ? head->token.text.get() : "");
            ++games;
        }
    }
    EXPECT_GT(games, 20000);
}

TEST(GameHeaders, ResultCodes) {
    for (const char* value : {"\"1/2-1/2\"", "\"1-1\""}) EXPECT_EQ(pdn_result_code(value), RESULT_DRAW);
    for (const char* value : {"\"1-0\"", "\"2-0\""}) EXPECT_EQ(pdn_result_code(value), RESULT_WHITE_WINS);
    for (const char* value : {"\"0-1\"", "\"0-2\""}) EXPECT_EQ(pdn_result_code(value), RESULT_BLACK_WINS);
    for (const char* value : {"\"*\"", "\"\"", "", "1-0", "\"1-0 \"", "\"0-0\"", "\"12-0\"", "\"1-0"})
        EXPECT_EQ(pdn_result_code(value), RESULT_UNKNOWN) << value;
    EXPECT_EQ(RESULT_WHITE_WINS, 1);
    EXPECT_EQ(RESULT_BLACK_WINS, 2);
    EXPECT_EQ(RESULT_DRAW, 3);
}

TEST(GameHeaders, ResultTexts) {
    EXPECT_STREQ(result_string(0), "*");
    EXPECT_STREQ(result_string(1), "2-0");
    EXPECT_STREQ(result_string(2), "0-2");
    EXPECT_STREQ(result_string(3), "1-1");
    EXPECT_STREQ(result_string(-1), "*");
    for (int32_t code = 0; code < 4; ++code)
        EXPECT_EQ(pdn_result_code((std::string("\"") + result_string(code) + "\"").c_str()), code);
}

TEST(GameHeaders, AreTakenFromTheList) {
    const std::string name(100, 'n');
    const PdnGame game = pdn_parse_game(("[EVENT \"An event\"][date \"2001\"][White \"" + name +
                                         "\"][bLaCk \"\"][Round \"3\"]"
                                         "[Result \"1-0\"] 32-28 *")
                                            .c_str());
    GameHeaders headers;
    headers.black[0] = 'x';
    pdn_game_headers(game.get(), headers);
    EXPECT_STREQ(headers.event.data(), "An event");
    EXPECT_STREQ(headers.date.data(), "2001");
    EXPECT_EQ(headers.white.data(), std::string(79, 'n'));
    EXPECT_STREQ(headers.black.data(), "");
    EXPECT_EQ(headers.result, RESULT_WHITE_WINS);
    pdn_game_headers(nullptr, headers);
    EXPECT_STREQ(headers.event.data(), "");
    EXPECT_EQ(headers.result, RESULT_UNKNOWN);
    set_game_header(headers, "Event", "\"a \"b\" c");
    EXPECT_STREQ(headers.event.data(), "a b c");
    // 77 letters and one of three bytes: what fits ends before it.
    set_game_header(headers, "Event", ("\"" + std::string(77, 'n') + "\u20AC\"").c_str());
    EXPECT_EQ(headers.event.data(), std::string(77, 'n'));
    set_game_header(headers, "Event", ("\"" + std::string(76, 'n') + "\u20AC\"").c_str());
    EXPECT_EQ(headers.event.data(), std::string(76, 'n') + "\u20AC");
}

TEST(GameLine, ShowsTheRawText) {
    const std::string text = "\r\n [a \"b\"]\r\n1. 32-28\t*\n\n" + std::string(300, '{');
    const PdnOffsets offsets = index_of(text);
    ASSERT_EQ(pdn_game_count(offsets), 2);
    char line[GAME_LINE_SIZE];
    pdn_game_line(text.c_str(), offsets, 0, line);
    EXPECT_STREQ(line, "[a \"b\"] 1. 32-28\t*");
    pdn_game_line(text.c_str(), offsets, 1, line);
    EXPECT_EQ(line, std::string(217, '{')) << "219 bytes of text with the two newlines that are skipped";
    pdn_game_line("*", PdnOffsets{0, -1}, 0, line);
    EXPECT_STREQ(line, "*");
    pdn_game_line(" \n", PdnOffsets{0, -1}, 0, line);
    EXPECT_STREQ(line, "");
}

}  // namespace
