// The hand-over between the interface thread and the one search thread.
//
// The search thread lives as long as the program and is never stopped. The interface thread sets a search up
// while the search thread is idle, signals it, and finds the end by looking, at each tick of its timer. There
// is no lock; ownership is by phase: from the store to `searching` by the interface thread to its clearing by
// the search thread, the search thread owns the position, its outcome and the engine's limits.
//
//   phase                               searching  search_finished  search_done_event
//   idle                                    0             0             signalled
//   started                                 1             0             reset
//   returned, before the loop's top         0             1             reset
//   idle, the result not yet seen           0             1             signalled
//   `search_done` runs                      0             0             signalled
#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "base/event.h"
#include "base/manual_event.h"
#include "base/shared_text.h"
#include "core/notation.h"
#include "search/getmove.h"

// The longest wait for the search thread; what follows goes on regardless.
constexpr int SEARCH_WAIT_MS = 10000;

struct SearchThread {
    Event search_start_event;          // a search is set up
    ManualEvent search_done_event;     // the search thread is idle
    std::atomic<bool> running{false};  // there is a search thread

    // Flags, 0 or 1.
    std::atomic<int32_t> searching{0};        // set by the interface thread, cleared by the search thread
    std::atomic<int32_t> search_finished{0};  // set by the search thread, cleared by the interface thread
    std::atomic<int32_t> pondering{0};        // interface thread: the search started last ponders
    std::atomic<int32_t> stop_flag{0};        // interface thread and engine: return as soon as possible

    // The interface thread's alone.
    bool ponder_done = false;          // a ponder search has ended, and its result waits for the user's move
    bool this_search_aborted = false;  // the result is to be thrown away
    bool told_to_end = false;          // the search started last, by `stop_search`
    bool start_waits = false;          // a start found such a search still running; the tick starts it
    double search_target_time = 0;     // seconds aimed at for this move
    uint32_t searches_started = 0;     // tells one search from the next

    // Written by the interface thread before the start.
    Position search_position{};
    int32_t search_side = WHITE;
    uint32_t search_flags = 0;
    std::vector<Position> game_line;  // newest first, for the repetition test

    // Written by the search thread before it clears `searching`.
    Move search_result{};
    int32_t search_value = 0;  // positive when good for black
    int32_t search_searched = 0;
    double search_elapsed = 0;                  // seconds
    std::atomic<int64_t> search_started_ms{0};  // reading of `clock_ms`

    // The status text, which the search rewrites and others show.
    SharedText<SEARCH_TEXT_SIZE> shared_text;

    char own_text[SEARCH_TEXT_SIZE] = "";   // the search thread's
    char text_copy[SEARCH_TEXT_SIZE] = "";  // the interface thread's
    uint32_t text_copy_version = 0;

    // Texts of the ponder pane, of the interface thread.
    char ponder_move_text[MOVE_TEXT_SIZE] = "";
    char ponder_result_text[MOVE_TEXT_SIZE] = "";

    // Makes a thread that runs `body` and is never joined; false if the system refuses.
    bool (*make_thread)(void (*body)()) = nullptr;

    int wait_limit_ms = SEARCH_WAIT_MS;
};
// Never destroyed: the search thread uses it for as long as the process lives.
extern SearchThread& search_thread;

// Called at each change of phase that the table does not allow, with a name for it; null, as it is at first,
// for no checks. From either thread.
extern void (*phase_violation)(const char* transition);

// Makes the search thread. A failure is told to the user, and the program goes on without one: no search then
// ever starts. Once; a second call does nothing. Nothing ends the thread but the end of the process, so a
// front end that returns from `main` calls `discard_search` before: what has a destructor goes then.
void start_search_thread();

// Everything below belongs to the interface thread.

// The flags as at the start of the program. Only when the search thread is idle.
void reset_search_flags();

// The status text of the search that runs or ran last, whole. The text stays as it is until the next call.
const char* search_text();

// A search runs that does not ponder.
bool real_search_runs();

// The engine's time passes: a real search runs, or one is to start and waits for the search before it.
bool engine_time_runs();

// Waits until the search thread is idle, for `wait_limit_ms` at most. True if it is; a caller that has
// nothing better to do goes on whatever the answer.
bool wait_for_search();
// Ends the search if one runs, and waits as `wait_for_search` does, but for the same search once only. Its
// result reaches `search_done` at the next tick.
bool stop_search();
// The same, and its result is thrown away. The user's lap begins where a search that did not ponder ends.
bool discard_search();

// Starts a search of the position on the board, with the time that the mode has. In a mode without an engine
// an error is shown. Where the search before was told to end and has not come back yet, as it opens
// databases, the start waits until a tick finds that it has; while any other one runs nothing starts.
void start_search();

// The same in place of the search that runs, which is ended; the time that its end takes is the engine's.
void restart_search();

// Starts a search of the position that the predicted reply leads to, if pondering is on and the mode has it.
void start_ponder_search();

// The ponder search becomes the real one: the user has made the predicted move.
void change_ponder_to_normal_search();

// The user's most likely move on the board, as the position it leads to. False if there is no answer, and
// while a search runs. May search for some 20 milliseconds.
bool predict_reply(Move& reply);

// Runs every 50 milliseconds on the interface thread, by the loop of the front end: passes a finished search
// on, starts the one that waited for its end, and shows what changed.
constexpr int TICK_MS = 50;
void timer_tick();
