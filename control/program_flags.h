// How this copy of the program was started. Written at start-up, before other threads run, and constant from
// then on.
#pragma once

struct ProgramFlags {
    // The program goes back to listening for connections by itself, and tells the other side of a game what
    // it thinks.
    bool server_mode = false;
    // The user may have matches started again by themselves.
    bool autoconnect_enabled = false;
};
extern ProgramFlags program_flags;
