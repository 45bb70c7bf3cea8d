#include "dxp/dxp_state.h"

#include <cstdio>

#include "base/program_paths.h"

DxpState dxp_state;

void reset_dxp_state() {
    dxp_state = DxpState{};
    std::snprintf(dxp_state.engine_name, sizeof dxp_state.engine_name, "%s",
                  program_paths.short_name.c_str());
}

void clear_match_counters() {
    dxp_state.match_wins = 0;
    dxp_state.match_draws = 0;
    dxp_state.match_losses = 0;
    dxp_state.match_unknowns = 0;
}

void dxp_match_title(char* buffer, size_t size) {
    const DxpState& s = dxp_state;
    std::snprintf(buffer, size, "%s vs %s:  %d wins, %d losses, %d draws, %d unknowns", s.engine_name,
                  s.opponent_name, s.match_wins, s.match_losses, s.match_draws, s.match_unknowns);
}
