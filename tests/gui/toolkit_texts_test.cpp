// What speaks the user's language beside menus and dialogs: boxes, the dialog for files, Qt's own texts.
#include "shell/qt/toolkit_texts.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QLibraryInfo>
#include <QPushButton>

#include "base/text.h"
#include "control/load_save.h"
#include "shell/qt/dialogs.h"
#include "shell/qt/text.h"
#include "tests/gui/desktop_fixture.h"
#include "tests/gui/dialog_user.h"

namespace {

constexpr int32_t DUTCH = 40126, RUSSIAN = 40130;

QString system_folder() { return QLibraryInfo::path(QLibraryInfo::TranslationsPath); }

class Tongue : public DesktopTest {
  protected:
    void SetUp() override {
        DesktopTest::SetUp();
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        open_small();
    }
    void TearDown() override {
        toolkit_texts_folder = system_folder;
        open_document = kept_open_document;
        DesktopTest::TearDown();
        EXPECT_EQ(qt_cancel(), "Cancel") << "Qt's translation is left behind";
    }
    // What Qt itself calls the button.
    static std::string qt_cancel() {
        return QDialogButtonBox(QDialogButtonBox::Cancel)
            .button(QDialogButtonBox::Cancel)
            ->text()
            .remove(QLatin1Char('&'))
            .toStdString();
    }
    // Title, first filter and all labels of the dialog for files.
    static QStringList file_dialog_texts() {
        QStringList texts;
        std::string path;
        use_dialog(
            [&] { return ui.choose_load_file(LOAD_FILE_TITLE, path); },
            [&](QDialog& dialog) {
                texts = {dialog.windowTitle(), static_cast<QFileDialog&>(dialog).nameFilters().front()};
                for (const QLabel* const label : dialog.findChildren<QLabel*>())
                    texts.append(label->text().remove(QLatin1Char('&')));
                dialog.reject();
            });
        return texts;
    }
    bool (*kept_open_document)(const std::string&) = open_document;
};

}  // namespace

TEST_F(Tongue, BoxesSpeakTheLanguage) {
    run_command(DUTCH);
    box_closer.stop();
    use_dialog(
        [] {
            ui.message_box("Cannot open file for appending.", DEFAULT_BOX_TITLE, ICON_ERROR);
            return 0;
        },
        [](QDialog& dialog) {
            const auto& box = static_cast<QMessageBox&>(dialog);
            EXPECT_EQ(box.windowTitle(), QStringLiteral("Fout"));
            EXPECT_EQ(box.text(), QStringLiteral("Kan het bestand niet openen om toe te voegen."));
            dialog.accept();
        });
    use_dialog([] { return ui.ask("name: John", "Info?"); },
               [](QDialog& dialog) {
                   const auto& box = static_cast<QMessageBox&>(dialog);
                   EXPECT_EQ(box.windowTitle(), QStringLiteral("Info?")) << "no text of the program";
                   EXPECT_EQ(box.text(), QStringLiteral("name: John"));
                   EXPECT_EQ(box.button(QMessageBox::Cancel)->text(), QStringLiteral("Annuleren"));
                   EXPECT_EQ(box.button(QMessageBox::Ok)->text(), QStringLiteral("OK"));
                   dialog.reject();
               });
}

TEST_F(Tongue, PathsStandInTheSentence) {
    run_command(DUTCH);
    open_document = [](const std::string&) { return false; };
    ui.open_file("/nowhere/50%s.txt");
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].title, "Fout");
    EXPECT_EQ(boxes[0].text, "Kan /nowhere/50%s.txt niet openen");
}

TEST_F(Tongue, TheAboutBoxSpeaksTheLanguage) {
    run_command(RUSSIAN);
    use_dialog(
        [] {
            about_box(nullptr);
            return 0;
        },
        [](QDialog& dialog) {
            QStringList texts;
            for (const QLabel* const label : dialog.findChildren<QLabel*>()) texts.append(label->text());
            EXPECT_TRUE(texts.join(QLatin1Char('\n')).contains(QStringLiteral("Сборка от 20")));
            EXPECT_EQ(dialog.findChild<QPushButton*>()->text(), QStringLiteral("ОК"));
            dialog.accept();
        });
}

TEST_F(Tongue, WithoutQtsTextsTheDialogForFilesIsWhollyEnglish) {
    toolkit_texts_folder = [] { return QStringLiteral("/nowhere"); };
    const QStringList english = file_dialog_texts();
    EXPECT_EQ(english.front(), QString::fromLatin1(LOAD_FILE_TITLE));
    run_command(DUTCH);
    EXPECT_FALSE(toolkit_speaks_language());
    EXPECT_EQ(qt_cancel(), "Cancel");
    EXPECT_EQ(file_dialog_texts(), english);
    run_command(ENGLISH_ID);
    EXPECT_TRUE(toolkit_speaks_language());
}

TEST_F(Tongue, QtFollowsTheLanguage) {
    if (!QFile::exists(system_folder() + QStringLiteral("/qtbase_nl.qm")))
        GTEST_SKIP() << "qt6-translations-l10n is not installed";
    const QStringList english = file_dialog_texts();
    EXPECT_EQ(qt_cancel(), "Cancel");
    std::vector<std::string> cancels;
    for (const Language& language : language_table) {
        run_command(language.id);
        ASSERT_TRUE(toolkit_speaks_language()) << language.name;
        if (language.id != ENGLISH_ID) {
            EXPECT_NE(qt_cancel(), "Cancel") << language.name;
        }
        const QStringList texts = file_dialog_texts();
        ASSERT_EQ(texts.size(), english.size());
        EXPECT_EQ(texts.front(), text_in_language(LOAD_FILE_TITLE)) << language.name;
        EXPECT_TRUE(texts[1].endsWith(QStringLiteral(" (*.pdn)")));
        int same = 0;
        for (qsizetype i = 0; i < texts.size(); ++i) same += texts[i] == english[i] && !texts[i].isEmpty();
        EXPECT_EQ(same != 0, language.id == ENGLISH_ID) << language.name << texts.join(u'|').toStdString();
    }
    run_command(ENGLISH_ID);
    EXPECT_EQ(file_dialog_texts(), english);
}

TEST_F(Tongue, ALanguageWithoutQtsTextsLeavesTheOneBeforeForgotten) {
    if (!QFile::exists(system_folder() + QStringLiteral("/qtbase_nl.qm")))
        GTEST_SKIP() << "qt6-translations-l10n is not installed";
    run_command(DUTCH);
    toolkit_texts_folder = [] { return QStringLiteral("/nowhere"); };
    run_command(RUSSIAN);
    EXPECT_FALSE(toolkit_speaks_language());
    EXPECT_EQ(qt_cancel(), "Cancel");
    toolkit_texts_folder = system_folder;
    run_command(DUTCH);
    EXPECT_TRUE(toolkit_speaks_language());
    EXPECT_EQ(qt_cancel(), "Annuleren");
}

TEST_F(Tongue, TheSavedLanguageIsQtsToo) {
    if (!QFile::exists(system_folder() + QStringLiteral("/qtbase_nl.qm")))
        GTEST_SKIP() << "qt6-translations-l10n is not installed";
    run_command(DUTCH);
    save_settings();
    ASSERT_TRUE(close_desktop());
    EXPECT_EQ(qt_cancel(), "Cancel");
    open_small();
    EXPECT_TRUE(wait_until([] { return qt_cancel() == "Annuleren"; }));
}

// A first start knows no language, and its texts are the built-in ones.
TEST_F(Tongue, WithoutALanguageQtIsEnglish) {
    settings2.language_id = 0;
    follow_language();
    EXPECT_TRUE(toolkit_speaks_language());
    EXPECT_EQ(qt_cancel(), "Cancel");
}
