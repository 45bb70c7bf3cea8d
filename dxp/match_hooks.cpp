#include "dxp/match_hooks.h"

MatchHooks no_match_hooks() {
    MatchHooks none{};
    none.set_next_start_position = [](int32_t) { return 1; };
    none.append_match_game = [](const char*, const char*, const char*) {};
    none.write_match_stats = [] {};
    none.read_match_stats = [](MatchCounters&) { return int32_t{0}; };
    none.game_ended = [](int32_t) {};
    none.match_over = [] {};
    return none;
}

MatchHooks match_hooks = no_match_hooks();
