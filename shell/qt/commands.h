// What the commands of the menu, the toolbar and the keys do. Those of the game are game control's; the
// windows' own are here. Interface thread only.
#pragma once

#include <cstdint>

// Runs the command; nothing for an id that is none, for one that is disabled, and during a pause.
void run_command(int32_t id);

// What goes before the main window closes: the settings are saved if the user wants it.
void before_close();

// Shows everything in the language of the settings.
void follow_language();
