// The databases of the engine are opened, reopened and closed at the start of its searches, as
// egdb/egdb_state.h tells, by what `engine_settings` asks for.
#pragma once

// From here on every search prepares the databases. Before the first search.
void use_databases();
