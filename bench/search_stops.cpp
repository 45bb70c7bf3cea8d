// How long a search goes on once it is told to stop: searches of the `bench` positions are stopped at random
// moments by a second thread, and the times from the flag to the return of `getmove` are told.
//
//   search_stops [STOPS] [THREADS]
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <thread>
#include <vector>

#include "cli/bench_positions.h"
#include "eval/weights.h"
#include "records/fen.h"
#include "search/engine_settings.h"
#include "search/getmove.h"
#include "search/search_state.h"
#include "search/table.h"
#include "search/threads.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int USAGE_STATUS = 2;
constexpr int MAX_DELAY_MS = 100;
constexpr double NO_LIMIT_SECONDS = 1e6;
constexpr int TABLE_MB = 64;

// Milliseconds from the flag, set so long after the search can be stopped, to the end of the search.
double time_stop(const Position& position, int delay_ms) {
    std::atomic<int32_t> stop{0};
    Clock::time_point stopped;
    search_state.iteration = 0;  // of the search before
    std::jthread stopper([&] {
        while (search_state.iteration < FIRST_STOPPABLE_ITERATION) std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(delay_ms));
        stopped = Clock::now();
        stop = 1;
    });
    search_state.Mintime = search_state.step_time = search_state.max_time = NO_LIMIT_SECONDS;
    char text[SEARCH_TEXT_SIZE];
    int32_t searched = 0;
    Move best;
    getmove(position, position.side, text, stop, SEARCH_QUIET | SEARCH_FULL_DEPTH, best, searched);
    const Clock::time_point ended = Clock::now();
    stopper.join();
    return std::chrono::duration<double, std::milli>(ended - stopped).count();
}

}  // namespace

int main(int argc, char** argv) {
    const int stops = argc > 1 ? std::atoi(argv[1]) : 1000;
    const int threads = argc > 2 ? std::atoi(argv[2]) : MAX_SEARCH_THREADS;
    if (argc > 3 || stops < 1 || threads < 1 || threads > MAX_SEARCH_THREADS) {
        std::fprintf(stderr, "usage: search_stops [STOPS] [THREADS]\n");
        return USAGE_STATUS;
    }
    engine_settings.hash_size_mb = TABLE_MB;
    engine_settings.search_threads = threads;
    if (load_weights() != 0 || tt_allocate() != 0 || threads_init(threads) != threads) {
        std::fprintf(stderr, "the engine does not start\n");
        return EXIT_FAILURE;
    }
    std::mt19937 random(1);
    std::vector<double> milliseconds;
    for (int i = 0; i < stops; ++i) {
        Position position{};
        int side = WHITE;
        fen_to_position(bench_positions[static_cast<size_t>(i) % bench_positions.size()], position, side);
        position.side = side;
        milliseconds.push_back(time_stop(position, static_cast<int>(random() % MAX_DELAY_MS)));
    }
    std::sort(milliseconds.begin(), milliseconds.end());
    const auto at = [&](double share) {
        return milliseconds[static_cast<size_t>(share * static_cast<double>(stops - 1))];
    };
    std::printf("%d stops of %d threads: median %.2f ms, 90 %% below %.2f, 99 %% below %.2f, at most %.2f\n",
                stops, threads, at(0.5), at(0.9), at(0.99), at(1));
    return EXIT_SUCCESS;
}
