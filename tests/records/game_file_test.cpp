#include "records/game_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "positions.h"
#include "records/pdn_write.h"

namespace {

class GameFiles : public testing::Test {
  protected:
    std::string path = testing::TempDir() + "game_file_test_" + std::to_string(getpid()) + ".pdn";

    void TearDown() override { std::remove(path.c_str()); }

    void write(const std::string& content) const { std::ofstream(path, std::ios::binary) << content; }
    std::string content() const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
};

TEST_F(GameFiles, NewlinesBetweenGames) {
    const struct {
        const char* end;
        int newlines;
    } cases[] = {{"", 0},
                 {"x", 0},
                 {"\n", 0},
                 {"\r", 0},
                 {"\r\r\r", 0},
                 {"xy", 2},
                 {"x\n", 1},
                 {"\n\n", 0},
                 {"\nx", 2},
                 {"x\r\n", 1},
                 {"\r\n\r\n", 0},
                 {"x\r\n\r\n", 0},
                 {"x\n\r", 1},
                 {"\r\nx\r", 2},
                 {"12345678", 2},
                 {"1234567\n", 1},
                 {"123456\n\n", 0},
                 {"12345678*", 2},
                 {"12345678\n", 1},
                 {"long *\r\n\r\n", 0},
                 {"long *\n\n\n\n", 0}};
    for (const auto& c : cases) {
        write(c.end);
        EXPECT_EQ(separator_newlines_needed(path), c.newlines) << testing::PrintToString(c.end);
    }
    std::remove(path.c_str());
    EXPECT_EQ(separator_newlines_needed(path), 0);
}

TEST_F(GameFiles, OnlyTheLastEightBytesAreLookedAt) {
    write("\n\n\r\r\r\r\r\r\r\r");
    EXPECT_EQ(separator_newlines_needed(path), 0);
    write("xy\r\r\r\r\r\r\r\r");
    EXPECT_EQ(separator_newlines_needed(path), 0) << "no two characters are left to look at";
    write("xy\r\r\r\r\r\r");
    EXPECT_EQ(separator_newlines_needed(path), 2);
    write("x\n\r\r\r\r\r\r\r");
    EXPECT_EQ(separator_newlines_needed(path), 0);
}

TEST_F(GameFiles, NewlinesBehindAnyEnd) {
    std::mt19937 random(4);
    for (int i = 0; i < 2000; ++i) {
        std::string end;
        for (int n = random_below(random, 14); n > 0; --n) end += "x\n\r"[random_below(random, 3)];
        write(end);
        std::string seen = end.substr(end.size() - std::min<size_t>(end.size(), 8));
        std::erase(seen, '\r');
        int expected = 0;
        if (seen.size() >= 2) expected = !seen.ends_with('\n') ? 2 : !seen.ends_with("\n\n");
        ASSERT_EQ(separator_newlines_needed(path), expected) << testing::PrintToString(end);
    }
}

TEST_F(GameFiles, AppendingKeepsWhatIsThere) {
    EXPECT_EQ(append_game_text(path, "a *\n\n"), 0);
    EXPECT_EQ(content(), "a *\n\n");
    EXPECT_EQ(append_game_text(path, "b *\n\n"), 0);
    EXPECT_EQ(content(), "a *\n\nb *\n\n");
    write("text");
    EXPECT_EQ(append_game_text(path, "b *\n\n"), 0);
    EXPECT_EQ(content(), "text\n\nb *\n\n");
    write("text\n");
    EXPECT_EQ(append_game_text(path, "b"), 0);
    EXPECT_EQ(content(), "text\n\nb");
    write("text\r\n\r\n");
    EXPECT_EQ(append_game_text(path, "b"), 0);
    EXPECT_EQ(content(), "text\r\n\r\nb");
    write("");
    EXPECT_EQ(append_game_text(path, "b"), 0);
    EXPECT_EQ(content(), "b");
}

// Of a DOS program, and of a disk that has lost the end of the file.
TEST_F(GameFiles, AppendingBehindAMarkOfTheEnd) {
    for (const std::string& end : {std::string("\x1a"), std::string("\r\n\x1a\x1a"), std::string(300, '\0'),
                                   std::string("\x1a\r\n"), std::string("\x1a\n \x1a\n\n")}) {
        write("[Event \"a\"]\n1. 32-28 *\n" + end);
        ASSERT_EQ(append_game_text(path, "[Event \"b\"]\n1. 31-26 *\n\n"), 0);
        std::string text;
        PdnOffsets offsets;
        ASSERT_EQ(load_game_file(path, text, offsets), GAME_FILE_READ);
        EXPECT_EQ(offsets.size(), 3u) << "two games and their end " << testing::PrintToString(end);
        EXPECT_TRUE(text.starts_with("[Event \"a\"]\n1. 32-28 *\n"));
    }
    write(std::string(5, '\x1a'));
    ASSERT_EQ(append_game_text(path, "1. 31-26 *\n"), 0);
    EXPECT_EQ(content(), "1. 31-26 *\n");
}

TEST_F(GameFiles, AppendingToWhatCannotBeWritten) {
    EXPECT_EQ(append_game_text(testing::TempDir(), "b"), 1);
    EXPECT_EQ(append_game_text(path + "/no/folder", "b"), 1);
    EXPECT_EQ(append_game_text("/dev/full", "b"), 2);
}

TEST_F(GameFiles, AFileThatCannotGrowKeepsItsGames) {
    for (const std::string& games : {std::string("a *\n\n"), std::string("a *\n\n\x1a\r\n")}) {
        write(games);
        rlimit before{};
        ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
        rlimit small = before;
        small.rlim_cur = 100;
        const auto handler = std::signal(SIGXFSZ, SIG_IGN);
        setrlimit(RLIMIT_FSIZE, &small);
        const int status = append_game_text(path, std::string(5000, 'b').c_str());
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);
        EXPECT_EQ(status, 2);
        EXPECT_EQ(content(), games);
    }
}

TEST_F(GameFiles, ListsTheGamesOfAFile) {
    write("\r\n[Event \"a\"]\r\n1. 32-28\r\n19-23 *\r\n\r\n[Event \"b\"] {x\ry} *\x1a[Event \"c\"] *");
    std::string text;
    PdnOffsets offsets;
    ASSERT_EQ(load_game_file(path, text, offsets), GAME_FILE_READ);
    EXPECT_EQ(text, "\n[Event \"a\"]\n1. 32-28\n19-23 *\n\n[Event \"b\"] {x\ry} *")
        << "as text: line ends shrink, and the end mark ends it";
    ASSERT_EQ(pdn_game_count(offsets), 2);
    char line[GAME_LINE_SIZE];
    pdn_game_line(text.c_str(), offsets, 0, line);
    EXPECT_STREQ(line, "[Event \"a\"] 1. 32-28 19-23 *");
    pdn_game_line(text.c_str(), offsets, 1, line);
    EXPECT_STREQ(line, "[Event \"b\"] {xy} *");
}

TEST_F(GameFiles, ThereMayBeNoGames) {
    std::string text = "old";
    PdnOffsets offsets;
    write("");
    EXPECT_EQ(load_game_file(path, text, offsets), GAME_FILE_READ);
    EXPECT_EQ(text, "");
    EXPECT_EQ(offsets, PdnOffsets{-1});
    write(" * * 1. ");
    EXPECT_EQ(load_game_file(path, text, offsets), GAME_FILE_READ);
    EXPECT_EQ(offsets, PdnOffsets{-1});
}

TEST_F(GameFiles, WhatCannotBeReadChangesNothing) {
    std::string text = "old";
    PdnOffsets offsets = {7};
    EXPECT_EQ(load_game_file(path, text, offsets), GAME_FILE_CLOSED);
    EXPECT_EQ(load_game_file(testing::TempDir(), text, offsets), GAME_FILE_CLOSED);
    EXPECT_EQ(text, "old");
    EXPECT_EQ(offsets, PdnOffsets{7});
}

TEST_F(GameFiles, TheLimit) {
    ASSERT_EQ(GAME_FILE_LIMIT, 25000000);
    std::string big = "[Event \"last\"] 1. 32-28 *";
    big.insert(0, static_cast<size_t>(GAME_FILE_LIMIT) - 1 - big.size(), ' ');
    std::string text;
    PdnOffsets offsets;
    for (int64_t size = GAME_FILE_LIMIT - 1; size <= GAME_FILE_LIMIT; ++size) {
        write(big);
        ASSERT_EQ(static_cast<int64_t>(std::filesystem::file_size(path)), size);
        ASSERT_EQ(load_game_file(path, text, offsets), GAME_FILE_READ) << size;
        EXPECT_EQ(pdn_game_count(offsets), 1);
        EXPECT_EQ(static_cast<int64_t>(text.size()), size);
        big.insert(0, 1, ' ');
    }
    write(big);
    offsets = {7};
    EXPECT_EQ(load_game_file(path, text, offsets), GAME_FILE_TOO_BIG);
    EXPECT_EQ(offsets, PdnOffsets{7});
    EXPECT_EQ(static_cast<int64_t>(text.size()), GAME_FILE_LIMIT);
}

TEST_F(GameFiles, SavedGamesLoadAgain) {
    std::mt19937 random(21);
    std::vector<std::vector<ReplayState>> games;
    for (int i = 0; i < 40; ++i) {
        games.push_back(random_game(random, 60, i % 2 != 0));
        char text[GAME_TEXT_SIZE];
        game_to_pdn_text(text, sizeof text, games.back(), "e", "2000.01.01", "b", "w", "2-0", "\n");
        ASSERT_EQ(append_game_text(path, text), 0);
    }
    std::string text;
    PdnOffsets offsets;
    ASSERT_EQ(load_game_file(path, text, offsets), GAME_FILE_READ);
    ASSERT_EQ(pdn_game_count(offsets), 40);
    for (size_t i = 0; i < games.size(); ++i) {
        const PdnGame list = pdn_parse_game(text.c_str() + offsets[i]);
        bool broken = false;
        const std::vector<ReplayState> read = replay(list.get(), broken);
        ASSERT_FALSE(broken);
        ASSERT_EQ(read.size(), games[i].size());
        for (size_t entry = 0; entry < read.size(); ++entry) expect_same_state(games[i][entry], read[entry]);
    }
}

TEST(ReadText, CarriageReturns) {
    const std::string path = testing::TempDir() + "read_text_test_" + std::to_string(getpid());
    const struct {
        const char *file, *text;
    } cases[] = {{"a\r\nb", "a\nb"},
                 {"a\rb", "a\rb"},
                 {"a\r", "a\r"},
                 {"\r\n\r\n", "\n\n"},
                 {"\r\r\n", "\r\n"},
                 {"\n\r", "\n\r"},
                 {"\x1a", ""},
                 {"a\x1a"
                  "b\r\n",
                  "a"},
                 {"a\r\n\x1a", "a\n"},
                 {"a\r\x1a\n", "a\r"}};
    for (const auto& c : cases) {
        std::ofstream(path, std::ios::binary) << c.file;
        std::string text = "old";
        EXPECT_EQ(pdn_read_text(path, text), 0);
        EXPECT_EQ(text, c.text) << testing::PrintToString(c.file);
    }
    std::remove(path.c_str());
    std::string text = "old";
    EXPECT_EQ(pdn_read_text(path, text), 2);
    EXPECT_EQ(text, "old");
}

}  // namespace
