// Opening a database of our own type: what is logged, what is read, and what ends the opening.
#include "egdb/wld_open.h"

#include <gtest/gtest.h>

#include <regex>

#include "base/file_calls.h"
#include "base/memory.h"
#include "egdb/block_cache.h"
#include "egdb/catalogues.h"
#include "egdb/egdb_open.h"
#include "egdb/identify.h"
#include "egdb/position_walk.h"
#include "tests/egdb/database_folder.h"
#include "tests/egdb/positions.h"

namespace {

OpenEgdb open_folder(const std::string& folder, const char* options = "", int32_t megabytes = 64) {
    database_log.clear();
    return egdb_open(options, megabytes, folder, keep_log);
}

// A database read through a cache of few blocks, or of what the memory allows with 0.
OpenEgdb open_by_blocks(const std::string& folder, int32_t blocks, int32_t megabytes = 64) {
    database_log.clear();
    return open_wld({folder, 4, -1, megabytes, keep_log, false, blocks});
}

struct Pieces {
    int32_t most = 0, one_side = 0, kings_of_nine = 0, kings_of_eight = 7;

    explicit Pieces(const EgdbDriver& driver) {
        EXPECT_EQ(driver.get_pieces(driver.handle, &most, &one_side, &kings_of_nine, &kings_of_eight), 0);
    }
};

// Figures that differ from one machine or run to the next.
std::string without_figures(const std::string& log) {
    return std::regex_replace(log, std::regex("(RAM: |took |in |, |Allocated )[0-9.]+"), "$1#");
}

// Where the path of the folder ends.
std::string without_folder(std::string log, const std::string& folder) {
    for (size_t at = log.find(folder); at != std::string::npos; at = log.find(folder))
        log.erase(at, folder.size());
    return log;
}

TEST(WldOpen, ASmallSetIsHeldWhole) {
    const std::string folder = shipped_database();
    const OpenEgdb driver = open_folder(folder);
    ASSERT_TRUE(driver) << database_log;
    EXPECT_EQ(driver->type, EGDB_WLD);
    const EgdbDatabase& database = wld_database(*driver);
    EXPECT_EQ(database.folder, folder);
    EXPECT_EQ(database.numcacheblocks, 0);
    EXPECT_TRUE(database.ccbs.empty());
    EXPECT_TRUE(database.buffers.empty());
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(database.files[static_cast<size_t>(i)].autoload, 1);
        EXPECT_FALSE(database.files[static_cast<size_t>(i)].file_handle.is_open());
    }
    EXPECT_EQ(without_folder(without_figures(database_log), folder),
              "Available RAM: #mb\n"
              "         4 index blocks: db2.idx1\n"
              "        16 index blocks: db3.idx1\n"
              "       251 index blocks: db4.idx1\n"
              "Reading index files took # secs\n"
              "autoload db2\nautoload db3\nautoload db4\n"
              "Allocated #kb for indexing\n"
              "Allocated #kb for permanent slice caches\n"
              "Autoload took # secs\n"
              "Available RAM: #mb\n");
    const Pieces pieces(*driver);
    EXPECT_EQ(pieces.most, 4);
    EXPECT_EQ(pieces.one_side, 3);
    EXPECT_EQ(pieces.kings_of_nine, 0);
    EXPECT_EQ(pieces.kings_of_eight, 7);
    EXPECT_EQ(driver->lookup(driver->handle, kings({1, 2, 3}, {50}), BLACK, true), EGDB_DRAW);
}

TEST(WldOpen, TheOptionsLimitThePieces) {
    struct Row {
        const char* options;
        int32_t pieces;
    };
    const std::vector<Row> rows = {
        {"", 4}, {"maxpieces = 3;", 3}, {"maxpieces = 2;", 2}, {"maxpieces = 9;", 4}, {"maxpieces = 4;", 4}};
    for (const Row& row : rows) {
        const OpenEgdb driver = open_folder(shipped_database(), row.options);
        ASSERT_TRUE(driver) << row.options;
        EXPECT_EQ(Pieces(*driver).most, row.pieces) << row.options;
        EXPECT_EQ(driver->lookup(driver->handle, kings({1, 2}, {50}), BLACK, false) == EGDB_SUBDB_UNAVAILABLE,
                  row.pieces < 3);
    }
}

// One that the folder's index tells to be there. The index of the largest set decides what is opened.
TEST(WldOpen, SmallFilesMustBeThere) {
    for (const char* const name : {"db2.idx1", "db2.cpr1", "db3.idx1", "db3.cpr1", "db4.cpr1"}) {
        const DatabaseFolder folder;
        folder.remove(name);
        EXPECT_FALSE(open_folder(folder.path)) << name;
        const bool index = std::string(name).ends_with("idx1");
        EXPECT_NE(database_log.find((index ? "cannot open index file " : "Cannot open ") + folder.path +
                                    name + "\n"),
                  std::string::npos)
            << database_log;
    }
    const ScratchFolder empty;
    EXPECT_FALSE(open_folder(empty.path));
    EXPECT_EQ(database_log, "No egdb found\n");
    EXPECT_FALSE(egdb_open("", 1, empty.path, nullptr));
}

TEST(WldOpen, LargeFilesMayBeMissing) {
    const DatabaseFolder folder;
    folder.write("db5.cpr1", "");
    folder.write("db5.idx1", "BASE4,0,1,0,0,b:+\n");
    folder.write("db6-3030.cpr1", "");
    folder.write("db6-3030.idx1", "BASE3,0,3,0,0,b:=\n");
    database_log.clear();
    const OpenEgdb driver = open_wld({folder.path, 7, -1, 64, keep_log, true, 0});
    ASSERT_TRUE(driver) << database_log;
    EXPECT_EQ(Pieces(*driver).most, 6);
    EXPECT_EQ(Pieces(*driver).one_side, 4);
    EXPECT_NE(database_log.find(folder.path + "db6-2130.cpr1 not present\n"), std::string::npos);
    EXPECT_NE(database_log.find(folder.path + "db7-4030.cpr1 not present\n"), std::string::npos);
    EXPECT_EQ(driver->lookup(driver->handle, kings({1, 2, 3}, {48, 49, 50}), BLACK, true),
              EGDB_SUBDB_UNAVAILABLE);
    Position men = kings({1, 2, 3}, {48, 49, 50});
    men.king = 0;
    EXPECT_EQ(driver->lookup(driver->handle, men, BLACK, true), EGDB_DRAW);
}

TEST(WldOpen, TheLeastCacheIsMadeWhereThereIsNoMemoryForIt) {
    const OpenEgdb driver = open_by_blocks(shipped_database(), 0, 0);
    ASSERT_TRUE(driver);
    EXPECT_EQ(wld_database(*driver).numcacheblocks, 233);  // less than 2560 blocks there are
    EXPECT_NE(database_log.find("Allocating the minimum 233 cache buffers\n"
                                "Allocating 233 cache buffers of size 4096\n"
                                "preload db2\npreload db3\npreload db4\nRead 233 buffers in "),
              std::string::npos)
        << database_log;
    EXPECT_EQ(driver->get_stats(driver->handle)->lru_cache_loads, 233u);
    // All blocks are in memory now.
    EXPECT_EQ(driver->lookup(driver->handle, kings({1, 2, 3}, {50}), BLACK, true), EGDB_DRAW);
}

TEST(WldOpen, ThePreloadStopsWhenTheCacheIsFull) {
    const OpenEgdb driver = open_by_blocks(shipped_database(), 4);
    ASSERT_TRUE(driver);
    const EgdbDatabase& database = wld_database(*driver);
    EXPECT_EQ(database.numcacheblocks, 4);
    EXPECT_EQ(driver->get_stats(driver->handle)->lru_cache_loads, 4u);
    EXPECT_EQ(database.files[0].cache_bufferi[0], 0);
    for (size_t block = 0; block < 5; ++block)
        EXPECT_EQ(database.files[1].cache_bufferi[block], block < 3 ? static_cast<int32_t>(block) + 1 : -1);
    EXPECT_NE(database_log.find("Read 4 buffers in "), std::string::npos);
    EXPECT_NE(database_log.find("Egdb init took "), std::string::npos);
}

TEST(WldOpen, StatisticsStartAnew) {
    const OpenEgdb driver = open_folder(shipped_database());
    ASSERT_TRUE(driver);
    EgdbStatistics& s = *driver->get_stats(driver->handle);
    driver->lookup(driver->handle, kings({1, 2}, {50}), BLACK, false);
    driver->lookup(driver->handle, kings({1, 2, 3, 4}, {50}), BLACK, false);
    EXPECT_EQ(s.db_requests, 2u);
    EXPECT_EQ(s.db_returns, 1u);
    EXPECT_EQ(s.autoload_hits, 1u);
    EXPECT_EQ(s.db_not_present_requests, 1u);
    driver->reset_stats(driver->handle);
    EXPECT_EQ(s.db_requests + s.db_returns + s.autoload_hits + s.db_not_present_requests, 0u);
}

// --- Damage ---

TEST(WldDamage, DataFilesThatAreCutGrownOrEmptied) {
    const DatabaseFolder whole;
    for (const char* const name : {"db2.cpr1", "db3.cpr1", "db4.cpr1"}) {
        const std::string bytes = whole.read(name);
        for (const bool by_blocks : {false, true}) {
            const auto opens = [&](const std::string& changed) {
                const DatabaseFolder folder;
                folder.write(name, changed);
                return (by_blocks ? open_by_blocks(folder.path, 0, 64) : open_folder(folder.path)) != nullptr;
            };
            EXPECT_TRUE(opens(bytes)) << database_log;
            for (const size_t cut : {size_t{1}, size_t{64}, bytes.size() / 2, bytes.size() - 1})
                EXPECT_FALSE(opens(bytes.substr(0, bytes.size() - cut))) << name << " " << cut;
            EXPECT_FALSE(opens("")) << name;
            EXPECT_FALSE(opens(bytes + "x")) << name;
            EXPECT_FALSE(opens(bytes + std::string(200, '\0'))) << name;
        }
    }
}

// The Subslice of the file that the byte belongs to.
const Subslice& subslice_of_byte(const EgdbDatabase& database, const DbFile& file, int64_t at) {
    const Subslice* subslice = find_subdb_of_block(database, file, 0);
    while (subslice->prev) subslice = subslice->prev;
    const auto begins = [](const Subslice& s) { return s.first_idx_block * WLD_BLOCK_BYTES + s.startbyte; };
    while (subslice->next && begins(*subslice->next) <= at) subslice = subslice->next;
    return *subslice;
}

// A flipped byte is found by the sum of its block unless the byte in its place stands for as many positions.
TEST(WldDamage, FlippedBytesAreFoundByTheSum) {
    const OpenEgdb whole = open_folder(shipped_database(), "maxpieces = 3;");
    ASSERT_TRUE(whole);
    const EgdbDatabase& database = wld_database(*whole);
    const DatabaseFolder folder;
    const std::string bytes = folder.read("db3.cpr1");
    int refused = 0, as_many = 0;
    for (size_t at = 0; at < bytes.size(); at += 431) {
        const auto place = static_cast<int64_t>(at);
        const Subslice& subslice = subslice_of_byte(database, database.files[1], place);
        const auto r = static_cast<uint32_t>(place / WLD_BLOCK_BYTES) - subslice.first_idx_block;
        // Behind the last byte of a Subslice nothing tells how far it was to reach.
        if (r + 1 == subslice.num_idx_blocks) continue;
        std::string changed = bytes;
        changed[at] = static_cast<char>(changed[at] ^ (1 << at % 8));
        const auto& totals = catalogue(subslice.catalogidx[r]).totals;
        const bool same =
            totals[static_cast<uint8_t>(changed[at])] == totals[static_cast<uint8_t>(bytes[at])];
        folder.write("db3.cpr1", changed);
        EXPECT_EQ(open_folder(folder.path, "maxpieces = 3;") != nullptr, same) << at;
        ++(same ? as_many : refused);
        if (same) continue;
        EXPECT_NE(database_log.find("db3.cpr1: block"), std::string::npos);
        EXPECT_NE(
            database_log.find("does not agree with the index: damaged, or written with other catalogues\n"),
            std::string::npos);
    }
    EXPECT_GT(refused, 0);
}

TEST(WldDamage, ABlockThatIsSpoiltLaterGivesNoValue) {
    const DatabaseFolder folder;
    const OpenEgdb driver = open_by_blocks(folder.path, 2);
    ASSERT_TRUE(driver);
    // The first two blocks of the files have been read; then the disk changes beneath.
    const std::string bytes = folder.read("db4.cpr1");
    folder.write("db4.cpr1", std::string(bytes.size(), '\x07'));
    const Material m{2, 0, 2, 0};
    int unknown = 0, others = 0;
    PositionWalk walk(m, 0);
    for (int i = 0; i < 3000; ++i, walk.advance()) {
        if (has_capture(walk.position, BLACK)) continue;
        ++(driver->lookup(driver->handle, walk.position, BLACK, false) == EGDB_UNKNOWN ? unknown : others);
    }
    EXPECT_GT(unknown, 0);
    EXPECT_EQ(others, 0);
    const size_t first = database_log.find("does not agree");
    EXPECT_NE(first, std::string::npos);
    EXPECT_EQ(database_log.find("does not agree", first + 1), std::string::npos);  // told once for a file
}

TEST(WldDamage, AFileThatBecomesShorterWhileItIsOpen) {
    const DatabaseFolder folder;
    const OpenEgdb driver = open_by_blocks(folder.path, 2);
    ASSERT_TRUE(driver);
    std::filesystem::resize_file(folder.file("db4.cpr1"), 5);
    const Position position = position_from_index(70000, {2, 0, 2, 0});
    EXPECT_EQ(driver->lookup(driver->handle, position, BLACK, false), EGDB_UNKNOWN);
    EXPECT_NE(database_log.find("db4.cpr1 has become shorter\n"), std::string::npos);
}

TEST(WldDamage, IndexesThatCannotBeRead) {
    const DatabaseFolder whole;
    const std::string index = whole.read("db3.idx1");
    const auto opens = [&](const std::string& text) {
        whole.write("db3.idx1", text);
        return open_wld({whole.path, 3, -1, 64, (database_log.clear(), keep_log), true, 0}) != nullptr;
    };
    EXPECT_TRUE(opens(index));
    EXPECT_FALSE(opens(""));
    EXPECT_FALSE(opens(index + "BASE"));
    EXPECT_FALSE(opens("BASE9,9,9,9,0,b:+\n"));
    EXPECT_FALSE(opens(index + index));
    EXPECT_FALSE(opens(std::string("\0\0\0", 3)));
    // All kinds of small changes: refused or read, but never a crash.
    for (size_t at = 0; at < index.size(); at += 3) {
        std::string changed = index;
        changed[at] = static_cast<char>('0' + at % 10);
        opens(changed);
        opens(index.substr(0, at));
    }
}

TEST(WldDamage, AnIndexOfOneHugeLine) {
    constexpr size_t HUGE_BYTES = 100'000'000;
    for (const char* const start : {"BASE0,2,0,1,0,b:", "BASE0,2,0,1,0,b:0/0,1,228\n", ""}) {
        const DatabaseFolder folder;
        folder.write("db3.idx1", start + std::string(*start ? HUGE_BYTES / 20 : HUGE_BYTES, '7'));
        EXPECT_FALSE(open_folder(folder.path)) << start;
        EXPECT_LT(database_log.size(), 4000u);
    }
}

// --- Calls that fail ---

std::atomic<int> calls_left = 0;  // until one fails; below 0 none does

bool fails_now() { return calls_left.fetch_sub(1) == 0; }

struct FailingCalls {
    explicit FailingCalls(int call) {
        calls_left = call;
        file_calls.open = [](const char* path, int flags, mode_t mode) {
            return fails_now() ? -1 : system_file_calls().open(path, flags, mode);
        };
        file_calls.read = [](int descriptor, void* data, size_t bytes) -> ssize_t {
            return fails_now() ? -1 : system_file_calls().read(descriptor, data, bytes);
        };
        file_calls.seek = [](int descriptor, off_t offset, int from) -> off_t {
            return fails_now() ? -1 : system_file_calls().seek(descriptor, offset, from);
        };
    }
    ~FailingCalls() { file_calls = system_file_calls(); }
};

// Each call of an opening by blocks or of whole files fails in turn: the opening does, and says why.
TEST(WldFaults, EachOpenReadAndSeekInTurn) {
    for (const bool by_blocks : {false, true}) {
        int call = 0, failed = 0;
        for (;; ++call) {
            OpenEgdb driver;
            {
                const FailingCalls calls(call);
                driver = by_blocks ? open_by_blocks(shipped_database(), 3)
                                   : open_wld({shipped_database(), 4, -1, 64,
                                               (database_log.clear(), keep_log), true, 0});
                if (calls_left >= 0) break;  // all calls have had their turn
            }
            if (driver) continue;
            ++failed;
            EXPECT_TRUE(std::regex_search(
                database_log, std::regex("annot open|seek failed|Error reading file|cannot open index file")))
                << call << "\n"
                << database_log;
        }
        EXPECT_GE(call, 15);
        EXPECT_EQ(failed, call);
    }
}

// Lookups go on when the disk fails, without a value from a block that could not be read.
TEST(WldFaults, LookupsOverFailingReads) {
    const OpenEgdb whole = open_folder(shipped_database());
    const OpenEgdb driver = open_by_blocks(shipped_database(), 3);
    ASSERT_TRUE(whole && driver);
    int unknown = 0;
    for (int64_t i = 0; i < 600; ++i) {
        const Position position = position_from_index(i * 100003 % slice_size({1, 1, 1, 1}), {1, 1, 1, 1});
        if (has_capture(position, BLACK)) continue;
        EgdbValue value{};
        {
            const FailingCalls calls(static_cast<int>(i % 5));
            value = driver->lookup(driver->handle, position, BLACK, false);
        }
        if (value == EGDB_UNKNOWN)
            ++unknown;
        else if (value != whole->lookup(whole->handle, position, BLACK, false))
            ADD_FAILURE() << i;
    }
    EXPECT_GT(unknown, 0);
    const EgdbStatistics& s = *driver->get_stats(driver->handle);
    EXPECT_EQ(s.db_returns + static_cast<uint32_t>(unknown), s.db_requests)
        << "only values count as returned";
    EXPECT_NE(database_log.find("seek failed\n"), std::string::npos);
    EXPECT_NE(database_log.find("Error reading file\n"), std::string::npos);
}

std::atomic<int> maps_left = -1;
void* (*system_map)(size_t) = nullptr;

TEST(WldFaults, EachLargeAllocationInTurn) {
    system_map = map_memory;
    for (const bool by_blocks : {false, true}) {
        int failed = 0;
        for (int call = 0;; ++call) {
            maps_left = call;
            map_memory = [](size_t bytes) { return maps_left-- == 0 ? nullptr : system_map(bytes); };
            const OpenEgdb driver =
                by_blocks ? open_by_blocks(shipped_database(), 0) : open_folder(shipped_database());
            map_memory = system_map;
            if (maps_left >= 0) break;
            EXPECT_FALSE(driver);
            ++failed;
            EXPECT_NE(database_log.find(by_blocks ? "aligned_large_alloc failure on cache buffers\n"
                                                  : "Cannot allocate memory for autoload array\n"),
                      std::string::npos)
                << database_log;
        }
        EXPECT_EQ(failed, by_blocks ? 1 : 3);
    }
}

}  // namespace
