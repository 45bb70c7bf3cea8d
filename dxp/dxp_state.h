// What is kept of the games over the network: who plays, what the match has come to, how far the game is.
// Owned by the interface thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "dxp/messages.h"

// How far the game is. What a peer sends out of turn is told by it.
enum DxpPhase : int32_t {
    DXP_NO_GAME = 0,
    DXP_REQUESTED = 1,  // this side has asked for a game and waits for the answer
    DXP_PLAYING = 2,
    DXP_CLAIMED = 3,  // this side has ended the game and waits for the other to agree
};

struct DxpState {
    int32_t phase = DXP_NO_GAME;
    int32_t engine_colour = WHITE;  // WHITE or BLACK: what the engine plays in this game
    bool gameend_sent = false;      // since the game was requested or accepted
    bool moves_limited = true;      // the game has a limit on its moves

    int32_t match_games = 0;   // games finished
    int32_t dxp_follower = 1;  // 1 when the other side asks for games, or none is to be asked for any more
    // Results from this side's point of view.
    int32_t match_wins = 0;
    int32_t match_draws = 0;
    int32_t match_losses = 0;
    int32_t match_unknowns = 0;

    char engine_name[DXP_NAME_LENGTH + 1] = "";
    char opponent_name[DXP_NAME_LENGTH + 1] = "";

    std::string last_chat_text;   // of the search, as last sent
    int32_t answered_strays = 0;  // ends of no game answered in a row
};
extern DxpState dxp_state;

// As at the start of the program, with its name from `program_paths`.
void reset_dxp_state();

// The four results become 0.
void clear_match_counters();

// "US vs THEM:  1 wins, 2 losses, 3 draws, 4 unknowns" for the title bar. `size` at least 1; what is longer
// is cut.
void dxp_match_title(char* buffer, size_t size);
