#include "shell/qt/menu_state.h"

#include <algorithm>
#include <array>

#include "control/analyze_games.h"
#include "control/game_commands.h"
#include "control/settings.h"
#include "control/time_control.h"
#include "shell/languages.h"
#include "shell/menu.h"
#include "shell/qt/dxp_commands.h"

namespace {

struct PaneRow {
    int32_t id;
    ChildWindow pane;
};
constexpr std::array<PaneRow, CHILD_WINDOWS> PANE_COMMANDS{{
    {COMMAND_CLOCK_WINDOW, CLOCK_WINDOW},
    {COMMAND_GAME_WINDOW, GAME_WINDOW},
    {COMMAND_STATUS_WINDOW, STATUS_WINDOW},
    {COMMAND_PONDER_WINDOW, PONDER_WINDOW},
    {COMMAND_DXP_WINDOW, DXP_WINDOW},
}};

struct BookRow {
    int32_t id;
    int32_t mode;
};
constexpr std::array<BookRow, 4> BOOK_COMMANDS{{
    {COMMAND_BOOK_BEST, 3},
    {COMMAND_BOOK_GOOD, 2},
    {COMMAND_BOOK_ALL, 1},
    {COMMAND_BOOK_OFF, 0},
}};

constexpr std::array<int32_t, 5> MODE_COMMANDS = {
    COMMAND_NORMAL, COMMAND_ANALYSIS, COMMAND_ANALYSIS_ALLSCORES, COMMAND_TWO_PLAYERS, COMMAND_AUTOPLAY};

template <size_t N>
bool is_one_of(const std::array<int32_t, N>& ids, int32_t id) {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

bool is_language_command(int32_t id) {
    return std::any_of(language_table.begin(), language_table.end(),
                       [id](const Language& language) { return language.id == id; });
}

// The settings that are on or off; null for other commands.
const uint8_t* byte_setting(int32_t id) {
    if (id == COMMAND_SAVE_ON_EXIT) return &settings.save_on_exit;
    if (id == COMMAND_SQUARE_NUMBERS) return &settings.square_numbers;
    return nullptr;
}

const int32_t* word_setting(int32_t id) {
    switch (id) {
        case COMMAND_INVERT_BOARD:
            return &settings.board_inverted;
        case COMMAND_SOUND:
            return &settings.sound_on;
        case COMMAND_PONDERING:
            return &settings.pondering_on;
        default:
            return nullptr;
    }
}

bool is_background_command(int32_t id) {
    return id == COMMAND_BACKGROUND_WHITE || id == COMMAND_BACKGROUND_GRAY;
}

}  // namespace

int pane_of_command(int32_t id) {
    for (const PaneRow& row : PANE_COMMANDS)
        if (row.id == id) return row.pane;
    return -1;
}

int32_t command_of_pane(int pane) {
    for (const PaneRow& row : PANE_COMMANDS)
        if (row.pane == pane) return row.id;
    return 0;
}

int32_t book_mode_of_command(int32_t id) {
    for (const BookRow& row : BOOK_COMMANDS)
        if (row.id == id) return row.mode;
    return -1;
}

bool command_has_tick(int32_t id) {
    return byte_setting(id) || word_setting(id) || pane_of_command(id) >= 0 || id == COMMAND_SETUP ||
           command_is_choice(id);
}

bool command_is_choice(int32_t id) {
    return book_mode_of_command(id) >= 0 || is_background_command(id) || is_language_command(id) ||
           is_one_of(MODE_COMMANDS, id) || time_menu_row(id);
}

bool command_is_ticked(int32_t id, const MenuState& state) {
    if (const uint8_t* const setting = byte_setting(id)) return *setting != 0;
    if (const int32_t* const setting = word_setting(id)) return *setting != 0;
    if (const int pane = pane_of_command(id); pane >= 0) return settings.child_windows[pane].visible != 0;
    if (const int32_t mode = book_mode_of_command(id); mode >= 0) return settings.book_mode == mode;
    if (is_background_command(id)) return (settings.background_kind != 0) == (id == COMMAND_BACKGROUND_GRAY);
    if (is_language_command(id)) return settings2.language_id == id;
    if (is_one_of(MODE_COMMANDS, id)) return state.ticked_mode_command == id;
    if (id == COMMAND_SETUP) return state.setup_ticked;
    return time_menu_row(id) && settings.time_menu_id == id;
}

bool command_is_enabled(int32_t id, const MenuState& state) {
    switch (id) {
        case COMMAND_ANALYZE_GAME:
        case COMMAND_ANALYZE_PDN:
        case COMMAND_ANALYZE_GAME_ALLSCORES:
        case COMMAND_ANALYZE_PDN_ALLSCORES:
            return state.analyze_enabled;
        case COMMAND_CANCEL_ANALYZE:
            return state.cancel_analyze_enabled;
        case COMMAND_CLOCK_START:
            return state.clock_start_enabled;
        case COMMAND_CLOCK_STOP:
            return !state.clock_start_enabled;
        default:
            return !is_dxp_command(id) || dxp_command_is_enabled(id);
    }
}
