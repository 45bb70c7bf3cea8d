// The commands of the menu for games over the network. Interface thread only.
#pragma once

#include <cstdint>

// Runs the command of an id. False if the id is none of them.
bool run_dxp_command(int32_t id);

// Whether the command can be given now; for the ids of `run_dxp_command`.
bool is_dxp_command(int32_t id);
bool dxp_command_is_enabled(int32_t id);

// The network play comes up with the program; in server mode it begins to listen.
void start_network_play();
// Ends the connection, or the wait for one. Afterwards no thread of the network play posts any more; false if
// one still might.
bool end_network_play();
