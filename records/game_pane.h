// The pane form of a game: two moves a line, for reading beside the board. A position that was set up within
// the game has a line of its own, "FEN".
#pragma once

#include <cstddef>
#include <span>

#include "records/pdn_replay.h"

// Room for the text of a game of 800 positions; the text of one with many long captures is cut.
constexpr size_t GAME_PANE_SIZE = 10000;

// The characters from `begin` up to but not including `end`.
struct TextRange {
    int begin = 0;
    int end = 0;

    bool operator==(const TextRange&) const = default;
};

// Prints the game, whose entries are its positions from the start on, into `size` bytes. Returns the length
// without the NUL; what does not fit is cut.
//
// `current` becomes the range of the step that leads to the entry of number `current_entry`, counted from 1:
// its number, move and blanks, or "FEN" with its newline. It is empty, and at the start of the text, for the
// first entry of a game from the initial position.
int game_pane_text(char* out, size_t size, std::span<const ReplayState> history, int current_entry,
                   TextRange& current);
