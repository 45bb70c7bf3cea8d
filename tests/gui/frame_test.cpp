// The main window as a whole: how it comes up, what it remembers, languages, and how it ends.
#include "shell/qt/main_window.h"

#include <QMdiArea>
#include <QMenuBar>
#include <QScreen>
#include <QScrollBar>

#include "base/file_calls.h"
#include "control/analyze_games.h"
#include "control/game_commands.h"
#include "control/load_save.h"
#include "control/text_ids.h"
#include "search/engine_settings.h"
#include "search/table.h"
#include "shell/qt/arrangement.h"
#include "shell/qt/menu_state.h"
#include "shell/qt/text.h"
#include "shell/qt/window_records.h"
#include "tests/gui/desktop_fixture.h"

namespace {

constexpr std::array<ChildWindow, CHILD_WINDOWS> ALL_PANES = {CLOCK_WINDOW, GAME_WINDOW, STATUS_WINDOW,
                                                              PONDER_WINDOW, DXP_WINDOW};

constexpr int32_t TIME_ONE_SECOND = 40006;
constexpr int32_t TIME_ONE_HOUR = 40020;

class Frame : public DesktopTest {
  protected:
    std::string saved() const { return content_of(settings_folder() + "settings"); }
    bool was_saved() const { return std::filesystem::exists(settings_folder() + "settings"); }
    Image small_image() const { return default_image().put32(HASH_OFFSET, SMALL_HASH_MB); }

    // All that is visible, with the board; none overlaps and all are inside the frame.
    static void expect_tidy(const std::string& where) {
        std::vector<QWidget*> windows = {&main_window->board_window()};
        for (const ChildWindow pane : ALL_PANES)
            if (settings.child_windows[pane].visible) windows.push_back(&main_window->pane(pane));
        const QRect inside = main_window->area().viewport()->rect();
        for (size_t a = 0; a < windows.size(); ++a) {
            EXPECT_TRUE(windows[a]->isVisible()) << where << " " << a;
            EXPECT_TRUE(inside.contains(windows[a]->geometry())) << where << " " << a;
            for (size_t b = a + 1; b < windows.size(); ++b)
                EXPECT_FALSE(windows[a]->geometry().intersects(windows[b]->geometry()))
                    << where << " " << a << " " << b;
        }
    }
};

}  // namespace

TEST_F(Frame, ComesUpArrangedAtTheFirstStart) {
    open_small();
    EXPECT_TRUE(main_window->isVisible());
    EXPECT_EQ(main_window->windowTitle().toStdString(), "Tessarin International(x64) 1.60b");
    EXPECT_EQ(settings.square_size, 44);
    EXPECT_EQ(main_window->board_window().board().size(), QSize(440, 440));
    expect_tidy("first start");
    EXPECT_FALSE(main_window->pane(PONDER_WINDOW).isVisible());
    // The frame is as large as that takes.
    const QRect game_pane = main_window->pane(GAME_WINDOW).geometry();
    EXPECT_EQ(main_window->area().width(), game_pane.right() + 1 + WINDOW_GAP);
    EXPECT_EQ(main_window->area().height(),
              main_window->pane(STATUS_WINDOW).geometry().bottom() + 1 + WINDOW_GAP);
    EXPECT_TRUE(boxes.empty());
    EXPECT_FALSE(was_saved());
}

TEST_F(Frame, BeginsANewGame) {
    open_small();
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(game.board_side, WHITE);
    EXPECT_TRUE(search_thread.running);
    EXPECT_TRUE(wait_until([] { return !pane_shows(STATUS_WINDOW).empty(); }));
}

TEST_F(Frame, DrawsTheBoardBeforeTheEngineStarts) {
    open_desktop(false);
    EXPECT_TRUE(main_window->board_window().board().isVisible());
    const QImage drawn = main_window->board_window().board().grab().toImage();
    EXPECT_NE(drawn.pixelColor(drawn.width() / 20, drawn.height() / 20),
              drawn.pixelColor(drawn.width() * 3 / 20, drawn.height() / 20));
}

TEST_F(Frame, SavesAtItsEndIfWanted) {
    open_small();
    run_command(COMMAND_INVERT_BOARD);
    main_window->close();
    ASSERT_TRUE(was_saved());
    EXPECT_EQ(saved().size(), SETTINGS_BYTES);
    EXPECT_EQ(saved()[40], 1);
    EXPECT_FALSE(main_window->isVisible());
}

// The disk may take its time.
TEST_F(Frame, IsOutOfSightBeforeItsSettingsAreOnTheDisk) {
    static int flushes, in_sight;
    flushes = in_sight = 0;
    open_small();
    main_window->pane(STATUS_WINDOW).move(33, 44);
    file_calls.flush = [](int descriptor) {
        ++flushes;
        in_sight += main_window->isVisible();
        return system_file_calls().flush(descriptor);
    };
    main_window->close();
    file_calls = system_file_calls();
    EXPECT_GT(flushes, 0);
    EXPECT_EQ(in_sight, 0);
    // What is saved is how the window was.
    EXPECT_EQ(settings.child_windows[STATUS_WINDOW].x, 33);
    EXPECT_EQ(settings.child_windows[STATUS_WINDOW].visible, 1);
    EXPECT_EQ(saved().substr(688 + 20 * STATUS_WINDOW + 4, 1), "\x21");
}

TEST_F(Frame, AClosedWindowIsAsItWasWhenItWasClosed) {
    open_small();
    main_window->pane(STATUS_WINDOW).move(33, 44);
    main_window->close();
    main_window->pane(STATUS_WINDOW).move(55, 66);
    ASSERT_EQ(save_settings(), 0);
    EXPECT_EQ(settings.child_windows[STATUS_WINDOW].x, 33);
}

TEST_F(Frame, SavesNothingAtItsEndIfNotWanted) {
    open_small();
    run_command(COMMAND_SAVE_ON_EXIT);
    run_command(COMMAND_INVERT_BOARD);
    save_images("of another copy", "");
    main_window->close();
    EXPECT_EQ(saved(), "of another copy");
}

TEST_F(Frame, ExitClosesTheWindowLater) {
    open_small();
    run_command(COMMAND_EXIT);
    EXPECT_TRUE(main_window->isVisible());
    settle();
    EXPECT_FALSE(main_window->isVisible());
    EXPECT_TRUE(was_saved());
}

TEST_F(Frame, SavesNow) {
    open_small();
    run_command(COMMAND_SAVE_ON_EXIT);
    run_command(COMMAND_SAVE_SETTINGS);
    EXPECT_TRUE(was_saved());
    EXPECT_TRUE(boxes.empty());
}

TEST_F(Frame, TellsWhenSettingsCannotBeSaved) {
    open_small();
    write_content(home.file("config"), "a file where the folder should be");
    run_command(COMMAND_SAVE_SETTINGS);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, "The settings could not be saved.");
    main_window->close();
    EXPECT_EQ(boxes.size(), 2u);
    EXPECT_FALSE(main_window->isVisible());
}

TEST_F(Frame, RemembersAllPlaces) {
    open_small();
    const QSize frame = main_window->size() + QSize(60, 90);
    main_window->resize(frame);
    main_window->move(37, 41);
    for (const ChildWindow pane : ALL_PANES) {
        const int step = 10 * pane;
        main_window->pane(pane).setGeometry(20 + step, 30 + step, 160 + step, 90 + step);
    }
    run_command(COMMAND_CLOCK_WINDOW);
    main_window->pane(CLOCK_WINDOW).setGeometry(20, 30, 160, 90);
    settle();
    main_window->close();
    ASSERT_TRUE(close_desktop());
    open_small();
    EXPECT_EQ(main_window->size(), frame);
    EXPECT_EQ(main_window->pos(), QPoint(37, 41));
    for (const ChildWindow pane : ALL_PANES) {
        const int step = 10 * pane;
        EXPECT_EQ(main_window->pane(pane).geometry(), QRect(20 + step, 30 + step, 160 + step, 90 + step))
            << pane;
        EXPECT_EQ(main_window->pane(pane).isVisible(),
                  pane == CLOCK_WINDOW || pane == GAME_WINDOW || pane == STATUS_WINDOW)
            << pane;
    }
    // Another round changes nothing.
    main_window->close();
    const std::string first = saved();
    ASSERT_TRUE(close_desktop());
    open_small();
    main_window->close();
    EXPECT_EQ(saved(), first);
}

TEST_F(Frame, StaysMaximizedWithItsOldPlaceKept) {
    Image image = small_image();
    image.put_window(668, 1, 40, 50, 640, 560);
    // Beside what the frame shows in its own size.
    image.put_window(688 + 20 * STATUS_WINDOW, 1, 650, 30, 140, 90);
    save_images(image.sealed(), default_image2().sealed());
    open_small();
    const QRect place(main_window->pos(), main_window->size());
    EXPECT_EQ(place.topLeft(), QPoint(40, 50));
    main_window->setWindowState(Qt::WindowMaximized);
    settle();
    main_window->pane(STATUS_WINDOW).setGeometry(650, 30, 140, 90);
    const QSize large = main_window->size();
    ASSERT_GT(large.width(), place.width());
    main_window->close();
    ASSERT_TRUE(close_desktop());
    EXPECT_EQ(settings.main_window.visible, FRAME_MAXIMIZED);
    open_small();
    EXPECT_TRUE(main_window->isMaximized());
    EXPECT_EQ(main_window->size(), large);
    EXPECT_EQ(main_window->pane(STATUS_WINDOW).geometry(), QRect(650, 30, 140, 90));
    main_window->showNormal();
    settle();
    EXPECT_EQ(QRect(main_window->pos(), main_window->size()), place);
    main_window->close();
    EXPECT_EQ(settings.main_window.visible, FRAME_SHOWN);
    // The windows' default places are in a frame of its own size.
    main_window->showMaximized();
    settle();
    run_command(COMMAND_RESET_WINDOWS);
    settle();
    EXPECT_FALSE(main_window->isMaximized());
    expect_tidy("reset while maximized");
}

TEST_F(Frame, WindowsOffTheScreenComeBack) {
    Image image = small_image();
    image.put_window(668, 1, 30000, -20000, 700, 560);
    for (size_t pane = 0; pane < CHILD_WINDOWS; ++pane)
        image.put_window(688 + 20 * pane, 1, -9000, 9000, 180, 90);
    save_images(image.sealed(), default_image2().sealed());
    open_small();
    const QRect screen = main_window->screen()->availableGeometry();
    EXPECT_TRUE(screen.intersects(main_window->geometry()));
    const QRect inside = main_window->area().viewport()->rect();
    for (const ChildWindow pane : ALL_PANES)
        EXPECT_TRUE(inside.intersects(main_window->pane(pane).geometry())) << pane;
}

TEST_F(Frame, ABoardOfALargerScreenBecomesSmaller) {
    Image image = small_image();
    constexpr size_t SQUARE_SIZE_OFFSET = 48;
    image.put32(SQUARE_SIZE_OFFSET, 150);
    image.put_window(668, 1, 0, 0, 2500, 1580);
    for (size_t pane = 0; pane < CHILD_WINDOWS; ++pane)
        image.put_window(688 + 20 * pane, pane == GAME_WINDOW || pane == STATUS_WINDOW, 1600, 20, 300, 90);
    save_images(image.sealed(), default_image2().sealed());
    open_small();
    EXPECT_LT(settings.square_size, 150);
    expect_tidy("on a small screen");
}

// The user may scroll it.
TEST_F(Frame, ALargeBoardStaysOnItsScreen) {
    Image image = small_image();
    constexpr size_t SQUARE_SIZE_OFFSET = 48;
    image.put32(SQUARE_SIZE_OFFSET, 72);
    image.put_window(668, 1, 10, 10, 700, 560);
    for (size_t pane = 0; pane < CHILD_WINDOWS; ++pane) image.put_window(688 + 20 * pane, 1, 33, 44, 180, 90);
    save_images(image.sealed(), default_image2().sealed());
    open_small();
    ASSERT_GT(main_window->screen()->availableGeometry().height(), main_window->board_window().height());
    EXPECT_EQ(settings.square_size, 72);
    EXPECT_EQ(main_window->pane(STATUS_WINDOW).pos(), QPoint(33, 44));
}

TEST_F(Frame, HiddenPanesKeepTheirPlacesUntilTheyAreShown) {
    open_small();
    const QRect below = main_window->pane(PONDER_WINDOW).geometry();
    EXPECT_GT(below.top(), main_window->area().height() - 10);
    main_window->close();
    ASSERT_TRUE(close_desktop());
    open_small();
    EXPECT_EQ(main_window->pane(PONDER_WINDOW).geometry(), below);
    const int height = main_window->height();
    run_command(COMMAND_PONDER_WINDOW);
    settle();
    EXPECT_EQ(main_window->pane(PONDER_WINDOW).geometry(), below);
    EXPECT_GT(main_window->height(), height);
    expect_tidy("ponder shown");
}

TEST_F(Frame, APaneFarOutsideMovesInWhereThereIsRoom) {
    Image image = small_image();
    image.put_window(668, 1, 10, 10, 700, 560);
    for (size_t pane = 0; pane < CHILD_WINDOWS; ++pane)
        image.put_window(688 + 20 * pane, 0, 20000, -20000, 5000, 90);
    save_images(image.sealed(), default_image2().sealed());
    open_small();
    const QSize size = main_window->size();
    for (const ChildWindow pane : ALL_PANES) {
        run_command(command_of_pane(pane));
        settle();
        EXPECT_TRUE(main_window->area().viewport()->rect().contains(main_window->pane(pane).geometry()))
            << pane;
    }
    EXPECT_EQ(main_window->width(), size.width());
    expect_tidy("all panes shown");
}

TEST_F(Frame, FitsOnItsScreenWhateverTheRecordSays) {
    Image image = small_image();
    image.put_window(668, 1, 100, 100, 2000000000, 2000000000);
    save_images(image.sealed(), default_image2().sealed());
    open_small();
    const QSize screen = main_window->screen()->availableGeometry().size();
    EXPECT_LE(main_window->width(), screen.width());
    EXPECT_LE(main_window->height(), screen.height());
}

TEST_F(Frame, ResetWindowsTidiesUp) {
    open_small();
    main_window->resize(300, 250);
    settings.square_size = 80;
    main_window->board_window().follow_square_size();
    for (const ChildWindow pane : ALL_PANES) {
        if (!settings.child_windows[pane].visible) run_command(command_of_pane(pane));
        main_window->pane(pane).setGeometry(0, 0, 400, 300);
    }
    settings.background_kind = 0;
    run_command(COMMAND_RESET_WINDOWS);
    settle();
    expect_tidy("after the reset");
    EXPECT_EQ(settings.square_size, 44);
    EXPECT_EQ(settings.background_kind, 1);
    for (const ChildWindow pane : ALL_PANES)
        EXPECT_EQ(main_window->pane(pane).isVisible(), pane == GAME_WINDOW || pane == STATUS_WINDOW);
}

// Panes that were partly outside have made scroll bars, which must go with them.
TEST_F(Frame, NoScrollBarsAreLeftBehind) {
    Image image = small_image();
    image.put_window(668, 1, 10, 10, 640, 600);
    for (size_t pane = 0; pane < CHILD_WINDOWS; ++pane)
        image.put_window(688 + 20 * pane, 1, 480, 430, 220, 200);
    save_images(image.sealed(), default_image2().sealed());
    open_small();
    QMdiArea& area = main_window->area();
    ASSERT_TRUE(area.horizontalScrollBar()->isVisible() && area.verticalScrollBar()->isVisible());
    for (const ChildWindow pane : ALL_PANES) run_command(command_of_pane(pane));
    settle();
    EXPECT_FALSE(area.horizontalScrollBar()->isVisible() || area.verticalScrollBar()->isVisible());
    for (const ChildWindow pane : ALL_PANES) main_window->pane(pane).show();
    for (const ChildWindow pane : ALL_PANES) main_window->pane(pane).setGeometry(490, 440, 220, 200);
    settle();
    ASSERT_TRUE(area.horizontalScrollBar()->isVisible());
    run_command(COMMAND_RESET_WINDOWS);
    settle();
    EXPECT_FALSE(area.horizontalScrollBar()->isVisible() || area.verticalScrollBar()->isVisible());
    expect_tidy("reset");
}

TEST_F(Frame, PlacesAreThoseOfTheAreaAsItIsNotScrolled) {
    open_small();
    PaneWindow& pane = main_window->pane(STATUS_WINDOW);
    const QRect place = pane.geometry().translated(200, 150);
    pane.setGeometry(place);
    settle();
    main_window->area().horizontalScrollBar()->setValue(70);
    main_window->area().verticalScrollBar()->setValue(50);
    ASSERT_EQ(pane.geometry(), place.translated(-70, -50));
    main_window->read_windows(settings);
    EXPECT_EQ(place_of_record(settings.child_windows[STATUS_WINDOW]), place);
}

TEST_F(Frame, ResetSettingsPutsAllBack) {
    open_small();
    for (const int32_t id : {COMMAND_INVERT_BOARD, COMMAND_PONDER_WINDOW, COMMAND_BOOK_OFF}) run_command(id);
    run_command(40014);
    add_highlight(20);
    run_command(COMMAND_RESET_SETTINGS);
    settle();
    EXPECT_EQ(settings.board_inverted, 0);
    EXPECT_EQ(settings.book_mode, 3);
    EXPECT_EQ(settings.time_menu_id, 40008);
    EXPECT_EQ(settings.time_per_move, 3.0);
    EXPECT_EQ(game.highlight_count, 0);
    EXPECT_FALSE(main_window->pane(PONDER_WINDOW).isVisible());
    EXPECT_TRUE(ticked(40008));
    EXPECT_FALSE(ticked(COMMAND_INVERT_BOARD));
    expect_tidy("after the reset");
}

// What the command tells would be hidden behind it.
TEST_F(Frame, ACommandForgetsTypedSquares) {
    open_small();
    Board& board = main_window->board_window().board();
    QString typing;
    QObject::connect(&board, &Board::typing_changed, &board, [&](const QString& text) { typing = text; });
    QTest::keyClicks(&board, QStringLiteral("32"));
    ASSERT_EQ(typing.toStdString(), "32");
    run_command(COMMAND_NEW_GAME);
    EXPECT_EQ(typing.toStdString(), "");
}

TEST_F(Frame, SettingsAreNotResetInAGameOverTheNetwork) {
    open_small();
    settings.clock_minutes = 77;
    set_gui_mode(DXP_MODE);
    run_command(COMMAND_RESET_SETTINGS);
    EXPECT_EQ(settings.clock_minutes, 77);
    set_gui_mode(NORMAL_MODE);
}

// The engine searches with what is reset.
TEST_F(Frame, ResetSettingsEndsTheSearch) {
    open_small();
    run_command(TIME_INFINITE);
    run_command(COMMAND_ANALYSIS);
    ASSERT_TRUE(wait_until([] { return real_search_runs(); }));
    run_command(COMMAND_RESET_SETTINGS);
    EXPECT_FALSE(real_search_runs());
    EXPECT_TRUE(search_thread.this_search_aborted) << "stopped before, not ended by what was taken from it";
}

// What a search that has not come back works with stays as it is; the next one follows.
TEST_F(Frame, ResetSettingsLeavesASearchAloneThatDoesNotComeBack) {
    save_images(small_image().put32(56, 2).sealed(), "short");
    open_small();
    ASSERT_EQ(engine_settings.search_threads, 2);
    ASSERT_TRUE(discard_search());
    search_thread.search_done_event.reset();
    search_thread.wait_limit_ms = 1;
    run_command(COMMAND_RESET_SETTINGS);
    search_thread.wait_limit_ms = SEARCH_WAIT_MS;
    search_thread.search_done_event.signal();
    EXPECT_EQ(settings.search_threads, 1);
    EXPECT_NE(settings.hash_mb, SMALL_HASH_MB);
    EXPECT_EQ(engine_settings.search_threads, 2);
    EXPECT_EQ(transposition_table.size_mb, SMALL_HASH_MB);
}

TEST_F(Frame, DamagedSettingsAreDefaults) {
    std::string image = small_image().put32(40, 1).sealed();
    image[100] = static_cast<char>(image[100] ^ 1);
    save_images(image, "short");
    open_small();
    EXPECT_EQ(settings.board_inverted, 0);
    EXPECT_EQ(settings2.language_id, ENGLISH_ID);
    EXPECT_TRUE(ticked(ENGLISH_ID));
    expect_tidy("damaged settings");
}

TEST_F(Frame, WithoutTheEngineABoxIsShownOnTheWindow) {
    open_desktop(false);
    EXPECT_TRUE(main_window->isVisible());
    std::filesystem::current_path(home.path);  // no weights here
    EXPECT_EQ(start_desktop_engine(), 1);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, "Engine init failed! See log file.");
    EXPECT_EQ(boxes[0].title, "Error!");
    EXPECT_EQ(boxes[0].icon, QMessageBox::Critical);
    EXPECT_NE(content_of(data_folder() + "Tessarin.log").find("weights"), std::string::npos);
}

TEST_F(Frame, LanguagesChangeMenuAndTitles) {
    open_small();
    for (const Language& language : language_table) {
        ASSERT_TRUE(language_usable(language.id)) << language.name;
        run_command(language.id);
        EXPECT_EQ(settings2.language_id, language.id);
        for (const Language& other : language_table)
            EXPECT_EQ(ticked(other.id), other.id == language.id) << language.name << " " << other.name;
        EXPECT_EQ(main_window->pane(GAME_WINDOW).windowTitle(), program_text(TEXT_GAME_PANE))
            << language.name;
        EXPECT_EQ(main_window->pane(CLOCK_WINDOW).windowTitle(), program_text(TEXT_CLOCK_PANE));
        for (const auto& [id, command] : main_window->menu().commands)
            EXPECT_EQ(command->text().toStdString(), find_menu_item(main_menu, id)->text) << id;
        EXPECT_EQ(main_window->menuBar()->actions().front()->text().toStdString(), main_menu.front().text);
    }
    run_command(40126);
    EXPECT_NE(button(COMMAND_BACK).toolTip().toStdString(), "Back one move");
    EXPECT_NE(button(COMMAND_SEARCH_BUTTON).toolTip().toStdString(), "Start searching");
    const std::string dutch = action(COMMAND_LOAD).text().toStdString();
    run_command(ENGLISH_ID);
    EXPECT_NE(action(COMMAND_LOAD).text().toStdString(), dutch);
    EXPECT_EQ(button(COMMAND_BACK).toolTip().toStdString(), "Back one move");
}

TEST_F(Frame, TheSavedLanguageIsTakenUp) {
    save_images(small_image().sealed(), default_image2().put32(4, 40126).sealed());
    open_small();
    ASSERT_TRUE(wait_until([] { return action(COMMAND_LOAD).text() != QStringLiteral("Load..."); }));
    EXPECT_TRUE(ticked(40126));
    EXPECT_EQ(action(COMMAND_LOAD).text().toStdString(), find_menu_item(main_menu, COMMAND_LOAD)->text);
}

TEST_F(Frame, WithoutLanguageFilesEverythingStaysEnglish) {
    open_small();
    reset_languages();
    const std::string load = action(COMMAND_LOAD).text().toStdString();
    settings2.language_id = ENGLISH_ID;
    for (const Language& language : language_table) {
        run_command(language.id);
        EXPECT_EQ(settings2.language_id, ENGLISH_ID);
        EXPECT_TRUE(ticked(ENGLISH_ID));
        EXPECT_EQ(ticked(language.id), language.id == ENGLISH_ID);
    }
    EXPECT_EQ(action(COMMAND_LOAD).text().toStdString(), load);
}

TEST_F(Frame, LongStatusTextsDoNotWidenIt) {
    open_small();
    const int width = main_window->minimumSizeHint().width();
    ui.set_status_text(std::string(5000, 'w').c_str());
    settle();
    EXPECT_EQ(main_window->minimumSizeHint().width(), width);
    EXPECT_EQ(main_window->status_line().text().size(), 5000);
}

TEST_F(Frame, StatusTextsAreOneLine) {
    open_small();
    const auto drawn = [](const char* text) {
        ui.set_status_text(text);
        return main_window->status_line().grab().toImage();
    };
    const QImage wanted = drawn("depth 5 value 3");
    EXPECT_NE(drawn("depth 5"), wanted);
    EXPECT_EQ(drawn(" depth 5 \r\n  value\t3\n"), wanted);
}

TEST_F(Frame, TypedSquaresStandInFrontOfTheStatusText) {
    open_small();
    StatusLine& line = main_window->status_line();
    Board& board = main_window->board_window().board();
    const auto drawn = [&line] { return line.grab().toImage(); };
    ui.set_status_text("32");
    const QImage wanted = drawn();
    ui.set_status_text("depth 5");
    const QImage behind = drawn();
    QTest::keyClicks(&board, QStringLiteral("32"));
    ui.set_status_text("depth 6");
    ui.set_status_text("depth 5");
    EXPECT_EQ(drawn(), wanted) << "a search may go on telling";
    EXPECT_EQ(line.text().toStdString(), "depth 5");
    EXPECT_EQ(line.typing().toStdString(), "32");
    EXPECT_EQ(line.accessibleName().toStdString(), "32");
    QTest::keyClick(&board, Qt::Key_Escape);
    EXPECT_EQ(drawn(), behind);
    EXPECT_EQ(line.accessibleName().toStdString(), "depth 5");
}

// None of them ever ends by itself here.
TEST_F(Frame, ClosesWhateverTheEngineDoes) {
    for (const int32_t mode : std::initializer_list<int32_t>{
             COMMAND_NORMAL, COMMAND_ANALYSIS, COMMAND_ANALYSIS_ALLSCORES, COMMAND_AUTOPLAY,
             COMMAND_ANALYZE_GAME, COMMAND_ANALYZE_GAME_ALLSCORES}) {
        SCOPED_TRACE(mode);
        open_small();
        play_moves(3);
        const bool analyzes = mode == COMMAND_ANALYZE_GAME || mode == COMMAND_ANALYZE_GAME_ALLSCORES;
        run_command(analyzes ? TIME_ONE_HOUR : TIME_INFINITE);
        run_command(mode);
        if (mode == COMMAND_NORMAL) run_command(COMMAND_SEARCH_BUTTON);
        ASSERT_TRUE(wait_until([] { return real_search_runs(); }));
        main_window->close();
        ASSERT_TRUE(close_desktop());
        EXPECT_FALSE(real_search_runs());
    }
}

TEST_F(Frame, ClosesWhileItPonders) {
    open_small();
    settings.pondering_on = 1;
    run_command(TIME_ONE_SECOND);
    run_command(COMMAND_SEARCH_BUTTON);
    ASSERT_TRUE(wait_until([] { return search_thread.pondering.load(); }));
    main_window->close();
    ASSERT_TRUE(close_desktop());
}

TEST_F(Frame, ClosesWhilePositionsAreSetUpOrTwoPlay) {
    for (const int32_t mode : {COMMAND_SETUP, COMMAND_TWO_PLAYERS}) {
        open_small();
        run_command(mode);
        main_window->close();
        ASSERT_TRUE(close_desktop());
    }
}

TEST_F(Frame, CommandsWithoutAWindowDoNothing) {
    run_command(COMMAND_NEW_GAME);
    EXPECT_EQ(main_window, nullptr);
}
