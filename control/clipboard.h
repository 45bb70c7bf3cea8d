// The clipboard, with which positions and games are exchanged as text. Interface thread only.
#pragma once

// Takes a position or the first game of a text from the clipboard onto the board. A text that is neither
// changes nothing. The search thread must be idle.
void paste_from_clipboard();

// Puts the game, or the position on the board, into the clipboard and shows the text.
void copy_game_to_clipboard();
void copy_position_to_clipboard();
