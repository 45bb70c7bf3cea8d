// The form of language files: characters, line ends, the plain search for keys, values and dialogs.
#include "shell/languages_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "base/utf8.h"

namespace {

using Controls = std::vector<std::pair<int32_t, std::string>>;

std::string western(std::string_view bytes) { return language_file_text(bytes, CodePage::WINDOWS_1252); }
std::string cyrillic(std::string_view bytes) { return language_file_text(bytes, CodePage::WINDOWS_1251); }

std::string line_of(std::string_view text, std::string_view section, std::string_view key) {
    const auto line = find_line(text, section, key);
    return line ? std::string(*line) : "(none)";
}

std::string value_of(std::string_view line) { return line_value(line).value_or("(none)"); }

// The lookup by the C library, step by step.
std::string slow_line(const std::string& text, const std::string& section, const std::string& key) {
    const char* const start = std::strstr(text.c_str(), section.c_str());
    const char* const line = start ? std::strstr(start, key.c_str()) : nullptr;
    if (!line) return "(none)";
    const char* const end = std::strchr(line, '\n');
    return end ? std::string(line, end) : std::string(line);
}

TEST(LanguageKeys, AreWrittenAsInTheFiles) {
    EXPECT_EQ(STRING_SECTION, "STRINGTABLE");
    EXPECT_EQ(menu_section(102), "[Menu_102]");
    EXPECT_EQ(dialog_section(117), "[DLG_117]");
    EXPECT_EQ(id_key(40004), "ID40004");
    EXPECT_EQ(popup_key(1), "PID0001");
    EXPECT_EQ(popup_key(12345), "PID12345");
}

TEST(LanguageFileText, TurnsCarriageReturnsBeforeLineFeedsAway) {
    EXPECT_EQ(western("a\r\nb\nc\r\n"), "a\nb\nc\n");
    EXPECT_EQ(western("a\rb\r\r\n\r"), "a\rb\r\n\r");
    EXPECT_EQ(western(""), "");
}

TEST(LanguageFileText, EndsAtANul) {
    EXPECT_EQ(western(std::string_view("a=1\n\0b=2", 8)), "a=1\n");
    // What stands behind it has no say in how the text is read.
    EXPECT_EQ(western(std::string_view("\xC3\xA9\0\xFF", 4)), "\xC3\xA9");
}

TEST(LanguageFileText, DropsOneByteOrderMark) {
    EXPECT_EQ(western("\xEF\xBB\xBF[STRINGTABLE]"), "[STRINGTABLE]");
    EXPECT_EQ(western("\xEF\xBB\xBF\xEF\xBB\xBFx"), "\xEF\xBB\xBFx");
    EXPECT_EQ(western("x\xEF\xBB\xBF"), "x\xEF\xBB\xBF");
}

TEST(LanguageFileText, KeepsUtf8InEachLanguage) {
    const std::string text = "ID1=\u00E9\u0416\u20AC\U0001F600\n";
    EXPECT_EQ(western(text), text);
    EXPECT_EQ(cyrillic(text), text);
}

TEST(LanguageFileText, ReadsOtherBytesInTheCodePage) {
    EXPECT_EQ(western("\xE9\x80\x9C\xFF"), "\u00E9\u20AC\u0153\u00FF");
    EXPECT_EQ(cyrillic("\xCF\xE0\xF0\xF2\xE8\xFF\xA8\xB8\x97\xB9"), "Партия\u0401\u0451\u2014\u2116");
    // One such byte makes the whole file one of the code page.
    EXPECT_EQ(western("\xC3\xA9\xE9"), "\u00C3\u00A9\u00E9");
}

TEST(LanguageFileText, GivesEveryByteACharacter) {
    for (const CodePage page : {CodePage::WINDOWS_1252, CodePage::WINDOWS_1251}) {
        std::vector<std::string> seen;
        for (int byte = 1; byte < 256; ++byte) {
            const std::string text = utf8_from_code_page(std::string(1, static_cast<char>(byte)), page);
            EXPECT_TRUE(is_utf8(text)) << byte;
            EXPECT_FALSE(text.empty());
            if (byte < 0x80) {
                EXPECT_EQ(text, std::string(1, static_cast<char>(byte)));
            }
            for (const std::string& other : seen) EXPECT_NE(text, other) << byte;
            seen.push_back(text);
        }
    }
}

TEST(LanguageLookup, IsAPlainSearchFromTheSection) {
    const std::string text = "ID133=before\n[STRINGTABLE]\nID133=Game over\nID134=Draw\n";
    EXPECT_EQ(line_of(text, "STRINGTABLE", "ID133"), "ID133=Game over");
    EXPECT_EQ(line_of(text, "STRINGTABLE", "ID134"), "ID134=Draw");
    EXPECT_EQ(line_of(text, "STRINGTABLE", "ID135"), "(none)");
    EXPECT_EQ(line_of(text, "[Menu_102]", "ID133"), "(none)");
}

TEST(LanguageLookup, BeginsAtTheFirstPlaceOfTheName) {
    const std::string text = "no STRINGTABLE yet\nID1=early\n[STRINGTABLE]\nID1=late\n";
    EXPECT_EQ(line_of(text, "STRINGTABLE", "ID1"), "ID1=early");
}

TEST(LanguageLookup, LetsALaterSectionAnswer) {
    const std::string text = "[STRINGTABLE]\nID133=a\n\n[Menu_102]\nID40004=b\n\n[DLG_117]\nID1000=c\n";
    EXPECT_EQ(line_of(text, "STRINGTABLE", "ID40004"), "ID40004=b");
    EXPECT_EQ(line_of(text, "[Menu_102]", "ID1000"), "ID1000=c");
    EXPECT_EQ(line_of(text, "[Menu_102]", "ID133"), "(none)");
}

TEST(LanguageLookup, LetsALongerKeyAnswerThatStandsFirst) {
    EXPECT_EQ(line_of("STRINGTABLE\nID133=long\nID13=short\n", "STRINGTABLE", "ID13"), "ID133=long");
    EXPECT_EQ(line_of("STRINGTABLE\nID13=short\nID133=long\n", "STRINGTABLE", "ID13"), "ID13=short");
}

TEST(LanguageLookup, FindsAKeyInTheMiddleOfALine) {
    EXPECT_EQ(line_of("STRINGTABLE\nxID5=a\nID5=b\n", "STRINGTABLE", "ID5"), "ID5=a");
    EXPECT_EQ(line_of("STRINGTABLE\nPID0001=a\n", "STRINGTABLE", "ID0001"), "ID0001=a");
    EXPECT_EQ(line_of("STRINGTABLE ID5=a", "STRINGTABLE", "ID5"), "ID5=a");
}

TEST(LanguageLookup, DoesAsTheSlowOne) {
    const std::string letters = "ID1=[]\nST";
    std::mt19937 random(11);
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (size_t length = random() % 60; length > 0; --length) text += letters[random() % letters.size()];
        for (const std::string section : {"S", "[ST", "]"})
            for (const std::string key : {"I", "ID", "ID1", "1"})
                ASSERT_EQ(line_of(text, section, key), slow_line(text, section, key)) << text;
    }
}

TEST(LanguageValue, StandsBehindTheFirstEqualsSign) {
    EXPECT_EQ(value_of("ID133=Game over"), "Game over");
    EXPECT_EQ(value_of("ID133=a=b"), "a=b");
    EXPECT_EQ(value_of("ID133 = a "), " a ");
    EXPECT_EQ(value_of("=a"), "a");
}

TEST(LanguageValue, MissesWithoutSignOrText) {
    EXPECT_EQ(value_of("ID133"), "(none)");
    EXPECT_EQ(value_of("ID133="), "(none)");
    EXPECT_EQ(value_of(""), "(none)");
}

TEST(LanguageValue, HasItsEscapesReplaced) {
    EXPECT_EQ(value_of(R"(x=a\tb\rc\nd)"), "a\tb\rc\nd");
    EXPECT_EQ(value_of(R"(x=\n)"), "\n");
    EXPECT_EQ(value_of(R"(x=a\)"), R"(a\)");
    EXPECT_EQ(value_of(R"(x=\q\"\N)"), R"(\q\"\N)");
    // The second backslash begins the escape, as each is looked at by itself.
    EXPECT_EQ(value_of(R"(x=\\n)"), "\\\n");
}

TEST(LanguageControls, AreTheLinesBehindTheSectionsName) {
    const std::string text = "[DLG_117]\nCAPTION=Title\nID1000=a\\nb\nID2=Cancel\n\n[DLG_118]\nID1=x\n";
    EXPECT_EQ(section_controls(text, "[DLG_117]"), (Controls{{0, "Title"}, {1000, "a\nb"}, {2, "Cancel"}}));
    EXPECT_EQ(section_controls(text, "[DLG_118]"), (Controls{{1, "x"}}));
    EXPECT_EQ(section_controls(text, "[DLG_119]"), Controls{});
}

TEST(LanguageControls, EndAtTheFirstLineThatIsEmptyOrHasNoSign) {
    EXPECT_EQ(section_controls("[D]\nID1=a\n\nID2=b\n", "[D]"), (Controls{{1, "a"}}));
    EXPECT_EQ(section_controls("[D]\nID1=a\nword\nID2=b\n", "[D]"), (Controls{{1, "a"}}));
    EXPECT_EQ(section_controls("[D]\n\nID1=a\n", "[D]"), Controls{});
    EXPECT_EQ(section_controls("[D]\nID1=a\n[E]\nID2=b\n", "[D]"), (Controls{{1, "a"}}));
    EXPECT_EQ(section_controls("[D]\nID1=a\nID2=b", "[D]"), (Controls{{1, "a"}, {2, "b"}}));
    EXPECT_EQ(section_controls("[D]", "[D]"), Controls{});
    EXPECT_EQ(section_controls("[D] ID7=a\nID1=b\n", "[D]"), (Controls{{1, "b"}}));
}

TEST(LanguageControls, PassOverOtherKeysAndEmptyValues) {
    EXPECT_EQ(section_controls("[D]\nx=a\nID=b\nIDx=c\nID0=d\nID-4=e\nID1=\nCAPTION=\nCAPTIONS=f\nID3x=g\n"
                               "ID99999999999=h\nPID0004=i\nID4=j\n",
                               "[D]"),
              (Controls{{3, "g"}, {4, "j"}}));
}

}  // namespace
