#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <memory>

#include "cli/bench_positions.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/options.h"
#include "search/engine_settings.h"
#include "search/getmove.h"
#include "search/search_state.h"
#include "search/table.h"

namespace {

struct BenchOptions {
    int depth = 13;
    int threads = 1;
};

// All searches with one number of threads.
struct BenchTotal {
    uint64_t nodes = 0;
    double seconds = 0;
};

int32_t search_position(const Position& position, int threads, BenchTotal& total) {
    engine_settings.search_threads = threads;
    char text[SEARCH_TEXT_SIZE];
    Move best{};
    int32_t searched = 0;
    std::atomic<int32_t> never_stopped = 0;
    const auto start = std::chrono::steady_clock::now();
    const int32_t value = getmove(position, position.side, text, never_stopped,
                                  SEARCH_FULL_DEPTH | SEARCH_QUIET, best, searched);
    total.seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    total.nodes += searched_nodes();
    return value;
}

void print_total(const BenchTotal& total) {
    std::printf("nodes %" PRIu64 ", %.2f sec, %.0f kN/s\n", total.nodes, total.seconds,
                static_cast<double>(total.nodes) / 1000.0 / total.seconds);
}

// With one thread the node count is the signature of the search: it depends on the depth and the weights
// alone. With more, each position is searched by one thread before, both times with an empty table, so that
// the times to the same depth can be compared on a machine that does other work.
void run_bench(const BenchOptions& options) {
    set_search_threads(options.threads);
    if (!start_console_engine()) return;
    set_fixed_time(NO_TIME_LIMIT);
    search_state.depth_limit = options.depth;
    const bool compare = options.threads > 1;
    BenchTotal alone, total;
    for (size_t i = 0; i < bench_positions.size(); ++i) {
        Position position;
        if (!read_position(bench_positions[i], position)) return;
        const BenchTotal before = total;
        if (compare) {
            tt_clear();
            search_position(position, 1, alone);
            tt_clear();
        }
        const int32_t value = search_position(position, options.threads, total);
        std::printf("%2zu/%zu value %5d nodes %10" PRIu64 "  %s\n", i + 1, bench_positions.size(), value,
                    total.nodes - before.nodes, bench_positions[i]);
        std::fflush(stdout);
    }
    if (compare) {
        std::printf("1 thread: ");
        print_total(alone);
        std::printf("%d threads: %.2f times as fast to the same depth\n", options.threads,
                    alone.seconds / total.seconds);
    }
    print_total(total);
}

}  // namespace

void add_bench_command(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "bench",
        "Search fixed positions to a fixed depth; the number of nodes is the signature of the search. "
        "With more than one thread the time to that depth is compared with that of one");
    const auto options = std::make_shared<BenchOptions>();
    add_depth_option(*command, options->depth)->capture_default_str();
    add_threads_option(*command, options->threads);
    command->callback([options] { run_bench(*options); });
}
