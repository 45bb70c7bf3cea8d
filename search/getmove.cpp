#include "search/getmove.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <thread>

#include "base/log.h"
#include "base/text.h"
#include "book/engine_book.h"
#include "core/board_text.h"
#include "core/notation.h"
#include "egdb/engine_egdb.h"
#include "search/engine_settings.h"
#include "search/forced.h"
#include "search/pv.h"
#include "search/root_search.h"
#include "search/score.h"
#include "search/search_state.h"
#include "search/table.h"
#include "search/thread_record.h"
#include "search/window.h"

namespace {

constexpr int FIRST_TEXT_DEPTH = 6;  // the line of a shallower iteration says nothing
constexpr int FIRST_MARK_DEPTH = 8;
constexpr double QUIET_SHORT_TIME = 1.0;  // seconds

enum TextId {
    TEXT_VALUE = 234,
    TEXT_DEPTH,
    TEXT_SPEED,
    TEXT_PV,
    TEXT_SECONDS,
    TEXT_NO_MOVES = 247,
    TEXT_THINKING
};

struct Labels {
    std::array<char, 40> value, depth, speed, pv, seconds;
};

// One normal search.
struct Search {
    Position root;
    MoveList list;
    char* text;
    uint32_t flags;
    Labels labels;
    std::array<char, SEARCH_TEXT_SIZE / 2> line_text{};   // the moves of the line: ten at most
    std::array<char, SEARCH_TEXT_SIZE + 500> log_line{};  // of the last completed iteration
    int32_t best_index = 0;
    int32_t value = 0;
};

template <size_t N>
void fetch(int id, std::array<char, N>& buffer) {
    get_text(id, buffer.data(), buffer.size());
}

void fetch_labels(Labels& labels) {
    fetch(TEXT_VALUE, labels.value);
    fetch(TEXT_DEPTH, labels.depth);
    fetch(TEXT_SPEED, labels.speed);
    fetch(TEXT_PV, labels.pv);
    fetch(TEXT_SECONDS, labels.seconds);
}

void log_position(const Position& position, int side) {
    log_board(position);
    if (!engine_settings.position_line) return;
    char line[300];
    engine_settings.position_line(position, side, line);
    log_printf("%s\n\n", line);
}

double average_leaf_ply() {
    uint64_t leaves = 0, plies = 0;
    for (const ThreadRecord& thread : thread_records) {
        leaves += thread.leaf_count.load(std::memory_order_relaxed);
        plies += thread.leaf_ply_sum.load(std::memory_order_relaxed);
    }
    return leaves ? static_cast<double>(plies) / static_cast<double>(leaves) : 0.0;
}

void clear_leaf_counters() {
    search_state.highest_ply.store(0, std::memory_order_relaxed);
    for (ThreadRecord& thread : thread_records) {
        thread.leaf_count.store(0, std::memory_order_relaxed);
        thread.leaf_ply_sum.store(0, std::memory_order_relaxed);
    }
}

void clear_node_counters() {
    for (ThreadRecord& thread : thread_records) thread.nodes.store(0, std::memory_order_relaxed);
}

double kilonodes_per_second() {
    return static_cast<double>(searched_nodes()) / static_cast<double>(search_elapsed_ms());
}

int line_length(int depth) { return depth + depth / 5; }

void build_line_text(Search& s, int32_t index, int depth) {
    pv_text(s.root.side, s.root, s.list[index], s.line_text.data(), s.line_text.size(), false,
            line_length(depth), s.labels.pv.data());
}

void write_status(const Search& s, const char* mark, int32_t value, int depth) {
    std::snprintf(s.text, SEARCH_TEXT_SIZE, "%s%s%d,  %s %d/%.1f/%d,  %.1f %s,  %.0f %s,  %s",
                  s.labels.value.data(), mark, value, s.labels.depth.data(), depth, average_leaf_ply(),
                  search_state.highest_ply.load(std::memory_order_relaxed), search_elapsed(),
                  s.labels.seconds.data(), kilonodes_per_second(), s.labels.speed.data(), s.line_text.data());
}

void build_log_line(Search& s, int depth) {
    char best[MOVE_TEXT_SIZE];
    move_text(best, s.root, s.list[s.best_index]);
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
    const bool black = s.root.side == BLACK;
    int32_t best_index = s.best_index;
    int32_t value = s.value;
    WindowState window = first_window(value);
    clear_leaf_counters();
    do {
        int32_t pass_index = best_index;
        const int32_t result = root_search(s.root, s.list, window.alpha, window.beta, pass_index);
        if (stop_requested()) return false;
        s.line_text[0] = '\0';
        if (depth >= FIRST_TEXT_DEPTH) build_line_text(s, pass_index, depth);
        const char* const mark = result < window.beta ? "<" : ">";
        if (black ? result > window.alpha : result < window.beta) best_index = pass_index;
        value = next_window(window, result);
        write_status(s, mark, value, depth);
        if (depth >= FIRST_MARK_DEPTH) tt_mark_pv(s.root.side, s.list[best_index], line_length(depth));
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
    const SearchState& limits = search_state;
    int depth = 1;
    for (;;) {
        search_state.iteration.store(depth, std::memory_order_relaxed);
        if (depth > FIRST_STOPPABLE_ITERATION &&
            (depth > iteration_limit || search_elapsed() > limits.Mintime))
            return;
        if (!run_iteration(s, depth) || depth >= limits.depth_limit) return;
        const double elapsed = search_elapsed();
        if (elapsed <= limits.step_time)
            depth += 2;
        else if (elapsed < limits.Mintime || depth < FIRST_STOPPABLE_ITERATION)
            depth += 1;  // a move is backed by some depth whatever the time
        else
            return;
        // Only a limit that was asked for is met exactly.
        if (limits.depth_limit < MAX_DEPTH) depth = std::min(depth, limits.depth_limit);
    }
}

// A move from the book or from the distances to conversion. True if there is one.
bool answer_without_search(const Search& s, Move& best_move, int32_t& value) {
    int index = 0;
    int answer = 0;
    const bool from_book = engine_settings.book_mode != 0 && engine_book.loaded &&
                           engine_book.book_move(s.root, s.root.side, s.list, index, answer, s.text) != 0;
    if (!from_book && !egdb_engine.mtc_choose_move(s.root, s.root.side, s.list, index, answer, s.text))
        return false;
    log_printf("%s\n", s.text);
    best_move = s.list[index];
    value = answer;
    return true;
}

// The databases may correct the searched move; the value stays that of the search.
void check_move(const Search& s, Move& best_move) {
    int better = 0;
    if (!egdb_engine.egdb_move_check(s.root.side, s.root, s.list, s.best_index, better)) return;
    if (s.flags & SEARCH_QUIET) log_position(s.root, s.root.side);
    char searched[MOVE_TEXT_SIZE], corrected[MOVE_TEXT_SIZE];
    move_text(searched, s.root, s.list[s.best_index]);
    move_text(corrected, s.root, s.list[better]);
    log_printf("egdb move changed from %s to %s\n", searched, corrected);
    best_move = s.list[better];
}

int32_t normal_search(const Position& position, int side, char* text, uint32_t flags, Move& best_move,
                      int32_t& searched) {
    Search s;
    s.root = make_root(position, side);
    s.text = text;
    s.flags = flags;
    fetch_labels(s.labels);
    if (!(flags & SEARCH_QUIET)) log_position(position, side);
    tt_age();
    reset_search_state();
    clear_node_counters();
    clear_leaf_counters();
    generate_moves(s.root, s.list, side);
    int32_t value = 0;
    if (answer_without_search(s, best_move, value)) return value;
    if (s.list.count == 0) {
        get_text(TEXT_NO_MOVES, text, SEARCH_TEXT_SIZE);
        best_move = move_to(position);
        return side == WHITE ? MATE_SCORE : -MATE_SCORE;
    }
    int iteration_limit = search_state.depth_limit;
    if (!(flags & SEARCH_FULL_DEPTH) && is_forced(s.root, side)) {
        iteration_limit = 1;
        searched = 0;
    }
    set_egdb_lookup_depth(bit_count(position.black | position.white));
    iterate(s, iteration_limit);
    best_move = s.list[s.best_index];
    search_state.stop_flag->store(0, std::memory_order_relaxed);
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
    while (search_state.busy.exchange(true, std::memory_order_acquire))
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    get_text(TEXT_THINKING, text, SEARCH_TEXT_SIZE);
    search_state.stop_flag = &stop_flag;
    searched = 1;
    int32_t value = 0;
    if (is_legal_setup(position)) {
        egdb_engine.egdb_prepare(text);
        value = normal_search(position, side, text, flags, best_move, searched);
    } else {
        std::snprintf(text, SEARCH_TEXT_SIZE, "Illegal position");
        best_move = move_to(position);
    }
    search_state.busy.store(false, std::memory_order_release);
    return value;
}
