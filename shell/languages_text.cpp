#include "shell/languages_text.h"

#include <charconv>
#include <cstdio>
#include <system_error>

#include "base/utf8.h"

namespace {

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
constexpr std::string_view CAPTION_KEY = "CAPTION";
constexpr std::string_view CONTROL_KEY = "ID";

std::string_view to_line_end(std::string_view text) { return text.substr(0, text.find('\n')); }

// The character that a backslash and this one stand for; 0 if nothing.
char escaped(char letter) {
    switch (letter) {
        case 't':
            return '\t';
        case 'r':
            return '\r';
        case 'n':
            return '\n';
        default:
            return '\0';
    }
}

std::string unescape(std::string_view value) {
    std::string text;
    text.reserve(value.size());
    for (size_t at = 0; at < value.size(); ++at) {
        const char meant = value[at] == '\\' && at + 1 < value.size() ? escaped(value[at + 1]) : '\0';
        text += meant != '\0' ? meant : value[at];
        if (meant != '\0') ++at;
    }
    return text;
}

// The number of a control's key, whatever stands behind it; 0 if the key is none.
int32_t control_number(std::string_view key) {
    if (!key.starts_with(CONTROL_KEY)) return 0;
    key.remove_prefix(CONTROL_KEY.size());
    int32_t number = 0;
    const auto [end, error] = std::from_chars(key.data(), key.data() + key.size(), number);
    return error == std::errc{} && number > 0 ? number : 0;
}

}  // namespace

std::string menu_section(int32_t menu) { return "[Menu_" + std::to_string(menu) + "]"; }

std::string dialog_section(int32_t dialog) { return "[DLG_" + std::to_string(dialog) + "]"; }

std::string id_key(int32_t id) { return "ID" + std::to_string(id); }

std::string popup_key(int32_t number) {
    char key[16];
    std::snprintf(key, sizeof key, "PID%04d", number);
    return key;
}

std::string language_file_text(std::string_view bytes, CodePage page) {
    bytes = bytes.substr(0, bytes.find('\0'));
    if (bytes.starts_with(BYTE_ORDER_MARK)) bytes.remove_prefix(BYTE_ORDER_MARK.size());
    const std::string read = is_utf8(bytes) ? std::string(bytes) : utf8_from_code_page(bytes, page);
    std::string text;
    text.reserve(read.size());
    for (size_t at = 0; at < read.size(); ++at)
        if (read.compare(at, 2, "\r\n") != 0) text += read[at];
    return text;
}

std::optional<std::string_view> find_line(std::string_view text, std::string_view section,
                                          std::string_view key) {
    const size_t start = text.find(section);
    if (start == std::string_view::npos) return std::nullopt;
    const size_t line = text.find(key, start);
    if (line == std::string_view::npos) return std::nullopt;
    return to_line_end(text.substr(line));
}

std::optional<std::string> line_value(std::string_view line) {
    const size_t sign = line.find('=');
    if (sign == std::string_view::npos || sign + 1 == line.size()) return std::nullopt;
    return unescape(line.substr(sign + 1));
}

std::vector<std::pair<int32_t, std::string>> section_controls(std::string_view text,
                                                              std::string_view section) {
    std::vector<std::pair<int32_t, std::string>> controls;
    size_t at = text.find(section);
    if (at == std::string_view::npos) return controls;
    while ((at = text.find('\n', at)) != std::string_view::npos) {
        const std::string_view line = to_line_end(text.substr(++at));
        const size_t sign = line.find('=');
        if (sign == std::string_view::npos) break;
        const std::string_view key = line.substr(0, sign);
        const int32_t number = control_number(key);
        const std::optional<std::string> value = line_value(line);
        if (value && (number > 0 || key == CAPTION_KEY)) controls.emplace_back(number, *value);
    }
    return controls;
}
