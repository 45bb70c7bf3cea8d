#include "tools/selfplay.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "eval/evaluation.h"
#include "eval/weights.h"
#include "search/engine_settings.h"
#include "search/table.h"
#include "tools/seed_weights.h"

namespace {

class Selfplay : public testing::Test {
  protected:
    void SetUp() override {
        clear_weights();
        weights.params = SEED_PARAMS;
        init_eval_tables();
        engine_settings.hash_size_mb = 1;
        ASSERT_EQ(tt_allocate(), 0);
        std::string name = (std::filesystem::temp_directory_path() / "tessarin-selfplay-XXXXXX").string();
        folder = mkdtemp(name.data());
    }
    void TearDown() override { std::filesystem::remove_all(folder); }

    std::string path(const char* name) const { return folder / name; }

    SelfplayOptions options(const char* name, int64_t games) const {
        return {.out = path(name), .games = games, .seed = 7, .depth = 3};
    }

    std::filesystem::path folder;
};

bool go_on(int64_t, int64_t) { return true; }
bool stop_after_two(int64_t games, int64_t) { return games < 2; }

std::string read(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

std::vector<GameRecord> records_of(const std::string& path) {
    const std::string bytes = read(path);
    std::vector<GameRecord> records(bytes.size() / sizeof(GameRecord));
    std::memcpy(records.data(), bytes.data(), records.size() * sizeof(GameRecord));
    return records;
}

TEST_F(Selfplay, KeepsQuietLegalPositionsWithTheirResult) {
    ASSERT_EQ(selfplay(options("games", 5), go_on), 0);
    const std::vector<GameRecord> records = records_of(path("games"));
    ASSERT_GT(records.size(), 100u);
    uint32_t game = 0;
    for (size_t i = 0; i < records.size(); ++i) {
        const GameRecord& r = records[i];
        const Position position{r.black, r.white, r.king, r.side, 0, nullptr};
        EXPECT_TRUE(is_legal_setup(position));
        EXPECT_FALSE(has_capture(position, BLACK) || has_capture(position, WHITE));
        EXPECT_TRUE(r.result >= -1 && r.result <= 1);
        EXPECT_TRUE(r.game == game || r.game == game + 1);
        if (i > 0 && r.game == game) {
            EXPECT_EQ(r.result, records[i - 1].result);
        }
        game = r.game;
    }
    EXPECT_EQ(game, 4u);
}

TEST_F(Selfplay, TheSeedDecidesTheGames) {
    ASSERT_EQ(selfplay(options("a", 3), go_on), 0);
    ASSERT_EQ(selfplay(options("b", 3), go_on), 0);
    SelfplayOptions other = options("c", 3);
    other.seed = 8;
    ASSERT_EQ(selfplay(other, go_on), 0);
    EXPECT_EQ(read(path("a")), read(path("b")));
    EXPECT_NE(read(path("a")), read(path("c")));
}

TEST_F(Selfplay, GoesOnWhereItStopped) {
    ASSERT_EQ(selfplay(options("whole", 4), go_on), 0);
    const std::string whole = read(path("whole"));
    ASSERT_EQ(selfplay(options("stopped", 4), stop_after_two), 0);
    const std::string two_games = read(path("stopped"));
    EXPECT_EQ(whole.substr(0, two_games.size()), two_games);
    ASSERT_LT(two_games.size(), whole.size());
    // Cut off between games, within a game, within a record; and with nothing left to do.
    for (const size_t size : {two_games.size(), two_games.size() + 5 * sizeof(GameRecord),
                              two_games.size() + 37, size_t{11}, size_t{0}, whole.size()}) {
        std::ofstream(path("cut"), std::ios::binary) << whole.substr(0, size);
        ASSERT_EQ(selfplay(options("cut", 4), go_on), 0);
        EXPECT_EQ(read(path("cut")), whole) << size;
    }
}

TEST_F(Selfplay, TellsThatTheFileCannotBeWritten) {
    SelfplayOptions bad = options("x", 1);
    bad.out = "/nowhere/at/all";
    EXPECT_EQ(selfplay(bad, go_on), 1);
}

}  // namespace
