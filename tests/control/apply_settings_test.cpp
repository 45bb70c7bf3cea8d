#include "control/apply_settings.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "control/database_settings.h"
#include "control/settings.h"
#include "search/engine_settings.h"
#include "search/table.h"
#include "tests/control/settings_fixture.h"

namespace {

void (*const SETTERS[])(int) = {
    [](int n) { set_hash_mb(n); },        [](int n) { set_wld_enable(n != 0); },
    [](int n) { set_wld_max_pieces(n); }, [](int n) { set_wld_max_kings_8(n); },
    [](int n) { set_wld_cache_mb(n); },   [](int n) { set_wld_folder(n ? "/folder" : ""); },
};

class ApplySettings : public SettingsTest {
  protected:
    void SetUp() override {
        SettingsTest::SetUp();
        settings = make_default_settings({});
        settings.hash_mb = 1;
    }
    static bool take_wld() { return reinit_wld.exchange(false); }
    static bool take_mtc() { return reinit_mtc.exchange(false); }
};

}  // namespace

TEST_F(ApplySettings, EverySetterRaisesItsFlagOnAChangeOnly) {
    for (const auto set : SETTERS) {
        set(0);
        take_wld();
        set(0);
        EXPECT_FALSE(take_wld());
        set(1);
        EXPECT_TRUE(take_wld());
        set(1);
        EXPECT_FALSE(take_wld());
        set(0);
        EXPECT_TRUE(take_wld());
        EXPECT_FALSE(take_mtc());
    }
    set_mtc_enable(true);
    EXPECT_TRUE(take_mtc());
    set_mtc_enable(true);
    EXPECT_FALSE(take_mtc());
    set_mtc_enable(false);
    EXPECT_TRUE(take_mtc());
    set_mtc_folder("/m");
    EXPECT_TRUE(take_mtc());
    set_mtc_folder("/m");
    EXPECT_FALSE(take_mtc());
    EXPECT_FALSE(take_wld());
}

TEST_F(ApplySettings, SettersStore) {
    set_hash_mb(128);
    set_wld_enable(true);
    set_wld_max_pieces(6);
    set_wld_max_kings_8(2);
    set_wld_cache_mb(777);
    set_wld_folder("/w");
    set_mtc_enable(true);
    set_mtc_folder(std::string(1000, 'm'));
    EXPECT_EQ(settings.hash_mb, 128);
    EXPECT_EQ(settings.wld_enable, 1);
    EXPECT_EQ(settings.wld_max_pieces, 6);
    EXPECT_EQ(settings.wld_max_kings_8, 2);
    EXPECT_EQ(settings.wld_cache_mb, 777);
    EXPECT_EQ(setting_text(settings.wld_folder), "/w");
    EXPECT_EQ(settings.mtc_enable, 1);
    EXPECT_EQ(setting_text(settings.mtc_folder), std::string(259, 'm'));
    // The same text again, which is cut to the same.
    take_mtc();
    set_mtc_folder(std::string(500, 'm'));
    EXPECT_FALSE(take_mtc());
}

TEST_F(ApplySettings, ParallelOpeningRaisesNothing) {
    set_wld_parallel_init(false);
    EXPECT_EQ(settings.wld_parallel_init, 0);
    set_wld_parallel_init(true);
    EXPECT_EQ(settings.wld_parallel_init, 1);
    EXPECT_FALSE(take_wld());
    EXPECT_FALSE(take_mtc());
}

// A record may switch on by any number.
TEST_F(ApplySettings, AnyNumberIsOn) {
    settings.wld_enable = -7;
    set_wld_enable(true);
    EXPECT_FALSE(take_wld());
    set_wld_enable(false);
    EXPECT_TRUE(take_wld());
    EXPECT_EQ(settings.wld_enable, 0);
}

TEST_F(ApplySettings, TheEngineGetsItsCopies) {
    settings.search_threads = 3;
    settings.book_mode = 2;
    settings.hash_mb = 2;
    settings.wld_enable = 1;
    settings.wld_parallel_init = 0;
    settings.wld_max_pieces = 5;
    settings.wld_max_kings_8 = 3;
    settings.wld_cache_mb = 100;
    store_setting_text(settings.wld_folder, "/w");
    settings.mtc_enable = 1;
    store_setting_text(settings.mtc_folder, "/m");
    EXPECT_EQ(apply_settings(), 0);
    EXPECT_EQ(engine_settings.search_threads, 3);
    EXPECT_EQ(engine_settings.book_mode, 2);
    EXPECT_EQ(engine_settings.hash_size_mb, 2);
    EXPECT_EQ(engine_settings.database, (DatabaseOptions{true, false, 5, 3, 100, "/w", true, "/m"}));
    EXPECT_EQ(transposition_table.size_mb, 2);
    EXPECT_TRUE(transposition_table.memory);
    EXPECT_TRUE(engine_settings.reopen_wld);
    EXPECT_TRUE(engine_settings.reopen_mtc);
}

TEST_F(ApplySettings, TheTableIsAllocatedWhenItsSizeChanges) {
    EXPECT_EQ(apply_settings(), 0);
    const void* const first = transposition_table.memory.get();
    ASSERT_NE(first, nullptr);
    transposition_table.slots_start[5] = 77;
    EXPECT_EQ(apply_settings(), 0);
    EXPECT_EQ(transposition_table.memory.get(), first);
    EXPECT_EQ(transposition_table.slots_start[5], 77u);
    settings.hash_mb = 4;
    EXPECT_EQ(apply_settings(), 0);
    EXPECT_EQ(transposition_table.size_mb, 4);
    EXPECT_EQ(transposition_table.slots_start[5], 0u);
}

TEST_F(ApplySettings, OnlyWhatDiffersIsReopened) {
    settings.wld_enable = 1;
    ASSERT_EQ(apply_settings(), 0);
    const auto reopened = [] {
        engine_settings.reopen_wld = false;
        engine_settings.reopen_mtc = false;
        EXPECT_EQ(apply_settings(), 0);
        return std::pair(engine_settings.reopen_wld, engine_settings.reopen_mtc);
    };
    EXPECT_EQ(reopened(), std::pair(false, false));
    settings.wld_parallel_init = 0;
    settings.search_threads = 2;
    settings.book_mode = 0;
    EXPECT_EQ(reopened(), std::pair(false, false));
    settings.wld_cache_mb = 1234;
    EXPECT_EQ(reopened(), std::pair(true, false));
    settings.hash_mb = 2;
    EXPECT_EQ(reopened(), std::pair(true, false));
    settings.wld_max_pieces = 6;
    EXPECT_EQ(reopened(), std::pair(true, false));
    settings.wld_max_kings_8 = 3;
    EXPECT_EQ(reopened(), std::pair(true, false));
    store_setting_text(settings.wld_folder, "/w");
    EXPECT_EQ(reopened(), std::pair(true, false));
    settings.mtc_enable = 1;
    EXPECT_EQ(reopened(), std::pair(false, true));
    store_setting_text(settings.mtc_folder, "/m");
    EXPECT_EQ(reopened(), std::pair(false, true));
    settings.wld_enable = 0;
    EXPECT_EQ(reopened(), std::pair(true, false));
    settings.hash_mb = 1;  // nothing is open that would need the memory
    EXPECT_EQ(reopened(), std::pair(false, false));
}

TEST_F(ApplySettings, BeforeASearchTheFlagsAreHandedOver) {
    ASSERT_EQ(apply_settings(), 0);
    engine_settings.reopen_wld = false;
    engine_settings.reopen_mtc = false;
    apply_search_settings();
    EXPECT_FALSE(engine_settings.reopen_wld || engine_settings.reopen_mtc);

    set_hash_mb(2);
    set_wld_max_pieces(7);
    settings.search_threads = 4;
    EXPECT_EQ(engine_settings.database.wld_max_pieces, -1);  // not yet
    EXPECT_EQ(engine_settings.hash_size_mb, 1);
    apply_search_settings();
    EXPECT_EQ(engine_settings.database.wld_max_pieces, 7);
    EXPECT_EQ(engine_settings.hash_size_mb, 2);
    EXPECT_EQ(engine_settings.search_threads, 4);
    EXPECT_EQ(transposition_table.size_mb, 1);  // the search allocates it
    EXPECT_TRUE(engine_settings.reopen_wld);
    EXPECT_FALSE(engine_settings.reopen_mtc);
    EXPECT_FALSE(reinit_wld);
    // What the engine has not seen to yet stays raised.
    apply_search_settings();
    EXPECT_TRUE(engine_settings.reopen_wld);

    set_mtc_folder("/m");
    apply_search_settings();
    EXPECT_TRUE(engine_settings.reopen_mtc);
    EXPECT_FALSE(reinit_mtc);
}

TEST_F(ApplySettings, LimitsThatLimitNothingAreNone) {
    const auto pieces = [](int32_t stored) {
        settings.wld_max_pieces = stored;
        apply_search_settings();
        return engine_settings.database.wld_max_pieces;
    };
    const auto kings = [](int32_t stored) {
        settings.wld_max_kings_8 = stored;
        apply_search_settings();
        return engine_settings.database.wld_max_kings_8;
    };
    for (const int32_t offered : OFFERED_MAX_PIECES) EXPECT_EQ(pieces(offered), offered);
    for (const int32_t offered : OFFERED_MAX_KINGS) EXPECT_EQ(kings(offered), offered);
    for (const int32_t none : {-2, 10, INT32_MIN, INT32_MAX}) EXPECT_EQ(pieces(none), -1);
    for (const int32_t none : {-2, 5, INT32_MIN, INT32_MAX}) EXPECT_EQ(kings(none), -1);
    EXPECT_EQ(pieces(0), 2);
    EXPECT_EQ(pieces(1), 2);
}

TEST_F(ApplySettings, OfferedValuesReachTheEngineUnchanged) {
    for (const int32_t threads : OFFERED_THREADS) {
        settings.search_threads = threads;
        apply_search_settings();
        EXPECT_EQ(engine_settings.search_threads, threads);
    }
    for (const int32_t megabytes : OFFERED_HASH_MB) {
        settings.hash_mb = megabytes;
        apply_search_settings();
        EXPECT_EQ(engine_settings.hash_size_mb, megabytes);
    }
    for (int32_t mode = 0; mode <= 3; ++mode) {
        settings.book_mode = mode;
        apply_search_settings();
        EXPECT_EQ(engine_settings.book_mode, mode);
    }
}

// Whatever a record holds, the engine gets what it can work with, and the record keeps what it has.
TEST_F(ApplySettings, RandomRecordsAreBroughtIntoRange) {
    std::mt19937 random(3);
    for (int i = 0; i < 20000; ++i) {
        unsigned char image[sizeof(Settings)];
        for (unsigned char& byte : image) byte = static_cast<unsigned char>(i == 0 ? 0xff : random());
        std::memcpy(&settings, image, sizeof settings);
        if (i % 3 == 1) std::memset(settings.wld_folder, 'w', sizeof settings.wld_folder);  // no NUL
        std::memcpy(image, &settings, sizeof settings);
        apply_search_settings();
        const EngineSettings& engine = engine_settings;
        ASSERT_TRUE(engine.search_threads >= 1 && engine.search_threads <= 8);
        ASSERT_TRUE(engine.hash_size_mb >= 1 && engine.hash_size_mb <= MAX_TABLE_MB);
        ASSERT_TRUE(engine.book_mode >= 0 && engine.book_mode <= 3);
        const int32_t pieces = engine.database.wld_max_pieces, kings = engine.database.wld_max_kings_8;
        ASSERT_TRUE(pieces == -1 || (pieces >= 2 && pieces <= 9));
        ASSERT_TRUE(kings >= -1 && kings <= 4);
        ASSERT_GE(engine.database.wld_cache_mb, 0);
        ASSERT_LE(engine.database.wld_folder.size(), 260u);
        ASSERT_EQ(engine.database.wld_folder.find('\0'), std::string::npos);
        ASSERT_LE(engine.database.mtc_folder.size(), 260u);
        ASSERT_EQ(std::memcmp(&settings, image, sizeof settings), 0);
    }
}

TEST_F(ApplySettings, TheEnginesCopiesCanBeShown) {
    engine_settings.search_threads = 5;
    engine_settings.hash_size_mb = 8;
    engine_settings.book_mode = 1;
    engine_settings.database = {true, true, 4, 2, 99, "/w", true, "/m"};
    const DatabaseOptions database = engine_settings.database;
    settings_from_engine();
    engine_settings = EngineSettings{};
    apply_search_settings();
    EXPECT_EQ(engine_settings.search_threads, 5);
    EXPECT_EQ(engine_settings.hash_size_mb, 8);
    EXPECT_EQ(engine_settings.book_mode, 1);
    EXPECT_EQ(engine_settings.database, database);
}
