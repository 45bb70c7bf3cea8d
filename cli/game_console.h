// Game control on a console: how it comes up, and the loop that stands for the windows' timer.
#pragma once

#include "control/ui.h"

// Starts the engine, the search thread and a new game in NORMAL_MODE, shown through `screen`. False if it
// cannot run, which has been told. Relative paths of the user's must have been made absolute before, and the
// engine's own copies of the settings have been set: `settings` follows them.
bool start_game_console(const Ui& screen);

// A fixed time per move, whatever the entries of the Time menu are.
void set_time_per_move(double seconds);

// Lets time go by until the next tick is due, and ticks. A search that ends is passed on at once.
void tick_when_due();

// Ticks if a tick is due or a search has ended. Returns the milliseconds to the next one, at least 0.
int tick_if_due();
