// A search that comes back late, as it opens databases or asks them for the end, and what peers do beneath
// boxes and dialogs.
#include <thread>
#include <utility>

#include "base/clock.h"
#include "control/analyze_games.h"
#include "control/database_settings.h"
#include "control/game_clock.h"
#include "control/load_save.h"
#include "control/time_control.h"
#include "egdb/engine_egdb.h"
#include "search/engine_settings.h"
#include "tests/dxp/follower_fixture.h"

namespace {

std::atomic<bool> opening{false};  // the next search opens databases until this falls
std::atomic<bool> within_opening{false};
int opened_by_interface = 0, opened_by_search = 0;
std::thread::id interface_id;

void open_slowly(char*) {
    within_opening = opening.load();
    while (opening) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    within_opening = false;
}

// Behind its iterations a search has taken the wish to end back.
int choose_slowly(const Position&, int, const MoveList&) {
    within_opening = opening.load();
    for (; opening; std::this_thread::sleep_for(std::chrono::milliseconds(1))) search_thread.stop_flag = 0;
    within_opening = false;
    return 0;
}

void count_openings(char*) {
    if (!std::exchange(engine_settings.reopen_wld, false)) return;
    ++(std::this_thread::get_id() == interface_id ? opened_by_interface : opened_by_search);
}

class LateSearch : public FollowerTest {
  protected:
    void SetUp() override {
        FollowerTest::SetUp();
        egdb_engine.egdb_prepare = open_slowly;
        opening = false;
        self = this;
    }
    void TearDown() override {
        let_it_end();
        FollowerTest::TearDown();
    }
    static void let_it_end() {
        search_thread.wait_limit_ms = 300000;
        opening = false;
    }
    // The engine has answered 32-28 with 20-25 and ponders on 31-27, which takes its time.
    static void ponder_slowly() {
        settings.pondering_on = 1;
        script.think = answer_with("20-25");
        script.predict = [](const Position& position, int side, const MoveList& list) {
            opening = true;
            return answer_with("31-27")(position, side, list);
        };
        self->play("32-28");
        ASSERT_TRUE(run_until([] { return within_opening.load(); }));
        search_thread.wait_limit_ms = 20;
        script.predict = first_move;
        script.think = answer_with("14-20");
    }
    // The program has made white's first move over the network and ponders on the reply, slowly by opening
    // databases or by what `slow_down` does.
    void ponder_slowly_in_network(
        const char* reply, void (*slow_down)() = [] {}) {
        settings.pondering_on = 1;
        script.predict = [reply, slow_down](const Position& position, int side, const MoveList& list) {
            opening = true;
            slow_down();
            return answer_with(reply)(position, side, list);
        };
        start_as_white();
        ASSERT_TRUE(run_until([] { return within_opening.load(); }));
        search_thread.wait_limit_ms = 20;
        script.predict = first_move;
        script.think = answer_with("31-27");
    }
    // To 20-25, when the search is back.
    void expect_late_answer() {
        run({sends(move_message_text(20, 25)), hears_nothing(20)});
        let_it_end();
        run({hears(move_message_text(31, 27))});
    }
    static void let_a_minute_pass() {
        clock_state.engine_lap_start -= 60000;
        clock_state.user_lap_start -= 60000;
    }
    // A file of one game, which the user chooses.
    void offer_game() {
        file = folder.file("games.pdn");
        write_content(file, "1. 32-28 *\n");
        ui.choose_load_file = [](const char*, std::string& path) {
            path = file;
            return true;
        };
    }
    // A peer that is there begins a game, hears a move of it and goes.
    static void play_and_leave() {
        self->run(
            {sends(request_from_start('W')), hears(ACCEPTED), hears(move_message_text(32, 28)), closes()});
        EXPECT_TRUE(run_until([] { return dxp_connection.connection_state == DXP_UNCONNECTED; }));
    }
    void connect_peer() {
        wait_for_connection_command();
        run({connects_to(port())});
    }

    static inline LateSearch* self = nullptr;
    static inline std::string file;
};

}  // namespace

TEST_F(LateSearch, ARequestMeanwhileIsPlayed) {
    opening = true;
    play("33-28");
    ASSERT_TRUE(run_until([] { return within_opening.load(); }));
    search_thread.wait_limit_ms = 20;
    serve({sends(request_from_start('W')), hears(ACCEPTED)});
    EXPECT_EQ(game.gui_mode, DXP_MODE);
    EXPECT_TRUE(search_thread.searching);
    script.think = answer_with("32-28");
    let_it_end();
    run({hears(move_message_text(32, 28))});
}

TEST_F(LateSearch, ARequestIsPlayedBehindASearchThatKnowsOfNoEnd) {
    egdb_engine.egdb_prepare = [](char*) {};
    script.think = choose_slowly;
    opening = true;
    play("33-28");
    ASSERT_TRUE(run_until([] { return within_opening.load(); }));
    search_thread.wait_limit_ms = 20;
    serve({sends(request_from_start('W')), hears(ACCEPTED)});
    EXPECT_TRUE(search_thread.start_waits);
    script.think = answer_with("32-28");
    let_it_end();
    run({hears(move_message_text(32, 28))});
}

TEST_F(LateSearch, AMoveMeanwhileIsAnswered) {
    ponder_slowly_in_network("19-23");
    expect_late_answer();
}

TEST_F(LateSearch, AMoveIsAnsweredBehindASearchThatKnowsOfNoEnd) {
    ponder_slowly_in_network("19-23", [] {
        egdb_engine.egdb_prepare = [](char*) {};
        script.think = choose_slowly;
    });
    expect_late_answer();
}

TEST_F(LateSearch, AnAnswerThatWasGivenUpIsNone) {
    ponder_slowly();
    play("33-29");
    ASSERT_TRUE(search_thread.start_waits);
    back_command();
    play("31-27");
    let_it_end();
    EXPECT_TRUE(run_until([] { return game.history_count == 5; })) << "the ponder search is no answer";
}

TEST_F(LateSearch, NorIsItInTheNetwork) {
    ponder_slowly_in_network("20-25");
    dxp_drop_search();
    expect_late_answer();
}

TEST_F(LateSearch, TheMoveIsTheEnginesWhileItsStartWaits) {
    ponder_slowly();
    EXPECT_TRUE(user_may_move());
    play("33-29");
    EXPECT_FALSE(user_may_move());
    let_it_end();
    EXPECT_TRUE(run_until([] { return game.history_count == 5; }));
    EXPECT_TRUE(run_until([] { return user_may_move(); }));
}

TEST_F(LateSearch, TheWaitIsTheEnginesTime) {
    clock_state.clock_running = true;
    ponder_slowly();
    play("33-29");
    const double used = clock_state.white_used;
    let_a_minute_pass();
    let_it_end();
    ASSERT_TRUE(run_until([] { return game.history_count == 5; }));
    EXPECT_GE(clock_state.black_used, 60);
    EXPECT_LT(clock_state.white_used, used + 30);
}

// Also where it is over before the start gives up waiting.
TEST_F(LateSearch, AShortWaitIsTheEnginesTimeToo) {
    clock_state.clock_running = true;
    ponder_slowly();
    search_thread.wait_limit_ms = 300000;
    const double used = clock_state.white_used, engine_used = clock_state.black_used;
    std::jthread later([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        opening = false;
    });
    play("33-29");
    EXPECT_FALSE(search_thread.start_waits);
    EXPECT_LT(clock_state.white_used, used + 0.3);
    EXPECT_GE(clock_state.black_used, engine_used + 0.29);
}

TEST_F(LateSearch, InAGameTheButtonLeavesTheWaitAlone) {
    clock_state.clock_running = true;
    ponder_slowly();
    play("33-29");
    let_a_minute_pass();
    search_button_command();
    EXPECT_TRUE(search_thread.start_waits);
    let_it_end();
    EXPECT_TRUE(run_until([] { return game.history_count == 5; }));
    EXPECT_GE(clock_state.black_used, 60) << "all of the wait is the engine's";
}

// The engine then plays the user's side, whose minute of thought it was until then.
TEST_F(LateSearch, TheButtonChargesWhatWasBeforeAndTheWait) {
    clock_state.clock_running = true;
    ponder_slowly();
    const double used = clock_state.white_used, other_used = clock_state.black_used;
    let_a_minute_pass();
    search_button_command();
    ASSERT_TRUE(search_thread.start_waits);
    EXPECT_GE(clock_state.white_used, used + 60);
    let_a_minute_pass();
    let_it_end();
    EXPECT_TRUE(run_until([] { return game.history_count == 4; }));
    EXPECT_GE(clock_state.white_used, used + 120);
    EXPECT_LT(clock_state.black_used, other_used + 30);
}

TEST_F(LateSearch, IsWaitedForOnce) {
    ponder_slowly();
    search_thread.wait_limit_ms = 2000;
    new_game_command();
    const int64_t start = clock_ms();
    play("32-28");
    discard_search();
    EXPECT_LT(clock_ms() - start, 2000);
    // The next one is another.
    let_it_end();
    ASSERT_TRUE(run_until([] { return !search_thread.searching && !search_thread.search_finished; }));
    script.hold = true;
    start_search();
    wait_until_held();
    std::jthread later([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        script.hold = false;
    });
    EXPECT_TRUE(discard_search());
}

TEST_F(LateSearch, AnAnalysisOfTheGameBeginsBehindIt) {
    ponder_slowly();
    std::jthread later([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        opening = false;
    });
    script.think = first_move;
    const uint32_t searches = search_thread.searches_started;
    analyze_game_command(false);
    EXPECT_EQ(game.gui_mode, ANALYZE_GAME_MODE);
    EXPECT_EQ(search_thread.searches_started, searches);
    EXPECT_TRUE(run_until([] { return game.gui_mode == NORMAL_MODE; }));
    EXPECT_GE(search_thread.searches_started, searches + 2) << "one for each move of the game";
}

TEST_F(LateSearch, TheClockIsStoppedInTheEnginesTime) {
    clock_state.clock_running = true;
    ponder_slowly();
    play("33-29");
    let_a_minute_pass();
    char text[CONTROL_TEXT_SIZE];
    clock_pane_text(text, sizeof text);
    clock_stop_command();
    EXPECT_GE(clock_state.black_used, 60);
    EXPECT_LT(clock_state.white_used, 30);
    EXPECT_NE(std::string(text).find("B 01:0"), std::string::npos) << text;
}

TEST_F(LateSearch, WhoTakesBackBeginsHisLap) {
    clock_state.clock_running = true;
    ponder_slowly();
    play("33-29");
    let_a_minute_pass();
    const int64_t long_ago = clock_state.user_lap_start;
    back_command();
    EXPECT_GT(clock_state.user_lap_start, long_ago + 30000);
}

TEST_F(LateSearch, StopIsForAnAnalysisThatWaitsToo) {
    opening = true;
    analysis_command();
    ASSERT_TRUE(run_until([] { return within_opening.load(); }));
    search_thread.wait_limit_ms = 20;
    play("32-28");
    ASSERT_TRUE(search_thread.start_waits);
    const uint32_t searches = search_thread.searches_started;
    search_button_command();
    let_it_end();
    ASSERT_TRUE(run_until([] { return !search_thread.searching && !search_thread.search_finished; }));
    run_for(200);
    EXPECT_EQ(search_thread.searches_started, searches);
}

TEST_F(LateSearch, WhoseMoveEndsTheGameIsNotStartedAgain) {
    set_position("W:W32:B28");
    script.think = first_move;
    opening = true;
    search_button_command();
    ASSERT_TRUE(run_until([] { return within_opening.load(); }));
    search_thread.wait_limit_ms = 20;
    autoplay_command();
    ASSERT_TRUE(search_thread.start_waits);
    const uint32_t searches = search_thread.searches_started;
    let_it_end();
    EXPECT_TRUE(run_until([] { return game.gui_mode == NORMAL_MODE; }));
    run_for(200);
    EXPECT_EQ(search_thread.searches_started, searches);
}

// The start was given up with the search that it waited for.
TEST_F(LateSearch, WhoTakesBackIsNotAnswered) {
    opening = true;
    play("33-28");
    ASSERT_TRUE(run_until([] { return within_opening.load(); }));
    search_thread.wait_limit_ms = 20;
    discard_search();
    start_search();
    EXPECT_TRUE(search_thread.start_waits);
    discard_search();
    let_it_end();
    run_for(200);
    EXPECT_EQ(game.history_count, 2);
    EXPECT_FALSE(search_thread.searching);
}

// What the dialog changes while the engine thinks is opened by the next search, not by the prediction.
TEST_F(LateSearch, DatabasesAreOpenedOnTheSearchThread) {
    interface_id = std::this_thread::get_id();
    opened_by_interface = opened_by_search = 0;
    egdb_engine.egdb_prepare = count_openings;
    settings.pondering_on = 1;
    script.predict = search_really;
    script.hold = true;
    play("32-28");
    wait_until_held();
    set_wld_cache_mb(settings.wld_cache_mb + 1);
    script.hold = false;
    ASSERT_TRUE(run_until([] { return game.history_count == 3; }));
    play(move_text_at(0));
    ASSERT_TRUE(run_until([] { return game.history_count == 5; }));
    EXPECT_EQ(opened_by_interface, 0) << "the window stands still as long as that takes";
    EXPECT_EQ(opened_by_search, 1);
    reinit_wld = false;
}

TEST_F(LateSearch, ALoadedGameHasNotTheClockOfAPeersGame) {
    offer_game();
    connect_peer();
    script.think = answer_with("32-28");
    ui.choose_game = [](const char*, const PdnOffsets&, int, int) {
        play_and_leave();
        return 0;
    };
    load_command();
    EXPECT_EQ(game.history_last, 2);
    EXPECT_FALSE(clock_state.clock_running);
    EXPECT_EQ(clock_state.clock_moves, 0);
    EXPECT_EQ(clock_used(WHITE), 0.0);
}

TEST_F(LateSearch, NorHasAnAnalysis) {
    offer_game();
    connect_peer();
    script.think = answer_with("32-28");
    ui.choose_load_file = [](const char*, std::string& path) {
        path = file;
        play_and_leave();
        return true;
    };
    analyze_pdn_command(false);
    EXPECT_EQ(game.gui_mode, NORMAL_MODE) << "the user has to choose a fixed time again";
    EXPECT_EQ(count_events("box"), 1);
    EXPECT_FALSE(clock_state.clock_running);
}
