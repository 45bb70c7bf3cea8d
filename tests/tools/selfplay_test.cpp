#include "tools/selfplay.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <vector>

#include "core/ballots.h"
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
                              two_games.size() + 37, size_t{0}, whole.size()}) {
        std::ofstream(path("cut"), std::ios::binary) << whole.substr(0, size);
        ASSERT_EQ(selfplay(options("cut", 4), go_on), 0);
        EXPECT_EQ(read(path("cut")), whole) << size;
    }
}

TEST_F(Selfplay, AFileWithMoreGamesStaysAsItIs) {
    ASSERT_EQ(selfplay(options("games", 4), go_on), 0);
    const std::string whole = read(path("games"));
    for (const int64_t games : {3, 1, 4}) {
        ASSERT_EQ(selfplay(options("games", games), go_on), 0);
        EXPECT_EQ(read(path("games")), whole) << games;
    }
}

TEST_F(Selfplay, AnotherFileIsNotTouched) {
    for (const std::string& content :
         {std::string("notes"), std::string(1000, 'x'), std::string(320, '\0')}) {
        std::ofstream(path("other"), std::ios::binary) << content;
        EXPECT_EQ(selfplay(options("other", 1), go_on), 2);
        EXPECT_EQ(read(path("other")), content);
    }
}

using Sets = std::array<uint64_t, 4>;

std::set<Sets> ballot_sets(int moves) {
    std::set<Sets> sets;
    Ballot ballot;
    for (int i = 0; find_ballot(moves, i, ballot); ++i)
        sets.insert({ballot.position.black, ballot.position.white, ballot.position.king,
                     static_cast<uint64_t>(ballot.position.side)});
    return sets;
}

// How many of the games have a ballot of so many moves as their first record.
int games_from_ballots(const std::vector<GameRecord>& records, int moves) {
    const std::set<Sets> ballots = ballot_sets(moves);
    int count = 0;
    for (size_t i = 0; i < records.size(); ++i)
        if (i == 0 || records[i].game != records[i - 1].game)
            if (ballots.contains({records[i].black, records[i].white, records[i].king, records[i].side}))
                ++count;
    return count;
}

TEST_F(Selfplay, GamesBeginWhereTheyAreToldTo) {
    const auto play = [&](SelfplayOpening opening) {
        SelfplayOptions o = options("games", 40);
        o.depth = 1;
        o.opening = opening;
        std::filesystem::remove(path("games"));
        EXPECT_EQ(selfplay(o, go_on), 0);
        return records_of(path("games"));
    };
    // A seventh of the games has no random plies behind the ballot.
    const std::vector<GameRecord> two = play(OPENING_TWO_MOVES), three = play(OPENING_THREE_MOVES);
    EXPECT_GT(games_from_ballots(two, 2), 0);
    EXPECT_LT(games_from_ballots(two, 2), 20);
    EXPECT_GT(games_from_ballots(three, 3), 0);
    EXPECT_LT(games_from_ballots(three, 3), 20);
    // Behind three moves there is no position that is reached by two.
    EXPECT_EQ(games_from_ballots(three, 2), 0);
    const std::vector<GameRecord> any = play(OPENING_RANDOM);
    EXPECT_EQ(games_from_ballots(any, 2) + games_from_ballots(any, 3), 0);
}

bool same_record(const GameRecord& a, const GameRecord& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

TEST_F(Selfplay, KeepsOnePositionInSoManyOfTheSameGames) {
    SelfplayOptions o = options("all", 30);
    o.depth = 1;
    ASSERT_EQ(selfplay(o, go_on), 0);
    o.out = path("some");
    o.keep = 4;
    ASSERT_EQ(selfplay(o, go_on), 0);
    const std::vector<GameRecord> all = records_of(path("all")), some = records_of(path("some"));
    size_t found = 0;
    for (const GameRecord& record : all)
        if (found < some.size() && same_record(record, some[found])) ++found;
    EXPECT_EQ(found, some.size());
    EXPECT_GT(some.size(), all.size() / 5);
    EXPECT_LT(some.size(), all.size() / 3);
    // And goes on where it stopped, even behind games of which nothing was kept.
    const std::string whole = read(path("some"));
    for (const size_t size : {whole.size() / 3, whole.size() / 2 + 7}) {
        std::ofstream(path("cut"), std::ios::binary) << whole.substr(0, size);
        o.out = path("cut");
        ASSERT_EQ(selfplay(o, go_on), 0);
        EXPECT_EQ(read(path("cut")), whole) << size;
    }
}

// Share of the records whose score is a man or more from that of the one before in their game: what a bad
// move does.
double share_of_swings(const std::vector<GameRecord>& records) {
    int swings = 0;
    for (size_t i = 1; i < records.size(); ++i)
        swings +=
            records[i].game == records[i - 1].game && std::abs(records[i].score - records[i - 1].score) >= 90;
    return swings / static_cast<double>(records.size());
}

TEST_F(Selfplay, StraysFromTheBestMoveOnceInSoMany) {
    SelfplayOptions o = options("straight", 12);
    ASSERT_EQ(selfplay(o, go_on), 0);
    o.out = path("straying");
    o.stray = 4;
    ASSERT_EQ(selfplay(o, go_on), 0);
    const std::string whole = read(path("straying"));
    EXPECT_GT(share_of_swings(records_of(path("straying"))),
              1.5 * share_of_swings(records_of(path("straight"))));
    // The games hang on the seed alone, and go on where they stopped.
    std::ofstream(path("cut"), std::ios::binary) << whole.substr(0, whole.size() / 2);
    o.out = path("cut");
    ASSERT_EQ(selfplay(o, go_on), 0);
    EXPECT_EQ(read(path("cut")), whole);
}

TEST_F(Selfplay, TellsThatTheFileCannotBeWritten) {
    SelfplayOptions bad = options("x", 1);
    bad.out = "/nowhere/at/all";
    EXPECT_EQ(selfplay(bad, go_on), 1);
}

}  // namespace
