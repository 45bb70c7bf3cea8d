// The screen of a game on a terminal: what game control shows becomes lines of text. The board is printed
// when it has changed and the program is about to wait, not at each redrawing.
#pragma once

#include <string>

#include "control/ui.h"

struct PlayScreen {
    bool quiet = false;        // no boards
    bool terminal = false;     // a user reads and types; otherwise a script is run
    std::string start_folder;  // of relative paths
    // What the user has said that dialogs are to be told.
    std::string chosen_file;
    int chosen_game = -1;
    std::string clipboard;

    bool board_changed = true;
    bool prompt_shown = false;
    std::string game_text;
    std::string printed_board;
    std::string end;  // how a game of the engine against itself has ended, until it is told
};
extern PlayScreen play_screen;

Ui make_play_screen();

// One line on standard output.
void say(const char* format, ...) __attribute__((format(printf, 1, 2)));

// One line on standard error. A script that has such a line ends with EXIT_BAD_INPUT.
void complain(const char* format, ...) __attribute__((format(printf, 1, 2)));

// The path as seen from the folder in which the program was started.
std::string path_of_user(const std::string& path);

// Prints the board, and says who has won where the side to move has no move.
void print_board();

// The same, if it has changed since it was printed.
void print_changed_board();

void print_legal_moves();

// Prints "engine MOVE" for each entry of the history behind that number.
void print_engine_moves(int behind);
