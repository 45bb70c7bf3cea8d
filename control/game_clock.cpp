#include "control/game_clock.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>

#include "base/text.h"
#include "control/settings.h"
#include "search/engine_settings.h"
#include "search/table.h"
#include "search/threads.h"

ClockState clock_state;

namespace {

constexpr int TEXT_CLOCK = 211;
constexpr double MOST_SHOWN = 1e9;  // seconds
constexpr int32_t LAST_EARLY_MOVE = 3;
constexpr int32_t LATE_TUNED_MOVE = 55;

std::atomic<double>& used_by(int side) {
    return side == WHITE ? clock_state.white_used : clock_state.black_used;
}

int engine_side() { return clock_state.clock_side.load(std::memory_order_relaxed); }

bool running() { return clock_state.clock_running.load(std::memory_order_relaxed); }

void add_used(int side, double seconds) { used_by(side).fetch_add(seconds, std::memory_order_relaxed); }

double seconds_between(int64_t start_ms, int64_t end_ms) {
    return static_cast<double>(end_ms - start_ms) / 1000.0;
}

// Whoever takes the lap begins the next, so no part of it can be taken twice.
double take_engine_lap(int64_t now_ms) {
    return seconds_between(clock_state.engine_lap_start.exchange(now_ms, std::memory_order_relaxed), now_ms);
}

double take_user_lap(int64_t now_ms) {
    const double lap = seconds_between(clock_state.user_lap_start, now_ms);
    clock_state.user_lap_start = now_ms;
    return lap;
}

// The search thread charges the operator time of the moment when its search was prepared; the settings are
// the interface thread's.
void pass_on_operator_time() {
    clock_state.lap_operator_time.store(settings.operator_time, std::memory_order_relaxed);
}

void start_clock(bool engines_lap, int64_t now_ms) {
    if (running()) return;
    pass_on_operator_time();
    if (engines_lap)
        start_engine_lap(now_ms);
    else
        start_user_lap(now_ms);
    clock_state.clock_running.store(true, std::memory_order_relaxed);
}

void stop_clock(bool engines_lap, int64_t now_ms) {
    if (!clock_state.clock_running.exchange(false, std::memory_order_relaxed)) return;
    if (engines_lap)
        add_used(engine_side(), take_engine_lap(now_ms));
    else
        add_used(engine_side() ^ 1, take_user_lap(now_ms));
}

void reset_clock() {
    clock_state.clock_moves = 0;
    clock_state.clock_running.store(false, std::memory_order_relaxed);
    clock_state.white_used.store(0, std::memory_order_relaxed);
    clock_state.black_used.store(0, std::memory_order_relaxed);
}

// Whole seconds to show, of what may be no number.
int32_t shown_seconds(double seconds) {
    return seconds > 0 ? static_cast<int32_t>(std::min(seconds, MOST_SHOWN)) : 0;
}

// Writes the format with each "%d" and "%02d" replaced by the next number. The format may come from a
// language file, so it is not handed to printf; what it has too much of stays as it is.
void write_numbers(const char* format, std::span<const int32_t> numbers, char* buffer, size_t size) {
    std::string text;
    for (std::string_view rest = format; !rest.empty();) {
        const size_t length = rest.starts_with("%d") ? 2 : rest.starts_with("%02d") ? 4 : 0;
        if (length == 0 || numbers.empty()) {
            text += rest.front();
            rest.remove_prefix(1);
            continue;
        }
        char number[12];
        std::snprintf(number, sizeof number, length == 4 ? "%02d" : "%d", numbers.front());
        text += number;
        numbers = numbers.subspan(1);
        rest.remove_prefix(length);
    }
    std::snprintf(buffer, size, "%s", text.c_str());
}

}  // namespace

void reset_clock_state() {
    reset_clock();
    clock_state.clock_side.store(BLACK, std::memory_order_relaxed);
    clock_state.engine_lap_start.store(0, std::memory_order_relaxed);
    clock_state.user_lap_start = 0;
    clock_state.lap_operator_time.store(0, std::memory_order_relaxed);
}

void clock_command(ClockAction action, bool clock_mode, bool engines_lap, int64_t now_ms) {
    if (action == CLOCK_STOP)
        stop_clock(engines_lap, now_ms);
    else if (action == CLOCK_RESET)
        reset_clock();
    else if (clock_mode)
        start_clock(engines_lap, now_ms);
}

void start_engine_lap(int64_t now_ms) {
    clock_state.engine_lap_start.store(now_ms, std::memory_order_relaxed);
}

void start_user_lap(int64_t now_ms) { clock_state.user_lap_start = now_ms; }

void charge_user_time(int64_t now_ms) {
    if (!running()) return;
    pass_on_operator_time();
    add_used(engine_side() ^ 1, take_user_lap(now_ms));
}

void charge_engine_time(int64_t now_ms) {
    if (!running()) return;
    const int32_t operator_time = clock_state.lap_operator_time.load(std::memory_order_relaxed);
    add_used(engine_side(), operator_time + take_engine_lap(now_ms));
}

void charge_engine_wait(int64_t now_ms) {
    if (!running()) return;
    add_used(engine_side(), take_engine_lap(now_ms));
    start_user_lap(now_ms);
}

void count_engine_move(int64_t now_ms) {
    if (!running()) return;
    ++clock_state.clock_moves;
    start_user_lap(now_ms);
}

void count_step_back(int side_to_move) {
    if (running() && engine_side() == side_to_move && clock_state.clock_moves > 0) --clock_state.clock_moves;
}

void count_step_forward(int side_to_move) {
    if (running() && engine_side() != side_to_move) ++clock_state.clock_moves;
}

double clock_used(int side) { return used_by(side).load(std::memory_order_relaxed); }

ClockControl clock_control() {
    ClockControl control;
    control.increment_mode = settings2.increment_mode != 0;
    control.initial_seconds = settings2.initial_seconds;
    control.increment_seconds = settings2.increment_seconds;
    control.clock_minutes = settings.clock_minutes;
    control.clock_moves_limit = settings.clock_moves_limit;
    control.operator_time = settings.operator_time;
    control.pondering_on = settings.pondering_on != 0;
    return control;
}

MoveTime compute_move_time(int pieces) {
    const ClockControl control = clock_control();
    const int32_t moves = clock_state.clock_moves;
    const MoveTime time = clock_move_time(control, clock_used(engine_side()), moves, pieces);
    pass_on_operator_time();
    set_move_time(time);
    const bool tuned = moves <= LAST_EARLY_MOVE || moves == LATE_TUNED_MOVE;
    if (tuned && !control_run_out(control, moves)) tune_hash_size(time.search_target_time, wanted_threads());
    return time;
}

void clock_text(bool engines_lap, int64_t now_ms, char* buffer, size_t size) {
    double white = clock_used(WHITE), black = clock_used(BLACK);
    if (running()) {
        const int side = engines_lap ? engine_side() : engine_side() ^ 1;
        const int64_t start = engines_lap ? clock_state.engine_lap_start.load(std::memory_order_relaxed)
                                          : clock_state.user_lap_start;
        (side == WHITE ? white : black) += seconds_between(start, now_ms);
    }
    const int32_t white_seconds = shown_seconds(white), black_seconds = shown_seconds(black);
    char format[200];
    get_text(TEXT_CLOCK, format, sizeof format);
    write_numbers(format,
                  std::array{white_seconds / 60, white_seconds % 60, black_seconds / 60, black_seconds % 60,
                             clock_state.clock_moves},
                  buffer, size);
}
