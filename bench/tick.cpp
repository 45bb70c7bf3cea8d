// What a tick of the timer costs when nothing happens, which is nearly always, and when every pane is shown
// anew.
#include <benchmark/benchmark.h>

#include "control/game.h"
#include "control/panes.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "core/movegen.h"

namespace {

void prepare() {
    settings = make_default_settings({});
    settings.pondering_on = 1;
    new_game();
    set_gui_mode(NORMAL_MODE);
}

void idle_tick(benchmark::State& state) {
    prepare();
    for (auto _ : state) timer_tick();
}
BENCHMARK(idle_tick);

void tick_that_shows_all(benchmark::State& state) {
    prepare();
    for (auto _ : state) {
        reset_panes();
        panes.ticks = 4;
        timer_tick();
    }
}
BENCHMARK(tick_that_shows_all);

void game_text_of_a_long_game(benchmark::State& state) {
    prepare();
    Position position = START_POSITION;
    for (int side = WHITE; game.history_count < MAX_HISTORY; side ^= 1) {
        MoveList list;
        if (generate_moves(position, list, side) == 0) break;
        position = position_after(list[list.count / 2], side ^ 1);
        addto_game_history(position, side ^ 1, 0);
    }
    for (auto _ : state) game_text_update();
}
BENCHMARK(game_text_of_a_long_game);

}  // namespace
