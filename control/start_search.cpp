#include "control/start_search.h"

#include "base/clock.h"
#include "control/apply_settings.h"
#include "control/game.h"
#include "control/game_clock.h"
#include "control/game_line.h"
#include "control/search_phase.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/ui.h"
#include "search/engine_settings.h"
#include "search/search_state.h"
#include "search/table.h"
#include "search/threads.h"

namespace {

// In DXP_MODE with less than this for the move, nothing is written around the search.
constexpr double QUIET_TARGET_TIME = 0.2;

// Null for a mode with an engine.
const char* mode_error(int32_t mode) {
    if (mode == TWO_PLAYERS_MODE) return "start_search() called in TWO_PLAYERS_MODE";
    if (mode == SETUP_MODE) return "start_search() called in SETUP_MODE";
    if (mode < NORMAL_MODE || mode > ANALYZE_PDN_ALLSCORES_MODE)
        return "start_search() called and gui_mode is undefined";
    return nullptr;
}

uint32_t flags_for_mode(int32_t mode) {
    switch (mode) {
        case ANALYSIS_MODE:
            return 1;
        case ANALYSIS_ALLSCORES_MODE:
            return 1 | SEARCH_ALL_SCORES;
        case ANALYZE_GAME_ALLSCORES_MODE:
        case ANALYZE_PDN_ALLSCORES_MODE:
            return SEARCH_ALL_SCORES;
        case DXP_MODE:
            return search_thread.search_target_time < QUIET_TARGET_TIME ? SEARCH_QUIET : 0u;
        default:
            return 0;
    }
}

// A fixed time to which the table in use is fitted.
void use_tuned_time(bool analysis) {
    const MoveTime time = use_fixed_time(analysis);
    tune_hash_size(time.search_target_time, wanted_threads());
}

void use_mode_time(int32_t mode) {
    if (mode == DXP_MODE) {
        use_clock_time();
        start_game_clock();
        return;
    }
    if (mode != NORMAL_MODE) return use_tuned_time(is_analysis_mode(mode));
    clock_state.clock_side.store(game.board_side, std::memory_order_relaxed);
    if (settings.use_game_clock)
        use_clock_time();
    else
        use_tuned_time(false);
}

void build_line(std::span<const ReplayState> history) {
    build_game_line(history, search_thread.game_line);
    search_state.game_line = search_thread.game_line.empty() ? nullptr : &search_thread.game_line.front();
}

// The line of a position that is not recorded, as behind a full history.
void build_single_line(const Position& position, int side) {
    const ReplayState alone{0, side, position};
    build_line({&alone, 1});
}

}  // namespace

bool search_can_start() {
    const SearchThread& t = search_thread;
    return t.running.load(std::memory_order_relaxed) && !t.searching.load(std::memory_order_acquire) &&
           wait_for_search();
}

int prepare_engine() {
    apply_search_settings();
    return transposition_table.slots_start ? 0 : tt_allocate();
}

void use_clock_time() {
    search_thread.search_target_time =
        compute_move_time(bit_count(game.board.black | game.board.white)).search_target_time;
}

MoveTime use_fixed_time(bool analysis) {
    const MoveTime time = fixed_move_time(settings.time_per_move, analysis);
    set_move_time(time);
    search_thread.search_target_time = time.search_target_time;
    return time;
}

void build_board_line() {
    const std::span<const ReplayState> history = played_history();
    if (!history.empty() && history.back().side == game.board_side &&
        same_pieces(history.back().position, game.board))
        build_line(history);
    else
        build_single_line(game.board, game.board_side);
}

void build_predicted_line(const Position& position, int side) {
    game.history_last = game.history_count;
    if (game.history_count >= MAX_HISTORY) return build_single_line(position, side);
    // It stands behind the game and is not in it.
    game.game_history[static_cast<size_t>(game.history_count)] = {0, side, position};
    build_line(std::span(game.game_history).first(static_cast<size_t>(game.history_count) + 1));
}

void start_game_clock() {
    if (clock_state.clock_running.load(std::memory_order_relaxed)) return;
    const bool clock_mode = game.gui_mode == NORMAL_MODE || game.gui_mode == DXP_MODE;
    clock_command(CLOCK_START, clock_mode, engine_time_runs(), clock_ms());
    update_menu();
}

void hand_over_search(const Position& position, int side) {
    SearchThread& t = search_thread;
    check_search_phase("a search is set up", {0, ANY_FLAG, 1});
    t.search_position = position_after(move_to(position), side);
    t.search_side = side;
    t.search_flags = flags_for_mode(game.gui_mode);
    ++t.searches_started;
    t.told_to_end = false;
    t.search_done_event.reset();
    t.stop_flag.store(0, std::memory_order_relaxed);
    // A result that nobody has seen is overtaken.
    t.search_finished.store(0, std::memory_order_relaxed);
    t.searching.store(1, std::memory_order_release);
    check_search_phase("a search starts", {1, 0, 0});
    t.search_start_event.signal();
}

// From the moment when the engine was asked the time is its own. Up to the end of a real search that is in
// the way this one charges it.
void begin_engine_wait(int64_t asked_ms) {
    if (game.gui_mode == NORMAL_MODE)
        clock_state.clock_side.store(game.board_side, std::memory_order_relaxed);
    if (search_thread.pondering.load(std::memory_order_relaxed)) start_engine_lap(asked_ms);
}

void restart_search() {
    const int64_t asked = clock_ms();
    const bool idle = stop_search();
    ui.redraw_board();
    begin_engine_wait(asked);
    search_thread.start_waits = !idle;
    if (idle) start_waiting_search();
}

void start_search() {
    SearchThread& t = search_thread;
    if (const char* const error = mode_error(game.gui_mode)) {
        ui.message_box(error, "Error", ICON_ERROR);
        return;
    }
    const int64_t asked = clock_ms();
    if (!search_can_start()) {
        if (!t.told_to_end || t.start_waits || !t.running.load(std::memory_order_relaxed)) return;
        t.start_waits = true;
        begin_engine_wait(asked);
        return;
    }
    t.start_waits = false;
    t.pondering.store(0, std::memory_order_relaxed);
    t.this_search_aborted = false;
    t.ponder_done = false;
    if (prepare_engine() != 0) return;
    use_mode_time(game.gui_mode);
    build_board_line();
    hand_over_search(game.board, game.board_side);
    if (game.gui_mode != NORMAL_MODE) return;
    charge_user_time(clock_ms());
    start_game_clock();
}

void start_waiting_search() {
    charge_engine_wait(clock_ms());
    start_search();
}
