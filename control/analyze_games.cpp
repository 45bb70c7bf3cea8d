#include "control/analyze_games.h"

#include <cstdio>
#include <new>
#include <utility>

#include "base/files.h"
#include "base/program_paths.h"
#include "base/text.h"
#include "control/game.h"
#include "control/game_clock.h"
#include "control/game_commands.h"
#include "control/load_save.h"
#include "control/mode_hooks.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/text_ids.h"
#include "control/time_control.h"
#include "control/ui.h"
#include "records/pdn_write.h"

Analysis analysis;
AnalysisOutput analysis_output = file_analysis_output();

namespace {

void show_box(int text_id, const char* title, MessageIcon icon) {
    char text[CONTROL_TEXT_SIZE];
    get_text(text_id, text, sizeof text);
    ui.message_box(text, title, icon);
}

void show_titled_box(int text_id, int title_id, MessageIcon icon) {
    char title[CONTROL_TEXT_SIZE];
    get_text(title_id, title, sizeof title);
    show_box(text_id, title, icon);
}

bool analyze_enabled() {
    return menu_state(game.gui_mode, clock_state.clock_running.load(std::memory_order_relaxed))
        .analyze_enabled;
}

void drop_search() {
    // A result that nobody has seen is forgotten.
    search_thread.search_finished.store(0, std::memory_order_relaxed);
    discard_search();
    reset_game_clock();
    clear_marks();
}

// False if the user has to choose another time first, which he has been told.
bool has_fixed_time() {
    if (settings.use_game_clock)
        show_titled_box(TEXT_SELECT_FIXED_TIME, TEXT_SETTINGS_CONFLICT, ICON_WARNING);
    else if (settings.time_menu_id == TIME_INFINITE)
        show_titled_box(TEXT_TIME_IS_INFINITE, TEXT_SETTINGS_CONFLICT, ICON_WARNING);
    else
        return true;
    return false;
}

PdnNode* current_game() {
    return analysis.analysis_games[static_cast<size_t>(analysis.analysis_game_index)].get();
}

void show_state() {
    game_text_update();
    ui.redraw_board();
}

// The board and the history become the start of the game at the index; a kept game stays kept.
void enter_game() {
    Analysis& a = analysis;
    a.analysis_prev_node = nullptr;
    a.analysis_next_node = pdn_start_position(current_game(), a.analysis_state);
    // Whose game is on the board then, so are the headers; the board's own game has them.
    if (game.kept_last == 0) pdn_game_headers(current_game(), game.headers);
    set_board(a.analysis_state.position, a.analysis_state.side);
    const int32_t kept = game.kept_last;
    restart_history(a.analysis_state.position, a.analysis_state.side);
    game.kept_last = kept;
}

// It alone is to be analysed. Without memory there is no game.
void take_game_of_the_board() {
    free_analysis_games();
    try {
        PdnTable games(2);  // the second ends the table
        games[0] = game_to_pdn_list(whole_history(), game.headers);
        if (games[0]) analysis.analysis_games = std::move(games);
    } catch (const std::bad_alloc&) {
        return;
    }
}

std::string output_path() {
    return program_paths.data_folder + "analysis" + program_paths.instance_suffix + ".txt";
}

void finish_output() {
    if (analysis.write_failed)
        show_box(TEXT_GAME_NOT_WRITTEN, DEFAULT_BOX_TITLE, ICON_ERROR);
    else
        ui.open_file(analysis.analysis_path.c_str());
}

void begin_analysis() {
    Analysis& a = analysis;
    if (pdn_game_count(a.analysis_games) == 0) return set_gui_mode(NORMAL_MODE);
    mode_hooks.analysis_step = analysis_step;
    a.analysis_game_index = 0;
    a.analysis_path = output_path();
    a.write_failed = false;
    analysis_output.begin();
    enter_game();
    show_state();
    start_search();
}

// The text of the search in braces; empty without memory.
PdnGame make_search_comment() {
    try {
        std::string comment = "{";
        comment.append(search_text()).append("}");
        return pdn_make_comment(comment.c_str());
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

PdnNode* last_node(PdnNode* node) {
    while (node->next) node = node->next;
    return node;
}

PdnNode* node_before(PdnNode* list, const PdnNode* node) {
    while (list->next != node) list = list->next;
    return list;
}

// Where the comment on the position before `next` belongs: behind the move that is played from it. A position
// that is set up next is no such move, and the comment stays with the move that led here.
PdnNode* place_of_comment(PdnNode* next) {
    const PdnNode* const previous = analysis.analysis_prev_node;
    if (next->kind == PDN_EMBEDDED_FEN && previous && previous->kind == PDN_MOVE)
        return node_before(current_game(), next);
    return next;
}

// A game ends for the analysis at a step that cannot be made, and those behind it are no part of it.
void drop_steps_behind(PdnNode* node) {
    while (node->next && !pdn_is_step(*node->next)) node = node->next;
    const PdnGame dropped(std::exchange(node->next, nullptr));
}

void play_next_node(PdnGame comment) {
    Analysis& a = analysis;
    PdnNode* const next = a.analysis_next_node;
    pdn_insert_after(place_of_comment(next), std::move(comment));
    a.analysis_prev_node = next;
    a.analysis_next_node = pdn_next_move(next, a.analysis_state);
    if (!a.analysis_next_node) drop_steps_behind(next);
    set_board(a.analysis_state.position, a.analysis_state.side);
    addto_game_history(a.analysis_state.position, a.analysis_state.side, a.analysis_state.setup_flag);
}

// Writes the game and enters the next one. False if it was the last.
bool finish_game(PdnGame comment) {
    Analysis& a = analysis;
    pdn_insert_after(last_node(current_game()), std::move(comment));
    const uint32_t new_file = a.analysis_game_index == 0 ? PDN_NEW_FILE : 0;
    analysis_output.write_game(a.analysis_games, PDN_COMMENT_LINES | new_file, a.analysis_game_index);
    a.analysis_prev_node = nullptr;
    if (++a.analysis_game_index >= pdn_game_count(a.analysis_games)) {
        set_gui_mode(NORMAL_MODE);
        analysis_output.finish();
        return false;
    }
    enter_game();
    return true;
}

}  // namespace

AnalysisOutput file_analysis_output() {
    AnalysisOutput output{};
    output.begin = [] { std::remove(analysis.analysis_path.c_str()); };
    output.write_game = [](const PdnTable& games, uint32_t flags, int index) {
        if (pdn_write_games(analysis.analysis_path, games, flags, index) != 0) analysis.write_failed = true;
    };
    output.finish = finish_output;
    output.replaces = [](const std::string& path) { return same_file(path, output_path()); };
    return output;
}

bool run_analyze_command(int32_t id) {
    switch (id) {
        case COMMAND_ANALYZE_GAME:
        case COMMAND_ANALYZE_GAME_ALLSCORES:
            analyze_game_command(id == COMMAND_ANALYZE_GAME_ALLSCORES);
            return true;
        case COMMAND_ANALYZE_PDN:
        case COMMAND_ANALYZE_PDN_ALLSCORES:
            analyze_pdn_command(id == COMMAND_ANALYZE_PDN_ALLSCORES);
            return true;
        default:
            return false;
    }
}

void analyze_game_command(bool all_scores) {
    if (!analyze_enabled()) return;
    drop_search();
    if (game.history_last <= 1) {
        set_gui_mode(NORMAL_MODE);
        return show_titled_box(TEXT_NO_GAME_MOVES, TEXT_INFO, ICON_INFO);
    }
    if (!has_fixed_time()) return;
    set_gui_mode(all_scores ? ANALYZE_GAME_ALLSCORES_MODE : ANALYZE_GAME_MODE);
    take_game_of_the_board();
    keep_game();
    begin_analysis();
}

void analyze_pdn_command(bool all_scores) {
    if (!analyze_enabled()) return;
    drop_search();
    if (!has_fixed_time()) return;
    std::string path;
    // A game over the network may have begun while the user chose, or begun and ended: with a clock of its
    // own.
    if (!ui.choose_load_file(LOAD_FILE_TITLE, path) || !analyze_enabled()) return;
    drop_search();
    if (!has_fixed_time()) return;
    free_analysis_games();
    if (file_size(path) < 0 || !can_read_file(path) || analysis_output.replaces(path))
        return show_box(TEXT_CANNOT_OPEN_PDN, DEFAULT_BOX_TITLE, ICON_WARNING);
    if (pdn_read_file(path, analysis.analysis_games) != 0)
        return show_box(TEXT_ERROR_PARSING_PDN, DEFAULT_BOX_TITLE, ICON_WARNING);
    set_gui_mode(all_scores ? ANALYZE_PDN_ALLSCORES_MODE : ANALYZE_PDN_MODE);
    begin_analysis();
}

void analysis_step() {
    // A load in between has taken the games away.
    if (pdn_game_count(analysis.analysis_games) == 0) return;
    PdnGame comment = make_search_comment();
    if (!comment) {
        set_gui_mode(NORMAL_MODE);
        return ui.message_box("Cannot allocate memory from heap!", DEFAULT_BOX_TITLE, ICON_ERROR);
    }
    if (analysis.analysis_next_node)
        play_next_node(std::move(comment));
    else if (!finish_game(std::move(comment)))
        return;
    show_state();
    start_search();
}

void free_analysis_games() {
    pdn_free_games(analysis.analysis_games);
    analysis.analysis_game_index = 0;
    analysis.analysis_prev_node = nullptr;
    analysis.analysis_next_node = nullptr;
}
