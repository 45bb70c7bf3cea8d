// A search ends on its own soon after `Mintime`, well before `max_time`: the latter is some multiple of the
// target, so that a search in trouble can finish its iteration. The clock is kept by bounding `max_time`
// itself: with a number of moves to a share of what is left beyond a reserve, with an increment to what is on
// the clock.
#include "control/time_control_limits.h"

#include <algorithm>

#include "search/search_state.h"

namespace {

constexpr double TARGET_TO_MIN = 0.65;
constexpr double TARGET_TO_STEP = 0.4;
constexpr double TARGET_TO_MAX = 4;
constexpr double INCREMENT_TARGET_TO_MAX = 2.6;

constexpr double LEAST_MAX_TIME = 0.005;
constexpr double LEAST_TIME = 0.002;
constexpr double LEAST_RUN_OUT_TIME = 0.1;

// Above the plain share, as most searches end well before `max_time`; more so when the opponent's time is
// used.
constexpr double USE_FACTOR = 1.23;
constexpr double PONDER_USE_FACTOR = 1.5375;

// Of the whole control.
constexpr double RESERVE = 0.015;
constexpr double RESERVE_PER_MOVE = 0.0009;

// Not above the bound includes what is no number.
double at_least(double value, double bound) { return value > bound ? value : bound; }
double zero_below(double value, double bound) { return value >= bound ? value : 0; }

double use_factor(const ClockControl& control) {
    return control.pondering_on ? PONDER_USE_FACTOR : USE_FACTOR;
}

int32_t moves_limit(const ClockControl& control) {
    return control.clock_moves_limit == 0 ? 1 : control.clock_moves_limit;
}

MoveTime increment_move_time(const ClockControl& control, double used, int32_t clock_moves, int pieces) {
    const double c = control.increment_seconds;
    const double op = control.operator_time;
    const double left = (static_cast<double>(clock_moves) + 1) * c + control.initial_seconds - used;
    const double hard = at_least(left - (c * 0.02 + 0.035) - op, 0);
    const double moves = estimated_moves_left(pieces);
    const double share = (moves * c + left - (c * 0.01 + op) * moves) / moves;
    MoveTime time;
    time.max_time =
        at_least(std::min(share * use_factor(control) * INCREMENT_TARGET_TO_MAX, hard), LEAST_MAX_TIME);
    time.search_target_time = at_least(time.max_time / INCREMENT_TARGET_TO_MAX, LEAST_TIME);
    time.Mintime = at_least(TARGET_TO_MIN * time.search_target_time, LEAST_TIME);
    time.step_time = zero_below(time.Mintime * TARGET_TO_STEP / TARGET_TO_MIN, LEAST_TIME);
    return time;
}

// The most of the available time that one move may take.
double capped_time(double available, int64_t moves) {
    if (moves < 11) return available / 4;
    return moves < 16 ? available / 5 : available / 6;
}

MoveTime moves_limit_move_time(const ClockControl& control, double used, int32_t clock_moves, int pieces) {
    const double whole = control.clock_minutes * 60;
    const int64_t left = int64_t{moves_limit(control)} - clock_moves;
    const int64_t moves = std::min<int64_t>(estimated_moves_left(pieces), left);
    const double available = whole - used -
                             static_cast<double>(control.operator_time) * static_cast<double>(left) -
                             whole * RESERVE;
    double most = at_least(available / static_cast<double>(moves), 0) * use_factor(control) * TARGET_TO_MAX;
    most = std::min(most, capped_time(available, moves));
    const double reserve = whole * RESERVE_PER_MOVE * static_cast<double>(left);
    if (reserve > available - most) most = available - reserve;
    MoveTime time;
    time.max_time = at_least(most, LEAST_MAX_TIME);
    time.search_target_time = at_least(time.max_time / TARGET_TO_MAX, LEAST_TIME);
    time.Mintime = at_least(TARGET_TO_MIN * time.search_target_time, LEAST_TIME);
    time.step_time = zero_below(TARGET_TO_STEP * time.search_target_time, LEAST_TIME);
    return time;
}

// The control adds no time: what follows is played at its average.
double run_out_time(const ClockControl& control) {
    return at_least(control.clock_minutes * 60 / moves_limit(control) - control.operator_time,
                    LEAST_RUN_OUT_TIME);
}

}  // namespace

int estimated_moves_left(int pieces) {
    const double moves = std::clamp(pieces, 0, SQUARES) * 1.0588235294117647 + 0.6470588235294112;
    return std::max(static_cast<int>(moves), 1);
}

bool control_run_out(const ClockControl& control, int32_t clock_moves) {
    return !control.increment_mode && clock_moves >= moves_limit(control);
}

MoveTime clock_move_time(const ClockControl& control, double used, int32_t clock_moves, int pieces) {
    if (control.increment_mode) return increment_move_time(control, used, clock_moves, pieces);
    if (control_run_out(control, clock_moves)) return fixed_move_time(run_out_time(control), false);
    return moves_limit_move_time(control, used, clock_moves, pieces);
}

MoveTime fixed_move_time(double seconds, bool analysis) {
    const double target = at_least(seconds, 0);
    return {target, TARGET_TO_MIN * target, analysis ? 0 : TARGET_TO_STEP * target, TARGET_TO_MAX * target};
}

void set_move_time(const MoveTime& time) {
    search_state.Mintime = time.Mintime;
    search_state.step_time = time.step_time;
    search_state.max_time = time.max_time;
}
