#include "control/load_save.h"

#include <algorithm>
#include <cstdio>
#include <span>
#include <vector>

#include "base/text.h"
#include "control/analyze_games.h"
#include "control/game.h"
#include "control/game_commands.h"
#include "control/panes.h"
#include "control/search_thread.h"
#include "control/text_ids.h"
#include "control/ui.h"
#include "records/game_file.h"
#include "records/pdn_replay.h"
#include "records/pdn_write.h"

LoadState load_state;

namespace {

void tell_load_failure(GameFileStatus status) {
    const char* text = "Cannot allocate memory for games";
    if (status == GAME_FILE_TOO_BIG) text = "File is too big!";
    if (status == GAME_FILE_CLOSED) text = "Cannot open file for reading";
    ui.message_box(text, DEFAULT_BOX_TITLE, ICON_WARNING);
}

// The number of the game that the user wants, or -1.
int choose_game(const std::string& text, const PdnOffsets& offsets) {
    const int count = std::min(pdn_game_count(offsets), GAME_LIST_LIMIT);
    char games_read[CONTROL_TEXT_SIZE];
    get_text(TEXT_GAMES_READ, games_read, sizeof games_read);
    char status[CONTROL_TEXT_SIZE + 16];
    std::snprintf(status, sizeof status, "%d %s", count, games_read);
    show_status(status);
    const int selected = load_state.selected_game < count ? load_state.selected_game : 0;
    const int chosen = ui.choose_game(text.c_str(), offsets, count, selected);
    if (chosen < 0 || chosen >= count) return -1;
    load_state.selected_game = chosen;
    return chosen;
}

// While the user chose a game over the network may have begun, or the analysis of a file gone on to its next
// one.
bool another_game_began(uint32_t games_begun) { return game.games_begun != games_begun; }

GameHeaders headers_to_edit() {
    GameHeaders headers = game.headers;
    if (!headers.date[0]) std::snprintf(headers.date.data(), headers.date.size(), "%s", today_text().c_str());
    return headers;
}

std::vector<char> game_text(std::span<const ReplayState> history, const GameHeaders& headers,
                            const char* line_end) {
    std::vector<char> text(game_text_room(history.size()), '\0');
    game_to_pdn_text(text.data(), text.size(), history, headers, line_end);
    return text;
}

}  // namespace

bool run_file_command(int32_t id) {
    switch (id) {
        case COMMAND_PDN_HEADER:
            edit_headers_command();
            return true;
        case COMMAND_LOAD:
            load_command();
            return true;
        case COMMAND_SAVE:
            save_command();
            return true;
        default:
            return false;
    }
}

void load_command() {
    if (game.gui_mode == DXP_MODE) return;
    std::string path;
    if (ui.choose_load_file(LOAD_FILE_TITLE, path)) load_pdn_game(path);
}

void save_command() {
    const uint32_t begun = game.games_begun;
    const std::span<const ReplayState> history = users_history();
    const std::vector<ReplayState> kept(history.begin(), history.end());
    GameHeaders headers = headers_to_edit();
    if (!ui.edit_headers(headers)) return;
    if (!another_game_began(begun)) game.headers = headers;
    std::string path;
    if (!ui.choose_save_file(SAVE_FILE_TITLE, path)) return;
    // Where another one has taken its place on the board since, it is the user's that he saves.
    save_game_to_file(path, another_game_began(begun) ? std::span(kept) : users_history(), headers);
}

void edit_headers_command() {
    GameHeaders headers = headers_to_edit();
    const uint32_t begun = game.games_begun;
    if (ui.edit_headers(headers) && !another_game_began(begun)) game.headers = headers;
}

void load_pdn_game(const std::string& path) {
    if (game.gui_mode == DXP_MODE) return;
    discard_search();
    search_thread.ponder_done = false;
    search_thread.search_finished.store(0, std::memory_order_relaxed);
    reset_game_clock();
    free_analysis_games();
    std::string text;
    PdnOffsets offsets;
    const GameFileStatus status = load_game_file(path, text, offsets);
    if (status != GAME_FILE_READ) return tell_load_failure(status);
    const int chosen = choose_game(text, offsets);
    // A game over the network may have begun while the user chose, or begun and ended: its clock is not this
    // one's.
    if (chosen < 0 || game.gui_mode == DXP_MODE) return;
    reset_game_clock();
    const PdnGame list = pdn_parse_game(text.c_str() + offsets[static_cast<size_t>(chosen)]);
    pdn_game_headers(list.get(), game.headers);
    take_over_game(list.get());
    clear_highlights();
    game_text_update();
    ui.redraw_board();
}

std::vector<char> users_game_text(const char* line_end) {
    return game_text(users_history(), game.headers, line_end);
}

void save_game_to_file(const std::string& path, std::span<const ReplayState> history,
                       const GameHeaders& headers) {
    const int status = append_game_text(path, game_text(history, headers, "\n").data());
    if (status == 1)
        ui.message_box("Cannot open file for appending.", "Error", ICON_ERROR);
    else if (status == 2)
        ui.message_box("The game could not be written to the file.", "Error", ICON_ERROR);
}

void take_over_game(PdnNode* list) {
    ReplayState state;
    PdnNode* node = pdn_start_position(list, state);
    restart_history(state.position, state.side);
    while (node) {
        node = pdn_next_move(node, state);
        addto_game_history(state.position, state.side, state.setup_flag);
    }
    set_board(state.position, state.side);
}
