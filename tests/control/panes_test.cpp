// The panes and the status line: their texts, and that each is sent only when it has changed.
#include "control/panes.h"

#include <cstring>
#include <ctime>

#include "base/text.h"
#include "control/game_clock.h"
#include "control/time_control.h"
#include "tests/control/game_fixture.h"

namespace {

int32_t database_state = 0;

class PanesTest : public GameTest {
  protected:
    static std::string status() {
        char text[PANE_TEXT_SIZE];
        status_pane_text(text, sizeof text);
        return text;
    }
    static std::string ponder() {
        char text[PANE_TEXT_SIZE];
        ponder_pane_text(text, sizeof text);
        return text;
    }
    static std::string clock() {
        char text[PANE_TEXT_SIZE];
        clock_pane_text(text, sizeof text);
        return text;
    }
    static void tick(int times) {
        for (int i = 0; i < times; ++i) timer_tick();
    }
    static void show_search_text(const char* text) { search_thread.shared_text.publish(text); }
};

const std::string PONDER_PANE = "pane " + std::to_string(PONDER_WINDOW) + " ";
const std::string STATUS_PANE = "pane " + std::to_string(STATUS_WINDOW) + " ";
const std::string CLOCK_PANE = "pane " + std::to_string(CLOCK_WINDOW) + " ";

}  // namespace

TEST_F(PanesTest, TheStatusPaneTellsDatabaseAndMode) {
    EXPECT_EQ(status(), "Egdb: Disabled\r\nSearch mode: Normal\r\n");
    mode_hooks.egdb_state = [] { return database_state; };
    database_state = EGDB_IN_USE;
    EXPECT_EQ(status(), "Egdb: Disabled\r\nSearch mode: Normal\r\n") << "switched off in the settings";
    settings.wld_enable = 1;
    const char* const told[] = {"Uninitialized", "Initializing", "Ready", "Ready", "Disabled", "Init failed"};
    for (database_state = 0; database_state <= 5; ++database_state)
        EXPECT_EQ(status(), std::string("Egdb: ") + told[database_state] + "\r\nSearch mode: Normal\r\n");
    database_state = 6;
    EXPECT_EQ(status(), "Egdb: Unknown\r\nSearch mode: Normal\r\n");
    mode_hooks.dxp_follower = [] { return true; };
    game.gui_mode = DXP_MODE;
    EXPECT_EQ(status(), "Egdb: Unknown\r\nSearch mode: Dxp Follower\r\n");
}

TEST_F(PanesTest, ThePonderPaneIsOfModesThatPonder) {
    show_search_text("value=5");
    for (int32_t mode = 0; mode <= 10; ++mode) {
        game.gui_mode = mode;
        settings.pondering_on = 1;
        EXPECT_EQ(ponder(), mode == 0 || mode == 4 || mode == 6 ? "value=5" : "") << mode;
        settings.pondering_on = 0;
        EXPECT_EQ(ponder(), "");
    }
}

TEST_F(PanesTest, APonderSearchShowsItsMoveAndThenItsResult) {
    settings.pondering_on = 1;
    script.think = answer_with("19-23");
    script.predict = answer_with("28x19");
    play("32-28");
    ASSERT_TRUE(wait_for_search());
    script.hold = true;
    timer_tick();
    ASSERT_EQ(search_thread.pondering, 1);
    wait_until_held();
    EXPECT_TRUE(ponder().starts_with("pondering move 28x19\r\n")) << ponder();
    EXPECT_TRUE(ponder().ends_with("Thinking...")) << ponder();
    script.think = answer_with("14x23");
    release_search();
    finish_search();
    EXPECT_TRUE(search_thread.ponder_done);
    EXPECT_TRUE(ponder().starts_with("ponder move 28x19\r\nponder result 14x23\r\nbook ")) << ponder();
}

TEST_F(PanesTest, ThePonderTextIsCutAtTwoHundredAndSixteenCharacters) {
    settings.pondering_on = 1;
    show_search_text(std::string(500, 'x').c_str());
    EXPECT_EQ(ponder(), std::string(216, 'x'));
    search_thread.ponder_done = true;
    std::strcpy(search_thread.ponder_move_text, "1-2");
    std::strcpy(search_thread.ponder_result_text, "3-4");
    const std::string head = "ponder move 1-2\r\nponder result 3-4\r\n";
    EXPECT_EQ(ponder(), head + std::string(216 - head.size(), 'x'));
    text_source = [](int, char* buffer, size_t size) {
        std::snprintf(buffer, size, "%s", std::string(400, 'y').c_str());
    };
    EXPECT_EQ(ponder(), std::string(216, 'y'));
}

TEST_F(PanesTest, TheClockPaneIsOfModesThatPlay) {
    clock_state.white_used = 61;
    clock_state.black_used = 5;
    clock_state.clock_moves = 3;
    for (int32_t mode = 0; mode <= 10; ++mode) {
        game.gui_mode = mode;
        EXPECT_EQ(clock(), mode == 0 || mode == 4 || mode == 6 ? "W 01:01   B 00:05\r\nmoves 3\r\n" : "");
    }
}

TEST_F(PanesTest, TheRunningLapIsShownForItsSide) {
    clock_state.clock_side = BLACK;
    clock_start_command();
    clock_state.user_lap_start -= 65000;
    EXPECT_EQ(clock(), "W 01:05   B 00:00\r\nmoves 0\r\n");
    EXPECT_EQ(clock_state.white_used, 0.0) << "for the display only";
}

TEST_F(PanesTest, EveryFifthTickRefreshesWhatChanged) {
    tick(4);
    EXPECT_TRUE(events().empty());
    tick(1);
    EXPECT_EQ(events(), (Events{STATUS_PANE + "Egdb: Disabled\r\nSearch mode: Normal\r\n",
                                CLOCK_PANE + "W 00:00   B 00:00\r\nmoves 0\r\n"}));
    clear_events();
    tick(100);
    EXPECT_TRUE(events().empty());
    game.gui_mode = TWO_PLAYERS_MODE;
    tick(5);
    EXPECT_EQ(events(), (Events{STATUS_PANE + "Egdb: Disabled\r\nSearch mode: 2-Player\r\n", CLOCK_PANE}));
    clear_events();
    game.gui_mode = NORMAL_MODE;
    settings.pondering_on = 1;
    show_search_text("a line");
    tick(5);
    EXPECT_EQ(events_of(PONDER_PANE), Events{PONDER_PANE + "a line"});
    clear_events();
    settings.pondering_on = 0;
    tick(10);
    EXPECT_EQ(events(), Events{PONDER_PANE});
}

TEST_F(PanesTest, TheStatusLineIsSentWhenItChanges) {
    show_status("one");
    show_status("one");
    show_status(TEXT_NEW_GAME);
    show_status("New game");
    show_status("one");
    EXPECT_EQ(events(), (Events{"status one", "status New game", "status one"}));
}

TEST_F(PanesTest, ARunningSearchShowsItsTextAndAPonderSearchDoesNot) {
    script.hold = true;
    search_button_command();
    wait_until_held();
    show_search_text("value=1,  depth 3");
    clear_events();
    timer_tick();
    timer_tick();
    EXPECT_EQ(events_of("status"), Events{"status value=1,  depth 3"});
    search_thread.pondering = 1;
    show_search_text("value=2,  depth 5");
    timer_tick();
    EXPECT_EQ(count_events("status"), 1);
    search_thread.pondering = 0;
}

TEST_F(PanesTest, ATickWithNothingToDoIsCheap) {
    tick(10);
    constexpr int TICKS = 20000;
    const std::clock_t start = std::clock();  // of the processor: the search thread sleeps
    tick(TICKS);
    const double microseconds = 1e6 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    // Some hundred times what it takes, for sanitizers.
    EXPECT_LT(microseconds / TICKS, 100);
    RecordProperty("microseconds", std::to_string(microseconds / TICKS));
    EXPECT_EQ(count_events("status"), 0);
}
