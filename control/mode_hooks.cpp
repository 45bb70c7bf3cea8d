#include "control/mode_hooks.h"

ModeHooks no_mode_hooks() {
    ModeHooks none{};
    none.dxp_send_move = [](const EngineMove&) { return 0; };
    none.dxp_show_search_text = [](int) {};
    none.dxp_follower = [] { return false; };
    none.dxp_title = [](char* buffer, size_t size) {
        if (size > 0) buffer[0] = '\0';
    };
    none.analysis_step = [] {};
    none.egdb_state = [] { return int32_t{EGDB_NOT_OPENED}; };
    return none;
}

ModeHooks mode_hooks = no_mode_hooks();
