// Which commands of the menu are ticked and which can be given, from the settings and from what game control
// tells. Needs no window. Interface thread only.
#pragma once

#include <cstdint>

#include "control/modes.h"

// The command has a tick when something is in force.
bool command_has_tick(int32_t id);

// It is one of several of which one is in force.
bool command_is_choice(int32_t id);

bool command_is_ticked(int32_t id, const MenuState& state);

bool command_is_enabled(int32_t id, const MenuState& state);

// The pane that the command of the Window menu shows and hides, as a `ChildWindow`; -1 for other commands.
int pane_of_command(int32_t id);
int32_t command_of_pane(int pane);

// The value of `settings.book_mode` that the command stands for; -1 for other commands.
int32_t book_mode_of_command(int32_t id);
