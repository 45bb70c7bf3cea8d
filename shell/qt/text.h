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

// The ids of the texts that are the windows' own.
enum WindowTextId {
    TEXT_CANNOT_OPEN = 303,
    TEXT_PDN_FILES = 320,
    TEXT_ALL_FILES = 321,
    TEXT_COPY = 322,
    TEXT_SELECT_ALL = 323,
    TEXT_BUILD = 324,
    TEXT_OK = 325,
    TEXT_CANCEL = 326,
    TEXT_BOARD = 346,
};

// The same with `inserted` in place of its "%s".
QString program_text(int id, const QString& inserted);

// A text that is named by its English words, as game control names its messages: in the current language if
// the program has it as a text of its own, otherwise as it is.
QString text_in_language(std::string_view text);
