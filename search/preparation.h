// What all searches of a root have in common: what they begin and end with, and the figures that they show.
// On thread 0.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "core/movegen.h"

enum SearchTextId {
    TEXT_VALUE = 234,
    TEXT_DEPTH,
    TEXT_SPEED,
    TEXT_PV,
    TEXT_SECONDS,
    TEXT_NO_MOVES = 247,
    TEXT_THINKING
};

// The words of the status line, in the user's language.
struct SearchLabels {
    std::array<char, 40> value, depth, speed, pv, seconds;
};

// A position to search and its moves.
struct RootTask {
    Position root;
    MoveList list;
    char* text = nullptr;  // SEARCH_TEXT_SIZE bytes
    uint32_t flags = 0;
    SearchLabels labels{};
};

enum RootState { ROOT_TO_SEARCH, ROOT_ANSWERED, ROOT_WITHOUT_MOVES };

// The turn of one search at the engine, of which only one runs at a time: another waits. `text` tells that
// the engine thinks.
struct EngineTurn {
    EngineTurn(std::atomic<int32_t>& stop_flag, char* text);
    ~EngineTurn();
    EngineTurn(const EngineTurn&) = delete;
    EngineTurn& operator=(const EngineTurn&) = delete;
};

// Lets the databases apply what changed. False if the position is illegal or there is no memory to search
// with, which `text` then says.
bool start_turn(const Position& position, char* text);

// Fetches the labels, logs the position, ages the table and resets what belongs to one search.
void prepare_root(RootTask& task, const Position& position, int side, char* text, uint32_t flags);

// What is left to do for the root. If the book or the distances to conversion answered, or there is no move,
// the move, the value and the text are written.
RootState answer_root(RootTask& task, Move& best_move, int32_t& value);

// Wakes the workers. What comes between this and `end_iterations` may use them.
void begin_iterations(const RootTask& task);
// Takes the request to stop back, and puts the workers to sleep.
void end_iterations();

// The board, and the position as FEN where something can print it.
void log_position(const Position& position, int side);

// Publishes the iteration that is next.
void announce_iteration(int depth);
// Clears the figures of the iteration before.
void clear_leaf_counters();
// True if none may begin at `depth`: the limit or the time is reached. Not before iteration 5 is over.
bool past_last_iteration(int depth, int iteration_limit);
// The iteration after `depth`: two deeper up to the step time, later one, and 0 when the time is used up.
int next_iteration(int depth);
// The same, two deeper only below the step time.
int next_all_scores_iteration(int depth);

// Plies of a line that are shown, marked or kept.
constexpr int line_length(int depth) { return depth + depth / 5; }

// Over all threads: plies of the leaves of this iteration, and the speed of this search.
double average_leaf_ply();
double kilonodes_per_second();
