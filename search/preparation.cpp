#include "search/preparation.h"

#include <chrono>
#include <cstdio>
#include <thread>

#include "base/log.h"
#include "base/text.h"
#include "core/board_text.h"
#include "egdb/engine_egdb.h"
#include "search/ask_book.h"
#include "search/engine_settings.h"
#include "search/getmove.h"
#include "search/root_search.h"
#include "search/score.h"
#include "search/search_state.h"
#include "search/search_text.h"
#include "search/table.h"
#include "search/threads.h"

namespace {

template <size_t N>
void fetch(int id, std::array<char, N>& buffer) {
    get_text(id, buffer.data(), buffer.size());
}

void fetch_labels(SearchLabels& labels) {
    fetch(TEXT_VALUE, labels.value);
    fetch(TEXT_DEPTH, labels.depth);
    fetch(TEXT_SPEED, labels.speed);
    fetch(TEXT_PV, labels.pv);
    fetch(TEXT_SECONDS, labels.seconds);
}

// A move from the book or from the distances to conversion. True if there is one.
bool answer_without_search(const RootTask& task, Move& best_move, int32_t& value) {
    const Position& root = task.root;
    int index = 0;
    int answer = 0;
    const bool from_book = ask_book(root, root.side, task.list, index, answer, task.text);
    if (!from_book && !egdb_engine.mtc_choose_move(root, root.side, task.list, index, answer, task.text))
        return false;
    log_printf("%s\n", task.text);
    tell_search_text(task.text);
    best_move = task.list[index];
    value = answer;
    return true;
}

// A move is backed by some depth whatever the time.
int one_deeper(int depth, double elapsed) {
    return elapsed < search_state.Mintime || depth < FIRST_STOPPABLE_ITERATION ? depth + 1 : 0;
}

}  // namespace

EngineTurn::EngineTurn(std::atomic<int32_t>& stop_flag, char* text) {
    while (search_state.busy.exchange(true, std::memory_order_acquire))
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    get_text(TEXT_THINKING, text, SEARCH_TEXT_SIZE);
    tell_search_text(text);
    search_state.stop_flag = &stop_flag;
}

EngineTurn::~EngineTurn() { search_state.busy.store(false, std::memory_order_release); }

bool start_turn(const Position& position, char* text) {
    const bool legal = is_legal_setup(position);
    if (legal) {
        egdb_engine.egdb_prepare(text);
        if (transposition_table.slots_start) return true;
    }
    std::snprintf(text, SEARCH_TEXT_SIZE, legal ? "Cannot allocate hashtable" : "Illegal position");
    tell_search_text(text);
    return false;
}

void prepare_root(RootTask& task, const Position& position, int side, char* text, uint32_t flags) {
    task.root = make_root(position, side);
    task.text = text;
    task.flags = flags;
    fetch_labels(task.labels);
    if (!(flags & SEARCH_QUIET)) log_position(position, side);
    tt_age();
    reset_search_state();
    clear_node_counters();
    clear_leaf_counters();
    generate_moves(task.root, task.list, side);
}

RootState answer_root(RootTask& task, Move& best_move, int32_t& value) {
    if (answer_without_search(task, best_move, value)) return ROOT_ANSWERED;
    if (task.list.count > 0) return ROOT_TO_SEARCH;
    get_text(TEXT_NO_MOVES, task.text, SEARCH_TEXT_SIZE);
    tell_search_text(task.text);
    best_move = move_to(task.root);
    value = task.root.side == WHITE ? MATE_SCORE : -MATE_SCORE;
    return ROOT_WITHOUT_MOVES;
}

void begin_iterations(const RootTask& task) {
    set_egdb_lookup_depth(bit_count(task.root.black | task.root.white));
    wake_workers();
}

void end_iterations() {
    search_state.stop_flag->store(0, std::memory_order_relaxed);
    sleep_workers();
}

void log_position(const Position& position, int side) {
    log_board(position);
    if (!engine_settings.position_line) return;
    char line[300];
    engine_settings.position_line(position, side, line);
    log_printf("%s\n\n", line);
}

void announce_iteration(int depth) { search_state.iteration.store(depth, std::memory_order_relaxed); }

void clear_leaf_counters() {
    search_state.highest_ply.store(0, std::memory_order_relaxed);
    for (ThreadRecord& thread : thread_records) {
        thread.leaf_count.store(0, std::memory_order_relaxed);
        thread.leaf_ply_sum.store(0, std::memory_order_relaxed);
    }
}

bool past_last_iteration(int depth, int iteration_limit) {
    return depth > FIRST_STOPPABLE_ITERATION &&
           (depth > iteration_limit || search_elapsed() > search_state.Mintime);
}

int next_iteration(int depth) {
    const double elapsed = search_elapsed();
    return elapsed <= search_state.step_time ? depth + 2 : one_deeper(depth, elapsed);
}

int next_all_scores_iteration(int depth) {
    const double elapsed = search_elapsed();
    return elapsed < search_state.step_time ? depth + 2 : one_deeper(depth, elapsed);
}

double average_leaf_ply() {
    uint64_t leaves = 0, plies = 0;
    for (const ThreadRecord& thread : thread_records) {
        leaves += thread.leaf_count.load(std::memory_order_relaxed);
        plies += thread.leaf_ply_sum.load(std::memory_order_relaxed);
    }
    return leaves ? static_cast<double>(plies) / static_cast<double>(leaves) : 0.0;
}

double kilonodes_per_second() {
    return static_cast<double>(searched_nodes()) / static_cast<double>(search_elapsed_ms());
}
