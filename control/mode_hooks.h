// Where game control leads into code that stands above it or beside it: the games over the network, the
// analysis of whole games, the state of the endgame databases. Who brings such a part fills its functions in,
// before other threads run; until then each does nothing. All are called on the interface thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/capture_lines.h"
#include "egdb/egdb_state.h"

// The move that the engine has just made.
struct EngineMove {
    int from = 0;  // squares 1 to 50; 0 where there is none
    int to = 0;
    int jumps = 0;                        // pieces taken
    int index = 0;                        // of the capture in `lines`
    const CaptureLines* lines = nullptr;  // of the position before the move; null without a capture
    int side = 0;                         // that made it
};

constexpr size_t TITLE_SIZE = 300;

struct ModeHooks {
    // In DXP_MODE, after the engine's move: sends it, or ends the game by `game.game_result_code`. 0 if the
    // game goes on, which lets the engine ponder.
    int (*dxp_send_move)(const EngineMove& move);
    // At each tick of a real search with 1, and with 0 once for a finished one.
    void (*dxp_show_search_text)(int running);
    // This side is the follower.
    bool (*dxp_follower)();
    // The title of a match, in TITLE_SIZE bytes.
    void (*dxp_title)(char* buffer, size_t size);

    // In the modes that analyse games: a search has ended.
    void (*analysis_step)();

    // Of the endgame databases, as `EgdbState`.
    int32_t (*egdb_state)();
};
extern ModeHooks mode_hooks;

// The record in which nothing is filled in.
ModeHooks no_mode_hooks();
