#include "control/game_flow.h"

#include "base/clock.h"
#include "control/game.h"
#include "control/game_clock.h"
#include "control/mode_hooks.h"
#include "control/panes.h"
#include "control/search_phase.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/text_ids.h"
#include "control/ui.h"
#include "core/capture_lines.h"
#include "core/notation.h"

namespace {

constexpr int USER_MOVE_PAUSE_MS = 150;
constexpr int ENGINE_MOVE_PAUSE_MS = 500;
constexpr int MAX_DECLARED_DRAW_PIECES = 6;
constexpr const char* START_SOUND = "start.wav";

// With the same side to move: the same pieces with the other one to move are another position.
bool searched_position_is_on_board() {
    return search_thread.search_side == game.board_side &&
           same_pieces(search_thread.search_position, game.board);
}

// The engine answers the user's move. True if the search or its result was there already, or was in the way:
// the board then is drawn and nothing is left to show.
bool answer_user_move() {
    SearchThread& t = search_thread;
    charge_user_time(clock_ms());
    const bool searching = t.searching.load(std::memory_order_acquire) != 0;
    // A search that a command has given up has no answer.
    const bool predicted = searched_position_is_on_board() && !t.this_search_aborted;
    if (searching && t.pondering.load(std::memory_order_relaxed) && predicted) {
        change_ponder_to_normal_search();
        ui.redraw_board();
        ui.post_search_picture(PICTURE_STOP);
        return true;
    }
    if (searching) {
        restart_search();
        return true;
    }
    if (t.ponder_done && predicted) {
        ui.redraw_board();
        t.pondering.store(0, std::memory_order_relaxed);
        search_done(4);
        return true;
    }
    start_search();
    return false;
}

void follow_user_move() {
    if (search_thread.searching.load(std::memory_order_acquire)) stop_search();
    start_search();
}

void tell_database_failure() {
    if (mode_hooks.egdb_state() != EGDB_FAILED || !settings.wld_enable) return;
    ui.message_box(
        "Tessarin is not using an endgame database, but you have this Enabled in the Options Menu.  If you "
        "were expecting an endgame db to be used, then you should check your settings under the menu "
        "Options, Endgame db and hashtable. You may have the wrong \"Directory\" entered, or your machine "
        "may not have enough RAM for the Cache size and Hashtable size you entered.",
        "Error", ICON_ERROR);
}

// The move from the searched position to the result; `lines` is room for the paths of captures.
EngineMove find_engine_move(CaptureLines& lines) {
    const SearchThread& t = search_thread;
    EngineMove move;
    move.side = t.search_side;
    MoveList list;
    uint64_t from = 0, to = 0;
    if (generate_capture_lines(t.search_position, list, t.search_side, lines) > 0) {
        const int index = find_move(list, t.search_result);
        if (index < 0) ui.message_box("Cannot match moves on return from search.", "Error", ICON_ERROR);
        move.index = index < 0 ? 0 : index;
        move.lines = &lines;
        move.jumps = lines[static_cast<size_t>(move.index)].length;
        move_step_squares(move.jumps, move.index, t.search_side, t.search_position, list, lines, from, to);
    } else {
        const uint64_t before = pieces_of(t.search_position, t.search_side);
        const uint64_t after = pieces_of(t.search_result, t.search_side);
        from = before & ~after;
        to = after & ~before;
    }
    move.from = square_number(from);
    move.to = square_number(to);
    return move;
}

// Makes the engine's move on the board.
void make_engine_move(const EngineMove& move) {
    const bool shown = game.gui_mode != DXP_MODE;
    count_engine_move(clock_ms());
    if (shown) {
        clear_highlights();
        add_highlight(move.from);
        add_highlight(move.to);
    }
    const int side = search_thread.search_side ^ 1;
    set_board(position_after(search_thread.search_result, side), side);
    addto_game_history(game.board, side, 0);
    game_text_update();
    if (shown) ui.redraw_board();
}

// In AUTOPLAY_MODE: the next move, or the end. A position without a move, and one that is none, end it.
void go_on_playing(bool moved) {
    MoveList list;
    const bool few_pieces = bit_count(game.board.black | game.board.white) <= MAX_DECLARED_DRAW_PIECES;
    if (!moved || generate_moves(game.board, list, game.board_side) == 0) {
        set_gui_mode(NORMAL_MODE);
        show_status(TEXT_GAME_OVER);
    } else if (game.game_result_code == GAME_DRAW && few_pieces) {
        set_gui_mode(NORMAL_MODE);
        show_status(TEXT_DRAW_DECLARED);
    } else {
        start_search();
    }
}

// The search of a playing mode has chosen a move, or found none. Where the side to move has none, or the
// position is no legal one, the engine gives the position back: then nothing is played, and only the game's
// result may have to be told to the other side.
void play_search_result() {
    SearchThread& t = search_thread;
    // What waited for the end of this search was to bring the move that it has found.
    t.start_waits = false;
    const bool moved = t.search_result != move_to(t.search_position);
    game.game_result_code =
        game_result(t.search_position, t.search_side, t.search_value, t.search_searched != 0);
    CaptureLines lines;
    EngineMove move;
    move.side = t.search_side;
    if (moved) {
        move = find_engine_move(lines);
        make_engine_move(move);
    }
    if (game.gui_mode == DXP_MODE) {
        const bool told = moved || game.game_result_code != GAME_GOES_ON;
        if (told && mode_hooks.dxp_send_move(move) == 0 && moved) start_ponder_search();
    } else {
        if (moved) start_ponder_search();
        ui.pause(ENGINE_MOVE_PAUSE_MS);
    }
    clear_highlights();
    ui.redraw_board();
    if (game.gui_mode == AUTOPLAY_MODE) go_on_playing(moved);
}

void keep_ponder_result() {
    SearchThread& t = search_thread;
    t.ponder_done = true;
    full_move_text(t.search_position, t.search_result, t.search_side, t.ponder_result_text);
}

}  // namespace

void user_move_made() {
    addto_game_history(game.board, game.board_side, 0);
    ui.set_side_button(game.board_side);
    game_text_update();
    ui.redraw_board();
    clear_highlights();
    if (game.gui_mode == NORMAL_MODE) {
        if (answer_user_move()) return;
    } else if (is_analysis_mode(game.gui_mode)) {
        follow_user_move();
    }
    ui.pause(USER_MOVE_PAUSE_MS);
    ui.redraw_board();
}

int make_user_move(int index) {
    MoveList list;
    generate_moves(game.board, list, game.board_side);
    if (index < 0 || index >= list.count) return 1;
    game.board_side ^= 1;
    game.board = position_after(list[index], game.board_side);
    user_move_made();
    return 0;
}

bool user_may_move() {
    const SearchThread& t = search_thread;
    if (game.gui_mode == AUTOPLAY_MODE || game.gui_mode == DXP_MODE || is_analyze_mode(game.gui_mode))
        return false;
    if (game.gui_mode != NORMAL_MODE) return true;
    // The engine has the move until its result has been seen.
    if (t.start_waits) return false;
    if (t.pondering.load(std::memory_order_relaxed)) return true;
    const bool result_waits = t.search_finished.load(std::memory_order_acquire) && !t.this_search_aborted;
    return !t.searching.load(std::memory_order_acquire) && !result_waits;
}

void search_done(int) {
    SearchThread& t = search_thread;
    t.search_finished.store(0, std::memory_order_relaxed);
    check_search_phase("search_done runs", {0, 0, 1});
    const bool pondered = t.pondering.load(std::memory_order_relaxed) != 0;
    // A hit at the moment when the ponder search ended has set the other picture behind its back.
    if (!pondered) ui.post_search_picture(PICTURE_GO);
    const uint32_t search = t.searches_started;
    tell_database_failure();
    // A game over the network that began while the box was open may have started another search.
    if (t.searches_started != search) return;
    if (settings.sound_on && !pondered) ui.play_sound(START_SOUND);
    if (t.this_search_aborted) {
        t.this_search_aborted = false;
        return;
    }
    if (!pondered) show_status(search_text());
    if (is_analysis_mode(game.gui_mode) || game.gui_mode == SETUP_MODE) return;
    if (is_analyze_mode(game.gui_mode)) return mode_hooks.analysis_step();
    if (pondered) return keep_ponder_result();
    // A move that was made since a command stopped the search has overtaken its result.
    if (searched_position_is_on_board()) play_search_result();
}
