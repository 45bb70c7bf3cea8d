#include "shell/qt/commands.h"

#include <QMetaObject>
#include <algorithm>
#include <array>

#include "control/analyze_games.h"
#include "control/database_settings.h"
#include "control/game.h"
#include "control/game_commands.h"
#include "control/load_save.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/time_control.h"
#include "control/ui.h"
#include "shell/languages.h"
#include "shell/menu.h"
#include "shell/qt/dialogs.h"
#include "shell/qt/dxp_commands.h"
#include "shell/qt/interface_thread.h"
#include "shell/qt/main_window.h"
#include "shell/qt/menu_state.h"
#include "shell/qt/toolkit_texts.h"
#include "shell/settings_store.h"

namespace {

// A queued close is like one by the window's own button.
void exit_command() { QMetaObject::invokeMethod(main_window, &QWidget::close, Qt::QueuedConnection); }

void save_settings_command() {
    if (save_settings() != 0)
        ui.message_box("The settings could not be saved.", DEFAULT_BOX_TITLE, ICON_WARNING);
}

void reset_settings_command() {
    if (game.gui_mode == DXP_MODE) return;
    int status = 0;
    if (discard_search()) {
        status = reset_settings();
    } else {
        // What the search that has not come back uses stays as it is; the next one follows.
        default_settings();
        reinit_wld = true;
        reinit_mtc = true;
    }
    set_time_control(settings.time_menu_id);
    clear_highlights();
    main_window->follow_pane_settings();
    main_window->arrange();
    ui.redraw_board();
    if (status != 0)
        ui.message_box("Cannot allocate memory for the hashtable.", DEFAULT_BOX_TITLE, ICON_ERROR);
}

void reset_windows_command() {
    reset_window_settings(settings);
    main_window->follow_pane_settings();
    main_window->arrange();
}

void font_command() {
    if (font_dialog(main_window)) main_window->follow_pane_settings();
}

void background_command(bool gray) {
    settings.background_kind = gray;
    main_window->follow_pane_settings();
}

void game_time_command() {
    if (game.gui_mode != DXP_MODE) game_time_dialog(main_window);
}

struct CommandRow {
    int32_t id;
    void (*run)();
};
constexpr std::array<CommandRow, 16> WINDOW_COMMANDS{{
    {COMMAND_EXIT, exit_command},
    {COMMAND_INVERT_BOARD,
     [] {
         settings.board_inverted = !settings.board_inverted;
         ui.redraw_board();
     }},
    {COMMAND_HELP, [] { open_help(main_window); }},
    {COMMAND_ABOUT, [] { about_box(main_window); }},
    {COMMAND_RESET_SETTINGS, reset_settings_command},
    {COMMAND_SOUND, [] { settings.sound_on = !settings.sound_on; }},
    {TIME_GAME_CLOCK, game_time_command},
    {COMMAND_PARALLEL_SEARCH, [] { parallel_search_dialog(main_window); }},
    {COMMAND_DATABASE_OPTIONS, [] { databases_dialog(main_window); }},
    {COMMAND_RESET_WINDOWS, reset_windows_command},
    {COMMAND_SAVE_SETTINGS, save_settings_command},
    {COMMAND_SAVE_ON_EXIT, [] { settings.save_on_exit = !settings.save_on_exit; }},
    {COMMAND_FONT, font_command},
    {COMMAND_BACKGROUND_WHITE, [] { background_command(false); }},
    {COMMAND_BACKGROUND_GRAY, [] { background_command(true); }},
    {COMMAND_SQUARE_NUMBERS,
     [] {
         settings.square_numbers = !settings.square_numbers;
         ui.redraw_board();
     }},
}};

void change_language(int32_t id) {
    choose_language(id);
    follow_language();
}

// False if the id is none of the windows' own.
bool run_window_command(int32_t id) {
    for (const CommandRow& row : WINDOW_COMMANDS) {
        if (row.id != id) continue;
        row.run();
        return true;
    }
    if (const int pane = pane_of_command(id); pane >= 0) {
        main_window->show_pane(static_cast<ChildWindow>(pane), settings.child_windows[pane].visible == 0);
        return true;
    }
    if (const int32_t mode = book_mode_of_command(id); mode >= 0) {
        settings.book_mode = mode;
        return true;
    }
    const bool language = std::any_of(language_table.begin(), language_table.end(),
                                      [id](const Language& row) { return row.id == id; });
    if (language) change_language(id);
    return language;
}

}  // namespace

void run_command(int32_t id) {
    if (!main_window || interface_pauses()) return;
    // What the command tells takes its place in the status line.
    main_window->board_window().board().forget_typed();
    const QAction* const action = command_action(main_window->menu(), id);
    const bool known = (!action || action->isEnabled()) &&
                       (run_game_command(id) || run_file_command(id) || run_analyze_command(id) ||
                        run_dxp_command(id) || run_window_command(id));
    // The tick of the action has changed by itself; what is in force decides.
    if (known) update_menu();
}

void before_close() {
    if (settings.save_on_exit) save_settings_command();
}

void follow_language() {
    translate_menu(main_menu);
    follow_toolkit_language();
    main_window->follow_language();
    update_menu();
}
