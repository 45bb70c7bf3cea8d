// Pictures of all windows in all languages, for the eyes of whoever changes them: they are written to the
// folder that TESSARIN_STORY_PICTURES names. TESSARIN_STORY_ENVIRONMENT, NAME=VALUE, is given to the program,
// such as QT_SCALE_FACTOR=2.
#include "control/analyze_games.h"
#include "control/game_commands.h"
#include "control/load_save.h"
#include "control/settings.h"
#include "control/time_control.h"
#include "shell/languages.h"
#include "shell/menu.h"
#include "tests/gui/story_steps.h"

namespace {

struct Album {
    Desk desk;
    QString folder;
    QString language;

    void add(const QString& name) const {
        look(*desk.screen)
            .save(folder + QLatin1Char('/') + language + QLatin1Char('-') + name + QStringLiteral(".png"));
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
    // What is shown is painted a moment later.
    wait_until([] { return false; }, 0.5);
    album.add(name);
    press_here(album.desk, QStringLiteral("Escape"));
    ASSERT_TRUE(wait_until_closed(album.desk, dialog)) << name.toStdString();
}

void add_menus(const Album& album) {
    for (int popup = 0; popup < menu_popups(); ++popup) {
        open_popup(album.desk, popup);
        wait_until([] { return false; }, 0.2);
        album.add(QStringLiteral("menu%1").arg(popup));
        press_here(album.desk, QStringLiteral("Escape"));
        ASSERT_TRUE(wait_until([&] { return windows(album.desk).size() == 1; }));
    }
}

void add_language(Album& album, const Language& language) {
    ASSERT_TRUE(choose(album.desk, language.id));
    expect_language(language.id);
    album.language = QString::fromLatin1(language.name);
    wait_until([] { return false; }, 0.5);
    album.add(QStringLiteral("main"));
    add_menus(album);
    add_dialog(album, TIME_GAME_CLOCK, QStringLiteral("game-time"));
    add_dialog(album, COMMAND_PARALLEL_SEARCH, QStringLiteral("parallel-search"));
    add_dialog(album, COMMAND_PDN_HEADER, QStringLiteral("game-information"));
    add_dialog(album, COMMAND_LOAD, QStringLiteral("load"));
    add_dialog(album, COMMAND_FONT, QStringLiteral("font"));
    add_dialog(album, COMMAND_ABOUT, QStringLiteral("about"));
    add_dialog(album, COMMAND_ANALYZE_GAME, QStringLiteral("no-moves"));
    add_dialog(album, COMMAND_COPY_GAME, QStringLiteral("copy-game"));
}

}  // namespace

TEST_F(Story, AlbumOfAllWindows) {
    Album album;
    album.folder = qEnvironmentVariable("TESSARIN_STORY_PICTURES");
    if (album.folder.isEmpty()) GTEST_SKIP() << "TESSARIN_STORY_PICTURES names no folder";
    const QString extra = qEnvironmentVariable("TESSARIN_STORY_ENVIRONMENT");
    if (!extra.isEmpty()) album.desk.extra_environment = {extra};
    ASSERT_TRUE(run(album.desk));
    for (const int32_t pane : {COMMAND_CLOCK_WINDOW, COMMAND_PONDER_WINDOW, COMMAND_DXP_WINDOW})
        ASSERT_TRUE(choose(album.desk, pane));
    ASSERT_TRUE(choose(album.desk, COMMAND_RESET_WINDOWS));
    for (const Language& language : language_table) add_language(album, language);
    expect_language(ENGLISH_ID);
}
