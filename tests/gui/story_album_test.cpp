// Pictures of all windows in all languages, for the eyes of whoever changes them: they are written to the
// folder that TESSARIN_STORY_PICTURES names. TESSARIN_STORY_SCREEN, such as 800x600, is the size of the
// screen, TESSARIN_STORY_SCALE the number of its pixels to one of the program's, and
// TESSARIN_STORY_ENVIRONMENT, NAME=VALUE with semicolons between, is given to the program. What changes its
// look must be in the environment of the test too, for it to know where the menu is.
#include <algorithm>

#include "control/analyze_games.h"
#include "control/game_commands.h"
#include "control/load_save.h"
#include "control/settings.h"
#include "control/time_control.h"
#include "control/ui.h"
#include "shell/languages.h"
#include "shell/menu.h"
#include "tests/gui/story_steps.h"

namespace {

struct Album {
    std::unique_ptr<Screen> screen;  // null: the one of all stories
    Desk desk;
    QString folder;
    QString language;

    // The screen, or of a window what it shows with the frame around it.
    void add(const QString& name, const QString& window = {}) const {
        constexpr int FRAME = 6, TITLE_BAR = 30;
        QImage seen = look(*desk.screen);
        if (!window.isEmpty())
            seen = seen.copy(place_of(desk, window).adjusted(-FRAME, -TITLE_BAR, FRAME, FRAME) & seen.rect());
        seen.save(folder + QLatin1Char('/') + language + QLatin1Char('-') + name + QStringLiteral(".png"));
    }
};

// A window other than the main one, which a command has opened.
QString opened_window(const Desk& desk) {
    QString found;
    wait_until([&] {
        for (const QString& window : windows(desk))
            if (window != desk.window) found = window;
        return !found.isEmpty();
    });
    return found;
}

void add_dialog(const Album& album, int32_t command, const QString& name) {
    ASSERT_TRUE(choose(album.desk, command));
    const QString dialog = opened_window(album.desk);
    ASSERT_FALSE(dialog.isEmpty()) << name.toStdString();
    wait_until_at_rest(album.desk);
    album.add(name, dialog);
    press_here(album.desk, QStringLiteral("Escape"));
    ASSERT_TRUE(wait_until_closed(album.desk, dialog)) << name.toStdString();
}

void add_menus(const Album& album) {
    for (int popup = 0; popup < menu_popups(); ++popup) {
        open_popup(album.desk, popup);
        wait_until_at_rest(album.desk);
        album.add(QStringLiteral("menu%1").arg(popup), opened_window(album.desk));
        // One closes the pop-up within that the mouse may have opened.
        ASSERT_TRUE(wait_until([&] {
            press_here(album.desk, QStringLiteral("Escape"));
            wait_until_at_rest(album.desk);
            return windows(album.desk).size() == 1;
        }));
    }
}

void add_language(Album& album, const Language& language) {
    ASSERT_TRUE(choose(album.desk, language.id));
    expect_language(language.id);
    album.language = QString::fromLatin1(language.name);
    wait_until_at_rest(album.desk);
    album.add(QStringLiteral("main"));
    add_menus(album);
    add_dialog(album, TIME_GAME_CLOCK, QStringLiteral("game-time"));
    add_dialog(album, COMMAND_PARALLEL_SEARCH, QStringLiteral("parallel-search"));
    add_dialog(album, COMMAND_DATABASE_OPTIONS, QStringLiteral("databases"));
    add_dialog(album, COMMAND_DXP_CONNECT, QStringLiteral("connection"));
    add_dialog(album, COMMAND_PDN_HEADER, QStringLiteral("game-information"));
    add_dialog(album, COMMAND_LOAD, QStringLiteral("load"));
    add_dialog(album, COMMAND_FONT, QStringLiteral("font"));
    add_dialog(album, COMMAND_ABOUT, QStringLiteral("about"));
    add_dialog(album, COMMAND_ANALYZE_GAME, QStringLiteral("no-moves"));
    add_dialog(album, COMMAND_COPY_GAME, QStringLiteral("copy-game"));
}

// The main window without what the desktop puts around it.
void save_main_window(const Desk& desk, const QString& file) {
    const QRect place = place_of(desk, desk.window);
    take_mouse_away(desk);
    wait_until_at_rest(desk);
    EXPECT_TRUE(look(*desk.screen).copy(place).save(file));
}

void wait_for_picture(const Desk& desk, SearchPicture picture) {
    EXPECT_TRUE(wait_until([&] { return button_shows(desk, COMMAND_SEARCH_BUTTON, picture); }));
}

void forward(const Desk& desk, int plies) {
    for (int ply = 0; ply < plies; ++ply) press(desk, QStringLiteral("Right"));
}

}  // namespace

TEST_F(Story, AlbumOfAllWindows) {
    Album album;
    album.folder = qEnvironmentVariable("TESSARIN_STORY_PICTURES");
    if (album.folder.isEmpty()) GTEST_SKIP() << "TESSARIN_STORY_PICTURES names no folder";
    const QString extra = qEnvironmentVariable("TESSARIN_STORY_ENVIRONMENT");
    album.desk.extra_environment = extra.split(QLatin1Char(';'), Qt::SkipEmptyParts);
    const QStringList size = qEnvironmentVariable("TESSARIN_STORY_SCREEN").split(QLatin1Char('x'));
    if (size.size() == 2) {
        album.screen = open_screen({size[0].toInt(), size[1].toInt()});
        ASSERT_NE(album.screen, nullptr);
        album.desk.screen = album.screen.get();
    }
    album.desk.scale = std::max(qEnvironmentVariableIntValue("TESSARIN_STORY_SCALE"), 1);
    if (album.desk.scale > 1)
        album.desk.extra_environment << QStringLiteral("QT_SCALE_FACTOR=%1").arg(album.desk.scale);
    ASSERT_TRUE(run(album.desk));
    for (const int32_t pane : {COMMAND_CLOCK_WINDOW, COMMAND_PONDER_WINDOW, COMMAND_DXP_WINDOW})
        ASSERT_TRUE(choose(album.desk, pane));
    for (const Language& language : language_table) add_language(album, language);
    expect_language(ENGLISH_ID);
}

// The pictures in docs/manual/images, before their colours are reduced for size.
TEST_F(Story, PicturesForTheManual) {
    const QString folder = qEnvironmentVariable("TESSARIN_STORY_PICTURES") + QLatin1Char('/');
    if (folder.size() == 1) GTEST_SKIP() << "TESSARIN_STORY_PICTURES names no folder";
    Desk desk;
    ASSERT_TRUE(run(desk));
    const QString game = desk.program_folder() + QStringLiteral("games/sample.pdn");
    ASSERT_TRUE(load_game(desk, game, 0));
    press(desk, QStringLiteral("Home"));
    forward(desk, 33);
    click_button(desk, COMMAND_SEARCH_BUTTON);
    wait_for_picture(desk, PICTURE_STOP);
    wait_for_picture(desk, PICTURE_GO);
    save_main_window(desk, folder + QStringLiteral("playing.png"));

    // Where there is a choice.
    press(desk, QStringLiteral("Left"));
    ASSERT_TRUE(choose(desk, COMMAND_ANALYSIS_ALLSCORES));
    wait_for_picture(desk, PICTURE_STOP);
    wait_for_picture(desk, PICTURE_GO);
    save_main_window(desk, folder + QStringLiteral("analysis.png"));

    ASSERT_TRUE(choose(desk, COMMAND_NORMAL));
    ASSERT_TRUE(choose(desk, COMMAND_CLEAR_BOARD));
    const BoardPlaceOnScreen board = find_board(desk);
    for (const int square : {8, 9, 13, 18, 24}) click_square(desk, board, square);
    for (const int square : {27, 32, 33, 38, 43, 4}) click_square(desk, board, square, 3);
    save_main_window(desk, folder + QStringLiteral("setup.png"));

    ASSERT_TRUE(choose(desk, COMMAND_NORMAL));
    ASSERT_TRUE(choose(desk, TIME_GAME_CLOCK));
    const QString dialog = opened_window(desk);
    save_main_window(desk, folder + QStringLiteral("game-time.png"));
    press_here(desk, QStringLiteral("Escape"));
    ASSERT_TRUE(wait_until_closed(desk, dialog));
}
