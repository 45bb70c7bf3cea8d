// The 8-bit character sets that language files may be written in.
#pragma once

#include <string>
#include <string_view>

enum class CodePage { WINDOWS_1252, WINDOWS_1251 };

// Bytes without a character become the control character of their number.
std::string utf8_from_code_page(std::string_view bytes, CodePage page);
