// The menu bar, made from the menu as data. Each command is one action, which the toolbar shares, so that its
// key, its tick and its state are kept in one place. Interface thread only.
#pragma once

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <cstdint>
#include <map>
#include <vector>

#include "control/modes.h"
#include "shell/menu.h"

struct MenuBinding {
    std::map<int32_t, QAction*> commands;
    std::vector<QMenu*> popups;  // depth first, as language files count them
};

// Fills the window's menu bar. `run` is called with the id of a command that the user gives.
void build_menu(QMainWindow& window, const std::vector<MenuItem>& menu, void (*run)(int32_t id),
                MenuBinding& binding);

// Takes over the texts of the menu, whose structure must be the one that the binding was made from.
void show_menu_texts(const std::vector<MenuItem>& menu, MenuBinding& binding);

// Brings ticks and states up to date.
void show_menu_state(const MenuState& state, MenuBinding& binding);

// Null if there is no such command.
QAction* command_action(const MenuBinding& binding, int32_t id);
