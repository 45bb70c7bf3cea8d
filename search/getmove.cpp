#include "search/getmove.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>

#include "base/log.h"
#include "core/notation.h"
#include "egdb/engine_egdb.h"
#include "search/all_scores.h"
#include "search/forced.h"
#include "search/preparation.h"
#include "search/pv.h"
#include "search/root_search.h"
#include "search/search_state.h"
#include "search/search_text.h"
#include "search/table.h"
#include "search/thread_record.h"
#include "search/window.h"

namespace {

constexpr int FIRST_TEXT_DEPTH = 6;  // the line of a shallower iteration says nothing
constexpr int FIRST_MARK_DEPTH = 8;
constexpr double QUIET_SHORT_TIME = 1.0;  // seconds

// One normal search.
struct Search {
    RootTask task;
    std::array<char, SEARCH_TEXT_SIZE / 2> line_text{};   // the moves of the line: ten at most
    std::array<char, SEARCH_TEXT_SIZE + 500> log_line{};  // of the last completed iteration
    int32_t best_index = 0;
    int32_t value = 0;
};

void build_line_text(Search& s, int32_t index, int depth) {
    const Position& root = s.task.root;
    pv_text(root.side, root, s.task.list[index], s.line_text.data(), s.line_text.size(), false,
            line_length(depth), s.task.labels.pv.data());
}

void write_status(const Search& s, const char* mark, int32_t value, int depth) {
    const SearchLabels& labels = s.task.labels;
    std::snprintf(s.task.text, SEARCH_TEXT_SIZE, "%s%s%d,  %s %d/%.1f/%d,  %.1f %s,  %.0f %s,  %s",
                  labels.value.data(), mark, value, labels.depth.data(), depth, average_leaf_ply(),
                  search_state.highest_ply.load(std::memory_order_relaxed), search_elapsed(),
                  labels.seconds.data(), kilonodes_per_second(), labels.speed.data(), s.line_text.data());
    tell_search_text(s.task.text);
}

void build_log_line(Search& s, int depth) {
    char best[MOVE_TEXT_SIZE];
    move_text(best, s.task.root, s.task.list[s.best_index]);
    std::snprintf(
        s.log_line.data(), s.log_line.size(),
        "best %s, value %d, depth %d/%.1f/%d, nodes %" PRIu64 ", time %.2f, %.0f kN/s, db %" PRIu32 ", %s\n",
        best, s.value, depth, average_leaf_ply(), search_state.highest_ply.load(std::memory_order_relaxed),
        searched_nodes(), search_elapsed(), kilonodes_per_second(),
        search_state.egdb_lookups.load(std::memory_order_relaxed), s.line_text.data());
}

// Passes until the bounds meet. False if the search was stopped; the results of the iteration before it
// stand.
bool run_iteration(Search& s, int depth) {
    const Position& root = s.task.root;
    const MoveList& list = s.task.list;
    int32_t best_index = s.best_index;
    int32_t value = s.value;
    WindowState window = first_window(value);
    do {
        int32_t pass_index = best_index;
        const int32_t result = root_search(root, list, window.alpha, window.beta, pass_index);
        if (stop_requested()) return false;
        s.line_text[0] = '\0';
        if (depth >= FIRST_TEXT_DEPTH) build_line_text(s, pass_index, depth);
        const char* const mark = result < window.beta ? "<" : ">";
        if (root.side == BLACK ? result > window.alpha : result < window.beta) best_index = pass_index;
        value = next_window(window, result);
        write_status(s, mark, value, depth);
        if (depth >= FIRST_MARK_DEPTH) tt_mark_pv(root.side, list[best_index], line_length(depth));
    } while (window.lower < window.upper);

    s.best_index = best_index;
    s.value = value;
    search_state.completed_depth = depth;
    build_line_text(s, best_index, depth);
    build_log_line(s, depth);
    write_status(s, "=", value, depth);
    return true;
}

void iterate(Search& s, int iteration_limit) {
    const int depth_limit = search_state.depth_limit;
    int depth = 1;
    do {
        announce_iteration(depth);
        if (past_last_iteration(depth, iteration_limit)) return;
        clear_leaf_counters();
        if (!run_iteration(s, depth) || depth >= depth_limit) return;
        depth = next_iteration(depth);
        // Only a limit that was asked for is met exactly.
        if (depth_limit < MAX_DEPTH) depth = std::min(depth, depth_limit);
    } while (depth > 0);
}

// The databases may correct the searched move; the value stays that of the search.
void check_move(const Search& s, Move& best_move) {
    const Position& root = s.task.root;
    const MoveList& list = s.task.list;
    int better = 0;
    if (!egdb_engine.egdb_move_check(root.side, root, list, s.best_index, better)) return;
    if (s.task.flags & SEARCH_QUIET) log_position(root, root.side);
    char searched[MOVE_TEXT_SIZE], corrected[MOVE_TEXT_SIZE];
    move_text(searched, root, list[s.best_index]);
    move_text(corrected, root, list[better]);
    log_printf("egdb move changed from %s to %s\n", searched, corrected);
    best_move = list[better];
}

int32_t normal_search(const Position& position, int side, char* text, uint32_t flags, Move& best_move,
                      int32_t& searched) {
    Search s;
    prepare_root(s.task, position, side, text, flags);
    int32_t value = 0;
    if (answer_root(s.task, best_move, value) != ROOT_TO_SEARCH) return value;
    int iteration_limit = search_state.depth_limit;
    if (!(flags & SEARCH_FULL_DEPTH) && is_forced(s.task.root, side)) {
        iteration_limit = 1;
        searched = 0;
    }
    begin_iterations(s.task);
    iterate(s, iteration_limit);
    end_iterations();
    best_move = s.task.list[s.best_index];
    if (!(flags & SEARCH_QUIET)) log_text(s.log_line.data());
    if (!(flags & SEARCH_QUIET) || search_state.max_time >= QUIET_SHORT_TIME) check_move(s, best_move);
    return s.value;
}

}  // namespace

uint64_t searched_nodes() {
    uint64_t nodes = 0;
    for (const ThreadRecord& thread : thread_records) nodes += thread.nodes.load(std::memory_order_relaxed);
    return nodes;
}

int32_t getmove(const Position& position, int side, char* text, std::atomic<int32_t>& stop_flag,
                uint32_t flags, Move& best_move, int32_t& searched) {
    const EngineTurn turn(stop_flag, text);
    searched = 1;
    if (!start_turn(position, text)) {
        best_move = move_to(position);
        return 0;
    }
    const auto search = flags & SEARCH_ALL_SCORES ? all_scores_search : normal_search;
    return search(position, side, text, flags, best_move, searched);
}
