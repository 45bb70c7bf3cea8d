#include "base/utf8.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

TEST(Utf8, IsToldFromWhatIsNone) {
    for (const char* const text : {"", "a", "\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF",
                                   "\xEE\x80\x80", "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"})
        EXPECT_TRUE(is_utf8(text)) << text;
    for (const char* const text :
         {"\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xC2", "\xC2 ", "\xE0\x9F\xBF", "\xE1\x80", "\xED\xA0\x80",
          "\xED\xBF\xBF", "\xF0\x8F\xBF\xBF", "\xF0\x90\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF",
          "a\xE9z", "\xC3\xA9\xA9"})
        EXPECT_FALSE(is_utf8(text)) << text;
}

TEST(Utf8Copy, NeverLeavesHalfACharacter) {
    const std::string text = "a\u00E9\u20AC\U0001F600Шz";
    for (size_t size = 1; size <= text.size() + 3; ++size) {
        std::string buffer(size + 1, '\x7F');
        copy_utf8(text, buffer.data(), size);
        const std::string copied(buffer.c_str());
        EXPECT_LT(copied.size(), size);
        EXPECT_EQ(buffer[size], '\x7F');
        EXPECT_TRUE(is_utf8(copied));
        EXPECT_TRUE(text.starts_with(copied));
        // As much as fits: the next character is longer than what is left.
        if (copied.size() < text.size()) {
            EXPECT_GT(copied.size() + 4, size - 1);
        }
    }
    char whole[20];
    copy_utf8(text, whole, sizeof whole);
    EXPECT_EQ(text, whole);
}

TEST(Utf8Copy, CutsOtherCharacterSetsWhereTheRoomEnds) {
    const std::string latin = "\xE9\xE9\xE9\xE9\xE9\xA9";
    for (size_t room = 0; room <= latin.size(); ++room) EXPECT_EQ(utf8_length_within(latin, room), room);
    EXPECT_EQ(utf8_length_within("Caf\xE9 de", 4), 4u);
    EXPECT_EQ(utf8_length_within("\xC3", 1), 1u);
}

TEST(Utf8Copy, DropsWhatACutHasLeft) {
    EXPECT_EQ(without_cut_character(""), "");
    EXPECT_EQ(without_cut_character("abc"), "abc");
    EXPECT_EQ(without_cut_character("ab\xC3\xA9"), "ab\xC3\xA9");
    EXPECT_EQ(without_cut_character("ab\xC3"), "ab");
    EXPECT_EQ(without_cut_character("ab\xE2\x82"), "ab");
    EXPECT_EQ(without_cut_character("ab\xF0\x9F\x99"), "ab");
    EXPECT_EQ(without_cut_character("\xF0"), "");
    EXPECT_EQ(without_cut_character("\x82\x82\x82\x82"), "\x82\x82\x82\x82") << "no character begins here";
}

// Cutting a UTF-8 text anywhere and dropping the rest is the same as cutting it between characters.
TEST(Utf8Copy, BothWaysOfCuttingAgree) {
    const std::string letters[] = {"a", "\u00E9", "\u20AC", "\U0001F600", "Ш"};
    std::mt19937 random(3);
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        for (size_t count = random() % 8; count > 0; --count) text += letters[random() % std::size(letters)];
        for (size_t room = 0; room <= text.size(); ++room) {
            const std::string_view kept = std::string_view(text).substr(0, utf8_length_within(text, room));
            ASSERT_EQ(kept, without_cut_character(std::string_view(text).substr(0, room)));
            ASSERT_TRUE(is_utf8(kept));
        }
    }
}

}  // namespace
