// The language layer in front of the built-in texts: loading, choosing, texts, dialogs and the menu.
#include "shell/languages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <thread>

#include "base/log.h"
#include "base/utf8.h"
#include "shell/languages_text.h"
#include "shell/settings_store.h"
#include "tests/shell/language_folder.h"
#include "tests/shell/menu_commands.h"

namespace {

std::string logged;

MenuItem command(int32_t id, const char* text) { return {id, text, {}}; }
MenuItem popup(const char* text, std::vector<MenuItem> items) { return {MENU_POPUP, text, std::move(items)}; }

// A small menu: two pop-ups with one inside each, and one more.
std::vector<MenuItem> small_menu() {
    return {
        popup("One", {command(11, "eleven"), {}, popup("Two", {command(12, "twelve")})}),
        popup("Three", {popup("Four", {command(13, "thirteen")}), command(14, "fourteen")}),
        popup("Five", {command(15, "fifteen")}),
    };
}

void append_texts(const std::vector<MenuItem>& items, std::vector<std::string>& texts) {
    for (const MenuItem& item : items) {
        texts.push_back(item.text);
        append_texts(item.items, texts);
    }
}

std::vector<std::string> texts_of(const std::vector<MenuItem>& menu) {
    std::vector<std::string> texts;
    append_texts(menu, texts);
    return texts;
}

using Texts = std::vector<std::string>;

TEST(Languages, AreSixWithTheirIdsAndNames) {
    const std::pair<int32_t, std::string> expected[] = {{40117, "English"},   {40126, "Dutch"},
                                                        {40127, "French"},    {40129, "Italian"},
                                                        {40128, "Portugese"}, {40130, "Russian"}};
    ASSERT_EQ(language_table.size(), std::size(expected));
    for (size_t row = 0; row < LANGUAGES; ++row) {
        EXPECT_EQ(language_table[row].id, expected[row].first);
        EXPECT_EQ(language_table[row].name, expected[row].second);
    }
}

TEST(Languages, WithoutFilesAreTheBuiltInTexts) {
    const LanguageFolder folder;
    std::filesystem::remove(folder.scratch.file("Languages"));
    for (const int32_t before : {0, ENGLISH_ID, DUTCH_ID}) {
        settings2.language_id = before;
        load_languages();
        for (const Language& language : language_table) {
            EXPECT_FALSE(language_usable(language.id));
            EXPECT_FALSE(choose_language(language.id));
            EXPECT_EQ(settings2.language_id, before);
        }
        for (const TextEntry& entry : text_table) EXPECT_EQ(text_of(entry.id), entry.text);
        std::vector<MenuItem> menu = built_in_menu();
        translate_menu(menu);
        EXPECT_EQ(texts_of(menu), texts_of(built_in_menu()));
        EXPECT_TRUE(dialog_texts(117).empty());
    }
}

TEST(Languages, AreBuiltInTextsForAnIdThatIsNone) {
    const LanguageFolder folder;
    folder.write("English", "STRINGTABLE\nID133=x\n");
    load_languages();
    for (const int32_t id : {0, 1, -1, 40116, 40118, 40131}) {
        settings2.language_id = id;
        EXPECT_EQ(text_of(133), "Game over");
        EXPECT_FALSE(choose_language(id));
        EXPECT_STREQ(language_name(), "English");
    }
}

TEST(Languages, AreTheirFilesTexts) {
    const LanguageFolder folder;
    folder.write("Dutch", "[STRINGTABLE]\r\nID133=Afgelopen\r\nID221=Nieuw\r\n");
    load_languages();
    EXPECT_EQ(text_of(133), "Game over");
    ASSERT_TRUE(choose_language(DUTCH_ID));
    EXPECT_EQ(settings2.language_id, DUTCH_ID);
    EXPECT_EQ(text_of(133), "Afgelopen");
    EXPECT_EQ(text_of(221), "Nieuw");
    EXPECT_EQ(text_of(134), "Draw declared");
    EXPECT_EQ(text_of(135), "");
    EXPECT_STREQ(language_name(), "Dutch");
}

TEST(Languages, KeepTheOneInForceWhenEnglishHasNoFile) {
    const LanguageFolder folder;
    folder.write("Dutch", "[STRINGTABLE]\nID133=Afgelopen\n");
    load_languages();
    ASSERT_TRUE(choose_language(DUTCH_ID));
    EXPECT_FALSE(choose_language(ENGLISH_ID));
    EXPECT_EQ(settings2.language_id, DUTCH_ID);
    EXPECT_EQ(text_of(133), "Afgelopen");
    EXPECT_FALSE(choose_language(FRENCH_ID));
    EXPECT_EQ(text_of(133), "Afgelopen");
}

TEST(Languages, ShowValuesInTwoLines) {
    const LanguageFolder folder;
    folder.write("French", "STRINGTABLE\nID133=une\\ndeux\nID134=a\\tb\\r\\n\n");
    load_languages();
    ASSERT_TRUE(choose_language(FRENCH_ID));
    EXPECT_EQ(text_of(133), "une\ndeux");
    EXPECT_EQ(text_of(134), "a\tb\r\n");
}

TEST(Languages, TakeALaterSectionsLineForATextThatIsMissing) {
    const LanguageFolder folder;
    folder.write("Dutch", "[STRINGTABLE]\nID133=a\n\n[DLG_117]\nID134=b\n");
    load_languages();
    ASSERT_TRUE(choose_language(DUTCH_ID));
    EXPECT_EQ(text_of(134), "b");
    EXPECT_EQ(text_of(13), "a");
}

TEST(Languages, FallBackWhereALineHasNoValue) {
    const LanguageFolder folder;
    folder.write("Dutch", "[STRINGTABLE]\nID133\nID134=\n");
    load_languages();
    ASSERT_TRUE(choose_language(DUTCH_ID));
    EXPECT_EQ(text_of(133), "Game over");
    EXPECT_EQ(text_of(134), "Draw declared");
}

TEST(Languages, CutTextsBetweenCharacters) {
    const LanguageFolder folder;
    folder.write("Russian", "STRINGTABLE\nID133=Конец\n");
    load_languages();
    ASSERT_TRUE(choose_language(RUSSIAN_ID));
    const std::string expected[] = {"", "", "К", "К", "Ко", "Ко", "Кон"};
    for (size_t size = 1; size <= std::size(expected); ++size) {
        std::string buffer(size, 'x');
        get_text(133, buffer.data(), size);
        EXPECT_EQ(buffer.c_str(), expected[size - 1]);
    }
    char built_in[5];
    get_text(134, built_in, sizeof built_in);
    EXPECT_STREQ(built_in, "Draw");
}

TEST(Languages, AreReadInTheCodePageOfTheirCountry) {
    const LanguageFolder folder;
    folder.write("Russian", "STRINGTABLE\nID133=\xCA\xEE\xED\xE5\xF6\n");
    folder.write("French", "STRINGTABLE\nID133=termin\xE9\x65\n");
    folder.write("Italian", "\xEF\xBB\xBFSTRINGTABLE\nID133=unità\n");
    load_languages();
    ASSERT_TRUE(choose_language(RUSSIAN_ID));
    EXPECT_EQ(text_of(133), "Конец");
    ASSERT_TRUE(choose_language(FRENCH_ID));
    EXPECT_EQ(text_of(133), "terminée");
    ASSERT_TRUE(choose_language(ITALIAN_ID));
    EXPECT_EQ(text_of(133), "unità");
}

TEST(Languages, CanBeEmptyFilesButNotFolders) {
    const LanguageFolder folder;
    folder.write("English", "");
    std::filesystem::create_directory(folder.scratch.file("Languages/Dutch.lng"));
    load_languages();
    EXPECT_FALSE(language_usable(DUTCH_ID));
    ASSERT_TRUE(choose_language(ENGLISH_ID));
    EXPECT_EQ(text_of(133), "Game over");
    EXPECT_TRUE(dialog_texts(117).empty());
}

TEST(Languages, AreForgottenWithTheirFiles) {
    const LanguageFolder folder;
    folder.write("Dutch", "STRINGTABLE\nID133=Afgelopen\n");
    load_languages();
    ASSERT_TRUE(choose_language(DUTCH_ID));
    std::filesystem::remove(folder.scratch.file("Languages/Dutch.lng"));
    EXPECT_EQ(text_of(133), "Afgelopen");
    load_languages();
    EXPECT_FALSE(language_usable(DUTCH_ID));
    EXPECT_EQ(text_of(133), "Game over");
    reset_languages();
    EXPECT_EQ(text_source, nullptr);
    EXPECT_EQ(text_of(133), "Game over");
}

// Each key of a dialog is told, in the file's order; a section's lines behind an empty one are not.
TEST(Languages, TellTheTextsOfDialogs) {
    const LanguageFolder folder;
    folder.write("Dutch", "[DLG_117]\nID1=Goed\nCAPTION=Titel\nID1000=x\n\nID2=Weg\n[DLG_11]\nID3=y\n");
    load_languages();
    EXPECT_TRUE(dialog_texts(117).empty());
    ASSERT_TRUE(choose_language(DUTCH_ID));
    EXPECT_EQ(dialog_texts(117),
              (std::vector<std::pair<int32_t, std::string>>{{1, "Goed"}, {0, "Titel"}, {1000, "x"}}));
    EXPECT_EQ(dialog_texts(11), (std::vector<std::pair<int32_t, std::string>>{{3, "y"}}));
    EXPECT_TRUE(dialog_texts(1).empty());
}

TEST(LanguageMenu, TakesTheTextsThatAreThere) {
    const LanguageFolder folder;
    folder.write(
        "Dutch",
        "[Menu_102]\nPID0001=1\nPID0002=2\nPID0003=3\nPID0004=4\nPID0005=5\nID11=a\\tCtrl+A\nID13=c\n");
    load_languages();
    std::vector<MenuItem> menu = small_menu();
    translate_menu(menu);
    EXPECT_EQ(texts_of(menu), texts_of(small_menu()));
    ASSERT_TRUE(choose_language(DUTCH_ID));
    translate_menu(menu);
    EXPECT_EQ(texts_of(menu),
              (Texts{"1", "a\tCtrl+A", "", "2", "twelve", "3", "4", "c", "fourteen", "5", "fifteen"}));
}

// The inner pop-up of the one that is missing takes no number, so the next one has it.
TEST(LanguageMenu, LeavesOutPopupsThatAreMissing) {
    const LanguageFolder folder;
    folder.write("Dutch", "[Menu_102]\nPID0002=2\nPID0003=3\nPID0004=4\nID11=a\nID12=b\nID13=c\n");
    load_languages();
    ASSERT_TRUE(choose_language(DUTCH_ID));
    std::vector<MenuItem> menu = small_menu();
    translate_menu(menu);
    EXPECT_EQ(texts_of(menu),
              (Texts{"One", "eleven", "", "Two", "twelve", "2", "3", "c", "fourteen", "4", "fifteen"}));
}

TEST(LanguageMenu, GoesIntoAPopupWhoseLineHasNoText) {
    const LanguageFolder folder;
    folder.write("Dutch", "[Menu_102]\nPID0001=\nPID0002\nID11=a\nID12=b\n");
    load_languages();
    ASSERT_TRUE(choose_language(DUTCH_ID));
    std::vector<MenuItem> menu = small_menu();
    translate_menu(menu);
    EXPECT_EQ(texts_of(menu), (Texts{"One", "a", "", "Two", "b", "Three", "Four", "thirteen", "fourteen",
                                     "Five", "fifteen"}));
}

TEST(LanguageMenu, IsSearchedFromItsOwnSection) {
    const LanguageFolder folder;
    folder.write("Dutch", "[STRINGTABLE]\nPID0001=s\nID11=s\n[Menu_102]\nPID0001=m\n[DLG_117]\nID11=d\n");
    folder.write("French", "[STRINGTABLE]\nPID0001=s\nID11=s\n[Menu_10]\nPID0001=m\n");
    load_languages();
    std::vector<MenuItem> menu = small_menu();
    ASSERT_TRUE(choose_language(FRENCH_ID));
    translate_menu(menu);
    EXPECT_EQ(texts_of(menu), texts_of(small_menu()));
    ASSERT_TRUE(choose_language(DUTCH_ID));
    translate_menu(menu);
    EXPECT_EQ(menu[0].text, "m");
    EXPECT_EQ(menu[0].items[0].text, "d");
}

TEST(LanguageMenu, GoesBackToWhatEnglishLists) {
    const LanguageFolder folder;
    folder.write("Dutch", "[Menu_102]\nPID0001=Partij\nID40004=Nieuw\nID40005=Weg\n");
    folder.write("English", "[Menu_102]\nPID0001=&Game\nID40004=&New Game\n");
    load_languages();
    std::vector<MenuItem> menu = built_in_menu();
    ASSERT_TRUE(choose_language(DUTCH_ID));
    translate_menu(menu);
    ASSERT_TRUE(choose_language(ENGLISH_ID));
    translate_menu(menu);
    EXPECT_EQ(menu[0].text, "&Game");
    EXPECT_EQ(find_menu_item(menu, 40004)->text, "&New Game");
    EXPECT_EQ(find_menu_item(menu, 40005)->text, "Weg");
    EXPECT_EQ(menu[1].text, "Edit");
}

TEST(LanguageMenu, NamesWhatIsLeftOfIt) {
    const LanguageFolder folder;
    folder.write("Dutch",
                 "[Menu_102]\nPID0001=1\nPID0007=7\nPID0002=2\nPID0003=3\nPID0004=4\nID40066=Geluid\n"
                 "PID0005=5\nPID0006=6\nID40035=Proef\n");
    load_languages();
    ASSERT_TRUE(choose_language(DUTCH_ID));
    std::vector<MenuItem> menu = built_in_menu();
    remove_menu_item(menu, COMMAND_TEST_EVAL);
    translate_menu(menu);
    EXPECT_EQ(menu[3].text, "7");
    EXPECT_EQ(find_menu_item(menu, 40066)->text, "Geluid");
    EXPECT_EQ(find_menu_item(menu, COMMAND_TEST_EVAL), nullptr);
}

TEST(LanguageTemplate, IsTheMenuInTheFormOfAFile) {
    logged.clear();
    log_listener = [](const char* text) { logged += text; };
    print_menu_template();
    log_listener = nullptr;
    EXPECT_TRUE(logged.starts_with("\n[Menu_102]\nPID0001=&Game\nID40004=&New Game\nID40092=Load...\n"));
    EXPECT_NE(logged.find("\nID40040=Copy Game to Clipboard\\tCtrl+C\n"), std::string::npos);
    EXPECT_NE(logged.find("\nPID0012=Help\nID40063=Tessarin Help\nID40064=About Tessarin\n"),
              std::string::npos);
    EXPECT_EQ(logged.find('\t'), std::string::npos);
    EXPECT_EQ(static_cast<size_t>(std::count(logged.begin(), logged.end(), '\n')),
              std::size(MENU_COMMANDS) + 12 + 2);
}

TEST(LanguageTemplate, ReadBackGivesTheMenuItsTexts) {
    const LanguageFolder folder;
    logged.clear();
    log_listener = [](const char* text) { logged += text; };
    print_menu_template();
    log_listener = nullptr;
    folder.write("Dutch", logged);
    load_languages();
    ASSERT_TRUE(choose_language(DUTCH_ID));
    std::vector<MenuItem> menu = built_in_menu();
    const std::vector<std::string> texts = texts_of(menu);
    for (MenuItem& item : menu) {
        item.text = "?";
        for (MenuItem& inner : item.items)
            if (inner.id != MENU_SEPARATOR) inner.text = "?";
    }
    translate_menu(menu);
    EXPECT_EQ(texts_of(menu), texts);
}

TEST(LanguageSettings, KeepALanguageThatIsThere) {
    const LanguageFolder folder;
    program_paths.settings_folder = folder.scratch.file("config/");
    settings2 = make_default_settings2();
    settings2.language_id = DUTCH_ID;
    ASSERT_EQ(save_settings(), 0);
    load_languages();
    load_settings();
    EXPECT_EQ(settings2.language_id, ENGLISH_ID);
    folder.write("Dutch", "STRINGTABLE\nID133=Afgelopen\n");
    load_languages();
    load_settings();
    EXPECT_EQ(settings2.language_id, DUTCH_ID);
    EXPECT_EQ(text_of(133), "Afgelopen");
}

// Whatever a file holds, texts are UTF-8, fit, and stay built in where it says nothing.
TEST(Languages, SurviveDamagedFiles) {
    const LanguageFolder folder;
    const std::string whole = content_of(PROJECT_FOLDER "/data/Languages/Russian.lng");
    std::mt19937 random(3);
    for (int round = 0; round < 100; ++round) {
        std::string content = whole;
        for (int damage = 0; damage < 20; ++damage) {
            const size_t at = random() % content.size();
            if (random() % 4 == 0)
                content.erase(at, 1 + random() % 40);
            else
                content[at] = static_cast<char>(random() % 256);
        }
        folder.write("Russian", content);
        load_languages();
        ASSERT_TRUE(choose_language(RUSSIAN_ID));
        std::vector<MenuItem> menu = built_in_menu();
        translate_menu(menu);
        for (const std::string& text : texts_of(menu)) EXPECT_TRUE(is_utf8(text));
        EXPECT_EQ(texts_of(menu).size(), texts_of(built_in_menu()).size());
        for (const TextEntry& entry : text_table) {
            char text[40];
            get_text(entry.id, text, sizeof text);
            EXPECT_TRUE(is_utf8(text));
            EXPECT_STRNE(text, "");
        }
        for (int32_t dialog = 117; dialog <= 140; ++dialog)
            for (const auto& [id, text] : dialog_texts(dialog)) EXPECT_TRUE(id >= 0 && is_utf8(text));
    }
}

TEST(LanguageThreads, FetchTextsWhileTheUserChooses) {
    const LanguageFolder folder;
    folder.write("English", "STRINGTABLE\nID133=Game over\n");
    folder.write("Russian", "STRINGTABLE\nID133=Партия окончена\n");
    load_languages();
    ASSERT_TRUE(choose_language(ENGLISH_ID));
    std::atomic<bool> done{false};
    std::atomic<int> wrong{0};
    std::thread reader([&] {
        while (!done.load()) {
            const std::string text = text_of(133);
            if (text != "Game over" && text != "Партия окончена") ++wrong;
        }
    });
    for (int i = 0; i < 2000; ++i) choose_language(i % 2 ? ENGLISH_ID : RUSSIAN_ID);
    done = true;
    reader.join();
    EXPECT_EQ(wrong, 0);
}

}  // namespace
