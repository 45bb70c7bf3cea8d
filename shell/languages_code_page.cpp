#include "shell/languages_code_page.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace {

// The characters of 0x80 to 0x9F; above them the set is that of Unicode.
constexpr std::array<uint16_t, 32> WINDOWS_1252_TABLE = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

// The characters of 0x80 to 0xBF; above them stands the alphabet from U+0410 on.
constexpr std::array<uint16_t, 64> WINDOWS_1251_TABLE = {
    0x0402, 0x0403, 0x201A, 0x0453, 0x201E, 0x2026, 0x2020, 0x2021, 0x20AC, 0x2030, 0x0409, 0x2039, 0x040A,
    0x040C, 0x040B, 0x040F, 0x0452, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, 0x0098, 0x2122,
    0x0459, 0x203A, 0x045A, 0x045C, 0x045B, 0x045F, 0x00A0, 0x040E, 0x045E, 0x0408, 0x00A4, 0x0490, 0x00A6,
    0x00A7, 0x0401, 0x00A9, 0x0404, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x0407, 0x00B0, 0x00B1, 0x0406, 0x0456,
    0x0491, 0x00B5, 0x00B6, 0x00B7, 0x0451, 0x2116, 0x0454, 0x00BB, 0x0458, 0x0405, 0x0455, 0x0457,
};
constexpr uint32_t CYRILLIC_CAPITAL_A = 0x0410;

uint32_t character_of(uint8_t byte, CodePage page) {
    if (byte < 0x80) return byte;
    if (page == CodePage::WINDOWS_1251)
        return byte < 0xC0 ? WINDOWS_1251_TABLE[byte - 0x80u] : CYRILLIC_CAPITAL_A + (byte - 0xC0u);
    return byte < 0xA0 ? WINDOWS_1252_TABLE[byte - 0x80u] : byte;
}

// Of the first plane, where all characters of the code pages are.
void append_utf8(std::string& text, uint32_t character) {
    const auto add = [&text](uint32_t byte) { text += static_cast<char>(byte); };
    if (character < 0x80) return add(character);
    if (character < 0x800) {
        add(0xC0 | character >> 6);
    } else {
        add(0xE0 | character >> 12);
        add(0x80 | (character >> 6 & 0x3F));
    }
    add(0x80 | (character & 0x3F));
}

// Bytes of the character that begins the text, which is not empty; 0 if none does. Characters written longer
// than they need to be, halves of pairs and what is above U+10FFFF are none.
size_t character_length(std::string_view text) {
    const auto byte = [text](size_t at) { return static_cast<uint8_t>(text[at]); };
    const uint8_t first = byte(0);
    if (first < 0x80) return 1;
    if (first < 0xC2 || first > 0xF4) return 0;
    const size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (text.size() < length) return 0;
    for (size_t at = 1; at < length; ++at)
        if ((byte(at) & 0xC0) != 0x80) return 0;
    const bool outside = (first == 0xE0 && byte(1) < 0xA0) || (first == 0xED && byte(1) > 0x9F) ||
                         (first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F);
    return outside ? 0 : length;
}

}  // namespace

bool is_utf8(std::string_view text) {
    while (!text.empty()) {
        const size_t length = character_length(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

std::string utf8_from_code_page(std::string_view bytes, CodePage page) {
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 2);
    for (const char byte : bytes) append_utf8(text, character_of(static_cast<uint8_t>(byte), page));
    return text;
}
