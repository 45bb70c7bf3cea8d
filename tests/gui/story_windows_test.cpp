// Windows: kept from one start to the next, brought back from anywhere, on small screens, in all languages;
// and what a user is told when the program cannot start as it should.
#include <QDir>
#include <QFile>
#include <cstring>

#include "control/game_commands.h"
#include "control/load_save.h"
#include "control/settings.h"
#include "control/time_control.h"
#include "shell/languages.h"
#include "shell/menu.h"
#include "tests/gui/story_steps.h"

namespace {

constexpr QSize SMALL_SCREEN(800, 600);
constexpr int STARTUP_FAILED = 1;
constexpr int DISPLAY_LOST = 1;
constexpr int BORDER = 4;

Settings stored_settings(const Desk& desk) {
    const std::string bytes = file_text(desk.settings_folder() + QStringLiteral("settings"));
    Settings record{};
    if (bytes.size() == sizeof record) std::memcpy(&record, bytes.data(), sizeof record);
    return record;
}

bool store_settings(const Desk& desk, Settings record) {
    record.checksum = settings_checksum(record);
    const std::string bytes(reinterpret_cast<const char*>(&record), sizeof record);
    return QDir().mkpath(desk.settings_folder()) &&
           write_text(desk.settings_folder() + QStringLiteral("settings"), bytes);
}

// Drags with the left button from one place of the screen to another, in steps as a hand does.
void drag(const Desk& desk, QPoint from, QPoint to) {
    QStringList words = {QStringLiteral("mousemove"), QString::number(from.x()), QString::number(from.y()),
                         QStringLiteral("mousedown"), QStringLiteral("1")};
    constexpr int STEPS = 8;
    for (int step = 1; step <= STEPS; ++step) {
        const QPoint at = from + (to - from) * step / STEPS;
        words << QStringLiteral("mousemove") << QString::number(at.x()) << QString::number(at.y())
              << QStringLiteral("sleep") << QStringLiteral("0.03");
    }
    xdotool(desk, words << QStringLiteral("mouseup") << QStringLiteral("1"));
    take_mouse_away(desk);
}

std::string text_of(const QRect& rect) {
    return std::to_string(rect.width()) + "x" + std::to_string(rect.height()) + " at " +
           std::to_string(rect.x()) + "," + std::to_string(rect.y());
}

// What the window manager adds at the sides may hang over.
bool fits(const QRect& window, const QSize& screen) {
    return QRect(QPoint(0, 0), screen).adjusted(-BORDER, 0, BORDER, 0).contains(window);
}

}  // namespace

TEST_F(Story, WindowsAreFoundWhereTheyWereLeft) {
    Desk desk;
    ASSERT_TRUE(run(desk));
    ASSERT_TRUE(choose(desk, COMMAND_CLOCK_WINDOW));
    ASSERT_TRUE(choose(desk, COMMAND_SQUARE_NUMBERS));
    // Showing a pane may make the main window larger and move it.
    wait_until_at_rest(desk);
    const BoardPlaceOnScreen first = find_board(desk);
    // The border of the board, taken at its lower right corner.
    const int extent = 10 * first.square_size;
    const QPoint corner = first.corner + QPoint(extent + 2, extent + 2);
    drag(desk, corner, corner - QPoint(100, 100));
    ASSERT_TRUE(wait_until([&] { return find_board(desk).square_size == first.square_size - 10; }));
    xdotool(desk, {QStringLiteral("windowmove"), QStringLiteral("--sync"), desk.window, QStringLiteral("40"),
                   QStringLiteral("30"), QStringLiteral("windowsize"), QStringLiteral("--sync"), desk.window,
                   QStringLiteral("800"), QStringLiteral("640")});
    wait_until([&] { return place_of(desk, desk.window).size() == QSize(800, 640); });
    const QRect place = place_of(desk, desk.window);
    take_mouse_away(desk);
    wait_until_at_rest(desk);
    const QImage before = look(*desk.screen);
    ASSERT_TRUE(close_program(desk));
    const Settings kept = stored_settings(desk);
    EXPECT_EQ(kept.square_size, first.square_size - 10);
    EXPECT_EQ(kept.child_windows[CLOCK_WINDOW].visible, 1);
    EXPECT_EQ(kept.square_numbers, 0);

    ASSERT_TRUE(run(desk));
    EXPECT_EQ(place_of(desk, desk.window), place);
    take_mouse_away(desk);
    EXPECT_TRUE(wait_until([&] { return look(*desk.screen) == before; })) << "it does not look the same";
    EXPECT_TRUE(close_program(desk));
}

TEST_F(Story, AWindowThatIsFarOutsideComesBack) {
    Desk desk;
    Settings record = make_default_settings({});
    record.main_window = {1, 30000, -20000, 700, 600};
    for (WindowRecord& child : record.child_windows) child = {1, -5000, 9000, 200, 100};
    record.square_size = 40;
    ASSERT_TRUE(store_settings(desk, record));
    ASSERT_TRUE(run(desk));
    EXPECT_EQ(find_board(desk).square_size, 40);
    EXPECT_TRUE(wait_until([&] { return fits(place_of(desk, desk.window), desk.screen->size); }))
        << text_of(place_of(desk, desk.window));
    EXPECT_TRUE(close_program(desk));
}

TEST_F(Story, ASmallScreenHoldsTheWindow) {
    const std::unique_ptr<Screen> small = open_screen(SMALL_SCREEN);
    ASSERT_NE(small, nullptr);
    Desk desk;
    desk.screen = small.get();
    Settings record = make_default_settings({});
    record.main_window = {1, 10, 10, 1500, 1100};
    ASSERT_TRUE(store_settings(desk, record));
    ASSERT_TRUE(run(desk));
    EXPECT_TRUE(wait_until([&] { return fits(place_of(desk, desk.window), SMALL_SCREEN); }));
    ASSERT_TRUE(choose(desk, COMMAND_RESET_WINDOWS));
    EXPECT_TRUE(wait_until([&] { return find_board(desk).is_found(); }));
    EXPECT_TRUE(fits(place_of(desk, desk.window), SMALL_SCREEN));
    EXPECT_TRUE(close_program(desk));
}

TEST_F(Story, ABoardOfTwiceAsManyPixels) {
    Desk desk;
    desk.extra_environment = {QStringLiteral("QT_SCALE_FACTOR=2")};
    desk.scale = 2;
    ASSERT_TRUE(run(desk));
    const BoardPlaceOnScreen board = find_board(desk, desk.scale);
    ASSERT_TRUE(wait_for_position(desk, board, START_POSITION));
    EXPECT_TRUE(fits(place_of(desk, desk.window), desk.screen->size));
    const Position after = clickable_move(START_POSITION, 0);
    click_move(desk, board, START_POSITION, after);
    Positions game = {START_POSITION, after};
    EXPECT_TRUE(wait_for_move(desk, board, game));
    EXPECT_TRUE(close_program(desk));
}

TEST_F(Story, SixLanguages) {
    Desk desk;
    ASSERT_TRUE(run(desk));
    ASSERT_TRUE(menu_bar_is_right(desk));
    for (const Language& language : language_table) {
        ASSERT_TRUE(choose(desk, language.id)) << language.name;
        expect_language(language.id);
        EXPECT_TRUE(wait_until([&] { return menu_bar_is_right(desk); })) << language.name;
    }
    // The last one is kept.
    ASSERT_TRUE(close_program(desk));
    ASSERT_TRUE(run(desk));
    EXPECT_TRUE(wait_until([&] { return menu_bar_is_right(desk); }));
    EXPECT_TRUE(close_program(desk));
    expect_language(ENGLISH_ID);
}

TEST_F(Story, WithoutLanguageFilesItSpeaksEnglish) {
    Desk desk;
    install(desk);
    ASSERT_TRUE(QFile::remove(desk.program_folder() + QStringLiteral("Languages")));
    ASSERT_TRUE(run(desk));
    EXPECT_TRUE(menu_bar_is_right(desk));
    EXPECT_TRUE(close_program(desk));
}

TEST_F(Story, WithoutWeightsItSaysSoAndEnds) {
    Desk desk;
    install(desk);
    ASSERT_TRUE(QFile::remove(desk.program_folder() + QStringLiteral("weights.bin")));
    launch(desk);
    ASSERT_TRUE(answer_box(desk, QStringLiteral("Error!")));
    EXPECT_EQ(exit_status(desk), STARTUP_FAILED);
    EXPECT_NE(file_text(desk.data_folder() + QStringLiteral("Tessarin.log")).find("weights"),
              std::string::npos);
}

// As at the end of the user's session, in the midst of a search and with a dialog open.
TEST_F(Story, ASignalToEndClosesItAsTheUserWould) {
    Desk desk;
    ASSERT_TRUE(run(desk));
    ASSERT_TRUE(choose(desk, COMMAND_SQUARE_NUMBERS));
    ASSERT_TRUE(choose(desk, TIME_INFINITE));
    ASSERT_TRUE(choose(desk, COMMAND_ANALYSIS));
    ASSERT_TRUE(choose(desk, COMMAND_PDN_HEADER));
    ASSERT_FALSE(wait_for_window(desk, QStringLiteral("Game Information")).isEmpty());
    desk.program.terminate();
    EXPECT_EQ(exit_status(desk), 0);
    EXPECT_EQ(stored_settings(desk).square_numbers, 0);
}

// As when the user's session breaks down, in the midst of a search and with a dialog open.
TEST_F(Story, ADisplayThatGoesEndsTheProgram) {
    std::unique_ptr<Screen> screen = open_screen(SMALL_SCREEN);
    ASSERT_NE(screen, nullptr);
    Desk desk;
    desk.screen = screen.get();
    ASSERT_TRUE(run(desk));
    ASSERT_TRUE(choose(desk, TIME_INFINITE));
    ASSERT_TRUE(choose(desk, COMMAND_ANALYSIS));
    ASSERT_TRUE(choose(desk, COMMAND_PDN_HEADER));
    ASSERT_FALSE(wait_for_window(desk, QStringLiteral("Game Information")).isEmpty());
    desk.screen = test_screen;
    screen.reset();
    EXPECT_EQ(exit_status(desk), DISPLAY_LOST);
}

TEST_F(Story, WithoutADisplayItSaysSoAndEnds) {
    for (const char* const display : {"DISPLAY=", "DISPLAY=:9876"}) {
        Desk desk;
        desk.extra_environment = {QString::fromLatin1(display)};
        launch(desk);
        EXPECT_EQ(exit_status(desk), STARTUP_FAILED) << display;
        const std::string said = desk.program.readAll().toStdString();
        EXPECT_NE(said.find("tessarin: there is no display to open a window on"), std::string::npos) << said;
    }
}
