// How fields are filled and read.
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>

#include "shell/qt/dialog_fields.h"
#include "shell/qt/text.h"
#include "tests/gui/dialog_user.h"

namespace {

// Texts of few different characters, so that numbers are frequent among them.
std::string random_text(std::mt19937& random) {
    constexpr std::string_view CHARACTERS = "0123456789012345678905 \t+-..eE,xa";
    std::string text;
    const size_t length = random() % 14;
    for (size_t i = 0; i < length; ++i) text += CHARACTERS[random() % CHARACTERS.size()];
    return text;
}

// What the C library reads, but for the hexadecimal numbers that it knows as well.
double library_number(const std::string& text) {
    const std::string decimal = text.substr(0, text.find('x'));
    constexpr double LARGEST = std::numeric_limits<double>::max();
    return std::clamp(std::strtod(decimal.c_str(), nullptr), -LARGEST, LARGEST);
}

int32_t library_integer(const std::string& text) {
    const long long number = std::strtoll(text.c_str(), nullptr, 10);
    return static_cast<int32_t>(std::clamp<long long>(number, std::numeric_limits<int32_t>::min(),
                                                      std::numeric_limits<int32_t>::max()));
}

std::array<char, 8> field_of(const char* text) {
    std::array<char, 8> field{};
    std::snprintf(field.data(), field.size(), "%s", text);
    return field;
}

// The field after the user has entered the text.
std::string entered(const char* text, std::array<char, 8> field = {}) {
    QLineEdit edit;
    show_field(edit, field);
    edit.setText(QString::fromUtf8(text));
    read_field(edit, field);
    return field.data();
}

}  // namespace

TEST(DialogFields, IntegersReadAsTheLibraryReadsThem) {
    EXPECT_EQ(read_integer("2147483648"), std::numeric_limits<int32_t>::max());
    EXPECT_EQ(read_integer("-2147483648"), std::numeric_limits<int32_t>::min());
    EXPECT_EQ(read_integer("-2147483649"), std::numeric_limits<int32_t>::min());
    EXPECT_EQ(read_integer("- 5"), 0);
    EXPECT_EQ(read_integer("+-5"), 0);
    EXPECT_EQ(read_integer(""), 0);
    EXPECT_EQ(read_integer("\v\f\r\n\t 17"), 17);
    std::mt19937 random(1);
    for (int i = 0; i < 200000; ++i) {
        const std::string text = random_text(random);
        ASSERT_EQ(read_integer(text), library_integer(text)) << text;
    }
}

TEST(DialogFields, NumbersReadAsTheLibraryReadsThem) {
    EXPECT_EQ(read_number("1e400"), std::numeric_limits<double>::max());
    EXPECT_EQ(read_number("-1e400"), -std::numeric_limits<double>::max());
    EXPECT_EQ(read_number("1e-400"), 0);
    EXPECT_EQ(read_number("inf"), 0);
    EXPECT_EQ(read_number("nan"), 0);
    EXPECT_EQ(read_number("0x10"), 0);
    EXPECT_EQ(read_number("."), 0);
    EXPECT_EQ(read_number(".5"), 0.5);
    EXPECT_EQ(read_number("5."), 5);
    EXPECT_EQ(read_number("2e"), 2);
    EXPECT_EQ(read_number("2e+"), 2);
    EXPECT_EQ(read_number("7,5"), 7);
    std::mt19937 random(2);
    for (int i = 0; i < 200000; ++i) {
        const std::string text = random_text(random);
        ASSERT_EQ(read_number(text), library_number(text)) << text;
    }
}

TEST(DialogFields, NumbersAreShownAsTheLibraryPrintsThem) {
    std::mt19937_64 random(3);
    for (int i = 0; i < 20000; ++i) {
        const double number =
            std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 1000) - 600);
        for (const int decimals : {1, 3}) {
            char text[400];
            std::snprintf(text, sizeof text, "%.*f", decimals, number);
            ASSERT_EQ(number_text(number, decimals).toStdString(), text);
        }
    }
    EXPECT_EQ(number_text(0.25, 1), QStringLiteral("0.2"));
    EXPECT_EQ(number_text(-std::numeric_limits<double>::max(), 3).size(), 314);
}

TEST(DialogFields, EnteredTextsAreCutBetweenCharacters) {
    EXPECT_EQ(entered("1234567"), "1234567");
    EXPECT_EQ(entered("12345678"), "1234567");
    EXPECT_EQ(entered("123456é"), "123456");
    EXPECT_EQ(entered("12345é"), "12345é");
    EXPECT_EQ(entered("12345€"), "12345");
    EXPECT_EQ(entered("1234€"), "1234€");
    EXPECT_EQ(entered("1234\xF0\x9F\x99\x82"), "1234");
    EXPECT_EQ(entered(""), "");
    EXPECT_EQ(entered("", field_of("old")), "");
}

TEST(DialogFields, UntouchedTextsStayToTheByte) {
    for (const char* const text :
         {"", "Zürich", "Z\xFCrich", "ééé\xC3", "\xC3", "12345\xE2\x82", "\x80\x80", "a\nb"}) {
        std::array<char, 8> field = field_of(text);
        QLineEdit edit;
        show_field(edit, field);
        read_field(edit, field);
        EXPECT_EQ(field, field_of(text)) << text;
    }
}

TEST(DialogFields, TextsThatWereCutWithinACharacterLoseItsRest) {
    EXPECT_EQ(shown_text("abc"), QStringLiteral("abc"));
    EXPECT_EQ(shown_text(""), QString());
    EXPECT_EQ(shown_text("Caf\xE9"), QString::fromLatin1("Caf\xE9")) << "one of Latin-1";
    EXPECT_EQ(shown_text("F\xFC\xDF"), QString::fromLatin1("F\xFC\xDF"));
    const std::string text = "Чемпионат €uropa \xF0\x9F\x99\x82 ж";
    const QString whole = QString::fromStdString(text);
    for (size_t size = 1; size <= text.size(); ++size) {
        const QString shown = shown_text(std::string_view(text).substr(0, size));
        // Of a text of one byte and nothing else there is no telling.
        ASSERT_TRUE(size == 1 || whole.startsWith(shown)) << size;
        ASSERT_GE(shown.toUtf8().size() + 3, static_cast<qsizetype>(size))
            << "no more than a rest is dropped";
    }
}
