// The language files that come with the program: each is complete, and says in every language what the
// English texts say, with the same marks and keys.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <map>
#include <set>

#include "base/utf8.h"
#include "shell/languages_text.h"
#include "tests/shell/language_folder.h"

namespace {

using Keys = std::map<std::string, std::string>;

// The sections of a file by their names in brackets, read without the loader.
std::map<std::string, Keys> sections_of(const std::string& content) {
    std::map<std::string, Keys> sections;
    std::istringstream lines(content);
    Keys* section = nullptr;
    for (std::string line; std::getline(lines, line);) {
        if (line.empty()) {
            section = nullptr;
        } else if (line.front() == '[') {
            EXPECT_FALSE(sections.contains(line)) << line << " is there twice";
            section = &sections[line];
        } else {
            const size_t sign = line.find('=');
            if (!section || sign == std::string::npos) {
                ADD_FAILURE() << "stray line " << line;
                continue;
            }
            EXPECT_TRUE(section->try_emplace(line.substr(0, sign), line.substr(sign + 1)).second) << line;
        }
    }
    return sections;
}

std::string unescaped(const std::string& value) { return line_value("=" + value).value_or(""); }

std::string without_ampersands(std::string text) {
    std::erase(text, '&');
    return text;
}

struct DialogControls {
    int32_t dialog;
    std::vector<std::pair<int32_t, const char*>> controls;  // 0 is the title
};
const DialogControls DIALOGS[] = {
    {117, {{0, "Make Connection"}, {1100, "Remote hostname or IP address"}}},
    {118,
     {{0, "Start DamExchange match"},
      {1004, "Time for moves (minutes)"},
      {1003, "Number of moves"},
      {1063, "Initial time (secs)"},
      {1062, "Increment (secs)"},
      {1100, "Match repeat count"},
      {1101, "Start positions"},
      {1102, "Start positions file"},
      {1059, "Browse..."},
      {1014, "Resume a previous match"},
      {1061, "Incremental time"},
      {1170, "2-move ballots"},
      {1171, "3-move ballots"},
      {1172, "read from PDN file"}}},
    {119,
     {{0, "Endgame db and Hashtable Options"},
      {1100, "Hashtable size (mb)"},
      {1150, "WLD"},
      {1008, "Enable"},
      {1101, "Directory"},
      {1013, "Check Dir."},
      {1017, "Browse..."},
      {1102, "Cache size (mb)"},
      {1103, "Max. pieces"},
      {1104, "Max kings one side when 8 pieces"},
      {1105, "Initialization"},
      {1019, "Verify Files"},
      {1151, "MTC"},
      {1012, "Enable"},
      {1106, "Directory"},
      {1015, "Check Dir."},
      {1018, "Browse..."},
      {1170, "No limit"},
      {1180, "No limit"},
      {1190, "before search"},
      {1191, "in parallel with search"}}},
    {125,
     {{0, "Game Time"},
      {1100, "Moves"},
      {1101, "Minutes"},
      {1102, "Operator time (sec / move)"},
      {1060, "Increment mode"},
      {1103, "Initial (secs)"},
      {1104, "Increment (secs)"}}},
    {126, {{0, "Parallel Search Control"}, {1100, "Processor cores detected"}, {1101, "Search threads"}}},
    {127,
     {{0, "Game Information"},
      {1100, "Event"},
      {1101, "Date"},
      {1102, "White"},
      {1103, "Black"},
      {1104, "Result"},
      {1170, "White win"},
      {1171, "Black win"},
      {1172, "Draw"},
      {1173, "Unknown"}}},
    {128, {{0, "Select Game"}}},
    {130, {{0, "Verify WLD Database Files"}}},
    {140, {{1100, "Font"}, {1101, "Size (points)"}, {1072, "Bold"}, {1073, "Italic"}}},
};
const std::pair<int32_t, const char*> BUTTONS[] = {{1, "OK"}, {2, "Cancel"}};

std::vector<std::pair<int32_t, const char*>> all_controls(const DialogControls& dialog) {
    auto controls = dialog.controls;
    controls.insert(controls.end(), std::begin(BUTTONS), std::end(BUTTONS));
    return controls;
}

std::string control_key(int32_t id) { return id == 0 ? "CAPTION" : id_key(id); }

// "%d", "%02d" and the like in their order.
std::vector<std::string> format_marks(const std::string& text) {
    std::vector<std::string> marks;
    for (size_t at = text.find('%'); at != std::string::npos; at = text.find('%', at + 1)) {
        const size_t end = text.find_first_of("dsfuxc%", at + 1);
        marks.push_back(text.substr(at, end == std::string::npos ? end : end - at + 1));
        if (end != std::string::npos) at = end;
    }
    return marks;
}

// What ends the text and has a meaning: the dots of a dialog and the key behind a tab.
std::string tail_of(const std::string& text) {
    const size_t tab = std::min(text.find('\t'), text.size());
    const std::string before = text.substr(0, tab);
    return (before.ends_with("...") ? "..." : "") + text.substr(tab);
}

// The letter behind the "&", a small one; empty without one.
std::string accelerator_of(const std::string& text) {
    const size_t at = text.find('&');
    if (at == std::string::npos || at + 1 >= text.size()) return "";
    const auto lead = static_cast<uint8_t>(text[at + 1]);
    std::string letter = text.substr(at + 1, lead < 0x80 ? 1 : 2);
    if (letter.size() == 1 && letter[0] >= 'A' && letter[0] <= 'Z')
        letter[0] = static_cast<char>(letter[0] + 32);
    const std::string capitals = "АБВГДЕЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯ",
                      small = "абвгдежзийклмнопрстуфхцчшщъыьэюя";
    const size_t place = letter.size() == 2 ? capitals.find(letter) : std::string::npos;
    return place == std::string::npos ? letter : small.substr(place, 2);
}

bool is_letter(const std::string& letter) {
    return letter.size() == 2 || (letter.size() == 1 && std::isalpha(static_cast<uint8_t>(letter[0])) != 0);
}

void expect_unique_accelerators(const std::vector<std::string>& texts, const std::string& where) {
    std::set<std::string> seen;
    for (const std::string& text : texts) {
        EXPECT_LE(std::count(text.begin(), text.end(), '&'), 1) << where << ": " << text;
        const std::string letter = accelerator_of(text);
        if (text.find('&') == std::string::npos) continue;
        EXPECT_TRUE(is_letter(letter)) << where << ": " << text;
        EXPECT_TRUE(seen.insert(letter).second) << where << ": " << text;
    }
}

void expect_unique_accelerators(const std::vector<MenuItem>& items, const std::string& where) {
    std::vector<std::string> texts;
    for (const MenuItem& item : items) {
        texts.push_back(item.text);
        if (item.id == MENU_POPUP) expect_unique_accelerators(item.items, item.text);
    }
    expect_unique_accelerators(texts, where);
}

// Both menus are walked side by side.
void expect_same_marks(const std::vector<MenuItem>& items, const std::vector<MenuItem>& english) {
    ASSERT_EQ(items.size(), english.size());
    for (size_t i = 0; i < items.size(); ++i) {
        ASSERT_EQ(items[i].id, english[i].id);
        EXPECT_EQ(tail_of(items[i].text), tail_of(english[i].text)) << items[i].text;
        expect_same_marks(items[i].items, english[i].items);
    }
}

void append_keys(const std::vector<MenuItem>& items, Keys& keys, int32_t& popups) {
    for (const MenuItem& item : items) {
        if (item.id == MENU_SEPARATOR) continue;
        keys[item.id == MENU_POPUP ? popup_key(popups++) : id_key(item.id)] = item.text;
        append_keys(item.items, keys, popups);
    }
}

// The keys of the menu as a file has them, with the texts of the items.
Keys menu_keys(const std::vector<MenuItem>& menu) {
    Keys keys;
    int32_t popups = 1;
    append_keys(menu, keys, popups);
    return keys;
}

// One language of the project's files, in force.
class LanguageFile : public testing::TestWithParam<Language> {
  protected:
    LanguageFile() {
        program_paths.program_folder = PROJECT_FOLDER "/data/";
        content = content_of(program_paths.program_folder + "Languages/" + GetParam().name + ".lng");
        sections = sections_of(content);
        load_languages();
        EXPECT_TRUE(choose_language(GetParam().id));
    }
    ~LanguageFile() override {
        reset_languages();
        program_paths = ProgramPaths{};
        settings2 = Settings2{};
    }

    static bool english() { return GetParam().id == ENGLISH_ID; }

    std::string content;
    std::map<std::string, Keys> sections;
};

TEST_P(LanguageFile, IsUtf8InPlainLines) {
    EXPECT_TRUE(is_utf8(content));
    EXPECT_FALSE(content.starts_with("\xEF\xBB\xBF"));
    EXPECT_EQ(content.find_first_of("\r\t"), std::string::npos);
    EXPECT_TRUE(content.ends_with("\n"));
    EXPECT_FALSE(content.ends_with("\n\n"));
    EXPECT_EQ(content.find(" \n"), std::string::npos);
    EXPECT_EQ(content.find("\uFFFD"), std::string::npos);
}

TEST_P(LanguageFile, HasTheSectionsOfTheProgram) {
    std::set<std::string> expected = {"[STRINGTABLE]", "[Menu_102]"};
    for (const DialogControls& dialog : DIALOGS) expected.insert(dialog_section(dialog.dialog));
    std::set<std::string> found;
    for (const auto& [name, keys] : sections) found.insert(name);
    EXPECT_EQ(found, expected);
}

TEST_P(LanguageFile, HasEveryText) {
    Keys& keys = sections["[STRINGTABLE]"];
    EXPECT_EQ(keys.size(), text_table.size());
    for (const TextEntry& entry : text_table) {
        ASSERT_TRUE(keys.contains(id_key(entry.id))) << entry.id;
        const std::string text = text_of(entry.id);
        EXPECT_NE(text, "");
        EXPECT_EQ(text, unescaped(keys[id_key(entry.id)])) << entry.id;
        EXPECT_EQ(format_marks(text), format_marks(entry.text)) << entry.id;
        EXPECT_EQ(text.ends_with("\r\n"), std::string_view(entry.text).ends_with("\r\n")) << entry.id;
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'),
                  std::count(entry.text, entry.text + std::strlen(entry.text), '\n'));
        if (english()) {
            EXPECT_EQ(text, entry.text);
        }
    }
}

// They are fetched into buffers of fixed size.
TEST_P(LanguageFile, HasTextsThatFit) {
    constexpr size_t LABEL_SIZE = 40, FORMAT_SIZE = 200, TEXT_SIZE = 300, MESSAGE_SIZE = 1000;
    const auto room_for = [&](int id) {
        if (id >= 234 && id <= 238) return LABEL_SIZE;
        if (id == 211) return FORMAT_SIZE;
        return id == 307 ? MESSAGE_SIZE : TEXT_SIZE;
    };
    for (const TextEntry& entry : text_table)
        EXPECT_LT(text_of(entry.id).size(), room_for(entry.id)) << entry.id;
}

TEST_P(LanguageFile, NamesEveryItemOfTheMenu) {
    const Keys expected = menu_keys(built_in_menu());
    Keys& keys = sections["[Menu_102]"];
    for (const auto& [key, text] : expected) EXPECT_TRUE(keys.contains(key)) << key << " " << text;
    for (const auto& [key, text] : keys) EXPECT_TRUE(expected.contains(key)) << key << " " << text;

    std::vector<MenuItem> menu = built_in_menu();
    translate_menu(menu);
    for (const auto& [key, text] : menu_keys(menu)) EXPECT_EQ(text, unescaped(keys[key])) << key;
    if (english()) {
        EXPECT_EQ(menu_keys(menu), expected);
    }
}

TEST_P(LanguageFile, KeepsTheKeysAndDotsOfTheMenu) {
    std::vector<MenuItem> menu = built_in_menu();
    translate_menu(menu);
    expect_same_marks(menu, built_in_menu());
}

TEST_P(LanguageFile, HasEachAcceleratorOnceAMenu) {
    std::vector<MenuItem> menu = built_in_menu();
    translate_menu(menu);
    expect_unique_accelerators(menu, "the menu bar");
    // A letter of the menu bar is a key with Alt; that with C copies.
    for (const MenuItem& item : menu) {
        EXPECT_NE(accelerator_of(item.text), "c") << item.text;
        if (!english()) {
            EXPECT_NE(accelerator_of(item.text), "") << item.text;
        }
    }
}

TEST_P(LanguageFile, NamesEveryControlOfTheDialogs) {
    for (const DialogControls& dialog : DIALOGS) {
        const Keys& keys = sections[dialog_section(dialog.dialog)];
        const auto controls = all_controls(dialog);
        EXPECT_EQ(keys.size(), controls.size()) << dialog.dialog;
        std::map<int32_t, std::string> told;
        for (const auto& [id, text] : dialog_texts(dialog.dialog)) EXPECT_TRUE(told.emplace(id, text).second);
        EXPECT_EQ(told.size(), controls.size()) << dialog.dialog;
        for (const auto& [id, text] : controls) {
            ASSERT_TRUE(keys.contains(control_key(id))) << dialog.dialog << " " << id;
            EXPECT_EQ(told[id], unescaped(keys.at(control_key(id))));
            EXPECT_EQ(tail_of(told[id]), tail_of(text)) << dialog.dialog << " " << id;
            if (english()) {
                EXPECT_EQ(without_ampersands(told[id]), text);
            }
        }
    }
}

// Titles, groups, entries of lists and the buttons with keys of their own need none.
bool needs_accelerator(int32_t id) { return id >= 1000 && (id < 1150 || id >= 1200); }

TEST_P(LanguageFile, HasEachAcceleratorOnceADialog) {
    for (const DialogControls& dialog : DIALOGS) {
        std::vector<std::string> texts;
        for (const auto& [id, text] : dialog_texts(dialog.dialog)) {
            texts.push_back(text);
            if (needs_accelerator(id)) {
                EXPECT_NE(accelerator_of(text), "") << dialog.dialog << " " << text;
            }
        }
        expect_unique_accelerators(texts, dialog_section(dialog.dialog));
    }
}

// What is the same in English is a name, a number or a word that both languages have.
TEST_P(LanguageFile, IsTranslated) {
    if (english()) return;
    const std::map<std::string, Keys> other =
        sections_of(content_of(program_paths.program_folder + "Languages/English.lng"));
    size_t lines = 0, same = 0;
    for (const auto& [name, keys] : sections)
        for (const auto& [key, value] : keys) {
            ++lines;
            same += without_ampersands(other.at(name).at(key)) == without_ampersands(value);
        }
    EXPECT_LT(same * 10, lines);
}

INSTANTIATE_TEST_SUITE_P(Each, LanguageFile, testing::ValuesIn(language_table),
                         [](const auto& language) { return std::string(language.param.name); });

TEST(LanguageFiles, SpeakRussianInCyrillicLetters) {
    const std::string content = content_of(PROJECT_FOLDER "/data/Languages/Russian.lng");
    for (const auto& [name, keys] : sections_of(content))
        for (const auto& [key, value] : keys) {
            const bool names = key == "ID244" || key == "ID40099" || key == "PID0004" || key == "ID1150" ||
                               key == "ID1151" || (key >= "ID40117" && key <= "ID40129" && key != "ID40125");
            if (!names) {
                EXPECT_NE(value.find_first_of("\xD0\xD1"), std::string::npos) << key << "=" << value;
            }
        }
}

// Whatever was shown before, English brings the built-in menu and texts back.
TEST(LanguageFiles, ComeBackToEnglishFromEachOther) {
    program_paths.program_folder = PROJECT_FOLDER "/data/";
    load_languages();
    std::vector<MenuItem> menu = built_in_menu();
    for (const Language& language : language_table) {
        ASSERT_TRUE(choose_language(language.id));
        translate_menu(menu);
        ASSERT_TRUE(choose_language(ENGLISH_ID));
        translate_menu(menu);
        EXPECT_EQ(menu_keys(menu), menu_keys(built_in_menu())) << language.name;
    }
    reset_languages();
    program_paths = ProgramPaths{};
    settings2 = Settings2{};
}

}  // namespace
