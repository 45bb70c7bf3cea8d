#include "tools/seed_weights.h"

#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "base/files.h"
#include "tests/eval/fixtures.h"

namespace {

constexpr char NEW_FILE[] = "seed_weights_test.bin";

class SeedWeightsTest : public EvalTest {
  protected:
    void SetUp() override {
        EvalTest::SetUp();
        path_ = (std::filesystem::temp_directory_path() / (NEW_FILE + std::to_string(getpid()))).string();
        ASSERT_EQ(seed_weights(path_), 0);
    }
    void TearDown() override {
        std::filesystem::remove(path_);
        EvalTest::TearDown();
    }
    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

}  // namespace

// The margins of the search are in the scale in which a man is 100.
TEST_F(SeedWeightsTest, AManOfTheProjectsFileIsWorthAbout100) {
    ASSERT_EQ(file_size(PROJECT_FOLDER "/data/weights.bin"), static_cast<int64_t>(WEIGHTS_BYTES));
    ASSERT_EQ(load_weights_from(PROJECT_FOLDER "/data/weights.bin"), 0);
    int32_t sum = 0;
    int men = 0;
    for (uint64_t left = START_POSITION.white; left; left &= left - 1, ++men) {
        Position position = START_POSITION;
        position.white &= ~(left & (~left + 1));
        NodeSummary summary;
        summarize(position, summary);
        sum += evaluate(position, BLACK, summary);
    }
    EXPECT_EQ(men, 20);
    EXPECT_GT(sum / men, 60);
    EXPECT_LT(sum / men, 140);
    clear_weights();
}

TEST_F(SeedWeightsTest, LeavesTheStorageAlone) {
    const EvalParams zero{};
    EXPECT_EQ(std::memcmp(&weights.params, &zero, sizeof zero), 0);
    ASSERT_EQ(load_weights_from(path()), 0);
    EXPECT_EQ(std::memcmp(&weights.params, &SEED_PARAMS, sizeof SEED_PARAMS), 0);
}

TEST_F(SeedWeightsTest, FailsWithoutAFolder) { EXPECT_EQ(seed_weights("/no_such_folder/weights.bin"), 1); }

TEST_F(SeedWeightsTest, ManIsAboutHundredPoints) {
    ASSERT_EQ(load_weights_from(path()), 0);
    EXPECT_EQ(score_of(START_POSITION, WHITE), 0);
    for (const int missing : {1, 3, 8, 14, 20}) {
        Position position = START_POSITION;
        position.black &= ~set_of_square(missing);
        EXPECT_NEAR(score_of(position, WHITE), 100, 15) << missing;
    }
    EXPECT_NEAR(score_of(position_of({.black_men = {22, 23, 24}, .white_men = {28, 29}}), BLACK), 110, 20);
    EXPECT_NEAR(score_of(position_of({.black_kings = {22}}), BLACK), 300, 10);
    EXPECT_NEAR(score_of(position_of({.white_kings = {22, 24}}), WHITE), 500, 10);
}

TEST_F(SeedWeightsTest, TempoIsASmallGood) {
    ASSERT_EQ(load_weights_from(path()), 0);
    // 31-27 and 34-29: two rows, and the lean to one wing stays as it was.
    Position position = START_POSITION;
    position.white &= ~(mask_of_square[30] | mask_of_square[33]);
    position.white |= mask_of_square[26] | mask_of_square[28];
    EXPECT_GT(score_of(position, WHITE), 0);
    EXPECT_LT(score_of(position, WHITE), 10);
}
