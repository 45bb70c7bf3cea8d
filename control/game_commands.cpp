#include "control/game_commands.h"

#include "base/clock.h"
#include "base/text.h"
#include "control/clipboard.h"
#include "control/game.h"
#include "control/game_clock.h"
#include "control/panes.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/text_ids.h"
#include "control/time_control.h"
#include "control/ui.h"

namespace {

bool in_dxp() { return game.gui_mode == DXP_MODE; }

bool step_allowed() { return is_stepping_mode(game.gui_mode); }

// To the entry that is asked for when the search has ended. True if there is one.
bool step_to(int (*entry)()) {
    discard_search();
    clear_marks();
    return move_in_game_history(entry()) == 0;
}

// The analysis follows the user through the game.
void finish_step() {
    search_thread.ponder_done = false;
    game_text_update();
    if (is_analysis_mode(game.gui_mode)) start_search();
}

// What an analysis searches is no position that the engine was asked for a move in: its result is not played.
void stop_and_set_mode(int32_t mode) {
    if (is_analyze_mode(game.gui_mode))
        discard_search();
    else
        stop_search();
    set_gui_mode(mode);
}

void begin_analysis(int32_t mode) {
    if (in_dxp()) return;
    stop_and_set_mode(mode);
    reset_game_clock();
    if (settings.use_game_clock) {
        char text[CONTROL_TEXT_SIZE], title[CONTROL_TEXT_SIZE];
        get_text(TEXT_TIME_CHANGED, text, sizeof text);
        get_text(TEXT_INFO, title, sizeof title);
        set_time_control(TIME_INFINITE);
        update_menu();
        ui.message_box(text, title, ICON_INFO);
        // A game over the network may have begun, and ended, while the box was open.
        if (game.gui_mode != mode) return;
    }
    start_search();
}

struct CommandRow {
    int32_t id;
    void (*run)();
};
constexpr CommandRow COMMANDS[] = {
    {COMMAND_NEW_GAME, new_game_command},
    {COMMAND_SEARCH_BUTTON, search_button_command},
    {COMMAND_BACK_TO_START, back_to_start_command},
    {COMMAND_BACK, back_command},
    {COMMAND_FORWARD, forward_command},
    {COMMAND_FORWARD_TO_END, forward_to_end_command},
    {COMMAND_CHANGE_SIDE, change_side_command},
    {COMMAND_SETUP, setup_command},
    {COMMAND_CLEAR_BOARD, clear_board_command},
    {COMMAND_PASTE, paste_command},
    {COMMAND_COPY_GAME, copy_game_command},
    {COMMAND_COPY_POSITION, copy_position_command},
    {COMMAND_NORMAL, normal_command},
    {COMMAND_ANALYSIS, analysis_command},
    {COMMAND_TWO_PLAYERS, two_players_command},
    {COMMAND_AUTOPLAY, autoplay_command},
    {COMMAND_CLOCK_START, clock_start_command},
    {COMMAND_CLOCK_STOP, clock_stop_command},
    {COMMAND_CLOCK_RESET, clock_reset_command},
    {COMMAND_PONDERING, pondering_command},
    {COMMAND_ANALYSIS_ALLSCORES, analysis_allscores_command},
    {COMMAND_CANCEL_ANALYZE, cancel_analyze_command},
};

void run_clock_command(ClockAction action) {
    clock_command(action, game.gui_mode == NORMAL_MODE || in_dxp(), engine_time_runs(), clock_ms());
    update_menu();
}

}  // namespace

bool run_game_command(int32_t id) {
    for (const CommandRow& row : COMMANDS) {
        if (row.id != id) continue;
        row.run();
        return true;
    }
    if (id == TIME_GAME_CLOCK || !time_menu_row(id)) return false;
    time_command(id);
    return true;
}

void reset_game_clock() { run_clock_command(CLOCK_RESET); }

void new_game_command() {
    if (in_dxp()) return;
    discard_search();
    reset_game_clock();
    new_game();
    show_status(TEXT_NEW_GAME);
    clear_highlights();
    ui.redraw_board();
}

void search_button_command() {
    SearchThread& t = search_thread;
    const bool waits = t.start_waits;
    clear_marks();
    // An analysis that waits for the search before it is not wanted either.
    if (is_analysis_mode(game.gui_mode)) t.start_waits = false;
    if (real_search_runs()) {
        t.stop_flag.store(1, std::memory_order_relaxed);
    } else if (waits) {
        return;
    } else if (game.gui_mode == NORMAL_MODE && t.searching.load(std::memory_order_acquire)) {
        charge_user_time(clock_ms());
        restart_search();
    } else if (game.gui_mode == NORMAL_MODE) {
        start_search();
    } else if (is_analysis_mode(game.gui_mode)) {
        start_search();
    }
}

void back_to_start_command() {
    if (!step_allowed()) return;
    step_to([] { return 1; });
    finish_step();
}

void back_command() {
    if (!step_allowed()) return;
    if (step_to([] { return game.history_count - 1; })) count_step_back(game.board_side);
    finish_step();
}

void forward_command() {
    if (!step_allowed()) return;
    if (step_to([] { return game.history_count + 1; })) count_step_forward(game.board_side);
    finish_step();
}

void forward_to_end_command() {
    if (!step_allowed()) return;
    step_to([] { return game.history_last; });
    finish_step();
}

void change_side_command() {
    if (in_dxp() || search_thread.searching.load(std::memory_order_acquire)) return;
    set_board(game.board, game.board_side ^ 1);
    restart_from_board();
    search_thread.ponder_done = false;
}

void setup_command() {
    if (in_dxp()) return;
    if (game.gui_mode == SETUP_MODE) {
        set_gui_mode(NORMAL_MODE);
        clear_marks();
        return;
    }
    stop_and_set_mode(SETUP_MODE);
    clear_marks();
}

void clear_board_command() {
    if (in_dxp()) return;
    discard_search();
    set_gui_mode(SETUP_MODE);
    clear_highlights();
    set_board(Position{}, game.board_side);
    restart_from_board();
    ui.redraw_board();
}

void paste_command() {
    if (in_dxp()) return;
    discard_search();
    paste_from_clipboard();
    reset_game_clock();
    clear_marks();
}

void copy_game_command() { copy_game_to_clipboard(); }

void copy_position_command() { copy_position_to_clipboard(); }

void normal_command() {
    if (!in_dxp()) stop_and_set_mode(NORMAL_MODE);
}

void two_players_command() {
    if (!in_dxp()) stop_and_set_mode(TWO_PLAYERS_MODE);
}

void analysis_command() { begin_analysis(ANALYSIS_MODE); }

void analysis_allscores_command() { begin_analysis(ANALYSIS_ALLSCORES_MODE); }

void autoplay_command() {
    if (in_dxp()) return;
    stop_and_set_mode(AUTOPLAY_MODE);
    start_search();
}

// The position that was analysed is no move of the user's, which the engine would answer: its search is
// thrown away.
void cancel_analyze_command() {
    discard_search();
    set_gui_mode(NORMAL_MODE);
}

void clock_start_command() { run_clock_command(CLOCK_START); }

void clock_stop_command() { run_clock_command(CLOCK_STOP); }

void clock_reset_command() { run_clock_command(CLOCK_RESET); }

void pondering_command() {
    settings.pondering_on = !settings.pondering_on;
    update_menu();
}

void time_command(int32_t id) {
    if (in_dxp()) return;
    set_time_control(id);
    update_menu();
}
