// What the halves of the game flow share: sending is in sending.cpp, what is received in game_flow.cpp.
// Interface thread only.
#pragma once

#include "dxp/dxp_state.h"

// Adds a text to the protocol, on a line of its own.
void dxp_log_message(const char* text, bool received);

// Sends a message and adds it to the protocol.
void dxp_send_and_log(const DxpMessage& message);

// This side ends the game that is played, for what the engine has found, one of GameResult: GAME_GOES_ON
// leaves its result unknown. Nothing more is played until the other side has answered.
void dxp_claim_end(int32_t game_result_code);

// A message that ends the game, from this side.
DxpMessage make_game_end(int16_t reason);

// The game on the board goes to the game file, which then tells who played which colour.
void append_finished_game(int32_t result);

// The game ends after so many moves of the engine. With 0 or less it doesn't, and the engine's clock reckons
// with DXP_UNLIMITED_CLOCK_MOVES.
void limit_moves(int32_t moves);

// The result code of a game that the side wins.
int32_t win_of(int side);
