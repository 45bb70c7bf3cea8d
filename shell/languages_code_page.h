// The 8-bit character sets that language files may be written in, and UTF-8.
#pragma once

#include <string>
#include <string_view>

enum class CodePage { WINDOWS_1252, WINDOWS_1251 };

bool is_utf8(std::string_view text);

// Bytes without a character become the control character of their number.
std::string utf8_from_code_page(std::string_view bytes, CodePage page);
