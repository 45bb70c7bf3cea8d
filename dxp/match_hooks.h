// Where the flow of a game leads into the match that it is part of: the plan of start positions, the game
// file and the statistics file. The match part fills these in, before other threads run; as they are at first
// there is no match. All are called on the interface thread, with `dxp_state` and `game` as told.
#pragma once

#include <cstdint>

struct MatchCounters {
    int32_t wins = 0;
    int32_t draws = 0;
    int32_t losses = 0;
    int32_t unknowns = 0;
};

struct MatchHooks {
    // Puts the start position of a pair of games on the board, with a history of its own. 1, and nothing else
    // is needed, if the match is over. `match_games` is the number of the game to be asked for, from 0.
    int (*set_next_start_position)(int32_t pair);
    // Appends the game in `game` to the game file. `match_games` does not count it yet.
    void (*append_match_game)(const char* black_name, const char* white_name, const char* result_text);
    // Writes the statistics of `dxp_state` to their file.
    void (*write_match_stats)();
    // Reads them back. Returns the number of games, 0 if there are none to be read.
    int32_t (*read_match_stats)(MatchCounters& results);

    // A game is over and counted; `result` is a code of records/game_headers.h and holds for the game in
    // `game`. `match_games` does not count it yet.
    void (*game_ended)(int32_t result);
    // The match is over and the connection closed.
    void (*match_over)();
};
extern MatchHooks match_hooks;

// Nothing filled in: each match is over after its first pair, nothing is written.
MatchHooks no_match_hooks();
