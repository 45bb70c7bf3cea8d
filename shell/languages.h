// The texts of the program in other languages: text files in the folder "Languages" beside the program, one a
// language, loaded whole at the start. What a file lacks falls back to the built-in text; nothing in a file
// is an error. Texts are UTF-8; a file that is not is read in the Windows code page of its language. How a
// file is looked into is told in shell/languages_text.h.
//
// The current language is `settings2.language_id`. The files are loaded before other threads run and constant
// from then on; the language is chosen on the interface thread, and `get_text` may be called on any.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "shell/menu.h"

struct Language {
    int32_t id;        // of the menu command
    const char* name;  // base name of the file, and text of the menu command
};
constexpr size_t LANGUAGES = 6;
extern const std::array<Language, LANGUAGES> language_table;

constexpr const char* LANGUAGE_FOLDER = "Languages/";  // below the program's folder

// Loads the files that are there, puts this layer in front of the built-in texts (base/text.h) and lets the
// settings know which languages there are (shell/settings_store.h).
void load_languages();

// Whether the id is in the table and its file was loaded.
bool language_usable(int32_t id);

// Takes the language if it is usable; otherwise the one chosen before stays. True if it is in force now.
bool choose_language(int32_t id);

// What the language's file says of a dialog, in its order: the id of a control, or 0 for the title, and the
// text. Empty if it says nothing.
std::vector<std::pair<int32_t, std::string>> dialog_texts(int32_t dialog);

// Gives the items of the menu the texts that the language's file has for them; the others keep theirs.
void translate_menu(std::vector<MenuItem>& menu);

// The base name of the current language, "English" if it is none of the table.
const char* language_name();

// Prints the built-in menu to the log in the form of a language file, for translators.
void print_menu_template();

// Forgets all that was loaded, and takes this layer away again.
void reset_languages();
