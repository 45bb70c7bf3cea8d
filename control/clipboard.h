// The clipboard, with which positions and games are exchanged as text. Interface thread only.
#pragma once

#include <cstddef>

// Room for what is read from the clipboard; a longer text is cut.
constexpr size_t CLIPBOARD_TEXT_SIZE = 20000;

// The clipboard's plain text into CLIPBOARD_TEXT_SIZE bytes, NUL-terminated. False if there is none; the
// buffer is then untouched.
bool clipboard_read_text(char* out_buffer);
// False if the clipboard cannot be had.
bool clipboard_write_text(const char* text);

// Takes a position or the first game of a text from the clipboard onto the board; headers are not taken over.
// A text that is neither changes nothing. The search thread must be idle.
void paste_from_clipboard();

// Puts the game, or the position on the board, into the clipboard and shows the text.
void copy_game_to_clipboard();
void copy_position_to_clipboard();
