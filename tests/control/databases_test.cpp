// Game control with endgame databases: opened by searches as the settings say, shown in the status pane, and
// reopened when a setting changes.
#include "control/database_settings.h"
#include "egdb/egdb_log.h"
#include "egdb/engine_egdb.h"
#include "search/database_opening.h"
#include "search/engine_settings.h"
#include "search/table.h"
#include "search/threads.h"
#include "tests/base/scratch_folder.h"
#include "tests/control/game_fixture.h"

namespace {

const std::string SHIPPED = PROJECT_FOLDER "/data/wld_database";

class Databases : public GameTest {
  protected:
    void SetUp() override {
        GameTest::SetUp();
        use_databases();
        mode_hooks.egdb_state = [] { return egdb_state.load(std::memory_order_acquire); };
        reset_egdb();
        set_egdb_log_path(logs.file("egdb.log"));
        reinit_wld = reinit_mtc = false;
        set_wld_parallel_init(false);
        set_wld_cache_mb(32);
        set_wld_folder(SHIPPED);
        set_wld_enable(true);
    }
    void TearDown() override {
        GameTest::TearDown();
        reset_egdb();
        egdb_engine = no_egdb();
        set_egdb_log_path("");
        mode_hooks = no_mode_hooks();
        reinit_wld = reinit_mtc = false;
    }
    static void search() {
        play("32-28");
        settle();
        new_game();
    }
    static std::string status() {
        char text[PANE_TEXT_SIZE];
        status_pane_text(text, sizeof text);
        return std::string(text).substr(0, std::string(text).find('\r'));
    }

    ScratchFolder logs;
};

}  // namespace

TEST_F(Databases, TheFirstSearchOpensThem) {
    EXPECT_EQ(status(), "Egdb: Uninitialized");
    search();
    EXPECT_EQ(status(), "Egdb: Ready");
    ASSERT_NE(egdb_engine.wld, nullptr);
    EXPECT_EQ(egdb_engine.maxpieces, 4);
    EXPECT_EQ(count_events("box"), 0);
    EXPECT_FALSE(reinit_wld);
}

TEST_F(Databases, BesideTheSearch) {
    set_wld_parallel_init(true);
    search();
    ASSERT_TRUE(wait_for_egdb_opening(60000));
    EXPECT_EQ(status(), "Egdb: Ready");
    search();
    EXPECT_EQ(egdb_state, EGDB_IN_USE);
    EXPECT_NE(egdb_engine.wld, nullptr);
}

TEST_F(Databases, ChangesAreFollowedByTheNextSearch) {
    search();
    set_wld_max_pieces(3);
    EXPECT_EQ(egdb_engine.maxpieces, 4);  // not at once
    search();
    EXPECT_EQ(egdb_engine.maxpieces, 3);
    set_wld_enable(false);
    EXPECT_EQ(status(), "Egdb: Disabled");
    EXPECT_EQ(egdb_state, EGDB_IN_USE);
    search();
    EXPECT_EQ(egdb_state, EGDB_SWITCHED_OFF);
    EXPECT_EQ(egdb_engine.wld, nullptr);
}

TEST_F(Databases, TheSizeOfTheTableIsOneOfTheChanges) {
    search();
    EXPECT_EQ(transposition_table.size_mb, 1);
    set_hash_mb(2);
    search();
    EXPECT_EQ(transposition_table.size_mb, 2);
    EXPECT_EQ(egdb_state, EGDB_IN_USE);
    set_wld_enable(false);
    set_hash_mb(4);
    search();
    EXPECT_EQ(transposition_table.size_mb, 4);
}

TEST_F(Databases, AFailureIsToldAfterTheSearch) {
    set_wld_folder(logs.path);
    search();
    EXPECT_EQ(status(), "Egdb: Init failed");
    ASSERT_EQ(count_events("box"), 1);
    EXPECT_NE(events_of("box")[0].find("not using an endgame database"), std::string::npos);
    EXPECT_EQ(content_of(logs.file("egdb.log")), "No WLD database found in '" + logs.path + "'\n");
}

TEST_F(Databases, OneThreadLessWhileOneIsBeingOpened) {
    threads_init(4);
    for (const int32_t wanted : {1, 2, 4}) {
        engine_settings.search_threads = wanted;
        EXPECT_EQ(wanted_threads(), wanted);
        egdb_state = EGDB_OPENING;
        EXPECT_EQ(wanted_threads(), std::max(wanted - 1, 1));
        egdb_state = EGDB_NOT_OPENED;
    }
    engine_settings.search_threads = 100;
    egdb_state = EGDB_OPENING;
    EXPECT_EQ(wanted_threads(), created_threads() - 1);
    egdb_state = EGDB_NOT_OPENED;
}
