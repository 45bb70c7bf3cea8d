// The life of the desktop program, from its start to its end, in pieces that a test can take one by one.
// Interface thread only.
#pragma once

// Paths, languages and settings; the main window with a new game on the board, shown and drawn. Afterwards
// `main_window` is there.
void open_desktop(bool server_mode);

// The engine, the search thread, and the timer. Nonzero if the engine cannot be started, which the user has
// been told.
int start_desktop_engine();

// Ends the search and takes the window away. False if the search does not end: the process then is to end
// without further ado, as the search thread goes on using what would be taken away.
bool close_desktop();
