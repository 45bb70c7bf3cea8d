// Games from files onto the board, and the game on the board into files. Interface thread only.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "records/game_headers.h"
#include "records/pdn_game.h"
#include "records/pdn_replay.h"

// By their ids in the menu and in language files.
enum FileCommand : int32_t {
    COMMAND_PDN_HEADER = 40091,
    COMMAND_LOAD = 40092,
    COMMAND_SAVE = 40093,
};

constexpr const char* LOAD_FILE_TITLE = "Select PDN file to load";
constexpr const char* SAVE_FILE_TITLE = "Select PDN file to save game to";

// What is kept from one load to the next.
struct LoadState {
    int selected_game = 0;  // the last choice from a list of games
};
extern LoadState load_state;

// Runs the command of an id. False if the id is none of the above.
bool run_file_command(int32_t id);

// Has the user choose a file and loads a game of it. Nothing in DXP_MODE.
void load_command();

// Has the user agree to the headers and choose a file, and appends the game to it: the one that he wanted to
// save, whatever begins on the board meanwhile.
void save_command();

// Has the user edit the headers of the game; an empty date is offered as today. They stay if he does not
// agree or another game began meanwhile.
void edit_headers_command();

// Has the user choose one of the file's games and puts it on the board, at its end; without a choice the old
// game stays. A running search is thrown away and the game clock reset, whatever follows. Nothing in
// DXP_MODE.
void load_pdn_game(const std::string& path);

// The user's game in line form, with the moves that can be reached by stepping forward; NUL-terminated.
std::vector<char> users_game_text(const char* line_end);

// Appends a game in that form to the file. What goes wrong is told.
void save_game_to_file(const std::string& path, std::span<const ReplayState> history,
                       const GameHeaders& headers);

// Puts the game of the list on the board, at its end, with its positions as the history. A step that cannot
// be made is recorded too, as the position before it once more, and ends the game. The search thread must be
// idle; the headers of the game and what is shown stay as they are.
void take_over_game(PdnNode* list);
