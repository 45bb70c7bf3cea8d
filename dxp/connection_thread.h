// How the program comes to a connection: the thread that waits for a peer, the sequence that connects to a
// host, and the commands of the menu for both.
#pragma once

#include <cstdint>

#include "dxp/connection.h"

// What of the menu follows from the connection and the mode.
struct DxpMenuState {
    bool connect_enabled = true;  // "Make DXP connection..." and "Wait for DXP connection"
    bool terminate_enabled = false;
    bool start_match_enabled = false;
    bool autoconnect_enabled = true;

    bool operator==(const DxpMenuState&) const = default;
};
DxpMenuState dxp_menu_state(int32_t connection_state, int32_t gui_mode);
// As it is now. Interface thread only, as is everything below.
DxpMenuState dxp_menu_state();

// Makes the connection thread. A failure is told to the user. Once; a second call does nothing. In server
// mode it begins to listen.
void start_connection_thread();

// Connects to the host in the settings, and tells how it goes. 0 with a connection.
int connect_to_host();

// "Make DXP connection...", once the dialog has a host: remembers it, cut to what the settings hold, and
// connects. Nothing unless there is no connection and nobody listens.
void make_connection_command(const char* host);
// "Wait for DXP connection".
void wait_for_connection_command();
// "Terminate connection". Nobody is told that the connection is lost.
void terminate_connection_command();

// After DXP_CONNECTIONLOST: everything goes back to where another peer can come, and in server mode waits for
// him.
void dxp_connection_lost();
