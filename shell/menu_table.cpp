// The built-in menu. Language files count the pop-ups in this order, depth first, so a new one changes the
// numbers of those behind it.
#include <utility>

#include "control/analyze_games.h"
#include "control/game_commands.h"
#include "control/load_save.h"
#include "control/time_control.h"
#include "shell/languages.h"
#include "shell/menu.h"

namespace {

using Items = std::vector<MenuItem>;

MenuItem separator() { return {}; }

MenuItem popup(const char* text, Items items) { return {MENU_POPUP, text, std::move(items)}; }

Items search_mode_items() {
    return {
        {COMMAND_NORMAL, "Normal", {}},
        {COMMAND_ANALYSIS, "Analysis", {}},
        {COMMAND_ANALYSIS_ALLSCORES, "Analysis allscores", {}},
        {COMMAND_TWO_PLAYERS, "2 Players", {}},
        {COMMAND_AUTOPLAY, "Autoplay", {}},
    };
}

Items analyze_items() {
    return {
        {COMMAND_ANALYZE_GAME, "Analyze game", {}},
        {COMMAND_ANALYZE_GAME_ALLSCORES, "Analyze game allscores", {}},
        separator(),
        {COMMAND_ANALYZE_PDN, "Analyze PDN...", {}},
        {COMMAND_ANALYZE_PDN_ALLSCORES, "Analyze PDN allscores...", {}},
        separator(),
        {COMMAND_CANCEL_ANALYZE, "Cancel Analyze", {}},
    };
}

Items dxp_items() {
    return {
        {COMMAND_DXP_CONNECT, "Make DXP connection...", {}},
        {COMMAND_DXP_WAIT, "Wait for DXP connection", {}},
        {COMMAND_DXP_TERMINATE, "Terminate connection", {}},
        separator(),
        {COMMAND_START_MATCH, "Start match...", {}},
        {COMMAND_START_MATCH_AUTOCONNECT, "Start match autoconnect", {}},
    };
}

Items game_items() {
    return {
        {COMMAND_NEW_GAME, "&New Game", {}},
        separator(),
        {COMMAND_LOAD, "Load...", {}},
        {COMMAND_SAVE, "Save...", {}},
        {COMMAND_PDN_HEADER, "PDN header...", {}},
        separator(),
        {COMMAND_BACK_TO_START, "Back to start", {}},
        {COMMAND_BACK, "Back one move", {}},
        {COMMAND_FORWARD, "Forward one move", {}},
        {COMMAND_FORWARD_TO_END, "Forward to end", {}},
        separator(),
        popup("Search Mode", search_mode_items()),
        popup("Analyze", analyze_items()),
        popup("DamExchange", dxp_items()),
        separator(),
        {COMMAND_EXIT, "E&xit", {}},
    };
}

Items edit_items() {
    return {
        {COMMAND_COPY_GAME, "Copy Game to Clipboard\tCtrl+C", {}},
        {COMMAND_COPY_POSITION, "Copy Position to Clipboard\tAlt+C", {}},
        {COMMAND_PASTE, "Paste from Clipboard", {}},
        separator(),
        {COMMAND_SETUP, "Setup Mode", {}},
        {COMMAND_CLEAR_BOARD, "Clear Board", {}},
        {COMMAND_CHANGE_SIDE, "Change color of side to move", {}},
    };
}

// The fixed times first, then what belongs to the game clock.
Items time_items() {
    Items items;
    for (const TimeMenuRow& row : time_menu) {
        if (row.id == TIME_GAME_CLOCK) items.push_back(separator());
        items.push_back({row.id, row.text, {}});
    }
    items.push_back({COMMAND_CLOCK_START, "Start", {}});
    items.push_back({COMMAND_CLOCK_STOP, "Stop", {}});
    items.push_back({COMMAND_CLOCK_RESET, "Reset", {}});
    return items;
}

Items book_items() {
    return {
        {COMMAND_BOOK_BEST, "Best moves", {}},
        {COMMAND_BOOK_GOOD, "Good moves", {}},
        {COMMAND_BOOK_ALL, "All kinds of moves", {}},
        {COMMAND_BOOK_OFF, "Off", {}},
    };
}

Items language_items() {
    Items items;
    for (const Language& language : language_table) items.push_back({language.id, language.name, {}});
    return items;
}

Items options_items() {
    return {
        popup("Opening book", book_items()),
        {COMMAND_DATABASE_OPTIONS, "Endgame db and Hashtable...", {}},
        {COMMAND_PARALLEL_SEARCH, "Parallel search...", {}},
        {COMMAND_PONDERING, "Pondering", {}},
        separator(),
        {COMMAND_SOUND, "Sound", {}},
        {COMMAND_SQUARE_NUMBERS, "Square Numbers", {}},
        {COMMAND_INVERT_BOARD, "Invert Board\tCtrl+I", {}},
        popup("Language", language_items()),
        separator(),
        {COMMAND_SAVE_SETTINGS, "Save settings now", {}},
        {COMMAND_SAVE_ON_EXIT, "Save settings on exit", {}},
        {COMMAND_RESET_SETTINGS, "Reset settings to default", {}},
        separator(),
        {COMMAND_TEST_EVAL, "Test eval", {}},
        {COMMAND_TEST_MOVE_GENERATOR, "Test move generator", {}},
        {COMMAND_TEST_INDEXING, "Test indexing", {}},
    };
}

Items background_items() {
    return {
        {COMMAND_BACKGROUND_WHITE, "White", {}},
        {COMMAND_BACKGROUND_GRAY, "Dialog gray", {}},
    };
}

Items window_items() {
    return {
        {COMMAND_CLOCK_WINDOW, "Clock", {}},
        {COMMAND_PONDER_WINDOW, "Ponder", {}},
        {COMMAND_STATUS_WINDOW, "Status", {}},
        {COMMAND_DXP_WINDOW, "DamExchange", {}},
        {COMMAND_GAME_WINDOW, "Game", {}},
        separator(),
        {COMMAND_FONT, "Font...", {}},
        popup("Background", background_items()),
        separator(),
        {COMMAND_RESET_WINDOWS, "Reset windows", {}},
    };
}

Items help_items() {
    return {
        {COMMAND_HELP, "Tessarin Help", {}},
        separator(),
        {COMMAND_ABOUT, "About Tessarin", {}},
    };
}

}  // namespace

std::vector<MenuItem> built_in_menu() {
    return {
        popup("&Game", game_items()),      popup("Edit", edit_items()),     popup("Time", time_items()),
        popup("Options", options_items()), popup("Window", window_items()), popup("Help", help_items()),
    };
}
