// The check of the database's files, from the button of the databases' dialog to its end.
#include <QPlainTextEdit>
#include <atomic>
#include <filesystem>
#include <thread>

#include "base/file_calls.h"
#include "control/search_thread.h"
#include "egdb/egdb_state.h"
#include "egdb/engine_egdb.h"
#include "shell/qt/dialogs.h"
#include "tests/base/scratch_folder.h"
#include "tests/gui/dialog_user.h"

namespace {

constexpr int VERIFY_ID = 1019;
constexpr int TEXT_ID = 1035;
constexpr int PATIENCE_MS = 60000;

class VerifyFilesDialog : public DialogTest {
  protected:
    VerifyFilesDialog() {
        for (const auto& entry : std::filesystem::directory_iterator(PROJECT_FOLDER "/data/wld_database"))
            std::filesystem::copy_file(entry.path(), folder.path + entry.path().filename().string());
    }
    ~VerifyFilesDialog() override {
        file_calls = system_file_calls();
        search_thread.searching = 0;
        reset_egdb();
        egdb_engine = no_egdb();
    }

    void open_database() const {
        DatabaseOptions options;
        options.wld_enable = true;
        options.wld_folder = folder.path;
        options.wld_cache_mb = 32;
        bool wld = true, mtc = false;
        char message[2000] = "";
        egdb_prepare_search(options, wld, mtc, {[] {}, [] {}, message, [](char*, const char*) {}});
        ASSERT_EQ(egdb_state, EGDB_IN_USE);
    }

    // The text for the files of the folder, of which one may have failed.
    std::string told(const std::string& failed, const std::string& end) const {
        std::string text;
        for (const char* const name : {"db2", "db3", "db4"})
            for (const char* const extension : {".idx1", ".cpr1"})
                text += folder.path + name + extension +
                        (failed == std::string(name) + extension ? "  CRC failed\n" : "  OK\n");
        return text + end;
    }

    ScratchFolder folder;
};

std::string text_of(const QDialog& dialog) {
    return control<QPlainTextEdit>(dialog, TEXT_ID).toPlainText().toStdString();
}

bool is_enabled(const QDialog& dialog, int id) { return control<QPushButton>(dialog, id).isEnabled(); }

bool wait_for_end(const QDialog& dialog) {
    return QTest::qWaitFor([&] { return is_enabled(dialog, OK_ID); }, PATIENCE_MS);
}

template <typename Act>
void use_verification(Act act) {
    use_dialog([] { verify_files_dialog(nullptr); }, act);
}

// Reads that wait until they are let go.
std::atomic<bool> reads_wait = false;
std::atomic<int> reads_waiting = 0;

ssize_t waiting_read(int descriptor, void* data, size_t bytes) {
    ++reads_waiting;
    while (reads_wait) std::this_thread::yield();
    return system_file_calls().read(descriptor, data, bytes);
}

}  // namespace

TEST_F(VerifyFilesDialog, TheButtonIsThereForAnOpenDatabaseAndAnIdleEngine) {
    use_dialog(
        [] { databases_dialog(nullptr); },
        [&](QDialog& dialog) {
            EXPECT_FALSE(is_enabled(dialog, VERIFY_ID));
            open_database();
            EXPECT_TRUE(QTest::qWaitFor([&] { return is_enabled(dialog, VERIFY_ID); }, PATIENCE_MS));
            search_thread.searching = 1;
            EXPECT_TRUE(QTest::qWaitFor([&] { return !is_enabled(dialog, VERIFY_ID); }, PATIENCE_MS));
            search_thread.searching = 0;
            EXPECT_TRUE(QTest::qWaitFor([&] { return is_enabled(dialog, VERIFY_ID); }, PATIENCE_MS));
            for (const EgdbState state : {EGDB_OPENING, EGDB_SWITCHED_OFF, EGDB_FAILED, EGDB_NOT_OPENED}) {
                egdb_state = state;
                EXPECT_FALSE(can_verify_files());
            }
            egdb_state = EGDB_OPENED;
            EXPECT_TRUE(can_verify_files());
            egdb_state = EGDB_IN_USE;
            click(dialog, CANCEL_ID);
        });
}

TEST_F(VerifyFilesDialog, TellsOfEachFileAndThenOfTheErrors) {
    open_database();
    use_dialog([] { databases_dialog(nullptr); },
               [&](QDialog& dialog) {
                   use_dialog([&] { click(dialog, VERIFY_ID); },
                              [&](QDialog& check) {
                                  EXPECT_EQ(check.windowTitle(), QStringLiteral("Verify WLD Database Files"));
                                  EXPECT_TRUE(control<QPlainTextEdit>(check, TEXT_ID).isReadOnly());
                                  EXPECT_TRUE(wait_for_end(check));
                                  EXPECT_FALSE(is_enabled(check, CANCEL_ID));
                                  EXPECT_EQ(text_of(check), told("", "No errors"));
                                  click(check, OK_ID);
                              });
                   EXPECT_TRUE(dialog.isVisible());
                   click(dialog, CANCEL_ID);
               });
    // Damaged while it is open.
    std::filesystem::resize_file(folder.file("db4.cpr1"), 900000);
    use_verification([&](QDialog& check) {
        EXPECT_TRUE(wait_for_end(check));
        EXPECT_EQ(text_of(check), told("db4.cpr1", "1 errors\n"));
        click(check, OK_ID);
    });
    EXPECT_EQ(egdb_state, EGDB_IN_USE);
}

TEST_F(VerifyFilesDialog, CancelAndClosingEndTheCheck) {
    open_database();
    file_calls.read = waiting_read;
    for (const bool close : {false, true}) {
        reads_wait = true;
        reads_waiting = 0;
        use_verification([&](QDialog& check) {
            EXPECT_TRUE(QTest::qWaitFor([] { return reads_waiting > 0; }, PATIENCE_MS));
            EXPECT_FALSE(is_enabled(check, OK_ID));
            EXPECT_TRUE(is_enabled(check, CANCEL_ID));
            // The path of the file in hand is shown before the check of it has ended.
            const std::string path = folder.file("db2.idx1") + "  ";
            EXPECT_TRUE(QTest::qWaitFor([&] { return text_of(check) == path; }, PATIENCE_MS))
                << text_of(check);
            if (close)
                check.close();
            else
                click(check, CANCEL_ID);
            reads_wait = false;
        });
        // The check has ended: the database can be closed.
        reset_egdb();
        EXPECT_EQ(egdb_state, EGDB_NOT_OPENED);
        if (!close) open_database();
    }
}

TEST_F(VerifyFilesDialog, WithoutADatabaseItEndsAtOnce) {
    use_verification([](QDialog& check) {
        EXPECT_TRUE(wait_for_end(check));
        EXPECT_EQ(text_of(check), "");
        click(check, OK_ID);
    });
}

TEST_F(VerifyFilesDialog, SpeaksTheLanguage) {
    open_database();
    std::filesystem::resize_file(folder.file("db3.idx1"), 0);
    speak("Dutch", 40126,
          "STRINGTABLE\nID342=CRC onjuist\nID343=fouten\nID344=Geen fouten\n\n[DLG_130]\nCAPTION=Bestanden\n"
          "ID1=Goed\nID2=Weg\n");
    use_verification([&](QDialog& check) {
        EXPECT_EQ(check.windowTitle(), QStringLiteral("Bestanden"));
        EXPECT_EQ(control<QPushButton>(check, OK_ID).text(), QStringLiteral("Goed"));
        EXPECT_EQ(control<QPushButton>(check, CANCEL_ID).text(), QStringLiteral("Weg"));
        EXPECT_TRUE(wait_for_end(check));
        std::string text = told("db3.idx1", "1 fouten\n");
        text.replace(text.find("CRC failed"), 10, "CRC onjuist");
        EXPECT_EQ(text_of(check), text);
        click(check, OK_ID);
    });
}
