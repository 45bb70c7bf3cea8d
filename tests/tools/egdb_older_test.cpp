// The older forms of databases of values: their codes, their indexes, and that they answer as the solver
// does, and so as the newest form.
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>

#include "egdb/block_hash.h"
#include "egdb/egdb_open.h"
#include "egdb/older_codes.h"
#include "egdb/wld_open.h"
#include "tests/egdb/index_reading.h"
#include "tests/egdb/positions.h"
#include "tests/tools/egdb_fixture.h"
#include "tests/tools/egdb_forms.h"
#include "tests/tools/older_writer.h"

namespace {

// What a row of a code stands for, position by position.
std::vector<int> row_values(int code, int byte) {
    const CatalogueTable& table = block_code(code);
    std::vector<int> values;
    for (int i = 0; i < table.totals[static_cast<size_t>(byte)]; ++i)
        values.push_back(catalogue_symbol(table, static_cast<uint8_t>(byte), i));
    return values;
}

TEST(OlderCodes, FixedOnesWithoutPartialValues) {
    std::vector<int> runs;
    for (int n = 5; n <= 32; ++n) runs.push_back(n);
    for (const int n :
         {36,  40,  44,  48,  52,   56,   60,   70,   80,   90,   100,  150,  200,  250,  300,
          400, 500, 650, 800, 1000, 1200, 1400, 1600, 2000, 2400, 3200, 4000, 5000, 7500, 10000})
        runs.push_back(n);
    ASSERT_EQ(runs.size(), 58u);
    for (int b = 0; b < 81; ++b)
        EXPECT_EQ(row_values(CODE_WITHOUT_PARTIALS, b),
                  (std::vector<int>{b % 3 + 1, b / 3 % 3 + 1, b / 9 % 3 + 1, b / 27 % 3 + 1}));
    for (int b = 81; b < 256; ++b)
        EXPECT_EQ(row_values(CODE_WITHOUT_PARTIALS, b),
                  std::vector<int>(static_cast<size_t>(runs[static_cast<size_t>((b - 81) % 58)]),
                                   (b - 81) / 58 + 1));
    EXPECT_EQ(row_values(CODE_WITHOUT_PARTIALS, 255), std::vector<int>(5, 4));
}

TEST(OlderCodes, FixedOnesWithPartialValues) {
    std::vector<int> runs;
    for (int n = 3; n <= 35; ++n) runs.push_back(n);
    for (const int n : {70, 106, 500}) runs.push_back(n);
    for (int b = 0; b < 36; ++b)
        EXPECT_EQ(row_values(CODE_WITH_PARTIALS, b), (std::vector<int>{b % 6, b / 6}));
    for (int b = 36; b < 256; ++b)
        EXPECT_EQ(
            row_values(CODE_WITH_PARTIALS, b),
            std::vector<int>(static_cast<size_t>(runs[static_cast<size_t>((b - 36) % 36)]), (b - 36) / 36));
    EXPECT_EQ(row_values(CODE_WITH_PARTIALS, 252)[0], 6);
}

TEST(OlderCodes, CataloguesOfTheFormWithValueLists) {
    for (int c = 0; c < VALUE_LIST_CATALOGUES; ++c) {
        const CatalogueTable& table = block_code(FIRST_VALUE_LIST_CODE + c);
        const int symbols = c < VALUE_LIST_CATALOGUES / 2 ? 3 : 6;
        std::array<bool, 6> alone{};
        for (int b = 0; b < 256; ++b) {
            ASSERT_GE(table.totals[static_cast<size_t>(b)], 1);
            const int first = catalogue_symbol(table, static_cast<uint8_t>(b), 0);
            ASSERT_LT(first, symbols);
            if (table.totals[static_cast<size_t>(b)] == 1) alone[static_cast<size_t>(first)] = true;
        }
        // So that anything can be written.
        for (int s = 0; s < symbols; ++s) EXPECT_TRUE(alone[static_cast<size_t>(s)]) << c << " " << s;
    }
    EXPECT_EQ(&block_code(7), &catalogue(7));
}

constexpr Material KINGS{0, 2, 0, 1}, MEN{2, 0, 1, 0};

TEST(OlderIndex, UnitsCommentsAndSingleValues) {
    for (const EgdbType type : OLDER) {
        const IndexReading reading(
            type,
            "BASE2,0,1,0,0,b:+\nBASE0,2,0,1,0,b:0/0\n1\n2\n3\n4\n5\n6\n"
            "BASE0,2,0,1,0,w:6/100\n  # haspartials \n#  vmap 20: 5,4,3,2,1,0\n 10\n20 30\n40\n",
            10 * 1024 + 1);
        ASSERT_EQ(reading.status, 0) << database_log;
        EXPECT_EQ(reading.at(MEN, BLACK).singlevalue, EGDB_WIN);
        const Subslice& first = reading.at(KINGS, BLACK);
        EXPECT_EQ(first.indices, (std::vector<uint32_t>{0, 4}));
        EXPECT_EQ(first.last_subidx, 33);  // the next one starts inside sub-block 33
        EXPECT_EQ(first.same_subidx, 0);
        const Subslice& second = reading.at(KINGS, WHITE);
        EXPECT_EQ(second.first_idx_block, 1u);
        EXPECT_EQ(second.startbyte, 2 * 1024 + 100);
        EXPECT_EQ(second.indices, (std::vector<uint32_t>{0, 20}));
        EXPECT_EQ(second.last_subidx, 32);  // from the file's size
        EXPECT_TRUE(second.catalogidx.empty());
        EXPECT_TRUE(second.vmap.empty());
        if (type == EGDB_WLD_FIXED_CODES) {
            EXPECT_EQ(first.code, CODE_WITHOUT_PARTIALS);
            EXPECT_EQ(second.code, CODE_WITH_PARTIALS);
        } else {
            EXPECT_EQ(first.code, FIRST_VALUE_LIST_CODE);
            EXPECT_EQ(second.code, FIRST_VALUE_LIST_CODE + 20);
            EXPECT_EQ(second.values, (std::array<uint8_t, 7>{5, 4, 3, 2, 1, 0, 0}));
        }
        EXPECT_EQ(database_log, "         4 index blocks: FILE\n");
    }
}

TEST(OlderIndex, NoneIsMarkedAsLyingInsideOneSubblock) {
    for (const EgdbType type : OLDER) {
        const IndexReading reading(type, "BASE0,2,0,1,0,b:0/0\nBASE0,2,0,1,0,w:0/10\n", 60);
        ASSERT_EQ(reading.status, 0) << database_log;
        EXPECT_EQ(reading.at(KINGS, BLACK).last_subidx, 0);
        EXPECT_EQ(reading.at(KINGS, BLACK).same_subidx, 0);
    }
}

TEST(OlderIndex, ValueLists) {
    const auto read = [](const std::string& comment) {
        return IndexReading(EGDB_WLD_VALUE_LISTS, "BASE0,2,0,1,0,b:0/0\n#" + comment + "\n5\n", 2000);
    };
    const auto expect = [&](const std::string& comment, int code, std::array<uint8_t, 7> values) {
        const IndexReading reading = read(comment);
        EXPECT_EQ(reading.status, 0) << comment << database_log;
        EXPECT_EQ(reading.at(KINGS, BLACK).code, FIRST_VALUE_LIST_CODE + code) << comment;
        EXPECT_EQ(reading.at(KINGS, BLACK).values, values) << comment;
        EXPECT_EQ(reading.at(KINGS, BLACK).indices.size(), 1u);
    };
    expect("vmap 3: 1,2,3", 3, {1, 2, 3});
    expect("\t vmap  29 : 1", 0, {});
    expect("vmap 29: 1, 2, 3, 0, 4, 5 and more", 29, {1, 2, 3, 0, 4, 5});
    expect("vmap 3: 1,2", 0, {});        // too few to say anything
    expect("vmap 3: 1,2,3,4,5", 0, {});  // neither three nor six
    expect(" words", 0, {});
    expect(std::string(130, ' ') + "vmap 3: 1,2,3", 0, {});  // behind what is looked at
    for (const char* const bad : {"vmap 30: 1,2,3", "vmap -1: 1,2,3", "vmap 3: 1,2,6", "vmap 3: -1,2,3"})
        EXPECT_EQ(read(bad).status, 1) << bad;
}

TEST(OlderIndex, WhatCannotBeRead) {
    for (const EgdbType type : OLDER) {
        for (const char* const text :
             {"BASE0,2,0,1,0,b:0\n", "BASE0,2,0,1,0,b:0/1024\n", "BASE0,2,0,1,0,b:0/0\n5\n5\n",
              "BASE0,2,0,1,0,b:0/0\n1\n2\n3\n4\n5\n6\n7\n8\n", "BASE0,2,0,1,0,b:1/0\n",
              "BASE0,2,0,1,0,b:*\n"}) {
            EXPECT_EQ(IndexReading(type, text, 5000).status, 1) << text;
        }
    }
}

// The databases of up to three pieces, written once for each form.
const std::string& older_folder(EgdbType type) {
    static std::map<EgdbType, ScratchFolder> folders;
    const bool written = folders.contains(type);
    ScratchFolder& folder = folders[type];
    if (!written) write_older_database(folder.path, type, solved_up_to(3), 3);
    return folder.path;
}

OpenEgdb open_older(EgdbType type, const std::string& folder, bool autoload, int32_t blocks) {
    return open_form({type, autoload, blocks, 1}, folder, 3);
}

TEST(OlderLookup, EveryPositionAsTheSolverHasIt) {
    for (const EgdbType type : OLDER) {
        for (const Way& way : {Way{type, true, 0, 1}, Way{type, false, 1, 17}, Way{type, false, 3, 5},
                               Way{type, false, 0, 7}}) {
            const OpenEgdb older = open_form(way, older_folder(type), 3);
            ASSERT_TRUE(older) << database_log;
            EXPECT_EQ(older->type, type);
            expect_as_solved(*older, way, 2);
            expect_as_solved(*older, way, 3);
        }
    }
}

// Values that the solver does not have: nothing known, and bounds.
TEST(OlderLookup, AllSixValues) {
    std::mt19937 random(3);
    for (const EgdbType type : OLDER) {
        const ScratchFolder folder;
        OlderFilePair pair{type, {}, {}};
        std::vector<std::vector<uint8_t>> slices;
        for (const int side : {BLACK, WHITE}) {
            std::vector<uint8_t> values(static_cast<size_t>(slice_size(MEN)));
            for (size_t i = 0; i < values.size();) {
                const auto value = static_cast<uint8_t>(random() % 6);
                for (size_t run = random() % 3 ? 1 : random() % 700; run > 0 && i < values.size(); --run)
                    values[i++] = value;
            }
            append_older_subslice(pair, values, MEN, 0, side);
            slices.push_back(values);
        }
        for (const char* const name : {"db2", "db3"}) {
            const bool empty = name[2] == '2';
            std::ofstream(folder.file(std::string(name) + ".cpr"), std::ios::binary)
                << (empty ? "" : std::string(pair.data.begin(), pair.data.end()));
            std::ofstream(folder.file(std::string(name) + ".idx"), std::ios::binary)
                << (empty ? "BASE0,1,0,1,0,b:=\n" : pair.index);
        }
        for (const bool autoload : {true, false}) {
            const OpenEgdb driver = open_older(type, folder.path, autoload, 2);
            ASSERT_TRUE(driver) << database_log;
            for (const int side : {BLACK, WHITE})
                for (int64_t i = 0; i < slice_size(MEN); ++i)
                    ASSERT_EQ(driver->lookup(driver->handle, position_from_index(i, MEN), side, false),
                              slices[static_cast<size_t>(side)][static_cast<size_t>(i)]);
        }
    }
}

TEST(OlderLookup, WhatIsNotInTheFiles) {
    for (const EgdbType type : OLDER) {
        const OpenEgdb driver = open_older(type, older_folder(type), true, 0);
        ASSERT_TRUE(driver);
        const EgdbValue absent = type == EGDB_WLD_FIXED_CODES ? EGDB_UNKNOWN : EGDB_SUBDB_UNAVAILABLE;
        const auto ask = [&](const Position& p, int side) {
            return driver->lookup(driver->handle, p, side, false);
        };
        EXPECT_EQ(ask(kings({}, {1}), BLACK), EGDB_LOSS);
        EXPECT_EQ(ask(kings({}, {1}), WHITE), EGDB_WIN);
        EXPECT_EQ(ask(kings({1, 2, 3, 4, 5, 6}, {50}), BLACK), absent);
        EXPECT_EQ(ask(kings({1, 2, 3, 4, 5}, {46, 47, 48, 49}), BLACK), absent);  // nine
        EXPECT_EQ(ask(kings({1, 2, 3}, {50}), BLACK), absent);                    // no file
        EXPECT_EQ(driver->get_stats(driver->handle)->db_not_present_requests, 3u);
    }
}

TEST(OlderOpen, FilesOfFivePiecesMayBeMissing) {
    for (const EgdbType type : OLDER) {
        const ScratchFolder folder;
        for (const auto& entry : std::filesystem::directory_iterator(older_folder(type)))
            std::filesystem::copy_file(entry.path(), folder.path + entry.path().filename().string());
        EgdbOpenRequest request{folder.path, 5, -1, 64, keep_log, true, 0, type};
        database_log.clear();
        EXPECT_FALSE(open_wld(request));
        EXPECT_NE(database_log.find("Cannot open " + folder.file("db4.cpr") + "\n"), std::string::npos)
            << database_log;
        std::ofstream(folder.file("db4.cpr"));
        std::ofstream(folder.file("db4.idx")) << "BASE0,3,0,1,0,b:=\n";
        database_log.clear();
        const OpenEgdb driver = open_wld(request);
        ASSERT_TRUE(driver) << database_log;
        EXPECT_NE(database_log.find(folder.file("db5-3020.cpr") + " not present\n"), std::string::npos)
            << database_log;
        EXPECT_EQ(driver->lookup(driver->handle, kings({1, 2, 3}, {50}), BLACK, false), EGDB_DRAW);
    }
}

TEST(OlderOpen, KnownByTheChecksumOfTheirIndex) {
    for (const EgdbType type : OLDER) {
        const ScratchFolder folder;
        for (const auto& entry : std::filesystem::directory_iterator(older_folder(type)))
            std::filesystem::copy_file(entry.path(), folder.path + entry.path().filename().string());
        EXPECT_FALSE(egdb_open("", 64, folder.path, keep_log));  // ours has no row
        const uint32_t crc = type == EGDB_WLD_FIXED_CODES ? 0x82f1a44e : 0x85aade3a;
        const std::string index = content_of(folder.file("db3.idx"));
        std::ofstream(folder.file("db3.idx"), std::ios::binary) << with_crc(index, crc);
        database_log.clear();
        const OpenEgdb driver = egdb_open("", 64, folder.path, keep_log);
        ASSERT_TRUE(driver) << database_log;
        EXPECT_EQ(driver->type, type);
        int32_t pieces = 0, one_side = 0, nine = 0, eight = 0;
        driver->get_pieces(driver->handle, &pieces, &one_side, &nine, &eight);
        EXPECT_EQ(pieces, 3);
        const Position p = position_from_index(1234, KINGS);
        EXPECT_EQ(driver->lookup(driver->handle, p, BLACK, false), solved_value(solved_up_to(3), p, BLACK));
    }
}

TEST(BlockHash, AgainstAMap) {
    std::mt19937 random(2);
    for (const int32_t blocks : {1, 2, 7, 100}) {
        BlockHash hash;
        make_block_hash(hash, blocks);
        EXPECT_EQ(hash.buckets.size(), static_cast<size_t>(std::max(blocks * 3 / 2, 1)));
        EXPECT_EQ(average_list_length(hash), 0);
        std::map<int32_t, uint32_t> held;  // by cache block
        std::map<uint32_t, int32_t> places;
        for (int i = 0; i < 5000; ++i) {
            const uint32_t key =
                block_key(static_cast<uint32_t>(random() % 3), static_cast<uint32_t>(random() % 60));
            const auto found = places.find(key);
            ASSERT_EQ(find_hashed(hash, key), found == places.end() ? -1 : found->second);
            if (found != places.end()) continue;
            const auto block = static_cast<int32_t>(random() % static_cast<uint32_t>(blocks));
            if (held.contains(block)) places.erase(held[block]);
            set_hashed(hash, block, key);
            held[block] = key;
            places[key] = block;
            std::map<uint32_t, int> lists;
            for (const auto& [cache_block, its_key] : held)
                ++lists[static_cast<uint32_t>(hash_of_key(its_key) % hash.buckets.size())];
            ASSERT_FLOAT_EQ(average_list_length(hash),
                            static_cast<float>(held.size()) / static_cast<float>(lists.size()));
        }
    }
    EXPECT_EQ(block_key(3, 5), (3u << 23) + 5);
    // By hand: 32768 * key + ~key, and so on.
    uint32_t h = (uint32_t{77} << 15) + ~uint32_t{77};
    h ^= h >> 12;
    h += h << 2;
    h ^= h >> 4;
    h *= 2057;
    h ^= h >> 16;
    EXPECT_EQ(hash_of_key(77), h);
}

}  // namespace
