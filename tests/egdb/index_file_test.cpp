#include "egdb/index_file.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/egdb/index_reading.h"

namespace {

// Of our own type.
struct Reading : IndexReading {
    Reading(const std::string& text, int64_t data_bytes) : IndexReading(EGDB_WLD, text, data_bytes) {}
};

constexpr Material MEN{2, 0, 1, 0}, KINGS{0, 2, 0, 1}, MIXED{1, 1, 1, 0};

TEST(IndexFile, SingleValues) {
    const Reading reading("BASE2,0,1,0,0,b:+\nBASE2,0,1,0,0,w:-\nBASE0,2,0,1,0,b:=\nBASE0,2,0,1,0,w:.\n", 0);
    EXPECT_EQ(reading.status, 0);
    EXPECT_EQ(reading.at(MEN, BLACK).singlevalue, 1);
    EXPECT_EQ(reading.at(MEN, WHITE).singlevalue, 2);
    EXPECT_EQ(reading.at(KINGS, BLACK).singlevalue, 3);
    EXPECT_EQ(reading.at(KINGS, WHITE).singlevalue, 0);
    for (const Material& m : {MEN, KINGS}) {
        EXPECT_EQ(reading.at(m, BLACK).file, &reading.file);
        EXPECT_EQ(reading.at(m, BLACK).next, nullptr);
        EXPECT_EQ(reading.at(m, BLACK).prev, nullptr);
    }
    EXPECT_EQ(database_log, "         0 index blocks: FILE\n");
}

TEST(IndexFile, BlocksOfASubslice) {
    const Reading reading("BASE0,2,0,1,0,w:0/0,12,228\n100,13,27\n  5000,0,216\nBASE2,0,1,0,0,b:+\n",
                          2 * 4096 + 100);
    EXPECT_EQ(reading.status, 0) << database_log;
    const Subslice& subslice = reading.at(KINGS, WHITE);
    EXPECT_EQ(subslice.singlevalue, NO_SINGLE_VALUE);
    EXPECT_EQ(subslice.num_idx_blocks, 3u);
    EXPECT_EQ(subslice.first_idx_block, 0u);
    EXPECT_EQ(subslice.indices, (std::vector<uint32_t>{0, 100, 5000}));
    EXPECT_EQ(subslice.catalogidx, (std::vector<uint8_t>{12, 13, 0}));
    EXPECT_EQ(subslice.vmap, (std::vector<uint8_t>{228, 27, 216}));
    EXPECT_EQ(subslice.last_subidx, 1);  // from the file's size: the last block is short
    EXPECT_EQ(subslice.same_subidx, 0);
    EXPECT_EQ(subslice.positions, 58800u);
    EXPECT_EQ(reading.at(MEN, BLACK).singlevalue, 1);
    EXPECT_EQ(database_log, "         3 index blocks: FILE\n");
    EXPECT_GE(reading.memory, CPRSUBDATABASE_BYTES + 3 * 6);
}

// Where one ends follows from where the next one starts.
TEST(IndexFile, EndsOfSubslices) {
    const auto last_of_first = [](int64_t block, int start) {
        const Reading reading("BASE0,2,0,1,0,b:0/0,1,228\n" + std::string(block ? "70,1,228\n" : "") +
                                  "BASE0,2,0,1,0,w:" + std::to_string(block) + "/" + std::to_string(start) +
                                  ",1,228\n",
                              3 * 4096);
        EXPECT_EQ(reading.status, 0) << database_log;
        return static_cast<int>(reading.at(KINGS, BLACK).last_subidx);
    };
    EXPECT_EQ(last_of_first(1, 1), 0);
    EXPECT_EQ(last_of_first(1, 64), 0);  // on a boundary: the sub-block before
    EXPECT_EQ(last_of_first(1, 65), 1);
    EXPECT_EQ(last_of_first(1, 128), 1);
    EXPECT_EQ(last_of_first(1, 4095), 63);
    EXPECT_EQ(last_of_first(0, 200), 3);
    // At a block's start: the block before is full.
    const Reading full("BASE0,2,0,1,0,b:0/0,1,228\nBASE0,2,0,1,0,w:1/0,1,228\n", 4097);
    EXPECT_EQ(full.status, 0);
    EXPECT_EQ(full.at(KINGS, BLACK).last_subidx, 63);
    EXPECT_EQ(full.at(KINGS, WHITE).last_subidx, 0);
}

TEST(IndexFile, SubslicesInsideOneSubblock) {
    const Reading reading(
        "BASE0,2,0,1,0,b:0/0,1,228\nBASE0,2,0,1,0,w:0/10,1,228\nBASE2,0,1,0,0,b:0/60,1,228\nBASE2,0,1,0,0,w:0/64,1,228\n"
        "BASE1,1,1,0,0,b:0/66,1,228\n",
        70);
    EXPECT_EQ(reading.status, 0) << database_log;
    EXPECT_EQ(reading.at(KINGS, BLACK).same_subidx, 1);
    EXPECT_EQ(reading.at(KINGS, WHITE).same_subidx, 1);
    EXPECT_EQ(reading.at(MEN, BLACK).same_subidx, 1);
    EXPECT_EQ(reading.at(MEN, WHITE).first_subidx, 1);
    EXPECT_EQ(reading.at(MEN, WHITE).same_subidx, 1);
    EXPECT_EQ(reading.at(MIXED, BLACK).same_subidx, 0);  // the last one of a file never has the mark
    EXPECT_EQ(reading.at(KINGS, BLACK).next, &reading.at(KINGS, WHITE));
    EXPECT_EQ(reading.at(MEN, BLACK).prev, &reading.at(KINGS, WHITE));
    EXPECT_EQ(reading.at(MIXED, BLACK).next, nullptr);
}

TEST(IndexFile, ManyBlocksAreKept) {
    constexpr int BLOCKS = 45000;
    std::string text = "BASE2,1,1,1,0,b:0/0,1,228\n";
    for (int i = 1; i < BLOCKS; ++i)
        text +=
            std::to_string(i * 1000) + "," + std::to_string(i % 50) + "," + std::to_string(i % 256) + "\n";
    const Reading reading(text, BLOCKS * int64_t{4096});
    ASSERT_EQ(reading.status, 0) << database_log;
    const Subslice& subslice = reading.at({2, 1, 1, 1}, BLACK);
    ASSERT_EQ(subslice.num_idx_blocks, uint32_t{BLOCKS});
    for (uint32_t i = 0; i < BLOCKS; ++i) {
        ASSERT_EQ(subslice.indices[i], i * 1000);
        ASSERT_EQ(subslice.catalogidx[i], i == 0 ? 1 : i % 50);
        ASSERT_EQ(subslice.vmap[i], i == 0 ? 228 : i % 256);
    }
}

TEST(IndexFile, LaterSubslicesOfALargeSlice) {
    const Reading reading("BASE5,0,4,0,55,w:+\nBASE5,0,4,0,0,w:-\n", 0);
    ASSERT_EQ(reading.status, 0);
    EXPECT_EQ(reading.at({5, 0, 4, 0}, WHITE, 55).singlevalue, 1);
    EXPECT_EQ(reading.at({5, 0, 4, 0}, WHITE, 0).singlevalue, 2);
    EXPECT_EQ(reading.at({5, 0, 4, 0}, WHITE, 7).singlevalue, 0);  // nothing is told: unknown
    EXPECT_EQ(reading.at({5, 0, 4, 0}, WHITE, 55).positions, 118459258815 - 55 * SUBSLICE_POSITIONS);
    EXPECT_GE(reading.memory, CPRSUBDATABASE_BYTES + 56 * static_cast<int64_t>(sizeof(Subslice)));
}

TEST(IndexFile, BlockCountsThatDisagreeAreLogged) {
    const Reading reading("BASE0,2,0,1,0,b:0/0,1,228\n", 3 * 4096);
    EXPECT_EQ(reading.status, 0);
    EXPECT_EQ(database_log, "count of index blocks dont match: 1 3\n         1 index blocks: FILE\n");
}

void expect_failure(const std::string& text, const char* message, int64_t bytes = 3 * 4096) {
    const Reading reading(text, bytes);
    EXPECT_EQ(reading.status, 1) << text;
    EXPECT_EQ(database_log, message) << text;
}

TEST(IndexFile, TextThatCannotBeRead) {
    for (const char* text : {"BASE2,0,1,0,0", "BASE2,0,1,0,x,b:+", "BASF2,0,1,0,0,b:+", "?", "BASE2,0,1,0,0,",
                             "BASE2,0,1,0,1,b:+", "BASE6,0,1,0,0,b:+", "BASE-1,0,1,0,0,b:+",
                             "BASE5,1,1,0,0,b:+", "BASE2,0,1,0,-1,b:+",
                             "BASE2,0,1,0,99999999999999999999,b:+", "BASE2,0,1,0,0,b:+\nBASE2,0,1,0,0,b:-"})
        expect_failure(text, "Error parsing FILE\n");
    for (const char* text :
         {"BASE2,0,1,0,0,b:", "BASE2,0,1,0,0,b:x", "BASE2,0,1,0,0,b: +", "BASE2,0,1,0,0,b:*"})
        expect_failure(text, "Bad singlevalue line in FILE\n");
    for (const char* text :
         {"BASE2,0,1,0,0,b:0/0,1", "BASE2,0,1,0,0,b:0", "BASE2,0,1,0,0,b:0/4096,1,228",
          "BASE2,0,1,0,0,b:3/0,1,228", "BASE2,0,1,0,0,b:0/0,50,228", "BASE2,0,1,0,0,b:0/0,1,256",
          "BASE2,0,1,0,0,b:0/0,-1,228", "BASE2,0,1,0,0,b:0/7,1,228", "BASE2,0,1,0,0,b:1/0,1,228",
          "BASE2,0,1,0,0,b:0/0,1,228\n0,1,228", "BASE2,0,1,0,0,b:0/0,1,228\n9,1,228\n9,1,228",
          "BASE2,0,1,0,0,b:0/0,1,228\n42790,1,228", "BASE2,0,1,0,0,b:0/0,1,228\n-4,1,228",
          "BASE2,0,1,0,0,b:0/0,1,228\n1,1,228\n2,1,228\n3,1,228",
          "BASE2,0,1,0,0,b:0/0,1,228\nBASE2,0,1,0,0,w:0/0,1,228",
          "BASE2,0,1,0,0,b:0/0,1,228\nBASE2,0,1,0,0,w:2/0,1,228",
          "BASE2,0,1,0,0,b:0/0,1,228\n9,1,228\nBASE2,0,1,0,0,w:1/0,1,228"})
        expect_failure(text, "Bad line in FILE\n");
}

TEST(IndexFile, ColoursAreBAndAnyOther) {
    const Reading reading("BASE2,0,1,0,0,x:+ BASE1,1,1,0,0,b:-", 0);
    EXPECT_EQ(reading.status, 0);
    EXPECT_EQ(reading.at(MEN, WHITE).singlevalue, 1);
    EXPECT_EQ(reading.at(MIXED, BLACK).singlevalue, 2);
}

TEST(IndexFile, MissingFiles) {
    const ScratchFolder folder;
    EgdbDatabase database;
    database.folder = folder.path;
    database.log = keep_log;
    database.cprsubdatabase = std::make_unique<Cprsubdatabase>();
    int64_t memory = 0;
    DbFile& small = database.files[0];
    small.pieces = 5;
    small.name = {'d', 'b', '5'};
    database_log.clear();
    EXPECT_EQ(read_index_file(database, small, memory), 1);
    EXPECT_EQ(database_log, "Cannot open " + folder.path + "db5.cpr1\n");
    DbFile& large = database.files[1];
    large.pieces = 6;
    large.name = {'d', 'b', '6', '-', '3', '0', '3', '0'};
    database_log.clear();
    EXPECT_EQ(read_index_file(database, large, memory), 0);
    EXPECT_EQ(database_log, folder.path + "db6-3030.cpr1 not present\n");
    EXPECT_EQ(large.is_present, 0);
    std::ofstream(folder.file("db6-3030.cpr1")) << "x";
    database_log.clear();
    EXPECT_EQ(read_index_file(database, large, memory), 1);
    EXPECT_EQ(database_log, "cannot open index file " + folder.path + "db6-3030.idx1\n");
    std::ofstream(folder.file("db6-3030.idx1")) << "BASE3,0,3,0,0,b:+\n";
    EXPECT_EQ(read_index_file(database, large, memory), 0);
    EXPECT_EQ(large.is_present, 1);
    EXPECT_EQ(large.num_cache_blocks, 1);
}

}  // namespace
