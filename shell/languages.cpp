#include "shell/languages.h"

#include <algorithm>
#include <atomic>
#include <optional>

#include "base/files.h"
#include "base/log.h"
#include "base/program_paths.h"
#include "base/text.h"
#include "base/utf8.h"
#include "control/settings.h"
#include "shell/languages_text.h"
#include "shell/settings_store.h"

namespace {
constexpr int32_t RUSSIAN_ID = 40130;
}

const std::array<Language, LANGUAGES> language_table{{
    {ENGLISH_ID, "English"},
    {40126, "Dutch"},
    {40127, "French"},
    {40129, "Italian"},
    {40128, "Portugese"},
    {RUSSIAN_ID, "Russian"},
}};

namespace {

// The files' texts in the order of the table; none where there is no file.
std::array<std::optional<std::string>, LANGUAGES> language_texts;

// The search thread fetches texts while the user chooses another language.
std::atomic_ref<int32_t> current_language() { return std::atomic_ref<int32_t>(settings2.language_id); }

// The row of a language, or LANGUAGES if it is not in the table.
size_t language_row(int32_t id) {
    const auto row = std::find_if(language_table.begin(), language_table.end(),
                                  [id](const Language& language) { return language.id == id; });
    return static_cast<size_t>(row - language_table.begin());
}

size_t current_row() { return language_row(current_language().load(std::memory_order_relaxed)); }

// The text of the current language's file; empty if there is none.
std::string_view current_text() {
    const size_t row = current_row();
    return row < LANGUAGES && language_texts[row] ? std::string_view(*language_texts[row])
                                                  : std::string_view();
}

std::optional<std::string> current_value(std::string_view section, std::string_view key) {
    const std::optional<std::string_view> line = find_line(current_text(), section, key);
    return line ? line_value(*line) : std::nullopt;
}

void language_text(int id, char* buffer, size_t size) {
    const std::optional<std::string> value = current_value(STRING_SECTION, id_key(id));
    copy_utf8(value ? std::string_view(*value) : std::string_view(built_in_text(id)), buffer, size);
}

std::optional<std::string> load_text(const Language& language) {
    std::string bytes;
    const std::string path = program_paths.program_folder + LANGUAGE_FOLDER + language.name + ".lng";
    if (file_size(path) < 0 || (file_size(path) > 0 && read_file(path, bytes) != 0)) return std::nullopt;
    const bool russian = language.id == RUSSIAN_ID;
    return language_file_text(bytes, russian ? CodePage::WINDOWS_1251 : CodePage::WINDOWS_1252);
}

// `popups` counts the pop-ups of the whole menu, from 1; those in a pop-up that the file lacks do not count.
void translate_items(std::vector<MenuItem>& items, std::string_view text, std::string_view section,
                     int32_t& popups) {
    for (MenuItem& item : items) {
        if (item.id == MENU_SEPARATOR) continue;
        const bool popup = item.id == MENU_POPUP;
        const std::string key = popup ? popup_key(popups++) : id_key(item.id);
        const std::optional<std::string_view> line = find_line(text, section, key);
        if (!line) continue;
        if (const std::optional<std::string> value = line_value(*line)) item.text = *value;
        if (popup) translate_items(item.items, text, section, popups);
    }
}

std::string with_escaped_tabs(std::string_view text) {
    std::string escaped;
    for (const char letter : text) {
        if (letter == '\t')
            escaped += "\\t";
        else
            escaped += letter;
    }
    return escaped;
}

void print_items(const std::vector<MenuItem>& items, int32_t& popups) {
    for (const MenuItem& item : items) {
        if (item.id == MENU_SEPARATOR) continue;
        const std::string key = item.id == MENU_POPUP ? popup_key(popups++) : id_key(item.id);
        log_printf("%s=%s\n", key.c_str(), with_escaped_tabs(item.text).c_str());
        print_items(item.items, popups);
    }
}

}  // namespace

void load_languages() {
    for (size_t row = 0; row < LANGUAGES; ++row) language_texts[row] = load_text(language_table[row]);
    text_source = language_text;
    settings_hooks.language_loaded = language_usable;
}

bool language_usable(int32_t id) {
    const size_t row = language_row(id);
    return row < LANGUAGES && language_texts[row].has_value();
}

bool choose_language(int32_t id) {
    if (!language_usable(id)) return false;
    current_language().store(id, std::memory_order_relaxed);
    return true;
}

std::vector<std::pair<int32_t, std::string>> dialog_texts(int32_t dialog) {
    return section_controls(current_text(), dialog_section(dialog));
}

void translate_menu(std::vector<MenuItem>& menu) {
    const std::string_view text = current_text();
    int32_t popups = 1;
    translate_items(menu, text, menu_section(MENU_NUMBER), popups);
}

const char* language_name() {
    const size_t row = current_row();
    return language_table[row < LANGUAGES ? row : 0].name;
}

void print_menu_template() {
    log_printf("\n%s\n", menu_section(MENU_NUMBER).c_str());
    int32_t popups = 1;
    print_items(built_in_menu(), popups);
}

void reset_languages() {
    language_texts = {};
    text_source = nullptr;
    settings_hooks.language_loaded = no_settings_hooks().language_loaded;
}
