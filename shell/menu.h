// The menu of the main window as data: pop-ups, commands and separators, with the texts that they show now.
// The built-in texts are English; a language file replaces those that it names. What draws the menu reads it
// from here. Interface thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Ids of items that are no commands.
constexpr int32_t MENU_SEPARATOR = 0;
constexpr int32_t MENU_POPUP = -1;

// The number of the menu in language files.
constexpr int32_t MENU_NUMBER = 102;

// The commands of the menu that are the windows' own. Those of game control have their ids in
// control/game_commands.h, load_save.h, analyze_games.h and time_control.h, the languages theirs in
// shell/languages.h.
enum MenuCommand : int32_t {
    COMMAND_EXIT = 40005,
    COMMAND_TEST_EVAL = 40035,
    COMMAND_INVERT_BOARD = 40042,
    COMMAND_TEST_MOVE_GENERATOR = 40045,
    COMMAND_DXP_CONNECT = 40047,
    COMMAND_DXP_WAIT = 40048,
    COMMAND_DXP_TERMINATE = 40049,
    COMMAND_DATABASE_OPTIONS = 40050,
    COMMAND_TEST_INDEXING = 40051,
    COMMAND_HELP = 40063,
    COMMAND_ABOUT = 40064,
    COMMAND_RESET_SETTINGS = 40065,
    COMMAND_SOUND = 40066,
    COMMAND_BOOK_BEST = 40068,
    COMMAND_BOOK_GOOD = 40069,
    COMMAND_BOOK_ALL = 40070,
    COMMAND_BOOK_OFF = 40071,
    COMMAND_PARALLEL_SEARCH = 40086,
    COMMAND_START_MATCH = 40094,
    COMMAND_CLOCK_WINDOW = 40096,
    COMMAND_PONDER_WINDOW = 40097,
    COMMAND_STATUS_WINDOW = 40098,
    COMMAND_DXP_WINDOW = 40099,
    COMMAND_RESET_WINDOWS = 40100,
    COMMAND_GAME_WINDOW = 40102,
    COMMAND_SAVE_SETTINGS = 40103,
    COMMAND_SAVE_ON_EXIT = 40104,
    COMMAND_FONT = 40106,
    COMMAND_BACKGROUND_WHITE = 40108,
    COMMAND_BACKGROUND_GRAY = 40109,
    COMMAND_SQUARE_NUMBERS = 40125,
    COMMAND_START_MATCH_AUTOCONNECT = 40133,
};

struct MenuItem {
    int32_t id = MENU_SEPARATOR;
    std::string text;             // with "&" before the accelerator letter, and a tab before the key
    std::vector<MenuItem> items;  // of a pop-up
};

// The menu as it is built in, whole. Its top level holds the pop-ups of the menu bar. The tests of the engine
// and the match by one command are in it too; a front end takes out what it does not offer.
std::vector<MenuItem> built_in_menu();

// The menu that is shown; whole at first.
extern std::vector<MenuItem> main_menu;

// Takes the command out of the menu, wherever it is, and separators that then part nothing any more; nothing
// if it is not there.
void remove_menu_item(std::vector<MenuItem>& menu, int32_t id);

// Null if the menu has no such command. Good until the menu changes.
const MenuItem* find_menu_item(const std::vector<MenuItem>& menu, int32_t id);
