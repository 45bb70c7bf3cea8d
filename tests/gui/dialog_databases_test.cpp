// The dialog of the endgame databases and the transposition table.
#include <QCheckBox>
#include <QFileDialog>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <filesystem>
#include <fstream>

#include "control/database_settings.h"
#include "shell/qt/dialogs.h"
#include "tests/gui/dialog_user.h"

namespace {

enum Id {
    HASH = 1005,
    CACHE = 1006,
    WLD_FOLDER = 1007,
    WLD_ENABLE = 1008,
    MAX_PIECES = 1009,
    MAX_KINGS = 1010,
    MTC_ENABLE = 1012,
    WLD_CHECK = 1013,
    PARALLEL = 1014,
    MTC_CHECK = 1015,
    MTC_FOLDER = 1016,
    WLD_BROWSE = 1017,
    MTC_BROWSE = 1018,
    VERIFY = 1019,
};

const std::string SHIPPED = PROJECT_FOLDER "/data/wld_database";
const std::string SHIPPED_MTC = PROJECT_FOLDER "/data/mtc_database";

template <typename Act>
void use(Act act) {
    use_dialog([] { databases_dialog(nullptr); }, act);
}

void click_check_box(const QDialog& dialog, int id) {
    auto& box = control<QCheckBox>(dialog, id);
    QTest::mouseClick(&box, Qt::LeftButton, Qt::NoModifier, QPoint(5, box.height() / 2));
}

std::vector<std::string> entries(const QComboBox& box) {
    std::vector<std::string> texts;
    for (int i = 0; i < box.count(); ++i) texts.push_back(box.itemText(i).toStdString());
    return texts;
}

class Databases : public DialogTest {
  protected:
    Databases() {
        settings.hash_mb = 128;
        settings.wld_cache_mb = 1000;
        reinit_wld = reinit_mtc = false;
    }
    ~Databases() override { reinit_wld = reinit_mtc = false; }

    static void expect_wishes(bool wld, bool mtc) {
        EXPECT_EQ(reinit_wld, wld);
        EXPECT_EQ(reinit_mtc, mtc);
        reinit_wld = reinit_mtc = false;
    }
};

using Texts = std::vector<std::string>;

}  // namespace

TEST_F(Databases, ShowsTheSettings) {
    settings.wld_enable = 1;
    settings.wld_max_pieces = 6;
    settings.wld_max_kings_8 = -1;
    settings.wld_parallel_init = 1;
    settings.mtc_enable = 0;
    set_wld_folder("/data/wld");
    set_mtc_folder("/data/mtc");
    use([](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Endgame db and Hashtable Options"));
        EXPECT_EQ(entries(combo(dialog, HASH)), (Texts{"16", "32", "64", "128", "256", "512"}));
        EXPECT_EQ(combo(dialog, HASH).currentText(), QStringLiteral("128"));
        EXPECT_EQ(entries(combo(dialog, MAX_PIECES)),
                  (Texts{"No limit", "9", "8", "7", "6", "5", "4", "3", "2"}));
        EXPECT_EQ(combo(dialog, MAX_PIECES).currentText(), QStringLiteral("6"));
        EXPECT_EQ(entries(combo(dialog, MAX_KINGS)), (Texts{"No limit", "4", "3", "2", "1", "0"}));
        EXPECT_EQ(combo(dialog, MAX_KINGS).currentText(), QStringLiteral("No limit"));
        EXPECT_EQ(entries(combo(dialog, PARALLEL)), (Texts{"before search", "in parallel with search"}));
        EXPECT_EQ(combo(dialog, PARALLEL).currentIndex(), 1);
        EXPECT_TRUE(control<QCheckBox>(dialog, WLD_ENABLE).isChecked());
        EXPECT_FALSE(control<QCheckBox>(dialog, MTC_ENABLE).isChecked());
        EXPECT_EQ(edit_text(dialog, CACHE), "1000");
        EXPECT_EQ(edit_text(dialog, WLD_FOLDER), "/data/wld");
        EXPECT_EQ(edit_text(dialog, MTC_FOLDER), "/data/mtc");
        EXPECT_FALSE(control<QPushButton>(dialog, VERIFY).isEnabled());
        click(dialog, CANCEL_ID);
    });
}

TEST_F(Databases, TheFieldsOfBothGroupsStandInLine) {
    for (const char* const words : {"[DLG_119]\nID1104=The longest of all labels in this dialog\n",
                                    "[DLG_119]\nID1106=Or this, longer still than the others\n"}) {
        speak("Dutch", DUTCH_ID, words);
        use([](QDialog& dialog) {
            const auto left = [&dialog](int id) { return edit(dialog, id).mapTo(&dialog, QPoint()).x(); };
            EXPECT_EQ(left(WLD_FOLDER), left(MTC_FOLDER));
            click(dialog, CANCEL_ID);
        });
    }
}

// A language with long words, or a small screen.
TEST_F(Databases, WhatIsTooWideForTheScreenScrolls) {
    speak("Dutch", DUTCH_ID, "[DLG_119]\nID1104=" + std::string(300, 'w') + "\n");
    use([](QDialog& dialog) {
        const QSize room = dialog.screen()->availableSize();
        EXPECT_LE(dialog.frameGeometry().width(), room.width());
        EXPECT_LE(dialog.frameGeometry().height(), room.height());
        const auto& ok = control<QPushButton>(dialog, OK_ID);
        EXPECT_TRUE(dialog.rect().contains(QRect(ok.mapTo(&dialog, QPoint()), ok.size())));
        auto* const area = dialog.findChild<QScrollArea*>();
        ASSERT_NE(area, nullptr);
        EXPECT_TRUE(area->isAncestorOf(&edit(dialog, WLD_FOLDER)));
        EXPECT_TRUE(area->isAncestorOf(&combo(dialog, HASH)));
        EXPECT_GT(area->horizontalScrollBar()->maximum(), 0);
        EXPECT_EQ(dialog.focusWidget(), &combo(dialog, HASH));
        QTest::keyClick(&dialog, Qt::Key_Tab);
        EXPECT_TRUE(area->isAncestorOf(dialog.focusWidget()));
        QTest::keyClick(&dialog, Qt::Key_Backtab);
        QTest::keyClick(&dialog, Qt::Key_Backtab);
        EXPECT_EQ(dialog.focusWidget(), &control<QPushButton>(dialog, CANCEL_ID))
            << "the area itself is no stop";
        type(dialog, CACHE, "777");
        click(dialog, OK_ID);
    });
    EXPECT_EQ(settings.wld_cache_mb, 777);
}

TEST_F(Databases, EnterPressesTheButtonThatHasTheFocus) {
    set_wld_folder(SHIPPED.c_str());
    use([](QDialog& dialog) {
        auto& check = control<QPushButton>(dialog, WLD_CHECK);
        check.setFocus();
        QTest::keyClick(&check, Qt::Key_Return);
        EXPECT_EQ(shown_boxes.size(), 1u);
        EXPECT_TRUE(dialog.isVisible());
        edit(dialog, CACHE).setFocus();
        QTest::keyClick(&edit(dialog, CACHE), Qt::Key_Return);
        EXPECT_FALSE(dialog.isVisible()) << "in a field it is OK";
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
        EXPECT_EQ(shown_boxes.size(), 1u);
    });
}

TEST_F(Databases, OkWithoutAChangeChangesNothing) {
    // Of 48 megabytes and of 40 pieces there is no entry.
    settings.hash_mb = 48;
    settings.wld_max_pieces = 40;
    settings.wld_parallel_init = 0;
    set_wld_folder("/data/w\xE9t\xC3");  // no UTF-8
    reinit_wld = false;
    const Settings before = settings;
    use([](QDialog& dialog) {
        EXPECT_EQ(combo(dialog, HASH).currentIndex(), -1);
        EXPECT_EQ(combo(dialog, MAX_PIECES).currentIndex(), -1);
        click(dialog, OK_ID);
    });
    EXPECT_EQ(settings_checksum(settings), settings_checksum(before));
    expect_wishes(false, false);
}

TEST_F(Databases, EachChangeIsStoredAndReopensWhatItConcerns) {
    struct Row {
        void (*act)(const QDialog& dialog);
        bool (*stored)();
        bool wld, mtc;
    };
    const std::vector<Row> rows = {
        {[](const QDialog& d) { combo(d, HASH).setCurrentIndex(5); }, [] { return settings.hash_mb == 512; },
         true, false},
        {[](const QDialog& d) { click_check_box(d, WLD_ENABLE); }, [] { return settings.wld_enable == 1; },
         true, false},
        {[](const QDialog& d) { type(d, WLD_FOLDER, "/a/b"); },
         [] { return setting_text(settings.wld_folder) == "/a/b"; }, true, false},
        {[](const QDialog& d) { type(d, CACHE, " 77 mb"); }, [] { return settings.wld_cache_mb == 77; }, true,
         false},
        {[](const QDialog& d) { type(d, CACHE, "much"); }, [] { return settings.wld_cache_mb == 0; }, true,
         false},
        {[](const QDialog& d) { combo(d, MAX_PIECES).setCurrentIndex(8); },
         [] { return settings.wld_max_pieces == 2; }, true, false},
        {[](const QDialog& d) { combo(d, MAX_KINGS).setCurrentIndex(5); },
         [] { return settings.wld_max_kings_8 == 0; }, true, false},
        {[](const QDialog& d) { combo(d, PARALLEL).setCurrentIndex(0); },
         [] { return settings.wld_parallel_init == 0; }, false, false},
        {[](const QDialog& d) { click_check_box(d, MTC_ENABLE); }, [] { return settings.mtc_enable == 1; },
         false, true},
        {[](const QDialog& d) { type(d, MTC_FOLDER, "/m"); },
         [] { return setting_text(settings.mtc_folder) == "/m"; }, false, true},
    };
    for (size_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE(i);
        const Settings before = settings;
        use([&](QDialog& dialog) {
            rows[i].act(dialog);
            click(dialog, CANCEL_ID);
        });
        EXPECT_EQ(settings_checksum(settings), settings_checksum(before));
        expect_wishes(false, false);
        use([&](QDialog& dialog) {
            rows[i].act(dialog);
            click(dialog, OK_ID);
        });
        EXPECT_TRUE(rows[i].stored());
        expect_wishes(rows[i].wld, rows[i].mtc);
    }
}

TEST_F(Databases, CheckDirLooksIntoTheFolderAndStoresIt) {
    const ScratchFolder empty;
    struct Row {
        int edit, button;
        std::string folder, text, title;
    };
    const std::vector<Row> rows = {
        {WLD_FOLDER, WLD_CHECK, SHIPPED, "WLD database found with 4 pieces.", "WLD Endgame Database Check"},
        {WLD_FOLDER, WLD_CHECK, empty.path, "No WLD database found in '" + empty.path + "'",
         "WLD Endgame Database Check"},
        {MTC_FOLDER, MTC_CHECK, SHIPPED_MTC, "MTC database found with 4 pieces.",
         "MTC Endgame Database Check"},
        {MTC_FOLDER, MTC_CHECK, SHIPPED, "No MTC database found in '" + SHIPPED + "'",
         "MTC Endgame Database Check"},
        {MTC_FOLDER, MTC_CHECK, "", "No MTC database found in ''", "MTC Endgame Database Check"},
    };
    for (const Row& row : rows) {
        shown_boxes.clear();
        use([&](QDialog& dialog) {
            type(dialog, row.edit, row.folder.c_str());
            click(dialog, row.button);
            click(dialog, CANCEL_ID);
        });
        ASSERT_EQ(shown_boxes.size(), 1u);
        EXPECT_EQ(shown_boxes[0].text, row.text);
        EXPECT_EQ(shown_boxes[0].title, row.title);
        // Also though the dialog was cancelled.
        EXPECT_EQ(setting_text(row.edit == WLD_FOLDER ? settings.wld_folder : settings.mtc_folder),
                  row.folder);
    }
    expect_wishes(true, true);
}

TEST_F(Databases, BrowseFillsTheEditAndStoresTheFolder) {
    for (const bool mtc : {false, true}) {
        const ScratchFolder folder;
        const std::string chosen = folder.path.substr(0, folder.path.size() - 1);
        (mtc ? set_mtc_folder : set_wld_folder)(SHIPPED);
        reinit_wld = reinit_mtc = false;
        use([&](QDialog& dialog) {
            use_dialog([&] { click(dialog, mtc ? MTC_BROWSE : WLD_BROWSE); },
                       [&](QDialog& browser) {
                           auto* const files = qobject_cast<QFileDialog*>(&browser);
                           ASSERT_NE(files, nullptr);
                           EXPECT_EQ(files->windowTitle(),
                                     QStringLiteral("Choose the WLD database directory"));
                           EXPECT_EQ(files->fileMode(), QFileDialog::Directory);
                           EXPECT_EQ(files->directory().absolutePath().toStdString(), SHIPPED);
                           files->setDirectory(QString::fromStdString(chosen));
                           files->selectFile(QString::fromStdString(chosen));
                           browser.accept();
                       });
            EXPECT_EQ(edit_text(dialog, mtc ? MTC_FOLDER : WLD_FOLDER), chosen);
            click(dialog, CANCEL_ID);
        });
        EXPECT_EQ(setting_text(mtc ? settings.mtc_folder : settings.wld_folder), chosen);
        expect_wishes(!mtc, mtc);
    }
}

TEST_F(Databases, LongFoldersAreCut) {
    use([](QDialog& dialog) {
        edit(dialog, WLD_FOLDER).setText(QString(400, QLatin1Char('x')));
        click(dialog, OK_ID);
    });
    EXPECT_EQ(setting_text(settings.wld_folder), std::string(sizeof settings.wld_folder - 1, 'x'));
}
