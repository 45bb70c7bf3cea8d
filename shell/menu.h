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

struct MenuItem {
    int32_t id = MENU_SEPARATOR;
    std::string text;             // with "&" before the accelerator letter, and a tab before the key
    std::vector<MenuItem> items;  // of a pop-up
};

// The menu as it is built in, whole.
std::vector<MenuItem> built_in_menu();

// The menu that is shown.
extern std::vector<MenuItem> main_menu;

// Takes the command out of the menu, wherever it is; nothing if it is not there.
void remove_menu_item(std::vector<MenuItem>& menu, int32_t id);

// Null if the menu has no such command.
const MenuItem* find_menu_item(const std::vector<MenuItem>& menu, int32_t id);
