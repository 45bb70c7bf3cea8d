// Plays games of the engine against itself under a time control and prints for each game how far any move
// went beyond its budget (`max_time`; below 0 none did) and where, and what was left on the clocks. Where
// other programs want the processor too, a move is charged more than the processor time it got, so the
// largest overstep by processor time is told beside it.
//
//   time_trace fixed SECONDS [GAMES]
//   time_trace moves MOVES MINUTES [GAMES]
//   time_trace increment INITIAL INCREMENT [GAMES]
//
// Both sides play on one engine and one clock, each with its own count of moves. With a number of moves the
// games go on to the last of them, whatever is on the board, unless a side cannot move.
#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "base/clock.h"
#include "control/game_clock.h"
#include "control/settings.h"
#include "control/time_control.h"
#include "core/ballots.h"
#include "core/movegen.h"
#include "eval/weights.h"
#include "records/fen.h"
#include "search/engine_settings.h"
#include "search/getmove.h"
#include "search/search_state.h"
#include "search/table.h"
#include "search/threads.h"

namespace {

constexpr int MAX_MOVES = 130;  // of a side
constexpr int MAX_KING_PLIES = 50;
constexpr int USAGE_STATUS = 2;

struct Trace {
    double overstep = -1e9;  // the largest of the game, in seconds
    double overstep_budget = 0;
    int overstep_move = 0;
    double overstep_cpu = 0;  // processor time of that move
    Position overstep_position{};
    double cpu_overstep = -1e9;  // the largest by processor time
    double used = 0;             // by both sides
    double target = 0;           // of all moves together
    int moves = 0;
    double least_left = 1e9;  // on the clock of a side, just after its move
};

double number_of(const char* text) { return std::strtod(text, nullptr); }

bool read_control(int argc, char** argv, int& games) {
    const std::string kind = argc > 1 ? argv[1] : "";
    const int numbers = kind == "fixed" ? 1 : kind == "moves" || kind == "increment" ? 2 : 0;
    if (numbers == 0 || argc < 2 + numbers || argc > 3 + numbers) return false;
    const double first = number_of(argv[2]), second = numbers == 2 ? number_of(argv[3]) : 0;
    if (kind == "fixed") {
        settings.time_per_move = first;
    } else if (kind == "moves") {
        if (set_game_clock({static_cast<int32_t>(first), second, 0, 0, 0}) != 0) return false;
    } else {
        settings2.increment_mode = 1;
        settings2.initial_seconds = first;
        settings2.increment_seconds = second;
        set_time_control(TIME_GAME_CLOCK);
    }
    games = argc == 3 + numbers ? std::atoi(argv[2 + numbers]) : 1;
    return first > 0 && games > 0;
}

// As before a search in a game against the user.
MoveTime prepare_time(const Position& position) {
    if (settings.use_game_clock) return compute_move_time(bit_count(position.black | position.white));
    const MoveTime time = fixed_move_time(settings.time_per_move, false);
    set_move_time(time);
    tune_hash_size(time.search_target_time, wanted_threads());
    return time;
}

double time_left(int side, int moves) {
    const ClockControl control = clock_control();
    const double given = control.increment_mode ? control.initial_seconds + moves * control.increment_seconds
                                                : control.clock_minutes * 60;
    return given - clock_used(side);
}

Move timed_move(const Position& position, int moves, Trace& trace) {
    clock_state.clock_side = position.side;
    clock_state.clock_moves = moves;
    const double used_before = clock_used(position.side);
    const std::clock_t cpu_start = std::clock();
    start_engine_lap(clock_ms());
    const MoveTime time = prepare_time(position);
    std::atomic<int32_t> stop = 0;
    char text[SEARCH_TEXT_SIZE];
    int32_t searched = 0;
    Move best;
    search_state.game_line = &position;
    getmove(position, position.side, text, stop, SEARCH_QUIET, best, searched);
    search_state.game_line = nullptr;
    charge_engine_time(clock_ms());

    const double used = clock_used(position.side) - used_before;
    const double cpu = static_cast<double>(std::clock() - cpu_start) / CLOCKS_PER_SEC;
    trace.cpu_overstep = std::max(trace.cpu_overstep, cpu - time.max_time);
    if (used - time.max_time > trace.overstep) {
        trace.overstep = used - time.max_time;
        trace.overstep_budget = time.max_time;
        trace.overstep_move = moves + 1;
        trace.overstep_cpu = cpu;
        trace.overstep_position = position;
    }
    trace.used += used;
    trace.target += time.search_target_time;
    ++trace.moves;
    if (settings.use_game_clock)
        trace.least_left = std::min(trace.least_left, time_left(position.side, moves + 1));
    return best;
}

bool goes_on(const Position& position, int moves) {
    MoveList list;
    if (generate_moves(position, list, position.side) == 0) return false;
    if (settings.use_game_clock && !settings2.increment_mode) return moves < settings.clock_moves_limit;
    return moves < MAX_MOVES && position.reversible_plies < MAX_KING_PLIES;
}

Trace play_game(const Position& start, std::array<int, 2>& moves) {
    Trace trace;
    moves = {};
    reset_clock_state();
    clock_command(CLOCK_START, true, true, clock_ms());
    // Linked one to the other, so the line must not be moved.
    std::vector<Position> line;
    line.reserve(static_cast<size_t>(2 * std::max(MAX_MOVES, settings.clock_moves_limit) + 1));
    line.push_back(start);
    while (goes_on(line.back(), moves[static_cast<size_t>(line.back().side)])) {
        const Position& position = line.back();
        int& made = moves[static_cast<size_t>(position.side)];
        const Move move = timed_move(position, made, trace);
        ++made;
        Position child;
        make_child(position, child, move, has_capture(position, position.side));
        line.push_back(child);
    }
    return trace;
}

void print_game(int number, const Trace& trace, const std::array<int, 2>& moves) {
    std::printf(
        "game %d: moves %d-%d, used %.2f s of targets %.2f s, largest overstep %.3f s of %.3f s at move %d",
        number, moves[WHITE], moves[BLACK], trace.used, trace.target, trace.overstep, trace.overstep_budget,
        trace.overstep_move);
    char fen[FEN_TEXT_SIZE];
    position_to_fen(trace.overstep_position, trace.overstep_position.side, fen);
    std::printf(" with %.3f s of processor time in %s, largest by processor time %.3f s", trace.overstep_cpu,
                fen, trace.cpu_overstep);
    if (settings.use_game_clock) {
        std::printf(", left white %.2f s, black %.2f s, at least %.2f s", time_left(WHITE, moves[WHITE]),
                    time_left(BLACK, moves[BLACK]), trace.least_left);
    }
    std::printf(", table %d MB\n", transposition_table.effective_mb);
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    int games = 0;
    if (!read_control(argc, argv, games)) {
        std::fprintf(stderr,
                     "usage: time_trace fixed SECONDS [GAMES]\n"
                     "       time_trace moves MOVES MINUTES [GAMES]\n"
                     "       time_trace increment INITIAL INCREMENT [GAMES]\n");
        return USAGE_STATUS;
    }
    if (load_weights() != 0 || tt_allocate() != 0) {
        std::fprintf(stderr, "no weights.bin in this folder, or no memory\n");
        return 1;
    }
    tt_age();  // the first search knows what a pass takes
    for (int game = 0; game < games; ++game) {
        Ballot ballot;
        if (!find_ballot(2, game * 7 % TWO_MOVE_BALLOTS, ballot)) return 1;
        std::array<int, 2> moves{};
        const Trace trace = play_game(ballot.position, moves);
        print_game(game + 1, trace, moves);
    }
    return 0;
}
