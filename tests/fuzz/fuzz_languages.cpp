// Any bytes as a language file, in one code page or the other: the text is UTF-8, and what is looked up in it
// is what the C library finds.
#include <cstring>
#include <string>

#include "base/utf8.h"
#include "check.h"
#include "shell/languages_text.h"

namespace {

void check_line(const std::string& text, const std::string& section, const std::string& key) {
    const auto line = find_line(text, section, key);
    const char* const start = std::strstr(text.c_str(), section.c_str());
    const char* const found = start ? std::strstr(start, key.c_str()) : nullptr;
    FUZZ_CHECK(line.has_value() == (found != nullptr));
    if (!line) return;
    FUZZ_CHECK(line->size() == std::strcspn(found, "\n") &&
               line->compare(0, line->size(), found, line->size()) == 0);
    const auto value = line_value(*line);
    const size_t sign = line->find('=');
    FUZZ_CHECK(value.has_value() == (sign < line->size() - 1));
    if (!value) return;
    FUZZ_CHECK(!value->empty() && value->size() < line->size() && is_utf8(*value));
    char cut[20];
    for (size_t size = 1; size <= sizeof cut; ++size) {
        copy_utf8(*value, cut, size);
        FUZZ_CHECK(std::strlen(cut) < size && is_utf8(cut) && value->compare(0, std::strlen(cut), cut) == 0);
        FUZZ_CHECK(value->size() >= size || *value == cut);
    }
}

void check_controls(const std::string& text, const std::string& section) {
    const auto controls = section_controls(text, section);
    FUZZ_CHECK(controls.empty() || text.find(section) != std::string::npos);
    for (const auto& [id, value] : controls) FUZZ_CHECK(id >= 0 && !value.empty() && is_utf8(value));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    for (const CodePage page : {CodePage::WINDOWS_1252, CodePage::WINDOWS_1251}) {
        const std::string text = language_file_text(bytes, page);
        FUZZ_CHECK(is_utf8(text) && text.find('\0') == std::string::npos);
        FUZZ_CHECK(text.size() <= 3 * size);
        for (const int32_t id : {1, 13, 133, 134, 40004, 40040})
            check_line(text, std::string(STRING_SECTION), id_key(id));
        for (const int32_t number : {1, 2, 12}) check_line(text, menu_section(102), popup_key(number));
        check_line(text, menu_section(102), id_key(40004));
        check_controls(text, dialog_section(117));
        check_controls(text, dialog_section(125));
    }
    return 0;
}
