// From the settings to the engine's own copies. Values that the engine cannot work with are brought into its
// ranges on the way; the records keep them. For the thread that starts searches, while none runs.
#pragma once

// Copies all that the engine follows: threads, size of the table, book mode, databases. A table of another
// size is allocated at once, and so is the first; databases that are to be opened otherwise, or for the first
// time, are so by the next search. 0; 1 if there is no memory for the table, which is logged: nothing may be
// searched.
int apply_settings();

// Before each search: copies the same but leaves a table of another size, which the search allocates when it
// reopens the databases, and hands over what the setters of database_settings.h have raised.
void apply_search_settings();

// The other way round, for a front end that sets the engine's copies itself: shows them in `settings`.
void settings_from_engine();
