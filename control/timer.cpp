#include "control/game_flow.h"
#include "control/mode_hooks.h"
#include "control/panes.h"
#include "control/search_thread.h"
#include "control/start_search.h"

namespace {

constexpr int32_t TICKS_A_REFRESH = 5;

// True if the search has ended and nobody has seen its result.
bool result_waits() {
    return !search_thread.searching.load(std::memory_order_acquire) &&
           search_thread.search_finished.load(std::memory_order_acquire);
}

}  // namespace

void timer_tick() {
    if (real_search_runs()) {
        show_status(search_text());
        mode_hooks.dxp_show_search_text(1);
    }
    if (result_waits()) {
        // The search thread has only a few steps left to where it is idle.
        wait_for_search();
        if (!search_thread.pondering.load(std::memory_order_relaxed)) mode_hooks.dxp_show_search_text(0);
        search_done(3);
    }
    if (search_thread.start_waits && !search_thread.searching.load(std::memory_order_acquire))
        start_waiting_search();
    if (++panes.ticks % TICKS_A_REFRESH == 0) refresh_panes();
}
