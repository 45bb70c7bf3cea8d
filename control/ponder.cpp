// Pondering: the engine searches the position behind the user's most likely move while the user thinks. If he
// makes that move the search simply becomes the real one.
#include <utility>

#include "base/clock.h"
#include "base/log.h"
#include "control/game.h"
#include "control/game_clock.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/start_search.h"
#include "control/time_control_limits.h"
#include "control/ui.h"
#include "egdb/engine_egdb.h"
#include "search/ask_book.h"
#include "search/engine_settings.h"
#include "search/search_state.h"
#include "search/table.h"

namespace {

constexpr int32_t TRUSTED_DEPTH_FIELD = 65;  // eight plies
constexpr double SHORT_SEARCH_SECONDS = 0.02;

// From the book or the distances to conversion.
bool known_reply(const MoveList& list, int& index) {
    int value = 0;
    char text[SEARCH_TEXT_SIZE] = "";
    const Position& board = game.board;
    const int side = game.board_side;
    const bool from_book = ask_book(board, side, list, index, value, text);
    if (!from_book && !egdb_engine.mtc_choose_move(board, side, list, index, value, text)) return false;
    log_printf("Getting ponder pos: %s\n", text);
    return true;
}

bool table_reply(const MoveList& list, int& index) {
    const PositionHash hash = position_hash(game.board, game.board_side);
    TTEntry entry;
    if (!tt_probe(hash.hash0, hash.hash1, entry)) return false;
    index = entry.move_index();
    return entry.depth_field() >= TRUSTED_DEPTH_FIELD && index < list.count;
}

bool searched_reply(const MoveList& list, int& index) {
    // What is to be opened anew is opened on the search thread, which may take its time.
    const bool reopen_wld = std::exchange(engine_settings.reopen_wld, false);
    const bool reopen_mtc = std::exchange(engine_settings.reopen_mtc, false);
    build_board_line();
    set_move_time({SHORT_SEARCH_SECONDS, SHORT_SEARCH_SECONDS, 0, SHORT_SEARCH_SECONDS});
    std::atomic<int32_t> stop{0};
    char text[SEARCH_TEXT_SIZE];
    Move best{};
    int32_t searched = 0;
    getmove(game.board, game.board_side, text, stop, 0, best, searched);
    engine_settings.reopen_wld = reopen_wld;
    engine_settings.reopen_mtc = reopen_mtc;
    index = find_move(list, best);
    return index >= 0;
}

}  // namespace

bool predict_reply(Move& reply) {
    // A search that is slow to end has the book, the table and the engine's limits.
    const bool idle = !search_thread.searching.load(std::memory_order_acquire) && wait_for_search();
    if (!idle || prepare_engine() != 0) return false;
    MoveList list;
    generate_moves(game.board, list, game.board_side);
    if (list.count == 0) return false;
    int index = 0;
    if (list.count > 1 && !known_reply(list, index) && !table_reply(list, index) &&
        !searched_reply(list, index))
        return false;
    reply = list[index];
    return true;
}

void start_ponder_search() {
    SearchThread& t = search_thread;
    if (!settings.pondering_on || (game.gui_mode != NORMAL_MODE && game.gui_mode != DXP_MODE)) return;
    Move reply{};
    if (!search_can_start() || !predict_reply(reply)) return;
    t.ponder_done = false;
    t.pondering.store(1, std::memory_order_relaxed);
    full_move_text(game.board, reply, game.board_side, t.ponder_move_text);
    if (settings.use_game_clock)
        use_clock_time();
    else
        use_fixed_time(false);
    const int side = game.board_side ^ 1;
    const Position predicted = position_after(reply, side);
    build_predicted_line(predicted, side);
    ui.redraw_board();
    hand_over_search(predicted, side);
}

void change_ponder_to_normal_search() {
    if (game.gui_mode == NORMAL_MODE)
        clock_state.clock_side.store(game.board_side, std::memory_order_relaxed);
    const bool clock_mode = game.gui_mode == NORMAL_MODE || game.gui_mode == DXP_MODE;
    // The search thread charges the lap as soon as it finds that it does not ponder.
    if (clock_mode) start_engine_lap(clock_ms());
    search_thread.pondering.store(0, std::memory_order_release);
    search_thread.ponder_done = false;
    if (clock_mode) start_game_clock();
}
