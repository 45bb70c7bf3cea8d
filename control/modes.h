// The modes of the program, their texts, and what of the menu and the title follows from them.
#pragma once

#include <cstddef>
#include <cstdint>

enum GuiMode : int32_t {
    NORMAL_MODE = 0,              // the engine answers the user's move, and ponders
    TWO_PLAYERS_MODE = 1,         // no engine
    ANALYSIS_MODE = 2,            // the position on the board is searched until stopped or out of time
    ANALYSIS_ALLSCORES_MODE = 3,  // the same, with a value for every move
    AUTOPLAY_MODE = 4,            // the engine plays both sides
    SETUP_MODE = 5,               // the board is edited
    DXP_MODE = 6,                 // the engine plays one side against a remote one
    ANALYZE_GAME_MODE = 7,
    ANALYZE_PDN_MODE = 8,
    ANALYZE_GAME_ALLSCORES_MODE = 9,
    ANALYZE_PDN_ALLSCORES_MODE = 10,
};

constexpr bool is_analysis_mode(int32_t mode) {
    return mode == ANALYSIS_MODE || mode == ANALYSIS_ALLSCORES_MODE;
}
// The modes of the commands that analyse whole games.
constexpr bool is_analyze_mode(int32_t mode) {
    return mode >= ANALYZE_GAME_MODE && mode <= ANALYZE_PDN_ALLSCORES_MODE;
}
// The modes in which the user may step through the game.
constexpr bool is_stepping_mode(int32_t mode) {
    return mode >= NORMAL_MODE && mode <= ANALYSIS_ALLSCORES_MODE;
}
// The modes with a game clock to show and with pondering.
constexpr bool is_playing_mode(int32_t mode) {
    return mode == NORMAL_MODE || mode == AUTOPLAY_MODE || mode == DXP_MODE;
}

// The text of a mode in the current language; `follower` is this side's part in DXP_MODE.
void mode_text(int32_t mode, bool follower, char* buffer, size_t size);

// What of the menu game control decides. A front end works out the other states and ticks by itself.
struct MenuState {
    bool analyze_enabled = true;  // the four Analyze commands
    bool cancel_analyze_enabled = false;
    int32_t ticked_mode_command = 0;  // of the Search Mode submenu; 0 for none
    bool setup_ticked = false;
    bool clock_start_enabled = true;  // "Start" of the game clock; "Stop" has the opposite state

    bool operator==(const MenuState&) const = default;
};
MenuState menu_state(int32_t mode, bool clock_running);

// On the interface thread: hands the menu's state, or the title, to `ui`. After each change of the mode, and
// the menu after any other change that it shows.
void update_menu();
void update_title();
