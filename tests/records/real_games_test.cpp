// Every game of the files of real games, read and replayed. The expected counts are those of a separate
// script that counts "[Event" tags and words of the form NUMBER-NUMBER or NUMBERxNUMBER behind the tags.
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "base/files.h"
#include "positions.h"
#include "records/pdn_game.h"

namespace {

struct FileCounts {
    const char* name;
    int games;
    int moves;
};

constexpr FileCounts FILES[] = {{"babasy1.pdn", 43, 4577},
                                {"loi20.pdn", 22, 336},
                                {"opening1.pdn", 44, 570},
                                {"sur01.pdn", 77, 5496},
                                {"toprest1.pdn", 27, 2781}};

struct Counts {
    int written = 0;  // move tokens
    int played = 0;   // moves that were matched
    int breaks = 0;   // games that stop at a move which cannot be matched
};

void count_game(PdnNode* game, const std::string& name, int number, Counts& counts) {
    for (const PdnNode* node = game; node; node = node->next) counts.written += node->kind == PDN_MOVE;
    bool broken = false;
    const std::vector<ReplayState> history = replay(game, broken);
    counts.played += static_cast<int>(history.size()) - 1;
    counts.breaks += broken;
    if (broken)
        ADD_FAILURE() << name << " game " << number << " breaks behind " << history.size() - 1 << " moves";
}

TEST(RealGames, EveryGameReplaysToItsEnd) {
    int games = 0, moves = 0;
    for (const FileCounts& file : FILES) {
        PdnTable table;
        ASSERT_EQ(pdn_read_file(std::string(TEST_DATA "/games/") + file.name, table), 0) << file.name;
        EXPECT_EQ(pdn_game_count(table), file.games) << file.name;
        Counts counts;
        for (int i = 0; i < pdn_game_count(table); ++i)
            count_game(table[static_cast<size_t>(i)].get(), file.name, i + 1, counts);
        EXPECT_EQ(counts.written, file.moves) << file.name;
        EXPECT_EQ(counts.played, file.moves) << file.name;
        EXPECT_EQ(counts.breaks, 0) << file.name;
        games += pdn_game_count(table);
        moves += counts.played;
    }
    EXPECT_EQ(games, 213);
    EXPECT_EQ(moves, 13760);
}

TEST(RealGames, TheIndexFindsTheSameGames) {
    for (const FileCounts& file : FILES) {
        std::string text;
        ASSERT_EQ(read_file(std::string(TEST_DATA "/games/") + file.name, text), 0);
        PdnOffsets offsets;
        ASSERT_EQ(pdn_index_games(text.c_str(), offsets), 0);
        ASSERT_EQ(pdn_game_count(offsets), file.games);
        size_t event = 0;
        for (int i = 0; i < file.games; ++i) {
            const size_t offset = static_cast<size_t>(offsets[static_cast<size_t>(i)]);
            event = text.find("[Event", event);
            ASSERT_EQ(text.find_first_not_of(" \r\n", offset), event) << file.name << " game " << i + 1;
            ++event;
        }
        EXPECT_EQ(offsets.back(), -1);
    }
}

}  // namespace
