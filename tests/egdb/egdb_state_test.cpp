// The states in which the engine's databases are, and what the start of a search does in each.
#include "egdb/egdb_state.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <thread>

#include "base/file_calls.h"
#include "base/log.h"
#include "egdb/egdb_log.h"
#include "egdb/engine_egdb.h"
#include "egdb/position_walk.h"
#include "tests/egdb/database_folder.h"

namespace {

std::vector<std::string> events;

struct State : testing::Test {
    ScratchFolder logs;
    DatabaseOptions options;
    bool reopen_wld = false;
    bool reopen_mtc = false;

    State() {
        reset_egdb();
        egdb_engine = no_egdb();
        events.clear();
        set_egdb_log_path(logs.file("egdb.log"));
        options.wld_enable = true;
        options.wld_folder = shipped_database();
        options.wld_cache_mb = 64;
    }
    ~State() override {
        reset_egdb();
        set_egdb_log_path("");
    }

    void prepare() {
        char message[2000] = "";
        egdb_prepare_search(options, reopen_wld, reopen_mtc,
                            {[] { events.push_back("release"); },
                             [] {
                                 // Everything is closed before the table is had anew.
                                 EXPECT_EQ(egdb_engine.wld, nullptr);
                                 events.push_back("allocate");
                             },
                             message, [](char*, const char* text) { events.push_back(text); }});
    }
    void change_and_prepare() {
        reopen_wld = true;
        prepare();
    }
    // Until the opening beside is done.
    static void wait() { ASSERT_TRUE(wait_for_egdb_opening(60000)); }
    std::string log() const { return content_of(logs.file("egdb.log")); }

    void expect_open(int32_t pieces) const {
        EXPECT_EQ(egdb_state, EGDB_IN_USE);
        ASSERT_NE(egdb_engine.wld, nullptr);
        EXPECT_EQ(egdb_engine.maxpieces, pieces);
        EXPECT_EQ(egdb_engine.maxpieces_1side, pieces - 1);
        EXPECT_TRUE(egdb_engine.no_side_captures);
        const Position position = position_from_index(5, {0, 1, 0, 1});
        EXPECT_EQ(egdb_engine.wld->lookup(egdb_engine.wld->handle, position, BLACK, true), EGDB_DRAW);
    }
    static void expect_closed(EgdbState state) {
        EXPECT_EQ(egdb_state, state);
        EXPECT_EQ(egdb_engine.wld, nullptr);
        EXPECT_EQ(egdb_engine.maxpieces, 0);
        EXPECT_EQ(egdb_engine.maxpieces_1side, 0);
        EXPECT_EQ(egdb_engine.maxkings_1side_8pcs, 0);
        EXPECT_EQ(egdb_engine.maxkings_9pcs, 0);
        EXPECT_FALSE(egdb_engine.no_side_captures);
    }
};

using Events = std::vector<std::string>;

TEST_F(State, NothingHappensWithoutAWish) {
    prepare();
    expect_closed(EGDB_NOT_OPENED);
    EXPECT_TRUE(events.empty());
}

TEST_F(State, OpensBeforeTheSearch) {
    std::ofstream(logs.file("egdb.log")) << "of an earlier opening\n";
    change_and_prepare();
    expect_open(4);
    EXPECT_FALSE(reopen_wld);
    EXPECT_EQ(events, (Events{"release", "allocate", "Wait for WLD database init..."}));
    EXPECT_EQ(log().find("earlier"), std::string::npos);
    EXPECT_NE(log().find("autoload db4\n"), std::string::npos);
    prepare();  // stays as it is
    expect_open(4);
    EXPECT_EQ(events.size(), 3u);
}

TEST_F(State, OpensBesideTheSearchAndIsTakenOverByALaterOne) {
    options.wld_parallel_init = true;
    change_and_prepare();
    EXPECT_EQ(egdb_engine.wld, nullptr);
    EXPECT_EQ(events, (Events{"release", "allocate"}));  // that search waits for nothing
    wait();
    EXPECT_EQ(egdb_state, EGDB_OPENED);
    EXPECT_EQ(egdb_engine.wld, nullptr);  // until the next search begins
    prepare();
    expect_open(4);
}

TEST_F(State, FoldersWithoutADatabaseFail) {
    const ScratchFolder empty;
    for (const bool parallel : {false, true}) {
        options.wld_parallel_init = parallel;
        options.wld_folder = empty.path;
        change_and_prepare();
        wait();
        expect_closed(EGDB_FAILED);
        EXPECT_EQ(log(), "No WLD database found in '" + empty.path + "'\n");
        prepare();  // not tried again
        expect_closed(EGDB_FAILED);
        options.wld_folder = shipped_database();
        change_and_prepare();  // but at the next change
        wait();
        prepare();
        expect_open(4);
    }
}

TEST_F(State, DistancesAreNoValues) {
    const ScratchFolder folder;
    std::ofstream(folder.file("db4.idx_mtc"), std::ios::binary) << with_crc("", 0x2d675cd2);
    options.wld_folder = folder.path;
    change_and_prepare();
    expect_closed(EGDB_FAILED);
    // Nor are values distances.
    options.wld_folder = shipped_database();
    options.mtc_enable = true;
    options.mtc_folder = shipped_database();
    change_and_prepare();
    expect_open(4);
    EXPECT_NE(log().find("No MTC database found in '"), std::string::npos);
}

TEST_F(State, DistancesThatCannotBeOpenedLeaveTheValues) {
    const ScratchFolder folder;
    std::ofstream(folder.file("db4.idx_mtc"), std::ios::binary) << with_crc("", 0x2d675cd2);
    options.mtc_enable = true;
    options.mtc_folder = folder.path;
    std::ofstream(folder.file("db2.cpr_mtc")) << "a";
    std::ofstream(folder.file("db2.idx_mtc")) << "no index";
    change_and_prepare();
    expect_open(4);
    EXPECT_EQ(egdb_engine.mtc, nullptr);
    EXPECT_NE(log().find("Error parsing " + folder.file("db2.idx_mtc")), std::string::npos);
    EXPECT_EQ(events.back(), "Wait for MTC database init...");
    // A change of these alone closes nothing else and keeps the log.
    const EgdbDriver* const wld = egdb_engine.wld;
    events.clear();
    reopen_mtc = true;
    prepare();
    EXPECT_FALSE(reopen_mtc);
    EXPECT_EQ(events, (Events{"Wait for MTC database init..."}));
    EXPECT_EQ(egdb_engine.wld, wld);
    EXPECT_NE(log().find("autoload db4\n"), std::string::npos);
    options.mtc_enable = false;
    reopen_mtc = true;
    prepare();
    EXPECT_FALSE(reopen_mtc);
    EXPECT_EQ(events.size(), 1u);
}

TEST_F(State, DistancesAreOpenedBesideTheValuesAndClosedWithThem) {
    options.mtc_enable = true;
    options.mtc_folder = shipped_distances();
    change_and_prepare();
    expect_open(4);
    ASSERT_NE(egdb_engine.mtc, nullptr);
    EXPECT_EQ(egdb_engine.mtc->type, EGDB_MTC);
    EXPECT_EQ(events, (Events{"release", "allocate", "Wait for WLD database init...",
                              "Wait for MTC database init..."}));
    options.mtc_enable = false;
    reopen_mtc = true;
    prepare();
    EXPECT_EQ(egdb_engine.mtc, nullptr);
    expect_open(4);
    options.mtc_enable = true;
    reopen_mtc = true;
    prepare();
    ASSERT_NE(egdb_engine.mtc, nullptr);
    options.wld_enable = false;
    change_and_prepare();
    expect_closed(EGDB_SWITCHED_OFF);
    EXPECT_EQ(egdb_engine.mtc, nullptr);
    // Beside a search as well; with the limit of the values that were open.
    options.wld_enable = options.wld_parallel_init = true;
    change_and_prepare();
    EXPECT_EQ(egdb_engine.mtc, nullptr);
    wait();
    prepare();
    expect_open(4);
    EXPECT_NE(egdb_engine.mtc, nullptr);
}

// A listener that keeps the check waiting with its first text until it is let go.
struct Checker {
    std::atomic<bool> begun = false, go_on = false;
    std::atomic<int> errors = -2;

    static void hear(void* context, const char*) {
        Checker& checker = *static_cast<Checker*>(context);
        checker.begun = true;
        while (!checker.go_on) std::this_thread::yield();
    }
};

TEST_F(State, NothingIsClosedWhileFilesAreChecked) {
    EXPECT_EQ(verify_open_egdb({}, nullptr, {}), -1);  // nothing is open
    change_and_prepare();
    expect_open(4);
    Checker checker;
    std::thread thread([&] { checker.errors = verify_open_egdb({Checker::hear, &checker}, nullptr, {}); });
    while (!checker.begun) std::this_thread::yield();
    const EgdbDriver* const wld = egdb_engine.wld;
    options.wld_max_pieces = 3;
    events.clear();
    change_and_prepare();
    EXPECT_TRUE(reopen_wld);
    EXPECT_EQ(events, Events{});
    EXPECT_EQ(egdb_engine.wld, wld);
    expect_open(4);
    checker.go_on = true;
    thread.join();
    EXPECT_EQ(checker.errors, 0);
    prepare();
    expect_open(3);
    EXPECT_FALSE(reopen_wld);
}

TEST_F(State, WhatHasBeenOpenedBesideIsCheckedToo) {
    options.wld_parallel_init = true;
    change_and_prepare();
    wait();
    EXPECT_EQ(egdb_state, EGDB_OPENED);
    const std::atomic<bool> abort = true;
    EXPECT_EQ(verify_open_egdb({}, &abort, {}), 6);
    prepare();
    expect_open(4);
    EXPECT_EQ(verify_open_egdb({}, nullptr, {}), 0);
    options.wld_enable = false;
    change_and_prepare();
    EXPECT_EQ(verify_open_egdb({}, nullptr, {}), -1);
}

TEST_F(State, SwitchedOffWhileItIsOpen) {
    change_and_prepare();
    expect_open(4);
    options.wld_enable = false;
    reopen_mtc = true;
    events.clear();
    change_and_prepare();
    expect_closed(EGDB_SWITCHED_OFF);
    EXPECT_FALSE(reopen_mtc);
    EXPECT_EQ(events, (Events{"release", "allocate"}));
    options.wld_enable = true;
    change_and_prepare();
    expect_open(4);
}

TEST_F(State, LimitsAreFollowed) {
    options.wld_max_pieces = 3;
    change_and_prepare();
    expect_open(3);
    options.wld_max_pieces = -1;
    change_and_prepare();
    expect_open(4);
}

TEST_F(State, AWishDuringAnOpeningWaitsForItsEnd) {
    options.wld_parallel_init = true;
    for (int round = 0; round < 20; ++round) {
        options.wld_cache_mb = 64 + round;
        options.wld_max_pieces = round % 2 ? 3 : 4;
        change_and_prepare();
        const bool under_way = egdb_state == EGDB_OPENING;
        options.wld_max_pieces = 2;
        reopen_wld = true;
        prepare();
        if (under_way && reopen_wld) {
            // Held back: nothing was closed or begun.
            wait();
            EXPECT_TRUE(egdb_state == EGDB_OPENED || egdb_state == EGDB_OPENING);
            prepare();
        }
        EXPECT_FALSE(reopen_wld);
        wait();
        prepare();
        EXPECT_EQ(egdb_state, EGDB_IN_USE);
        EXPECT_EQ(egdb_engine.maxpieces, 2);
    }
}

std::atomic<bool> files_can_be_opened = true;

// However often searches begin meanwhile.
TEST_F(State, AnOpeningUnderWayHoldsWishesBack) {
    files_can_be_opened = false;
    file_calls.open = [](const char* path, int flags, mode_t mode) {
        while (!files_can_be_opened) std::this_thread::yield();
        return system_file_calls().open(path, flags, mode);
    };
    options.wld_parallel_init = true;
    change_and_prepare();
    EXPECT_EQ(egdb_state, EGDB_OPENING);
    events.clear();
    options.wld_max_pieces = 2;
    for (int search = 0; search < 3; ++search) {
        reopen_wld = reopen_mtc = true;
        prepare();
        EXPECT_TRUE(reopen_wld && reopen_mtc);
        EXPECT_EQ(egdb_state, EGDB_OPENING);
    }
    EXPECT_TRUE(events.empty());
    files_can_be_opened = true;
    wait();
    file_calls = system_file_calls();
    EXPECT_EQ(egdb_state, EGDB_OPENED);
    prepare();
    EXPECT_FALSE(reopen_wld || reopen_mtc);
    wait();
    prepare();
    expect_open(2);
}

std::string logged_text;

TEST_F(State, WhatTheDatabaseCountsIsLogged) {
    logged_text.clear();
    log_listener = [](const char* text) { logged_text += text; };
    log_egdb_statistics();
    EXPECT_EQ(logged_text, "") << "none is open";
    change_and_prepare();
    const EgdbDriver& wld = *egdb_engine.wld;
    wld.reset_stats(wld.handle);
    log_egdb_statistics();
    EgdbStatistics& s = *wld.get_stats(wld.handle);
    s.lru_cache_hits = 1;
    s.lru_cache_loads = 2;
    s.autoload_hits = 4000000000;
    s.db_requests = 8;
    s.db_returns = 6;
    s.avg_ht_list_length = 1.5;
    log_egdb_statistics();
    EXPECT_EQ(
        logged_text,
        "lru cache hits 0, lru cache loads 0, autoload hits 0, valid returns 0.0%, avg ht len 0.00\n"
        "lru cache hits 1, lru cache loads 2, autoload hits 4000000000, valid returns 75.0%, avg ht len 1.50\n");
    log_listener = nullptr;
}

// Searches begin one after the other with lookups on other threads in between, while settings change.
TEST_F(State, ManyChangesWithLookupsInBetween) {
    const ScratchFolder empty;
    const auto value_at = [](int64_t index) {
        const Position position = position_from_index(index, {0, 1, 0, 1});
        if (has_capture(position, BLACK)) return -1;
        const EgdbDriver& wld = *egdb_engine.wld;
        return static_cast<int>(wld.lookup(wld.handle, position, BLACK, false));
    };
    change_and_prepare();
    wait();
    prepare();
    ASSERT_TRUE(egdb_engine.wld);
    std::vector<int> expected;
    for (int64_t index = 0; index < 1225; ++index) expected.push_back(value_at(index));
    std::atomic<int> wrong = 0, looked_up = 0;
    for (int round = 0; round < 60; ++round) {
        options.wld_parallel_init = round % 2 == 0;
        options.wld_enable = round % 7 != 3;
        options.wld_folder = round % 5 == 4 ? empty.path : shipped_database();
        options.wld_max_pieces = 2 + round % 3;
        reopen_wld = round % 3 != 1 || reopen_wld;
        prepare();
        if (round % 4 != 0) wait();
        prepare();
        if (!egdb_engine.wld) continue;
        std::vector<std::thread> searchers;
        for (int t = 0; t < 3; ++t)
            searchers.emplace_back([&, t] {
                for (int64_t i = 0; i < 200; ++i) {
                    const int64_t index = (i * 7 + t) % 1225;
                    if (value_at(index) != expected[static_cast<size_t>(index)]) ++wrong;
                    ++looked_up;
                }
            });
        for (std::thread& searcher : searchers) searcher.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_GT(looked_up, 6000);
}

TEST_F(State, ALogThatCannotBeWrittenChangesNothing) {
    set_egdb_log_path("/dev/null/none");
    change_and_prepare();
    expect_open(4);
    set_egdb_log_path("");
    change_and_prepare();
    expect_open(4);
}

}  // namespace
