// The form of a language file, and what stands in it. A file has sections, each opened by its name, with
// lines of a key, an equals sign and a value.
//
// A key is looked up by plain text search: from the first place in the file where the section's name stands,
// the first place where the key's text stands, and from there to the end of the line. So a later section
// answers for one that lacks the key, and a key may match the beginning of a longer one that stands first.
// Translators rely on it: keep it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "shell/languages_code_page.h"

constexpr std::string_view STRING_SECTION = "STRINGTABLE";
std::string menu_section(int32_t menu);      // "[Menu_102]"
std::string dialog_section(int32_t dialog);  // "[DLG_117]"

// The key of a text, a command or a control: "ID133".
std::string id_key(int32_t id);
// The key of the pop-up of that number in the menu, from 1: "PID0001".
std::string popup_key(int32_t number);

// The text of a file from its bytes: UTF-8 without a byte order mark, each CR LF turned into LF. What is not
// UTF-8 is read in the code page. The text ends where the file has a NUL.
std::string language_file_text(std::string_view bytes, CodePage page);

// The lines are parts of `text`, without their LF.
std::optional<std::string_view> find_line(std::string_view text, std::string_view section,
                                          std::string_view key);

// What stands behind the first "=" of the line, with \t, \r and \n as the characters they stand for. None if
// the line has no "=" or nothing behind it.
std::optional<std::string> line_value(std::string_view line);

// The controls of a dialog by their ids, and 0 for its title, with their texts: the lines behind that of the
// section's name, up to the first that is empty or has no "=".
std::vector<std::pair<int32_t, std::string>> section_controls(std::string_view text,
                                                              std::string_view section);
