// The game against a remote engine: what is done with each message, and when one is sent. The initiator asks
// for games, the follower accepts and obeys; whoever is asked for a game is a follower.
//
// All of it runs on the interface thread, driven by the events of the connection and by the end of searches.
// A message box of the protocol stands in the way of the next message until the user has closed it; what
// comes in meanwhile is handled then, in its order.
#pragma once

#include <cstdint>

#include "control/mode_hooks.h"
#include "dxp/connection.h"
#include "dxp/connection_thread.h"
#include "dxp/dxp_state.h"
#include "dxp/match_hooks.h"

// With increment, the moves after which a game ends; counted on the clock.
constexpr int32_t DXP_INCREMENTAL_MOVES = 130;
// The moves that the engine's clock reckons with in a game without a limit on its moves.
constexpr int32_t DXP_UNLIMITED_CLOCK_MOVES = 130;

// Fills in the hooks of game control, takes the port from the environment, puts the state back to its start
// and starts the connection thread. `ui` and `program_paths` must have been filled in. Once, before a
// connection.
void start_dxp();

// One event of the connection. Types above DXP_CONNECTIONLOST are ignored.
void dxp_handle_message(int32_t type);

// Asks for a game with the position on the board, as game number `match_games`: this side plays white in even
// ones. The time is that of the settings.
void dxp_send_game_request();

// After the engine's move was made on the board: sends it, 0; or ends the game instead, 1.
int dxp_send_move(const EngineMove& move);

// In server mode the other side is told what the engine thinks. At each tick of a real search with 1, and
// with 0 once it has ended.
void dxp_show_search_text(int running);

// The engine's search ends and nobody sees its result.
void dxp_drop_search();
