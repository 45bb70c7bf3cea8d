#include "control/modes.h"

#include "base/program_paths.h"
#include "base/text.h"
#include "control/game.h"
#include "control/game_clock.h"
#include "control/game_commands.h"
#include "control/mode_hooks.h"
#include "control/text_ids.h"
#include "control/ui.h"

namespace {

int mode_text_id(int32_t mode, bool follower) {
    if (mode == DXP_MODE && follower) return TEXT_DXP_FOLLOWER;
    if (mode >= NORMAL_MODE && mode <= DXP_MODE) return TEXT_FIRST_MODE + mode;
    if (is_analyze_mode(mode)) return TEXT_FIRST_ANALYZE_MODE + mode - ANALYZE_GAME_MODE;
    return TEXT_UNKNOWN;
}

// The entry of the Search Mode submenu that stands for the mode.
int32_t mode_command(int32_t mode) {
    switch (mode) {
        case NORMAL_MODE:
            return COMMAND_NORMAL;
        case TWO_PLAYERS_MODE:
            return COMMAND_TWO_PLAYERS;
        case ANALYSIS_MODE:
            return COMMAND_ANALYSIS;
        case ANALYSIS_ALLSCORES_MODE:
            return COMMAND_ANALYSIS_ALLSCORES;
        case AUTOPLAY_MODE:
            return COMMAND_AUTOPLAY;
        default:
            return 0;
    }
}

}  // namespace

void mode_text(int32_t mode, bool follower, char* buffer, size_t size) {
    get_text(mode_text_id(mode, follower), buffer, size);
}

MenuState menu_state(int32_t mode, bool clock_running) {
    MenuState state;
    state.analyze_enabled = mode != SETUP_MODE && mode != DXP_MODE && !is_analyze_mode(mode);
    state.cancel_analyze_enabled = is_analyze_mode(mode);
    state.ticked_mode_command = mode_command(mode);
    state.setup_ticked = mode == SETUP_MODE;
    state.clock_start_enabled = !clock_running;
    return state;
}

void update_menu() {
    ui.update_menu(menu_state(game.gui_mode, clock_state.clock_running.load(std::memory_order_relaxed)));
}

void update_title() {
    if (game.gui_mode != DXP_MODE) return ui.set_title(program_paths.window_title.c_str());
    char title[TITLE_SIZE];
    mode_hooks.dxp_title(title, sizeof title);
    ui.set_title(title);
}
