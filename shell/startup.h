// How every front end comes up. `begin_startup` is what comes before a window: paths, settings, the number of
// this copy. `finish_startup` starts the engine, so that its failure can be shown on the window that is
// already there. The search thread, the connection thread and the menus come after it and are the front
// end's.
#pragma once

#include "base/instance.h"
#include "control/engine_start.h"

struct StartupOptions {
    bool server_mode = false;
    // False: whatever the user has saved, the settings are the defaults, and the engine keeps what it was set
    // to. So a console command gives the same answer for everybody.
    bool saved_settings = true;
    // Reads the language files, before the settings choose one; null for none.
    void (*load_languages)() = nullptr;
};

// What this copy holds while it runs.
struct StartupState {
    InstanceLock instance;
    bool saved_settings = true;
};
extern StartupState startup_state;

// The command line, without the program's name, has the text "-s" somewhere.
bool wants_server_mode(int argc, const char* const* argv);

// Enters the program's folder; fills in `program_paths`, `program_flags`, `log_path` and the settings.
// Relative paths of the user's must have been made absolute before.
void begin_startup(const StartupOptions& options);

// Starts the engine with the settings and heads the log with the lines about the system. On failure the
// reason is in the log.
EngineStartStatus finish_startup();

// Gives up the number of this copy and forgets all names.
void reset_startup();
