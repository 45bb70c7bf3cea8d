// The commands of the game, one function each, for menus, toolbars and keys. Each checks by itself whether
// the mode allows it, and does nothing where it does not. Interface thread only.
#pragma once

#include <cstdint>

// By their ids in the menu and in language files.
enum GameCommand : int32_t {
    COMMAND_NEW_GAME = 40004,
    COMMAND_SEARCH_BUTTON = 40022,
    COMMAND_BACK_TO_START = 40023,
    COMMAND_BACK = 40024,
    COMMAND_FORWARD = 40025,
    COMMAND_FORWARD_TO_END = 40026,
    COMMAND_CHANGE_SIDE = 40027,
    COMMAND_SETUP = 40030,
    COMMAND_CLEAR_BOARD = 40031,
    COMMAND_PASTE = 40039,
    COMMAND_COPY_GAME = 40040,
    COMMAND_COPY_POSITION = 40041,
    COMMAND_NORMAL = 40053,
    COMMAND_ANALYSIS = 40054,
    COMMAND_TWO_PLAYERS = 40055,
    COMMAND_AUTOPLAY = 40056,
    COMMAND_CLOCK_START = 40081,
    COMMAND_CLOCK_STOP = 40082,
    COMMAND_CLOCK_RESET = 40083,
    COMMAND_PONDERING = 40084,
    COMMAND_ANALYSIS_ALLSCORES = 40112,
    COMMAND_CANCEL_ANALYZE = 40113,
};

// Runs the command of an id: one of those above, or an entry of the Time menu but the game clock, which is a
// dialog. False if the id is none of them.
bool run_game_command(int32_t id);

void new_game_command();
void search_button_command();  // "Stop searching" or "Start searching"
void back_to_start_command();
void back_command();
void forward_command();
void forward_to_end_command();
void change_side_command();
void setup_command();
void clear_board_command();
void paste_command();
void copy_game_command();
void copy_position_command();
void normal_command();
void two_players_command();
void analysis_command();
void analysis_allscores_command();
void autoplay_command();
void cancel_analyze_command();
void clock_start_command();
void clock_stop_command();
void clock_reset_command();
void pondering_command();
void time_command(int32_t id);  // an entry of the Time menu

// Pieces that other commands are made of.

// Takes the game clock back to its start; the menu follows.
void reset_game_clock();
