// The dialogs of games over the network: the other side's computer, and the start of a match.
#include <QCheckBox>
#include <QLabel>

#include "base/program_paths.h"
#include "control/load_save.h"
#include "control/program_flags.h"
#include "control/search_thread.h"
#include "control/time_control.h"
#include "dxp/connection.h"
#include "dxp/game_flow.h"
#include "dxp/match.h"
#include "shell/qt/dialogs.h"
#include "tests/base/scratch_folder.h"
#include "tests/gui/dialog_user.h"

namespace {

enum Id {
    HOST = 1000,
    TIME_MOVES = 1001,
    TIME = 1002,
    RESUME = 1014,
    FILE_PATH = 1036,
    OPENINGS = 1037,
    REPEATS = 1058,
    BROWSE = 1059,
    INCREMENTAL = 1061,
};

bool connect_dialog_used(const std::function<void(QDialog&)>& act) {
    return use_dialog([] { return make_connection_dialog(nullptr); }, act);
}

void use_match(const std::function<void(QDialog&)>& act) {
    use_dialog([] { start_match_dialog(nullptr); }, act);
}

void click_check(const QDialog& dialog, int id) {
    auto& box = control<QCheckBox>(dialog, id);
    QTest::mouseClick(&box, Qt::LeftButton, Qt::NoModifier, QPoint(5, box.height() / 2));
}

void choose_openings(const QDialog& dialog, int row) { combo(dialog, OPENINGS).setCurrentIndex(row); }

class ConnectionDialog : public DialogTest {};

class MatchDialogTest : public DialogTest {
  protected:
    MatchDialogTest() {
        program_paths.data_folder = folder.path;
        dxp_state = DxpState{};
        match_plan = MatchPlan{};
        search_thread.wait_limit_ms = 0;
        ui.choose_load_file = [](const char* title, std::string& path) {
            asked_title = title;
            if (chosen_file.empty()) return false;
            path = chosen_file;
            return true;
        };
        asked_title.clear();
        chosen_file.clear();
        dxp_connection.connection_state = DXP_CONNECTED;
    }
    ~MatchDialogTest() override {
        program_paths = ProgramPaths{};
        program_flags = ProgramFlags{};
        dxp_state = DxpState{};
        dxp_connection.connection_state = DXP_UNCONNECTED;
        search_thread.wait_limit_ms = SEARCH_WAIT_MS;
    }
    void write_stats(int games) const {
        write_content(folder.file("dxpstats.txt"),
                      "A vs B:  " + std::to_string(games) + " wins, 0 losses, 0 draws, 0 unknowns\n");
    }

    ScratchFolder folder;
    static inline std::string asked_title, chosen_file;
};

void expect_labels(const QDialog& dialog, bool incremental) {
    for (const int id : {1004, 1003}) EXPECT_EQ(control<QLabel>(dialog, id).isVisible(), !incremental) << id;
    for (const int id : {1063, 1062}) EXPECT_EQ(control<QLabel>(dialog, id).isVisible(), incremental) << id;
}

}  // namespace

TEST_F(ConnectionDialog, ShowsAndStoresTheHost) {
    store_setting_text(settings.dxp_host, "192.168.1.7");
    EXPECT_TRUE(connect_dialog_used([](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Make Connection"));
        EXPECT_EQ(control<QLabel>(dialog, 1100).text(), QStringLiteral("&Remote hostname or IP address"));
        EXPECT_EQ(edit_text(dialog, HOST), "192.168.1.7");
        EXPECT_EQ(dialog.focusWidget(), &edit(dialog, HOST));
        type(dialog, HOST, "draughts.example");
        click(dialog, OK_ID);
    }));
    EXPECT_EQ(setting_text(settings.dxp_host), "draughts.example");
}

TEST_F(ConnectionDialog, CancelLeavesTheHost) {
    EXPECT_FALSE(connect_dialog_used([](QDialog& dialog) {
        EXPECT_EQ(edit_text(dialog, HOST), "127.0.0.1");
        type(dialog, HOST, "elsewhere");
        click(dialog, CANCEL_ID);
    }));
    EXPECT_EQ(setting_text(settings.dxp_host), "127.0.0.1");
}

TEST_F(ConnectionDialog, EnterIsOkAndEscapeIsCancel) {
    EXPECT_TRUE(
        connect_dialog_used([](QDialog& dialog) { QTest::keyClick(&edit(dialog, HOST), Qt::Key_Return); }));
    EXPECT_FALSE(connect_dialog_used([](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); }));
}

TEST_F(ConnectionDialog, ALongHostIsCut) {
    const std::string host(80, 'h');
    connect_dialog_used([&](QDialog& dialog) {
        type(dialog, HOST, host.c_str());
        click(dialog, OK_ID);
    });
    EXPECT_EQ(setting_text(settings.dxp_host), host.substr(0, 49));
}

// Settings that someone else has written may fill the field to its last byte.
TEST_F(ConnectionDialog, AHostWithoutAnEndStaysAsItIs) {
    std::fill(std::begin(settings.dxp_host), std::end(settings.dxp_host), 'x');
    const std::string whole(sizeof settings.dxp_host, 'x');
    connect_dialog_used([&](QDialog& dialog) {
        EXPECT_EQ(edit_text(dialog, HOST), whole);
        click(dialog, OK_ID);
    });
    EXPECT_EQ(setting_text(settings.dxp_host), whole);
}

TEST_F(MatchDialogTest, ShowsTheSettings) {
    settings.clock_minutes = 12.5;
    settings.clock_moves_limit = 75;
    settings2.match_repeats = 3;
    settings.match_opening_kind = THREE_MOVE_OPENINGS;
    store_setting_text(settings2.match_ballot_file, "/some/file.pdn");
    use_match([](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Start DamExchange match"));
        EXPECT_EQ(edit_text(dialog, TIME), "12.5");
        EXPECT_EQ(edit_text(dialog, TIME_MOVES), "75");
        EXPECT_EQ(edit_text(dialog, REPEATS), "3");
        EXPECT_EQ(edit_text(dialog, FILE_PATH), "/some/file.pdn");
        EXPECT_EQ(combo(dialog, OPENINGS).count(), 3);
        EXPECT_EQ(combo(dialog, OPENINGS).currentText(), QStringLiteral("3-move ballots"));
        EXPECT_FALSE(control<QCheckBox>(dialog, INCREMENTAL).isVisible()) << "for those who may";
        EXPECT_FALSE(control<QCheckBox>(dialog, RESUME).isEnabled());
        EXPECT_FALSE(control<QCheckBox>(dialog, RESUME).isChecked());
        expect_labels(dialog, false);
        click(dialog, CANCEL_ID);
    });
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
}

TEST_F(MatchDialogTest, OkStartsTheMatch) {
    use_match([](QDialog& dialog) {
        type(dialog, TIME, "0.5");
        type(dialog, TIME_MOVES, "33");
        type(dialog, REPEATS, "2");
        choose_openings(dialog, 1);
        click(dialog, OK_ID);
    });
    EXPECT_EQ(game.gui_mode, DXP_MODE);
    EXPECT_EQ(settings.clock_minutes, 0.5);
    EXPECT_EQ(settings.clock_moves_limit, 33);
    EXPECT_EQ(settings2.match_repeats, 2);
    EXPECT_EQ(settings.match_opening_kind, THREE_MOVE_OPENINGS);
    EXPECT_EQ(settings.time_menu_id, TIME_GAME_CLOCK);
    EXPECT_EQ(game.board_side, BLACK) << "behind three moves";
    EXPECT_EQ(dxp_state.dxp_follower, 0);
}

TEST_F(MatchDialogTest, NothingStartsOnceTheConnectionHasGone) {
    use_match([](QDialog& dialog) {
        type(dialog, REPEATS, "2");
        dxp_connection.connection_state = DXP_UNCONNECTED;
        click(dialog, OK_ID);
    });
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    EXPECT_NE(settings2.match_repeats, 2);
}

TEST_F(MatchDialogTest, AGameThatTheOtherSideHasBegunGoesOn) {
    use_match([](QDialog& dialog) {
        set_gui_mode(DXP_MODE);
        dxp_state.phase = DXP_PLAYING;
        click(dialog, OK_ID);
    });
    EXPECT_EQ(dxp_state.phase, DXP_PLAYING);
    EXPECT_EQ(dxp_state.dxp_follower, 1);
}

TEST_F(MatchDialogTest, CancelStoresNothing) {
    const Settings before = settings;
    const Settings2 before2 = settings2;
    use_match([](QDialog& dialog) {
        type(dialog, TIME, "99");
        type(dialog, REPEATS, "9");
        type(dialog, FILE_PATH, "other");
        choose_openings(dialog, 2);
        click(dialog, CANCEL_ID);
    });
    EXPECT_EQ(settings.clock_minutes, before.clock_minutes);
    EXPECT_EQ(settings2.match_repeats, before2.match_repeats);
    EXPECT_EQ(settings.match_opening_kind, before.match_opening_kind);
    EXPECT_EQ(setting_text(settings2.match_ballot_file), setting_text(before2.match_ballot_file));
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
}

TEST_F(MatchDialogTest, NothingInTheRepeatsIsOne) {
    for (const char* const text : {"", "0", "-3", "many"}) {
        set_gui_mode(NORMAL_MODE);
        use_match([&](QDialog& dialog) {
            type(dialog, REPEATS, text);
            click(dialog, OK_ID);
        });
        EXPECT_EQ(settings2.match_repeats, 1) << text;
    }
}

TEST_F(MatchDialogTest, ResumeIsOfferedByTheFileAndTheOpenings) {
    write_stats(200);
    settings2.match_repeats = 1;
    use_match([](QDialog& dialog) {
        auto& resume = control<QCheckBox>(dialog, RESUME);
        EXPECT_FALSE(resume.isEnabled()) << "158 games at most";
        choose_openings(dialog, 1);
        EXPECT_TRUE(resume.isEnabled()) << "of 988";
        EXPECT_FALSE(resume.isChecked());
        click_check(dialog, RESUME);
        EXPECT_TRUE(resume.isChecked());
        choose_openings(dialog, 2);
        EXPECT_TRUE(resume.isEnabled()) << "a file has any number";
        EXPECT_FALSE(resume.isChecked()) << "a change takes it back";
        choose_openings(dialog, 0);
        EXPECT_FALSE(resume.isEnabled());
        choose_openings(dialog, 1);
        click_check(dialog, RESUME);
        click(dialog, OK_ID);
    });
    EXPECT_EQ(dxp_state.match_games, 200);
    EXPECT_EQ(dxp_state.match_wins, 200);
}

TEST_F(MatchDialogTest, BrowseFillsInTheFile) {
    use_match([](QDialog& dialog) {
        type(dialog, FILE_PATH, "before");
        click(dialog, BROWSE);
        EXPECT_EQ(asked_title, LOAD_FILE_TITLE);
        EXPECT_EQ(edit_text(dialog, FILE_PATH), "before") << "he has cancelled";
        chosen_file = "/a/b/starts.pdn";
        click(dialog, BROWSE);
        EXPECT_EQ(edit_text(dialog, FILE_PATH), "/a/b/starts.pdn");
        click(dialog, CANCEL_ID);
    });
}

TEST_F(MatchDialogTest, AFileThatCannotBeReadIsToldAndStartsNothing) {
    use_match([&](QDialog& dialog) {
        type(dialog, FILE_PATH, folder.file("missing.pdn").c_str());
        choose_openings(dialog, 2);
        click(dialog, OK_ID);
    });
    ASSERT_EQ(shown_boxes.size(), 1u);
    EXPECT_EQ(shown_boxes[0].text, "Error reading ballots file");
    EXPECT_FALSE(shown_boxes[0].dialog_open);
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
}

TEST_F(MatchDialogTest, IncrementalTimeSwapsLabelsAndValues) {
    program_flags.autoconnect_enabled = true;
    settings.clock_minutes = 5;
    settings.clock_moves_limit = 60;
    settings2.initial_seconds = 30;
    settings2.increment_seconds = 0.25;
    use_match([](QDialog& dialog) {
        EXPECT_TRUE(control<QCheckBox>(dialog, INCREMENTAL).isVisible());
        expect_labels(dialog, false);
        type(dialog, TIME, "7");
        click_check(dialog, INCREMENTAL);
        expect_labels(dialog, true);
        EXPECT_EQ(edit_text(dialog, TIME), "30.0");
        EXPECT_EQ(edit_text(dialog, TIME_MOVES), "0.250");
        click_check(dialog, INCREMENTAL);
        expect_labels(dialog, false);
        EXPECT_EQ(edit_text(dialog, TIME), "7") << "what was typed is kept";
        click_check(dialog, INCREMENTAL);
        type(dialog, TIME, "12.5");
        type(dialog, TIME_MOVES, "0.125");
        click(dialog, OK_ID);
    });
    EXPECT_EQ(settings2.match_incremental, 1);
    EXPECT_EQ(settings2.initial_seconds, 12.5);
    EXPECT_EQ(settings2.increment_seconds, 0.125);
    EXPECT_EQ(settings.clock_minutes, 5);
    use_match([](QDialog& dialog) {
        EXPECT_TRUE(control<QCheckBox>(dialog, INCREMENTAL).isChecked());
        expect_labels(dialog, true);
        EXPECT_EQ(edit_text(dialog, TIME), "12.5");
        click(dialog, CANCEL_ID);
    });
}

TEST_F(MatchDialogTest, SpeaksTheLanguage) {
    speak(
        "Dutch", 40126,
        "[DLG_118]\nCAPTION=Match\nID1004=Tijd\nID1063=Begintijd\nID1170=Twee\nID1172=Bestand\n"
        "ID1059=Bladeren...\nID1014=Hervatten\nID2=Annuleren\n[DLG_117]\nCAPTION=Verbinding\nID1100=Naam\n");
    use_match([](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Match"));
        EXPECT_EQ(control<QLabel>(dialog, 1004).text(), QStringLiteral("Tijd"));
        EXPECT_EQ(control<QLabel>(dialog, 1063).text(), QStringLiteral("Begintijd"));
        EXPECT_EQ(combo(dialog, OPENINGS).itemText(0), QStringLiteral("Twee"));
        EXPECT_EQ(combo(dialog, OPENINGS).itemText(1), QStringLiteral("3-move ballots"));
        EXPECT_EQ(combo(dialog, OPENINGS).itemText(2), QStringLiteral("Bestand"));
        EXPECT_EQ(control<QPushButton>(dialog, BROWSE).text(), QStringLiteral("Bladeren..."));
        EXPECT_EQ(control<QCheckBox>(dialog, RESUME).text(), QStringLiteral("Hervatten"));
        click(dialog, CANCEL_ID);
    });
    connect_dialog_used([](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Verbinding"));
        EXPECT_EQ(control<QLabel>(dialog, 1100).text(), QStringLiteral("Naam"));
        click(dialog, CANCEL_ID);
    });
}
