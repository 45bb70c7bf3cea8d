#include "base/utf8.h"

#include <cstdint>
#include <cstring>

namespace {

constexpr size_t LONGEST = 4;  // bytes of a character

bool continues(uint8_t byte) { return (byte & 0xC0) == 0x80; }

// Bytes of the character that this one begins; 0 if it begins none.
size_t announced_length(uint8_t first) {
    if (first < 0x80) return 1;
    if (first < 0xC2 || first > 0xF4) return 0;
    return first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
}

// Bytes of the character that begins the text, which is not empty; 0 if none does. Characters written longer
// than they need to be, halves of pairs and what is above U+10FFFF are none.
size_t character_length(std::string_view text) {
    const auto byte = [text](size_t at) { return static_cast<uint8_t>(text[at]); };
    const uint8_t first = byte(0);
    const size_t length = announced_length(first);
    if (length <= 1) return length;
    if (text.size() < length) return 0;
    for (size_t at = 1; at < length; ++at)
        if (!continues(byte(at))) return 0;
    const bool outside = (first == 0xE0 && byte(1) < 0xA0) || (first == 0xED && byte(1) > 0x9F) ||
                         (first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F);
    return outside ? 0 : length;
}

// Where the character begins that the text ends within, or its end if it ends behind one.
size_t last_whole(std::string_view text) {
    for (size_t back = 1; back < LONGEST && back <= text.size(); ++back) {
        const uint8_t byte = static_cast<uint8_t>(text[text.size() - back]);
        if (continues(byte)) continue;
        return announced_length(byte) > back ? text.size() - back : text.size();
    }
    return text.size();
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

size_t utf8_length_within(std::string_view text, size_t room) {
    if (text.size() <= room) return text.size();
    const size_t whole = last_whole(text.substr(0, room));
    // A letter of another character set may look like the beginning of one that does not follow.
    return character_length(text.substr(whole)) > 0 ? whole : room;
}

void copy_utf8(std::string_view text, char* buffer, size_t size) {
    const size_t length = utf8_length_within(text, size - 1);
    std::memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
}

std::string_view without_cut_character(std::string_view text) { return text.substr(0, last_whole(text)); }
