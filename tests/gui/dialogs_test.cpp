// What holds for all dialogs: texts, tab order, buttons, the timer that runs on.
#include "shell/qt/dialogs.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QListWidget>
#include <QRegularExpression>
#include <QSpinBox>
#include <cmath>
#include <map>
#include <set>

#include "base/program_paths.h"
#include "tests/gui/dialog_user.h"

namespace {

struct DialogRow {
    const char* name;
    int32_t number;
    void (*open)();
    std::vector<int> tab_order;
};

void open_headers() {
    GameHeaders headers;
    game_information_dialog(nullptr, headers);
}

void open_games() {
    const PdnOffsets offsets{0, -1};
    select_game_dialog(nullptr, "1. 32-28 *", offsets, 1, 0);
}

const std::vector<DialogRow>& dialogs() {
    static const std::vector<DialogRow> rows = {
        {"connection", DIALOG_MAKE_CONNECTION, [] { make_connection_dialog(nullptr); }, {1000, 1, 2}},
        {"match",
         DIALOG_START_MATCH,
         [] { start_match_dialog(nullptr); },
         {1002, 1001, 1058, 1037, 1036, 1059, 1014, 1, 2}},
        {"game time",
         DIALOG_GAME_TIME,
         [] { game_time_dialog(nullptr); },
         {1060, 1058, 1036, 1017, 1018, 1019, 1, 2}},
        {"parallel search",
         DIALOG_PARALLEL_SEARCH,
         [] { parallel_search_dialog(nullptr); },
         {1022, 1020, 1, 2}},
        {"databases",
         DIALOG_DATABASES,
         [] { databases_dialog(nullptr); },
         {1005, 1008, 1007, 1013, 1017, 1006, 1009, 1010, 1014, 1019, 1012, 1016, 1015, 1018, 1, 2}},
        {"game information", DIALOG_GAME_INFORMATION, open_headers, {1025, 1024, 1023, 1026, 1027, 1, 2}},
        {"select game", DIALOG_SELECT_GAME, open_games, {1028, 1, 2}},
        {"font", DIALOG_FONT, [] { font_dialog(nullptr); }, {1070, 1071, 1072, 1073, 1, 2}},
    };
    return rows;
}

int id_of(const QWidget* widget) {
    const QString name = widget->objectName();
    return name.startsWith(QStringLiteral("id_")) ? name.mid(3).toInt() : -1;
}

// The controls with a text that a language can replace, by their ids.
std::map<int, QString> texts_of(const QDialog& dialog) {
    std::map<int, QString> texts;
    for (const QLabel* const label : dialog.findChildren<QLabel*>()) texts[id_of(label)] = label->text();
    for (const QAbstractButton* const button : dialog.findChildren<QAbstractButton*>())
        if (!button->text().isEmpty()) texts[id_of(button)] = button->text();
    return texts;
}

// The controls that the tab key reaches, from the first on.
std::vector<int> tab_chain(QDialog& dialog) {
    std::vector<int> chain;
    const QWidget* widget = &dialog;
    do {
        widget = widget->nextInFocusChain();
        if ((widget->focusPolicy() & Qt::TabFocus) && widget->isVisible() && !widget->focusProxy() &&
            id_of(widget) > 0)
            chain.push_back(id_of(widget));
    } while (widget != &dialog);
    return chain;
}

QChar mnemonic(const QString& text) {
    const qsizetype at = text.indexOf(QLatin1Char('&'));
    return at < 0 || at + 1 == text.size() ? QChar() : text[at + 1].toLower();
}

// Copies the language files that come with the program, and chooses one.
void take_language_files(const LanguageFolder& folder) {
    std::filesystem::copy(PROJECT_FOLDER "/data/Languages", folder.scratch.file("Languages"),
                          std::filesystem::copy_options::recursive);
    load_languages();
}

class Dialogs : public DialogTest {};
class FontDialog : public DialogTest {};
class AboutBox : public DialogTest {};

}  // namespace

TEST_F(Dialogs, OkIsTheDefaultAndEscapeCancels) {
    for (const DialogRow& row : dialogs())
        use_dialog(row.open, [&](QDialog& dialog) {
            SCOPED_TRACE(row.name);
            EXPECT_TRUE(control<QPushButton>(dialog, OK_ID).isDefault());
            EXPECT_EQ(control<QPushButton>(dialog, OK_ID).text(), QStringLiteral("OK"));
            EXPECT_EQ(control<QPushButton>(dialog, CANCEL_ID).text(), QStringLiteral("Cancel"));
            EXPECT_TRUE(dialog.isModal());
            QTest::keyClick(&dialog, Qt::Key_Escape);
            EXPECT_EQ(dialog.result(), int{QDialog::Rejected});
        });
}

TEST_F(Dialogs, TheTabKeyFollowsTheOrderOfTheFields) {
    settings2.increment_mode = 1;
    for (const DialogRow& row : dialogs())
        use_dialog(row.open, [&](QDialog& dialog) {
            SCOPED_TRACE(row.name);
            EXPECT_EQ(tab_chain(dialog), row.tab_order);
            click(dialog, CANCEL_ID);
        });
}

TEST_F(Dialogs, TheTimerRunsMeanwhile) {
    for (const DialogRow& row : dialogs()) {
        int ticks = 0;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
            QWidget* const dialog = QApplication::activeModalWidget();
            if (++ticks > 3 && dialog) dialog->close();
        });
        timer.start(20);
        row.open();  // for ever if the timer stood still
        EXPECT_GT(ticks, 3) << row.name;
    }
}

TEST_F(Dialogs, LabelsLeadToTheirFields) {
    for (const DialogRow& row : dialogs())
        use_dialog(row.open, [&](QDialog& dialog) {
            SCOPED_TRACE(row.name);
            for (const QLabel* const label : dialog.findChildren<QLabel*>()) {
                EXPECT_EQ(label->textFormat(), Qt::PlainText);
                if (id_of(label) < 1100) continue;
                ASSERT_NE(label->buddy(), nullptr) << id_of(label);
                EXPECT_GE(id_of(label->buddy()), 1000);
                EXPECT_NE(mnemonic(label->text()), QChar()) << id_of(label);
            }
            click(dialog, CANCEL_ID);
        });
}

TEST_F(Dialogs, TakeTheirTextsFromTheLanguage) {
    speak(
        "Dutch", DUTCH_ID,
        "[DLG_125]\nCAPTION=Tijd <b>&</b>\nID1100=Zetten\nID1060=Met\\nstap\nID1=Goed\nID2=Weg\nID1017=no text\n"
        "ID9999=nowhere\nID1101=Minuten\n\nID1102=behind the end\n[DLG_127]\nID1170=Wit wint\nID1173=?\n"
        "ID1174=none\nID1169=none\n");
    use_dialog([] { game_time_dialog(nullptr); },
               [](QDialog& dialog) {
                   EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Tijd <b>&</b>"));
                   const std::map<int, QString> texts = texts_of(dialog);
                   EXPECT_EQ(texts.at(1100), QStringLiteral("Zetten"));
                   EXPECT_EQ(texts.at(1060), QStringLiteral("Met\nstap"));
                   EXPECT_EQ(texts.at(1101), QStringLiteral("Minuten"));
                   EXPECT_EQ(texts.at(1), QStringLiteral("Goed"));
                   EXPECT_EQ(texts.at(2), QStringLiteral("Weg"));
                   EXPECT_EQ(texts.at(1102), QStringLiteral("O&perator time (sec / move)"));
                   EXPECT_EQ(edit_text(dialog, 1017), "90")
                       << "what a field holds is no text of the language";
                   click(dialog, CANCEL_ID);
               });
    use_dialog(open_headers, [](QDialog& dialog) {
        const QComboBox& results = combo(dialog, 1027);
        EXPECT_EQ(results.itemText(0), QStringLiteral("Wit wint"));
        EXPECT_EQ(results.itemText(1), QStringLiteral("Black win"));
        EXPECT_EQ(results.itemText(3), QStringLiteral("?"));
        EXPECT_EQ(results.count(), 4);
        EXPECT_EQ(results.currentText(), QStringLiteral("?"));
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Game Information"));
        click(dialog, CANCEL_ID);
    });
}

TEST_F(Dialogs, AllKindsOfControlsTakeTexts) {
    speak("French", FRENCH_ID, "[DLG_119]\nCAPTION=Titre\nID1150=Groupe\nID1100=Mot\nID1013=V\xE9rifier\n");
    QWidget window;
    QGroupBox group(QStringLiteral("Group"), &window);
    group.setObjectName(QStringLiteral("id_1150"));
    QLabel label(QStringLiteral("Word"), &group);
    label.setObjectName(QStringLiteral("id_1100"));
    QPushButton button(QStringLiteral("Check Dir."), &group);
    button.setObjectName(QStringLiteral("id_1013"));
    translate_dialog(window, 120);
    EXPECT_EQ(group.title(), QStringLiteral("Group")) << "another dialog's texts";
    translate_dialog(window, 119);
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Titre"));
    EXPECT_EQ(group.title(), QStringLiteral("Groupe"));
    EXPECT_EQ(label.text(), QStringLiteral("Mot"));
    EXPECT_EQ(button.text(), QString::fromUtf8("Vérifier"));
}

TEST_F(Dialogs, TheLanguagesThatComeWithTheProgramHaveAllTheirTexts) {
    take_language_files(languages);
    for (const Language& language : language_table) {
        ASSERT_TRUE(choose_language(language.id)) << language.name;
        for (const DialogRow& row : dialogs()) {
            std::set<int> named;
            for (const auto& [id, text] : dialog_texts(row.number)) named.insert(id);
            use_dialog(row.open, [&](QDialog& dialog) {
                SCOPED_TRACE(std::string(language.name) + ", " + row.name);
                constexpr int SAMPLE_ID = 1074;
                for (const auto& [id, text] : texts_of(dialog))
                    EXPECT_TRUE(id == SAMPLE_ID || named.contains(id)) << id;
                for (int id = 1170; id <= 1173; ++id)
                    EXPECT_TRUE(row.number != DIALOG_GAME_INFORMATION || named.contains(id)) << id;
                EXPECT_TRUE(row.number == DIALOG_FONT || named.contains(0)) << "no title";
                click(dialog, CANCEL_ID);
            });
        }
    }
}

TEST_F(Dialogs, NoTextIsCutInAnyLanguageAndNoLetterCallsTwoFields) {
    take_language_files(languages);
    for (const Language& language : language_table) {
        ASSERT_TRUE(choose_language(language.id)) << language.name;
        for (const DialogRow& row : dialogs())
            use_dialog(row.open, [&](QDialog& dialog) {
                SCOPED_TRACE(std::string(language.name) + ", " + row.name);
                for (const QWidget* const widget : dialog.findChildren<QWidget*>()) {
                    const bool has_text = qobject_cast<const QLabel*>(widget) ||
                                          qobject_cast<const QAbstractButton*>(widget) ||
                                          qobject_cast<const QComboBox*>(widget);
                    if (!has_text || !widget->isVisible() || id_of(widget) < 0) continue;
                    EXPECT_GE(widget->width(), widget->minimumSizeHint().width()) << id_of(widget);
                    EXPECT_GE(widget->width(), std::min(widget->sizeHint().width(), 400)) << id_of(widget);
                    EXPECT_TRUE(
                        dialog.rect().contains(QRect(widget->mapTo(&dialog, QPoint()), widget->size())));
                }
                std::map<QChar, int> users;
                for (const auto& [id, text] : texts_of(dialog)) {
                    if (mnemonic(text) == QChar()) continue;
                    EXPECT_TRUE(users.emplace(mnemonic(text), id).second)
                        << id << " and " << users[mnemonic(text)];
                }
                click(dialog, CANCEL_ID);
            });
    }
}

TEST_F(FontDialog, StoresWhatIsChosen) {
    bool agreed = use_dialog([] { return font_dialog(nullptr); },
                             [](QDialog& dialog) {
                                 EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Font"));
                                 auto& families = control<QListWidget>(dialog, 1070);
                                 ASSERT_GT(families.count(), 1);
                                 const auto found =
                                     families.findItems(QStringLiteral("DejaVu Serif"), Qt::MatchExactly);
                                 ASSERT_EQ(found.size(), 1) << "the tests need this font";
                                 families.setCurrentItem(found[0]);
                                 control<QSpinBox>(dialog, 1071).setValue(14);
                                 control<QCheckBox>(dialog, 1072).click();
                                 const QFont sample = control<QLabel>(dialog, 1074).font();
                                 EXPECT_EQ(sample.family(), QStringLiteral("DejaVu Serif"));
                                 EXPECT_EQ(sample.pointSize(), 14);
                                 EXPECT_TRUE(sample.bold());
                                 EXPECT_FALSE(sample.italic());
                                 click(dialog, OK_ID);
                             });
    EXPECT_TRUE(agreed);
    EXPECT_EQ(setting_text(settings.font_name), "DejaVu Serif");
    EXPECT_EQ(settings.font_size, 14.0f);
    EXPECT_EQ(settings.font_bold, 1);
    EXPECT_EQ(settings.font_italic, 0);
    agreed = use_dialog([] { return font_dialog(nullptr); },
                        [](QDialog& dialog) {
                            EXPECT_EQ(control<QListWidget>(dialog, 1070).currentItem()->text(),
                                      QStringLiteral("DejaVu Serif"));
                            EXPECT_TRUE(control<QCheckBox>(dialog, 1072).isChecked());
                            control<QCheckBox>(dialog, 1072).click();
                            control<QCheckBox>(dialog, 1073).click();
                            click(dialog, OK_ID);
                        });
    EXPECT_TRUE(agreed);
    EXPECT_EQ(settings.font_bold, 0);
    EXPECT_EQ(settings.font_italic, 1);
}

TEST_F(FontDialog, CancelKeepsTheFont) {
    const Settings before = settings;
    EXPECT_FALSE(use_dialog([] { return font_dialog(nullptr); },
                            [](QDialog& dialog) {
                                control<QListWidget>(dialog, 1070).setCurrentRow(0);
                                control<QSpinBox>(dialog, 1071).setValue(5);
                                control<QCheckBox>(dialog, 1073).click();
                                click(dialog, CANCEL_ID);
                            }));
    EXPECT_EQ(settings_checksum(settings), settings_checksum(before));
}

TEST_F(FontDialog, OkWithoutAChangeKeepsTheFont) {
    for (const float size : {9.0f, 9.25f, 2.0f, 18.0f}) {
        settings.font_size = size;
        const Settings before = settings;
        use_dialog([] { font_dialog(nullptr); }, [](QDialog& dialog) { click(dialog, OK_ID); });
        EXPECT_EQ(settings_checksum(settings), settings_checksum(before))
            << "also a family that is not there";
    }
}

TEST_F(FontDialog, SizesStayInTheirRange) {
    const std::pair<float, int> rows[] = {{1.0f, 2},  {18.5f, 18}, {400.0f, 18},
                                          {-5.0f, 2}, {NAN, 2},    {INFINITY, 18}};
    for (const auto& row : rows) {
        const int shown = row.second;
        settings.font_size = row.first;
        use_dialog([] { font_dialog(nullptr); },
                   [&](QDialog& dialog) {
                       auto& size = control<QSpinBox>(dialog, 1071);
                       EXPECT_EQ(size.value(), shown);
                       EXPECT_EQ(size.minimum(), 2);
                       EXPECT_EQ(size.maximum(), 18);
                       click(dialog, OK_ID);
                   });
        EXPECT_EQ(settings.font_size, static_cast<float>(shown)) << row.first;
    }
    use_dialog([] { font_dialog(nullptr); },
               [](QDialog& dialog) {
                   auto& size = control<QSpinBox>(dialog, 1071);
                   size.selectAll();
                   QTest::keyClicks(&size, QStringLiteral("99"));
                   click(dialog, OK_ID);
               });
    EXPECT_LE(settings.font_size, 18.0f);
}

TEST_F(FontDialog, OnlyNamesThatFitAreOffered) {
    use_dialog([] { font_dialog(nullptr); },
               [](QDialog& dialog) {
                   const auto& families = control<QListWidget>(dialog, 1070);
                   for (int i = 0; i < families.count(); ++i)
                       EXPECT_LT(families.item(i)->text().toUtf8().size(),
                                 qsizetype{sizeof settings.font_name});
                   click(dialog, CANCEL_ID);
               });
}

TEST_F(AboutBox, TellsTheProgramAndTheDayOfItsBuild) {
    program_paths = make_program_paths("", "", 3);
    use_dialog(
        [] { about_box(nullptr); },
        [](QDialog& dialog) {
            EXPECT_EQ(dialog.windowTitle(), QStringLiteral("About Tessarin"));
            QStringList texts;
            int pictures = 0;
            for (const QLabel* const label : dialog.findChildren<QLabel*>()) {
                texts.append(label->text());
                pictures += !label->pixmap().isNull();
            }
            const QString all = texts.join(QLatin1Char('\n'));
            EXPECT_TRUE(all.contains(QStringLiteral("Tessarin International(x64)[3] 1.60b")));
            EXPECT_TRUE(all.contains(QRegularExpression(QStringLiteral("\\b20\\d\\d-[01]\\d-[0-3]\\d\\b"))))
                << all.toStdString();
            EXPECT_EQ(pictures, 1);
            QTest::keyClick(&dialog, Qt::Key_Return);
        });
}

TEST_F(AboutBox, IsTitledAsItsCommand) {
    for (MenuItem& popup : main_menu)
        for (MenuItem& item : popup.items)
            if (item.id == COMMAND_ABOUT) item.text = "&Over Tessarin...\tF1";
    use_dialog([] { about_box(nullptr); },
               [](QDialog& dialog) {
                   EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Over Tessarin"));
                   QTest::keyClick(&dialog, Qt::Key_Escape);
               });
}
