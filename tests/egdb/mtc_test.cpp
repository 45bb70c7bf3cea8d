// Databases of moves to conversion: their byte code, their index, opening and lookups.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "egdb/egdb_open.h"
#include "egdb/mtc_codes.h"
#include "egdb/mtc_lookup.h"
#include "egdb/mtc_open.h"
#include "egdb/position_walk.h"
#include "tests/egdb/index_reading.h"
#include "tests/egdb/positions.h"

namespace {

constexpr Material KINGS{0, 2, 0, 1};

TEST(MtcCodes, RunsAndNumbers) {
    std::vector<uint32_t> runs;
    for (uint32_t n = 1; n <= 50; ++n) runs.push_back(n);
    for (uint32_t n = 2; n <= 20; ++n) runs.push_back(50 * n);
    for (uint32_t n = 2; n <= 10; ++n) runs.push_back(1000 * n);
    for (const uint32_t n :
         std::initializer_list<uint32_t>{20000, 30000, 40000, 50000, 60000, 70000, 800000, 90000, 100000,
                                         300000, 1000000, 3000000, 10000000, 30000000, 100000000, 1000000000})
        runs.push_back(n);
    ASSERT_EQ(runs.size(), 94u);
    EXPECT_EQ(runs[84], 800000u);
    for (size_t b = 0; b < 256; ++b) {
        const auto byte = static_cast<uint8_t>(b);
        EXPECT_EQ(mtc_totals[b], b < 94 ? runs[b] : 1);
        EXPECT_EQ(mtc_of_byte(byte), b < 94 ? 1 : static_cast<int32_t>(b - 94) * 2);
    }
    EXPECT_EQ(mtc_of_byte(94), 0);
    EXPECT_EQ(mtc_of_byte(255), 322);
}

struct Reading : IndexReading {
    Reading(const std::string& text, int64_t data_bytes) : IndexReading(EGDB_MTC, text, data_bytes) {}
};

TEST(MtcIndex, EveryFourthUnitBeginsABlock) {
    const Reading reading(
        "BASE0,2,0,1,0,b:0/0\n# a line of words\n11\n12\n13\n14\n15\n"
        "BASE0,2,0,1,0,w:5/100\n  # 1 2 3\n#\n 10\n20 30\n40\n",
        9 * 4096 + 1);
    ASSERT_EQ(reading.status, 0) << database_log;
    const Subslice& first = reading.at(KINGS, BLACK);
    EXPECT_EQ(first.first_idx_block, 0u);
    EXPECT_EQ(first.indices, (std::vector<uint32_t>{0, 14}));
    EXPECT_TRUE(first.catalogidx.empty());
    const Subslice& second = reading.at(KINGS, WHITE);
    EXPECT_EQ(second.first_idx_block, 1u);
    EXPECT_EQ(second.startbyte, 4096 + 100);
    EXPECT_EQ(second.indices, (std::vector<uint32_t>{0, 30}));
    EXPECT_EQ(second.num_idx_blocks, 2u);
    EXPECT_EQ(database_log, "         4 index blocks: FILE\n");
}

TEST(MtcIndex, ACountOfBlocksThatDisagreesIsLogged) {
    const Reading reading("BASE0,2,0,1,0,b:0/0\n", 3 * 16384);
    EXPECT_EQ(reading.status, 0);
    EXPECT_EQ(database_log, "count of index blocks dont match: 1 3\n         1 index blocks: FILE\n");
}

TEST(MtcIndex, WhatCannotBeRead) {
    struct Row {
        const char* text;
        const char* log;
    };
    const std::vector<Row> rows = {
        {"BASE0,2,0,1,0,b:+\n", "Error parsing mtc index file.\n"},
        {"BASE0,2,0,1,0,b: 0/0\n", "Error parsing mtc index file.\n"},
        {"BASE0,2,0,1,0,b:", "Error parsing mtc index file.\n"},
        {"BASE0,2,0,1,b:0/0\n", "Error parsing FILE\n"},
        {"nothing\n", "Error parsing FILE\n"},
        {"BASE0,2,0,1,1,b:0/0\n", "Error parsing FILE\n"},            // there is one Subslice
        {"BASE0,2,0,1,0,b:0,0\n", "Bad line in FILE\n"},              // no offset
        {"BASE0,2,0,1,0,b:0/4096\n", "Bad line in FILE\n"},           // behind the unit
        {"BASE0,2,0,1,0,b:0/1\n", "Bad line in FILE\n"},              // not at the file's start
        {"BASE0,2,0,1,0,b:0/0\n7\n7\n", "Bad line in FILE\n"},        // does not rise
        {"BASE0,2,0,1,0,b:0/0\n58800\n", "Bad line in FILE\n"},       // there are 58800 positions
        {"BASE0,2,0,1,0,b:0/0\n1\n2\n3\n4\n", "Bad line in FILE\n"},  // a block behind the file's end
        {"BASE0,2,0,1,0,b:0/0\nBASE0,2,0,1,0,b:0/5\n", "Error parsing FILE\n"},  // told twice
    };
    for (const Row& row : rows) {
        const Reading reading(row.text, 16384);
        EXPECT_EQ(reading.status, 1) << row.text;
        EXPECT_EQ(database_log, row.log) << row.text;
    }
}

// A folder with db2, in which black has 2450 positions: numbers at the beginning and at the end.
struct SmallFolder : ScratchFolder {
    std::string bytes;

    SmallFolder() {
        for (const int byte : {94, 100, 3, 255, 65, 65, 42}) bytes += static_cast<char>(byte);
        int64_t positions = 0;
        for (const char c : bytes) positions += mtc_totals[static_cast<uint8_t>(c)];
        while (positions++ < 2450) bytes += static_cast<char>(94 + positions % 160);
        write(bytes, "BASE0,1,0,1,0,b:0/0\n");
    }
    void write(const std::string& data, const std::string& index) const {
        std::ofstream(file("db2.cpr_mtc"), std::ios::binary) << data;
        std::ofstream(file("db2.idx_mtc"), std::ios::binary) << index;
    }
    OpenEgdb open(int32_t megabytes = 1) const {
        database_log.clear();
        EgdbOpenRequest request;
        request.folder = path;
        request.pieces = 4;
        request.cache_megabytes = megabytes;
        request.log = keep_log;
        return open_mtc(request);
    }
};

int32_t ask(const EgdbDriver& driver, const Position& position, int side, bool conditional = false) {
    return driver.lookup(driver.handle, position, side, conditional);
}

TEST(MtcLookup, EveryByteOfASmallFile) {
    const SmallFolder folder;
    const OpenEgdb driver = folder.open();
    ASSERT_TRUE(driver) << database_log;
    EXPECT_EQ(driver->type, EGDB_MTC);
    PositionWalk walk({0, 1, 0, 1}, 0);
    for (const char c : folder.bytes) {
        const auto byte = static_cast<uint8_t>(c);
        for (uint32_t i = 0; i < mtc_totals[byte]; ++i) {
            ASSERT_EQ(ask(*driver, walk.position, BLACK), mtc_of_byte(byte)) << walk.index;
            ASSERT_EQ(ask(*driver, mirror_position(walk.position), WHITE), mtc_of_byte(byte));
            if (walk.index + 1 < 2450) walk.advance();
        }
    }
    const EgdbStatistics& s = *driver->get_stats(driver->handle);
    EXPECT_EQ(s.db_requests, 4900u);
    EXPECT_EQ(s.db_returns, 4900u);
    EXPECT_EQ(s.lru_cache_loads, 1u);  // at the opening
    int32_t pieces = 0, one_side = 0, nine = 7, eight = 7;
    EXPECT_EQ(driver->get_pieces(driver->handle, &pieces, &one_side, &nine, &eight), 0);
    EXPECT_EQ(pieces, 2);
    EXPECT_EQ(one_side, 1);
    EXPECT_EQ(nine, 0);
    EXPECT_EQ(eight, 0);
}

TEST(MtcLookup, NoNumberInAnyDoubt) {
    const SmallFolder folder;
    const OpenEgdb driver = folder.open();
    ASSERT_TRUE(driver);
    const EgdbStatistics& s = *driver->get_stats(driver->handle);
    EXPECT_EQ(ask(*driver, kings({}, {1}), BLACK), NO_MTC);
    EXPECT_EQ(ask(*driver, kings({1}, {}), BLACK), NO_MTC);
    EXPECT_EQ(s.db_returns, 2u);
    EXPECT_EQ(ask(*driver, kings({1, 2, 3, 4, 5}, {46, 47, 48, 49}), BLACK), NO_MTC);  // nine
    EXPECT_EQ(ask(*driver, kings({1, 2, 3, 4, 5, 6}, {50}), WHITE), NO_MTC);           // six a side
    EXPECT_EQ(ask(*driver, kings({1, 2}, {50}), BLACK), NO_MTC);                       // no file
    EXPECT_EQ(s.db_not_present_requests, 3u);
    EXPECT_EQ(s.db_requests, 5u);
}

// Though a file may have them.
TEST(MtcLookup, NinePiecesAreNotLookedUp) {
    const SmallFolder folder;
    const std::string begins_behind = std::to_string(folder.bytes.size()) + "\n";
    for (const int32_t black : {4, 5}) {
        folder.write(folder.bytes + std::string(100, static_cast<char>(100)),
                     "BASE0,1,0,1,0,b:0/0\nBASE0," + std::to_string(black) + ",0,4,0,b:0/" + begins_behind);
        const auto opened = database_by_blocks(EGDB_MTC, folder.path, 2, 1);
        EgdbDatabase& database = *opened;
        EXPECT_EQ(mtc_lookup(database, position_from_index(0, {0, black, 0, 4}), BLACK, false), NO_MTC);
        EXPECT_EQ(database.statistics.db_not_present_requests, black == 5 ? 1u : 0u);
        EXPECT_EQ(database.statistics.lru_cache_loads, black == 5 ? 0u : 1u);
    }
}

TEST(MtcLookup, ConditionalOnesDoNotRead) {
    const SmallFolder folder;
    const auto opened = database_by_blocks(EGDB_MTC, folder.path, 2, 1);
    EgdbDatabase& database = *opened;
    const Position position = position_from_index(1, {0, 1, 0, 1});
    EXPECT_EQ(mtc_lookup(database, position, BLACK, true), NO_MTC);
    EXPECT_EQ(database.statistics.lru_cache_loads, 0u);
    EXPECT_EQ(mtc_lookup(database, position, BLACK, false), 12);
    EXPECT_EQ(mtc_lookup(database, position, BLACK, true), 12);
    EXPECT_EQ(database.statistics.lru_cache_loads, 1u);
}

TEST(MtcOpen, BlocksThatDisagreeEndTheOpening) {
    const SmallFolder folder;
    for (const size_t place : {size_t{2}, folder.bytes.size() - 1}) {
        std::string bytes = folder.bytes;
        bytes[place] = static_cast<char>(90);
        folder.write(bytes, "BASE0,1,0,1,0,b:0/0\n");
        // In the last byte of a Subslice a run may reach too far.
        EXPECT_EQ(folder.open() == nullptr, place == 2) << database_log;
    }
    folder.write(folder.bytes.substr(0, folder.bytes.size() - 1), "BASE0,1,0,1,0,b:0/0\n");
    EXPECT_FALSE(folder.open());
    EXPECT_NE(database_log.find("db2.cpr_mtc: block 0 does not agree with the index"), std::string::npos);
}

TEST(MtcOpen, AllFilesMayBeMissing) {
    const SmallFolder folder;
    std::filesystem::remove(folder.file("db2.cpr_mtc"));
    const OpenEgdb driver = folder.open();
    ASSERT_TRUE(driver);
    EXPECT_EQ(database_log.find("db2"), std::string::npos) << database_log;
    EXPECT_EQ(ask(*driver, kings({1}, {50}), BLACK), NO_MTC);
    // But a data file without its index is a failure.
    std::ofstream(folder.file("db3.cpr_mtc")) << "a";
    EXPECT_FALSE(folder.open());
    EXPECT_NE(database_log.find("cannot open index file " + folder.file("db3.idx_mtc") + "\n"),
              std::string::npos);
}

TEST(MtcOpen, TheCache) {
    const SmallFolder folder;
    // The least one, which has no more blocks than there are.
    ASSERT_TRUE(folder.open(1));
    EXPECT_NE(database_log.find("Allocating the minimum 1 cache buffers\n"
                                "Allocating 1 cache buffers of size 16384\npreload db2\nRead 1 buffers in "),
              std::string::npos)
        << database_log;
    EXPECT_EQ(database_log.find("autoload "), std::string::npos);
    // With more memory as many as fit.
    ASSERT_TRUE(folder.open(20));
    EXPECT_NE(database_log.find("Allocating 127"), std::string::npos) << database_log;
    EXPECT_EQ(database_log.find("minimum"), std::string::npos);
}

TEST(MtcOpen, WhatComesWithTheProgram) {
    database_log.clear();
    const OpenEgdb driver = egdb_open("", 1, shipped_distances(), keep_log);
    ASSERT_TRUE(driver) << database_log;
    EXPECT_EQ(driver->type, EGDB_MTC);
    int32_t pieces = 0, one_side = 0, nine = 0, eight = 0;
    driver->get_pieces(driver->handle, &pieces, &one_side, &nine, &eight);
    EXPECT_EQ(pieces, 4);
    EXPECT_EQ(one_side, 3);
    const OpenEgdb three = egdb_open("maxpieces = 3;", 1, shipped_distances(), keep_log);
    ASSERT_TRUE(three);
    three->get_pieces(three->handle, &pieces, &one_side, &nine, &eight);
    EXPECT_EQ(pieces, 3);
}

}  // namespace
