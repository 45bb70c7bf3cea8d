// The program's texts as the windows show them. Texts of the program are UTF-8; those of game files need not
// be.
#pragma once

#include <QString>
#include <string_view>

// The text as UTF-8, or, where it is none, as Latin-1, which has a character for every byte. The beginning of
// a character that a cut has left at the end is dropped.
QString shown_text(std::string_view text);

// A text of the program by its id, in the current language.
QString program_text(int id);
