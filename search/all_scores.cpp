#include "search/all_scores.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "base/log.h"
#include "search/forced.h"
#include "search/getmove.h"
#include "search/preparation.h"
#include "search/pv.h"
#include "search/root_moves.h"
#include "search/search_state.h"
#include "search/search_text.h"
#include "search/window.h"

namespace {

// Up to these depths all lines are in the table at once.
constexpr int LAST_UNSAVED_DEPTH = 7;
constexpr int LAST_UNRESTORED_DEPTH = 8;
constexpr int MIN_SEARCHED_DEPTH = 8;

// Passes on one move until its bounds meet. With one search for each move the line of each would overwrite
// those of the others, and with the marks of all of them all lines would be searched deeper, so a line stands
// in the table only while its move is searched. False if the search was stopped.
bool run_passes(const Position& root, RootMove& move, int depth) {
    WindowState window = first_window(move.value);
    do {
        if (depth > LAST_UNRESTORED_DEPTH)
            for (const SavedEntry& saved : move.pv_entries) tt_restore(saved);
        move.value = search_root_move(root, move, window.alpha, window.beta);
        if (stop_requested()) return false;
        move.value = next_window(window, move.value);
        if (depth > LAST_UNSAVED_DEPTH)
            tt_save_line(root.side, move.move, line_length(depth), move.pv_entries);
    } while (window.lower < window.upper);
    return true;
}

bool run_iteration(const RootTask& task, RootMoves& moves, int depth) {
    announce_iteration(depth);
    clear_leaf_counters();
    for (RootMove& move : moves) {
        if (run_passes(task.root, move, depth)) continue;
        restore_root_values(moves);
        return false;
    }
    keep_root_values(moves);
    search_state.completed_depth = depth;
    sort_root_moves(moves, task.root.side);
    return true;
}

void report_iteration(const RootTask& task, const RootMoves& moves, int depth) {
    std::array<char, ROOT_MOVES_TEXT_SIZE> line;
    root_moves_text(task.root, moves, task.list.count, line.data(), line.size());
    log_printf("time %.2fs, depth %d, nodes %" PRIu64 ", %s\n", search_elapsed(), depth, searched_nodes(),
               line.data());
    std::snprintf(task.text, SEARCH_TEXT_SIZE, "%s %d,  %.1f %s,  %s", task.labels.depth.data(), depth,
                  search_elapsed(), task.labels.seconds.data(), line.data());
    tell_search_text(task.text);
}

void iterate(const RootTask& task, RootMoves& moves, int iteration_limit) {
    const int depth_limit = search_state.depth_limit;
    int depth = 1;
    do {
        if (!run_iteration(task, moves, depth)) return;
        report_iteration(task, moves, depth);
        if (depth > FIRST_STOPPABLE_ITERATION && depth > iteration_limit) return;
        // Only a limit that was asked for is met exactly.
        const bool exact = depth_limit < MAX_DEPTH;
        if (exact && depth >= depth_limit) return;
        depth = next_all_scores_iteration(depth);
        if (exact) depth = std::min(depth, depth_limit);
    } while (depth > 0);
}

void append_line(const RootTask& task, const Move& move) {
    const size_t used = std::strlen(task.text);
    pv_text(task.root.side, task.root, move, task.text + used, SEARCH_TEXT_SIZE - used, false,
            line_length(search_state.completed_depth), task.labels.pv.data());
    tell_search_text(task.text);
}

}  // namespace

int32_t all_scores_search(const Position& position, int side, char* text, uint32_t flags, Move& best_move,
                          int32_t& searched) {
    RootTask task;
    prepare_root(task, position, side, text, flags);
    searched = 1;
    int32_t value = 0;
    if (answer_root(task, best_move, value) != ROOT_TO_SEARCH) return value;
    RootMoves moves = make_root_moves(task.list);
    begin_iterations(task);
    const bool cut = !(flags & SEARCH_FULL_DEPTH) && is_forced(task.root, side);
    iterate(task, moves, cut ? 1 : MAX_DEPTH);
    end_iterations();
    searched = search_state.iteration.load(std::memory_order_relaxed) >= MIN_SEARCHED_DEPTH;
    best_move = moves.front().move;
    append_line(task, best_move);
    return moves.front().value;
}
