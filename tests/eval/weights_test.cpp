#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "base/log.h"
#include "tests/eval/fixtures.h"

namespace {

namespace fs = std::filesystem;

std::string logged;

void keep_log(const char* text) { logged += text; }

// Each test works in an empty folder of its own.
class WeightsTest : public EvalTest {
  protected:
    void SetUp() override {
        EvalTest::SetUp();
        std::string name = (fs::temp_directory_path() / "weights_test.XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        before_ = fs::current_path();
        folder_ = name;
        fs::current_path(folder_);
        logged.clear();
        log_listener = keep_log;
    }
    void TearDown() override {
        log_listener = nullptr;
        fs::current_path(before_);
        fs::remove_all(folder_);
        EvalTest::TearDown();
    }

  private:
    fs::path before_;
    fs::path folder_;
};

std::vector<uint8_t> random_image(size_t bytes) {
    Random random(bytes);
    std::vector<uint8_t> image(bytes);
    for (uint8_t& byte : image) byte = static_cast<uint8_t>(random());
    return image;
}

void write_bytes(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    ASSERT_TRUE(file.good());
}

// The storage holds the bytes and then zeros.
bool storage_is(const std::vector<uint8_t>& bytes) {
    const auto* const storage = reinterpret_cast<const uint8_t*>(&weights);
    const size_t used = std::min(bytes.size(), WEIGHTS_BYTES);
    return std::equal(storage, storage + used, bytes.begin()) &&
           std::all_of(storage + used, storage + WEIGHTS_BYTES, [](uint8_t byte) { return byte == 0; });
}

// The number at an offset of the file, as it is written down: signed, low byte first.
int number_at(const std::vector<uint8_t>& image, size_t offset) {
    const int value = image[offset] | image[offset + 1] << 8;
    return value >= 32768 ? value - 65536 : value;
}

}  // namespace

TEST_F(WeightsTest, LayoutOfTheFile) {
    const std::vector<uint8_t> image = random_image(8503076);
    write_bytes("weights.bin", image);
    ASSERT_EQ(load_weights(), 0);
    EXPECT_EQ(logged, "");
    for (size_t table = 0; table < 4; ++table) {
        for (const size_t i : {size_t{0}, size_t{1}, size_t{265720}, size_t{531440}}) {
            const size_t offset = 2125764 * table + 4 * i;
            EXPECT_EQ(weights.patterns[table][i].opening, number_at(image, offset));
            EXPECT_EQ(weights.patterns[table][i].endgame, number_at(image, offset + 2));
        }
    }
    const EvalParams& p = weights.params;
    const int16_t params[10] = {p.lr_bal_opening,    p.lr_bal_endgame,   p.tempo_opening, p.tempo_endgame,
                                p.men_opening,       p.men_endgame,      p.kings_opening, p.kings_endgame,
                                p.has_kings_opening, p.has_kings_endgame};
    for (size_t i = 0; i < 10; ++i) EXPECT_EQ(params[i], number_at(image, 8503056 + 2 * i)) << i;
    EXPECT_TRUE(storage_is(image));
}

// Also what a short file leaves is zero, wherever it ends, and what is behind the end of a long one is not
// used.
TEST_F(WeightsTest, FilesOfAnyLength) {
    for (const size_t bytes :
         {size_t{0}, size_t{1}, size_t{2}, size_t{4095}, size_t{2125764}, size_t{5000001}, WEIGHTS_BYTES - 21,
          WEIGHTS_BYTES - 20, WEIGHTS_BYTES - 1, WEIGHTS_BYTES, WEIGHTS_BYTES + 1, WEIGHTS_BYTES + 1000000}) {
        const std::vector<uint8_t> image = random_image(bytes);
        write_bytes("weights.bin", image);
        clear_weights();
        EXPECT_EQ(load_weights(), 0) << bytes;
        EXPECT_TRUE(storage_is(image)) << bytes;
        // The same from memory, over what was there.
        std::memset(static_cast<void*>(&weights), 0x55, WEIGHTS_BYTES);
        set_weights(image);
        EXPECT_TRUE(storage_is(image)) << bytes;
    }
    EXPECT_EQ(logged, "");
}

TEST_F(WeightsTest, FileWithoutParamsHasAllTables) {
    const std::vector<uint8_t> image = random_image(8503056);
    write_bytes("weights.bin", image);
    ASSERT_EQ(load_weights(), 0);
    EXPECT_TRUE(storage_is(image));
    const EvalParams zero{};
    EXPECT_EQ(std::memcmp(&weights.params, &zero, sizeof zero), 0);
    // Kings are worth nothing without the weights.
    EXPECT_EQ(score_of(position_of({.black_kings = {1, 2, 3}}), BLACK), 0);
}

TEST_F(WeightsTest, ZeroAndEmptyFilesEvaluateToZero) {
    Random random(1);
    for (const size_t bytes : {size_t{0}, WEIGHTS_BYTES}) {
        write_bytes("weights.bin", std::vector<uint8_t>(bytes));
        ASSERT_EQ(load_weights(), 0);
        for (int i = 0; i < 20000; ++i) {
            const Position position = random_position(random);
            NodeSummary summary;
            summarize(position, summary);
            const bool exact =
                summary.black_kings > 0 && summary.white_kings > 0 && summary.larger_total <= 3;
            const int32_t score = evaluate(position, position.side, summary);
            ASSERT_EQ(exact ? std::abs(score) : score, exact ? 1 : 0);
        }
    }
}

TEST_F(WeightsTest, MissingFileIsLoggedAndChangesNothing) {
    const std::vector<uint8_t> image = random_image(WEIGHTS_BYTES);
    set_weights(image);
    for (const bool pext : {false, true}) {
        use_pext = pext;
        logged.clear();
        EXPECT_EQ(load_weights(), 1);
        EXPECT_EQ(logged, "Cannot open weights.bin for reading\n");
        EXPECT_EQ(use_pext, pext);
        EXPECT_TRUE(storage_is(image));
    }
}

TEST_F(WeightsTest, OtherPath) {
    const std::vector<uint8_t> image = random_image(1000);
    fs::create_directory("folder");
    write_bytes("folder/other.bin", image);
    EXPECT_EQ(load_weights_from("folder/other.bin"), 0);
    EXPECT_TRUE(storage_is(image));
    EXPECT_EQ(load_weights_from("folder/none.bin"), 1);
    EXPECT_EQ(logged, "Cannot open folder/none.bin for reading\n");
    EXPECT_EQ(load_weights_from("folder"), 1);
}

TEST_F(WeightsTest, FileIsFoundInTheCurrentFolderOnly) {
    fs::create_directory("folder");
    write_bytes("weights.bin", random_image(100));
    fs::current_path("folder");
    EXPECT_EQ(load_weights(), 1);
    fs::current_path("..");
    EXPECT_EQ(load_weights(), 0);
}

TEST_F(WeightsTest, WritesWhatItReads) {
    const std::vector<uint8_t> image = random_image(WEIGHTS_BYTES);
    set_weights(image);
    ASSERT_EQ(write_weights("weights.bin", weights), 0);
    EXPECT_EQ(fs::file_size("weights.bin"), 8503076u);
    clear_weights();
    EXPECT_TRUE(storage_is({}));
    ASSERT_EQ(load_weights(), 0);
    EXPECT_TRUE(storage_is(image));
}

TEST_F(WeightsTest, FailedWriteLeavesTheOldFile) {
    EXPECT_EQ(write_weights("no_such_folder/weights.bin", weights), 1);
    EXPECT_FALSE(fs::exists("no_such_folder"));
    fs::create_directory("weights.bin");
    EXPECT_EQ(write_weights("weights.bin", weights), 1);
    EXPECT_TRUE(fs::is_directory("weights.bin"));
    EXPECT_EQ(std::distance(fs::directory_iterator("."), fs::directory_iterator()), 1);
}

TEST_F(WeightsTest, LoadBuildsTheTablesOnce) {
    weights.params.men_opening = 1;
    Random random(1);
    randomize_weights(random, 1000);
    const Position position = random_position(random, {40, 0});
    const int32_t score = score_of(position, BLACK);
    ASSERT_NE(score, 0);
    init_eval_tables();
    init_eval_tables();
    EXPECT_EQ(score_of(position, BLACK), score);
}
