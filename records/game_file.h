// Files of games: read whole to list the games in them, and grown by appending games.
#pragma once

#include <cstdint>
#include <string>

#include "records/pdn_game.h"

// The largest file that is loaded, in bytes.
constexpr int64_t GAME_FILE_LIMIT = 25000000;
// A list of games offers no more than this.
constexpr int GAME_LIST_LIMIT = 20000;

enum GameFileStatus {
    GAME_FILE_READ = 0,
    GAME_FILE_TOO_BIG = 1,
    GAME_FILE_CLOSED = 2,
    GAME_FILE_NO_MEMORY = 3
};

// Reads the file, in which there may be nothing, and finds its games. GAME_FILE_CLOSED if it is not there or
// cannot be read. The outputs are untouched unless the status is 0.
GameFileStatus load_game_file(const std::string& path, std::string& text, PdnOffsets& offsets);

// The newlines, 0 to 2, that keep an empty line between what the file ends with and a game behind it. 0 if
// the file is not there.
int separator_newlines_needed(const std::string& path);

// Appends the text of a game to the file, which is made if it is not there, behind an empty line. 0; 1 if it
// cannot be opened; 2 if it could not be written whole, in which case a file that was there is as it was.
int append_game_text(const std::string& path, const char* text);
