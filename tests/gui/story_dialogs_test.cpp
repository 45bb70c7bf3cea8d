// Dialogs of the engine and the network, used with the letters of their controls and the mouse as a user
// does.
#include <QFile>
#include <cstring>

#include "control/settings.h"
#include "dxp/connection.h"
#include "shell/menu.h"
#include "tests/dxp/scripted_peer.h"
#include "tests/gui/story_steps.h"

namespace {

const QString DATABASE_OPTIONS = QStringLiteral("Endgame db and Hashtable Options");
const QString MAKE_CONNECTION = QStringLiteral("Make Connection");
const QString WLD_CHECK = QStringLiteral("WLD Endgame Database Check");

// Opens a dialog by its command; its window has the keyboard then.
QString open_dialog(const Desk& desk, int32_t command, const QString& title) {
    if (!choose(desk, command)) return {};
    const QString dialog = wait_for_window(desk, title);
    take_keyboard(desk, dialog);
    return dialog;
}

// Goes to a field by its letter and replaces what it holds.
void fill_in(const Desk& desk, char letter, const QString& text) {
    press_here(desk, QStringLiteral("alt+%1").arg(QLatin1Char(letter)));
    press_here(desk, QStringLiteral("ctrl+a"));
    type_here(desk, text);
}

Settings saved_settings(const Desk& desk) {
    const std::string bytes = file_text(desk.settings_folder() + QStringLiteral("settings"));
    Settings record{};
    if (bytes.size() == sizeof record) std::memcpy(&record, bytes.data(), sizeof record);
    return record;
}

}  // namespace

TEST_F(Story, DatabasesAreChosenAndTheirFolderChecked) {
    Desk desk;
    ASSERT_TRUE(run(desk));
    QString dialog = open_dialog(desk, COMMAND_DATABASE_OPTIONS, DATABASE_OPTIONS);
    ASSERT_FALSE(dialog.isEmpty());
    press_here(desk, QStringLiteral("alt+c"));
    ASSERT_TRUE(answer_box(desk, WLD_CHECK)) << "the folder of the program";
    // The table's sizes stand in their order, the largest last.
    press_here(desk, QStringLiteral("alt+h"));
    press_here(desk, QStringLiteral("Home"));
    press_here(desk, QStringLiteral("Down"));
    fill_in(desk, 'z', QStringLiteral("77"));
    press_here(desk, QStringLiteral("alt+p"));
    press_here(desk, QStringLiteral("End"));
    press_here(desk, QStringLiteral("alt+n"));
    // A box that is ticked by its letter goes down and up like a button.
    wait_until_at_rest(desk);
    press_here(desk, QStringLiteral("Return"));
    ASSERT_TRUE(wait_until_closed(desk, dialog));

    // What was checked stays although the rest is dropped.
    dialog = open_dialog(desk, COMMAND_DATABASE_OPTIONS, DATABASE_OPTIONS);
    ASSERT_FALSE(dialog.isEmpty());
    const QString empty_folder = desk.path(QStringLiteral("run"));
    fill_in(desk, 'd', empty_folder);
    fill_in(desk, 'z', QStringLiteral("99"));
    press_here(desk, QStringLiteral("alt+c"));
    ASSERT_TRUE(answer_box(desk, WLD_CHECK)) << "a folder without a database";
    press_here(desk, QStringLiteral("Escape"));
    ASSERT_TRUE(wait_until_closed(desk, dialog));
    ASSERT_TRUE(close_program(desk));

    const Settings kept = saved_settings(desk);
    EXPECT_EQ(kept.hash_mb, 32);
    EXPECT_EQ(kept.wld_cache_mb, 77);
    EXPECT_EQ(kept.wld_max_pieces, 2);
    EXPECT_EQ(kept.wld_enable, 1);
    EXPECT_EQ(kept.mtc_enable, 1);
    EXPECT_EQ(setting_text(kept.wld_folder), empty_folder.toStdString());
}

TEST_F(Story, AComputerThatDoesNotAnswerIsTold) {
    Desk desk;
    desk.extra_environment << QStringLiteral("%1=%2").arg(QLatin1String(DXP_PORT_VARIABLE)).arg(free_port());
    ASSERT_TRUE(run(desk));
    QString dialog = open_dialog(desk, COMMAND_DXP_CONNECT, MAKE_CONNECTION);
    ASSERT_FALSE(dialog.isEmpty());
    fill_in(desk, 'r', QStringLiteral("not this one"));
    press_here(desk, QStringLiteral("Escape"));
    ASSERT_TRUE(wait_until_closed(desk, dialog));

    dialog = open_dialog(desk, COMMAND_DXP_CONNECT, MAKE_CONNECTION);
    ASSERT_FALSE(dialog.isEmpty());
    fill_in(desk, 'r', QStringLiteral("localhost"));
    press_here(desk, QStringLiteral("Return"));
    ASSERT_TRUE(wait_until_closed(desk, dialog));
    EXPECT_TRUE(answer_box(desk, QStringLiteral("Unsuccessful")));
    ASSERT_TRUE(close_program(desk));
    EXPECT_EQ(setting_text(saved_settings(desk).dxp_host), "localhost");
}
