#include "control/search_thread.h"

#include <utility>

#include "base/clock.h"
#include "base/detached_thread.h"
#include "control/game_clock.h"
#include "control/search_phase.h"
#include "control/ui.h"
#include "search/search_text.h"

SearchThread& search_thread = *new SearchThread;

namespace {

// Searches for a predicted reply write to a buffer of their own, which nobody is shown.
void publish_search_text(const char* text) {
    if (text == search_thread.own_text) search_thread.shared_text.publish(text);
}

void search_once() {
    SearchThread& t = search_thread;
    check_search_phase("search thread starts", {1, 0, 0});
    if (!t.pondering.load(std::memory_order_relaxed)) ui.post_search_picture(PICTURE_STOP);
    const int64_t start = clock_ms();
    t.search_started_ms.store(start, std::memory_order_relaxed);
    const bool clock_runs = clock_state.clock_running.load(std::memory_order_relaxed);
    if (clock_runs && !t.pondering.load(std::memory_order_relaxed)) start_engine_lap(start);

    t.search_value = getmove(t.search_position, t.search_side, t.own_text, t.stop_flag, t.search_flags,
                             t.search_result, t.search_searched);
    t.shared_text.publish(t.own_text);

    const int64_t end = clock_ms();
    t.search_elapsed = static_cast<double>(end - start) / 1000.0;
    const bool pondered = t.pondering.load(std::memory_order_acquire) != 0;
    if (!pondered) charge_engine_time(end);
    check_search_phase("search returns", {1, 0, 0});
    t.searching.store(0, std::memory_order_release);
    t.search_finished.store(1, std::memory_order_release);
    if (!pondered) ui.post_search_picture(PICTURE_GO);
}

void search_thread_body() {
    SearchThread& t = search_thread;
    for (;;) {
        check_search_phase("search thread is idle", {0, ANY_FLAG, 0});
        t.search_done_event.signal();
        t.search_start_event.wait();
        search_once();
    }
}

bool wait_for_search_within(int limit_ms) {
    // Without a thread nothing searches.
    return !search_thread.running.load(std::memory_order_relaxed) ||
           search_thread.search_done_event.wait_for(limit_ms);
}

}  // namespace

void start_search_thread() {
    SearchThread& t = search_thread;
    if (t.running.load(std::memory_order_relaxed)) return;
    search_text_listener = publish_search_text;
    const bool made =
        t.make_thread ? t.make_thread(search_thread_body) : start_detached_thread(search_thread_body);
    t.running.store(made, std::memory_order_relaxed);
    if (!t.running.load(std::memory_order_relaxed))
        ui.message_box("Cannot create search thread", "Error", ICON_ERROR);
}

void reset_search_flags() {
    SearchThread& t = search_thread;
    t.search_finished.store(0, std::memory_order_relaxed);
    t.pondering.store(0, std::memory_order_relaxed);
    t.stop_flag.store(0, std::memory_order_relaxed);
    t.ponder_done = false;
    t.this_search_aborted = false;
    t.told_to_end = false;
    t.start_waits = false;
    t.search_target_time = 0;
    t.ponder_move_text[0] = '\0';
    t.ponder_result_text[0] = '\0';
    t.wait_limit_ms = SEARCH_WAIT_MS;
}

const char* search_text() {
    SearchThread& t = search_thread;
    const uint32_t version = t.shared_text.current_version();
    if (version != t.text_copy_version && t.shared_text.read(t.text_copy)) t.text_copy_version = version;
    return t.text_copy;
}

bool real_search_runs() {
    return search_thread.searching.load(std::memory_order_acquire) &&
           !search_thread.pondering.load(std::memory_order_relaxed);
}

bool engine_time_runs() { return real_search_runs() || search_thread.start_waits; }

bool wait_for_search() { return wait_for_search_within(search_thread.wait_limit_ms); }

bool stop_search() {
    SearchThread& t = search_thread;
    t.start_waits = false;
    const bool waited_for = std::exchange(t.told_to_end, true);
    t.stop_flag.store(1, std::memory_order_relaxed);
    return wait_for_search_within(waited_for ? 0 : t.wait_limit_ms);
}

bool discard_search() {
    SearchThread& t = search_thread;
    const bool open =
        t.searching.load(std::memory_order_acquire) || t.search_finished.load(std::memory_order_acquire);
    const bool real = (open && !t.pondering.load(std::memory_order_relaxed)) || t.start_waits;
    t.this_search_aborted = true;
    const bool idle = stop_search();
    // Its time was the engine's; the user's begins here.
    if (real) start_user_lap(clock_ms());
    return idle;
}
