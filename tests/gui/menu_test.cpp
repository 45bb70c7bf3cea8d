// The menu and the toolbar: what stands in them, what is ticked and disabled, and the keys.
#include "shell/qt/menu_bar.h"

#include <QMenuBar>
#include <QSpinBox>
#include <set>

#include "control/analyze_games.h"
#include "control/load_save.h"
#include "shell/qt/menu_state.h"
#include "tests/gui/desktop_fixture.h"
#include "tests/gui/dialog_user.h"

namespace {

class Menu : public DesktopTest {
  protected:
    void SetUp() override {
        DesktopTest::SetUp();
        open_small();
    }
};

std::vector<int32_t> command_ids(const std::vector<MenuItem>& items) {
    std::vector<int32_t> ids;
    for (const MenuItem& item : items) {
        if (item.id > 0) ids.push_back(item.id);
        for (const int32_t id : command_ids(item.items)) ids.push_back(id);
    }
    return ids;
}

// One line an item, with its depth, as the data tell it.
void tell_items(const std::vector<MenuItem>& items, const std::string& indent,
                std::vector<std::string>& lines) {
    for (const MenuItem& item : items) {
        lines.push_back(indent + (item.id == MENU_SEPARATOR ? "-" : item.text));
        tell_items(item.items, indent + "  ", lines);
    }
}

// The same as the window shows it.
void tell_actions(const QList<QAction*>& actions, const std::string& indent,
                  std::vector<std::string>& lines) {
    for (const QAction* const action : actions) {
        lines.push_back(indent + (action->isSeparator() ? "-" : action->text().toStdString()));
        if (action->menu()) tell_actions(action->menu()->actions(), indent + "  ", lines);
    }
}

// Closes all dialogs that come up.
struct DialogCloser {
    int closed = 0;
    QTimer timer;

    DialogCloser() {
        QObject::connect(&timer, &QTimer::timeout, &timer, [this] {
            QWidget* const dialog = QApplication::activeModalWidget();
            if (!dialog) return;
            ++closed;
            dialog->close();
        });
        timer.start(5);
    }
};

constexpr std::array<int32_t, 4> TEST_COMMANDS = {40035, 40045, 40051, 40133};
// Those of a connection, while there is none.
constexpr std::array<int32_t, 2> DISABLED_COMMANDS = {40049, 40094};

}  // namespace

TEST_F(Menu, ShowsTheWholeMenuInItsOrder) {
    std::vector<MenuItem> wanted = built_in_menu();
    for (const int32_t id : TEST_COMMANDS) remove_menu_item(wanted, id);
    std::vector<std::string> told, shown;
    tell_items(wanted, "", told);
    tell_actions(main_window->menuBar()->actions(), "", shown);
    EXPECT_EQ(shown, told);
    EXPECT_GT(shown.size(), 80u);
}

TEST_F(Menu, HasEveryCommandOnceAndNoTestCommands) {
    const std::vector<int32_t> ids = command_ids(main_menu);
    EXPECT_EQ(std::set<int32_t>(ids.begin(), ids.end()).size(), ids.size());
    EXPECT_EQ(main_window->menu().commands.size(), ids.size());
    for (const int32_t id : ids) EXPECT_NE(command_action(main_window->menu(), id), nullptr) << id;
    for (const int32_t id : TEST_COMMANDS) EXPECT_EQ(command_action(main_window->menu(), id), nullptr) << id;
}

TEST_F(DesktopTest, AutoconnectStandsInTheMenuWithItsFile) {
    std::filesystem::create_directories(data_folder());
    write_content(data_folder() + "tessarin.ini", "");
    open_small();
    EXPECT_TRUE(action(40133).isEnabled());
    EXPECT_EQ(command_action(main_window->menu(), 40035), nullptr);
}

TEST_F(Menu, KeysAreTheToldOnes) {
    const std::map<int32_t, QKeySequence> keys = {
        {40024, Qt::Key_Left},         {40023, Qt::Key_Home},         {40025, Qt::Key_Right},
        {40026, Qt::Key_End},          {40040, Qt::CTRL | Qt::Key_C}, {40041, Qt::ALT | Qt::Key_C},
        {40039, Qt::CTRL | Qt::Key_V}, {40042, Qt::CTRL | Qt::Key_I},
    };
    for (const auto& [id, command] : main_window->menu().commands) {
        const auto key = keys.find(id);
        const QKeySequence wanted = key == keys.end() ? QKeySequence() : key->second;
        EXPECT_EQ(command->shortcut(), wanted) << id;
        EXPECT_EQ(command->shortcutContext(), Qt::WindowShortcut) << id;
    }
}

TEST_F(Menu, CommandsThatCannotBeGivenAreDisabledAndDoNothing) {
    for (const int32_t id : DISABLED_COMMANDS) {
        EXPECT_FALSE(action(id).isEnabled()) << id;
        run_command(id);
    }
    EXPECT_TRUE(boxes.empty());
    for (const auto& [id, command] : main_window->menu().commands) {
        const bool missing =
            std::find(DISABLED_COMMANDS.begin(), DISABLED_COMMANDS.end(), id) != DISABLED_COMMANDS.end();
        const bool idle = id == COMMAND_CANCEL_ANALYZE || id == COMMAND_CLOCK_STOP;
        EXPECT_EQ(command->isEnabled(), !missing && !idle) << id;
    }
}

TEST_F(Menu, OneEntryOfTheTimeMenuIsTicked) {
    for (const TimeMenuRow& chosen : time_menu) {
        if (chosen.id == TIME_GAME_CLOCK) continue;
        action(chosen.id).trigger();
        for (const TimeMenuRow& row : time_menu) EXPECT_EQ(ticked(row.id), row.id == chosen.id) << row.id;
        EXPECT_EQ(settings.time_per_move, chosen.seconds);
        action(chosen.id).trigger();  // once more changes nothing
        EXPECT_TRUE(ticked(chosen.id));
    }
}

TEST_F(Menu, OneEntryOfTheBookMenuIsTicked) {
    const std::map<int32_t, int32_t> modes = {{40068, 3}, {40069, 2}, {40070, 1}, {40071, 0}};
    for (const auto& [chosen, mode] : modes) {
        action(chosen).trigger();
        EXPECT_EQ(settings.book_mode, mode);
        for (const auto& [id, other] : modes) EXPECT_EQ(ticked(id), id == chosen) << id;
    }
}

TEST_F(Menu, SwitchesTurnTheirSettings) {
    const std::map<int32_t, std::function<bool()>> switches = {
        {40042, [] { return settings.board_inverted != 0; }},
        {40066, [] { return settings.sound_on != 0; }},
        {40084, [] { return settings.pondering_on != 0; }},
        {40104, [] { return settings.save_on_exit != 0; }},
        {40125, [] { return settings.square_numbers != 0; }},
    };
    for (const auto& [id, is_on] : switches)
        for (int turn = 0; turn < 2; ++turn) {
            const bool before = is_on();
            EXPECT_EQ(ticked(id), before) << id;
            action(id).trigger();
            EXPECT_EQ(is_on(), !before) << id;
            EXPECT_EQ(ticked(id), !before) << id;
        }
}

TEST_F(Menu, OneBackgroundIsTickedAndShown) {
    for (const bool gray : {false, true}) {
        action(gray ? 40109 : 40108).trigger();
        EXPECT_EQ(settings.background_kind, gray ? 1 : 0);
        EXPECT_EQ(ticked(40108), !gray);
        EXPECT_EQ(ticked(40109), gray);
        const QColor wanted = gray ? QApplication::palette().color(QPalette::Window) : QColor(Qt::white);
        for (int pane = 0; pane < CHILD_WINDOWS; ++pane)
            EXPECT_EQ(
                main_window->pane(static_cast<ChildWindow>(pane)).edit().palette().color(QPalette::Base),
                wanted);
    }
}

TEST_F(Menu, ModesAreTickedAndRuleTheAnalyzeCommands) {
    settings.time_per_move = 0.05;
    const std::map<int32_t, int32_t> modes = {{40053, NORMAL_MODE},
                                              {40055, TWO_PLAYERS_MODE},
                                              {40054, ANALYSIS_MODE},
                                              {40112, ANALYSIS_ALLSCORES_MODE}};
    for (const auto& [chosen, mode] : modes) {
        action(chosen).trigger();
        EXPECT_EQ(game.gui_mode, mode);
        for (const auto& [id, other] : modes) EXPECT_EQ(ticked(id), id == chosen) << id;
        EXPECT_FALSE(ticked(COMMAND_SETUP));
        EXPECT_TRUE(action(COMMAND_ANALYZE_GAME).isEnabled());
        EXPECT_FALSE(action(COMMAND_CANCEL_ANALYZE).isEnabled());
    }
    action(COMMAND_SETUP).trigger();
    EXPECT_TRUE(ticked(COMMAND_SETUP));
    for (const int32_t id : {40110, 40111, 40114, 40115, 40113}) EXPECT_FALSE(action(id).isEnabled()) << id;
    action(COMMAND_SETUP).trigger();
    EXPECT_FALSE(ticked(COMMAND_SETUP));
    EXPECT_TRUE(ticked(40053));
}

TEST_F(Menu, WhileGamesAreAnalyzedOnlyCancelCanBeGiven) {
    action(40055).trigger();
    play_moves(2);
    action(40006).trigger();
    action(40110).trigger();
    EXPECT_EQ(game.gui_mode, ANALYZE_GAME_MODE);
    for (const int32_t id : {40110, 40111, 40114, 40115}) EXPECT_FALSE(action(id).isEnabled()) << id;
    ASSERT_TRUE(action(40113).isEnabled());
    action(40113).trigger();
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    EXPECT_TRUE(action(40110).isEnabled());
    EXPECT_FALSE(action(40113).isEnabled());
}

TEST_F(Menu, StartAndStopOfTheClockTakeTurns) {
    EXPECT_TRUE(action(40081).isEnabled());
    EXPECT_FALSE(action(40082).isEnabled());
    action(40081).trigger();
    EXPECT_FALSE(action(40081).isEnabled());
    EXPECT_TRUE(action(40082).isEnabled());
    action(40082).trigger();
    EXPECT_TRUE(action(40081).isEnabled());
    action(40081).trigger();
    action(40083).trigger();  // resets
    EXPECT_TRUE(action(40081).isEnabled());
    EXPECT_FALSE(action(40082).isEnabled());
}

TEST_F(Menu, CommandsOfTheGameReachIt) {
    action(40055).trigger();
    play_moves(3);
    EXPECT_EQ(game.history_count, 4);
    action(40024).trigger();
    EXPECT_EQ(game.history_count, 3);
    action(40023).trigger();
    EXPECT_EQ(game.history_count, 1);
    action(40025).trigger();
    EXPECT_EQ(game.history_count, 2);
    action(40026).trigger();
    EXPECT_EQ(game.history_count, 4);
    action(40004).trigger();
    EXPECT_EQ(game.history_last, 1);
    EXPECT_EQ(main_window->status_line().text().toStdString(), "New game");
    action(40031).trigger();
    EXPECT_EQ(game.board.black | game.board.white, 0u);
    EXPECT_EQ(game.gui_mode, SETUP_MODE);
}

TEST_F(Menu, KeysWorkWhereverTheFocusIs) {
    action(40055).trigger();
    play_moves(3);
    const std::vector<QWidget*> places = {&main_window->board_window().board(),
                                          &main_window->pane(GAME_WINDOW).edit(),
                                          &main_window->pane(STATUS_WINDOW).edit()};
    for (QWidget* const place : places) {
        const auto key = [place](Qt::Key code, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
            // A box may have come up before and taken the focus.
            QApplication::setActiveWindow(main_window);
            place->setFocus();
            QTest::keyClick(place, code, modifiers);
        };
        key(Qt::Key_Home);
        EXPECT_EQ(game.history_count, 1) << place->objectName().toStdString();
        key(Qt::Key_Right);
        EXPECT_EQ(game.history_count, 2);
        key(Qt::Key_End);
        EXPECT_EQ(game.history_count, 4);
        key(Qt::Key_Left);
        EXPECT_EQ(game.history_count, 3);
        const int32_t inverted = settings.board_inverted;
        key(Qt::Key_I, Qt::ControlModifier);
        EXPECT_NE(settings.board_inverted, inverted);
        char text[2000] = "";
        key(Qt::Key_C, Qt::ControlModifier);
        ASSERT_TRUE(ui.read_clipboard(text, sizeof text));
        EXPECT_NE(std::string(text).find("1. "), std::string::npos) << text;
        key(Qt::Key_C, Qt::AltModifier);
        ASSERT_TRUE(ui.read_clipboard(text, sizeof text));
        EXPECT_NE(std::string(text).find(":B"), std::string::npos) << text;
        ASSERT_TRUE(ui.write_clipboard("W:W31,K46:B1,2"));
        key(Qt::Key_V, Qt::ControlModifier);
        EXPECT_EQ(bit_count(game.board.black | game.board.white), 4);
        action(40004).trigger();
        play_moves(3);
    }
}

TEST_F(Menu, TheMenuBarHasItsKeysForItself) {
    action(40055).trigger();
    play_moves(3);
    QApplication::setActiveWindow(main_window);
    QMenuBar* const bar = main_window->menuBar();
    bar->setFocus();
    ASSERT_TRUE(bar->hasFocus());
    for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Home, Qt::Key_End}) {
        QTest::keyClick(bar, key);
        EXPECT_EQ(game.history_count, 4) << key;
    }
}

TEST_F(Menu, TheSearchButtonHasAKey) {
    const QAction* const search = tool_bar_action(main_window->tool_bar(), COMMAND_SEARCH_BUTTON);
    ASSERT_NE(search, nullptr);
    QApplication::setActiveWindow(main_window);
    Board& board = main_window->board_window().board();
    board.setFocus();
    QTest::keyClick(&board, Qt::Key_F5);
    EXPECT_TRUE(wait_until([] { return game.history_count == 2; }));
    EXPECT_FALSE(search->autoRepeat()) << "a key that is held would start and stop";
}

TEST_F(Menu, ToolbarHasItsButtonsInOrder) {
    const std::vector<std::pair<int32_t, std::string>> wanted = {{40023, "Back to start"},
                                                                 {40024, "Back one move"},
                                                                 {40025, "Forward one move"},
                                                                 {40026, "Forward to end"},
                                                                 {40027, "Change color of side to move"},
                                                                 {0, ""},
                                                                 {40022, "Start searching"}};
    std::vector<std::pair<int32_t, std::string>> shown;
    for (const QAction* const each : main_window->tool_bar().actions())
        shown.push_back(each->isSeparator() ? std::pair<int32_t, std::string>{0, ""}
                                            : std::pair{each->data().toInt(), each->toolTip().toStdString()});
    EXPECT_EQ(shown, wanted);
    for (const QAction* const each : main_window->tool_bar().actions())
        EXPECT_FALSE(!each->isSeparator() && each->isIconVisibleInMenu()) << each->data().toInt();
    EXPECT_EQ(picture(40023), 1);
    EXPECT_EQ(picture(40024), 2);
    EXPECT_EQ(picture(40025), 3);
    EXPECT_EQ(picture(40026), 4);
    EXPECT_EQ(picture(40027), 6);
    EXPECT_EQ(picture(40022), 8);
}

TEST_F(Menu, ToolbarShowsTheSideToMove) {
    action(40027).trigger();
    EXPECT_EQ(game.board_side, BLACK);
    EXPECT_EQ(picture(40027), 5);
    action(40027).trigger();
    EXPECT_EQ(picture(40027), 6);
    action(40055).trigger();
    play_moves(1);
    EXPECT_EQ(picture(40027), 5);
    action(40024).trigger();
    EXPECT_EQ(picture(40027), 6);
}

TEST_F(Menu, ToolbarShowsWhetherASearchRuns) {
    action(40021).trigger();  // without end
    action(40054).trigger();
    ASSERT_TRUE(wait_until([] { return picture(40022) == 7; }));
    EXPECT_EQ(button(40022).toolTip().toStdString(), "Stop searching");
    ASSERT_TRUE(
        wait_until([] { return main_window->status_line().text().contains(QStringLiteral("depth")); }));
    button(40022).trigger();
    ASSERT_TRUE(wait_until([] { return picture(40022) == 8; }));
    EXPECT_EQ(button(40022).toolTip().toStdString(), "Start searching");
    EXPECT_FALSE(real_search_runs());
}

TEST_F(Menu, TheStartButtonHasTheEngineMove) {
    settings.book_mode = 0;
    settings.time_per_move = 0.05;
    button(40022).trigger();
    ASSERT_TRUE(wait_until([] { return game.history_count == 2; }));
    EXPECT_TRUE(wait_until([] { return picture(40022) == 8; }));
    EXPECT_EQ(picture(40027), 5);
    EXPECT_FALSE(pane_shows(GAME_WINDOW).empty());
}

TEST_F(Menu, TheEnginesMoveNeedsNoTick) {
    settings.book_mode = 0;
    settings.time_per_move = 0.05;
    button(40022).trigger();
    // What is posted has its turn, but no timer has.
    for (int i = 0; i < 60000 && game.history_count == 1; ++i) {
        QTest::qSleep(1);
        QCoreApplication::sendPostedEvents();
    }
    EXPECT_EQ(game.history_count, 2);
}

// A tick that would be out of date shows that a change of settings has not reached the menu.
TEST_F(Menu, AllTicksFollowTheSettings) {
    const MenuState state = menu_state(game.gui_mode, false);
    const auto expect_ticks = [&state](const char* where) {
        for (const auto& [id, command] : main_window->menu().commands) {
            EXPECT_EQ(command->isCheckable(), command_has_tick(id)) << where << " " << id;
            EXPECT_EQ(command->isChecked(), command_has_tick(id) && command_is_ticked(id, state))
                << where << " " << id;
        }
    };
    expect_ticks("start");
    for (const int32_t id : {40042, 40066, 40069, 40084, 40096, 40097, 40098, 40099, 40102, 40104, 40108,
                             40125, 40006, 40021, 40100, 40065}) {
        action(id).trigger();
        expect_ticks(std::to_string(id).c_str());
    }
}

TEST_F(Menu, DialogsComeUp) {
    box_closer.stop();
    const std::map<int32_t, std::string> dialogs = {
        {TIME_GAME_CLOCK, "Game Time"},
        {COMMAND_PARALLEL_SEARCH, "Parallel Search Control"},
        {COMMAND_DATABASE_OPTIONS, "Endgame db and Hashtable Options"},
        {COMMAND_PDN_HEADER, "Game Information"},
        {COMMAND_SAVE, "Game Information"},
        {COMMAND_LOAD, LOAD_FILE_TITLE}};
    for (const auto& [id, title] : dialogs) {
        std::string shown;
        use_dialog([id = id] { return action(id).trigger(), 0; },
                   [&](QDialog& dialog) {
                       shown = dialog.windowTitle().toStdString();
                       dialog.reject();
                   });
        EXPECT_EQ(shown, title) << id;
    }
    for (const int32_t id : {COMMAND_ABOUT, COMMAND_FONT})
        use_dialog([id] { return action(id).trigger(), 0; }, [](QDialog& dialog) { dialog.reject(); });
}

TEST_F(Menu, TheGameClockIsTickedWhenItIsChosen) {
    use_dialog([] { return action(TIME_GAME_CLOCK).trigger(), 0; }, [](QDialog& dialog) { dialog.reject(); });
    EXPECT_FALSE(ticked(TIME_GAME_CLOCK));
    use_dialog([] { return action(TIME_GAME_CLOCK).trigger(), 0; }, [](QDialog& dialog) { dialog.accept(); });
    EXPECT_TRUE(ticked(TIME_GAME_CLOCK));
    EXPECT_FALSE(ticked(40008));
}

TEST_F(Menu, NoClockIsSetInAGameOverTheNetwork) {
    const DialogCloser user;
    for (const int32_t mode : {DXP_MODE, TWO_PLAYERS_MODE}) {
        set_gui_mode(mode);
        action(TIME_GAME_CLOCK).trigger();
        EXPECT_EQ(user.closed, mode == DXP_MODE ? 0 : 1);
    }
}

TEST_F(Menu, WhatTheMenuOffersTooLateDoesNothing) {
    const DialogCloser user;
    // The connection has ended, and the menu does not show it yet.
    action(COMMAND_START_MATCH).setEnabled(true);
    action(COMMAND_START_MATCH).trigger();
    EXPECT_EQ(user.closed, 0);
    EXPECT_FALSE(action(COMMAND_START_MATCH).isEnabled());
}

TEST_F(Menu, AChosenFontReachesThePanes) {
    const auto choose_size = [](int size) {
        use_dialog([] { return action(COMMAND_FONT).trigger(), 0; },
                   [size](QDialog& dialog) {
                       dialog.findChild<QSpinBox*>()->setValue(size);
                       dialog.accept();
                   });
    };
    choose_size(14);
    EXPECT_EQ(settings.font_size, 14);
    for (int pane = 0; pane < CHILD_WINDOWS; ++pane)
        EXPECT_EQ(main_window->pane(static_cast<ChildWindow>(pane)).edit().font().pointSizeF(), 14);
}

TEST_F(Menu, LoadsAGame) {
    const std::string path = home.file("one.pdn");
    write_content(path, "[White \"A\"]\n1. 32-28 19-23 2. 28x19 14x23 *\n");
    // First the file, then which of its games.
    int dialogs = 0;
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, &user, [&] {
        auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible()) return;
        ++dialogs;
        if (auto* const name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")))
            name->setText(QString::fromStdString(path));
        dialog->accept();
    });
    user.start(5);
    action(COMMAND_LOAD).trigger();
    EXPECT_GE(dialogs, 1);
    EXPECT_EQ(game.history_count, 5);
    EXPECT_TRUE(pane_shows(GAME_WINDOW).starts_with("1. 32-28  19-23")) << pane_shows(GAME_WINDOW);
}
