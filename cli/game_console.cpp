#include "cli/game_console.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "base/clock.h"
#include "cli/console.h"
#include "control/game.h"
#include "control/game_commands.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/time_control.h"

namespace {

// An id that no entry of the Time menu has.
constexpr int32_t NO_TIME_ENTRY = 0;

int64_t next_tick_ms = 0;

bool search_has_ended() {
    return !search_thread.searching.load(std::memory_order_acquire) &&
           search_thread.search_finished.load(std::memory_order_acquire);
}

}  // namespace

bool start_game_console(const Ui& screen) {
    if (!start_console_engine()) return false;
    ui = screen;
    start_search_thread();
    if (!search_thread.running) {
        fail("Cannot create search thread");
        return false;
    }
    reset_game();
    new_game();
    set_gui_mode(NORMAL_MODE);
    reset_game_clock();
    next_tick_ms = clock_ms() + TICK_MS;
    return true;
}

void set_time_per_move(double seconds) {
    set_time_control(NO_TIME_ENTRY);
    settings.time_per_move = seconds;
}

int tick_if_due() {
    const int64_t now = clock_ms();
    if (now >= next_tick_ms || search_has_ended()) {
        timer_tick();
        next_tick_ms = clock_ms() + TICK_MS;
    }
    return static_cast<int>(std::max<int64_t>(next_tick_ms - clock_ms(), 0));
}

void tick_when_due() {
    const int wait = tick_if_due();
    if (search_thread.searching.load(std::memory_order_acquire))
        search_thread.search_done_event.wait_for(wait);
    else if (!search_has_ended())
        std::this_thread::sleep_for(std::chrono::milliseconds(wait));
    tick_if_due();
}
