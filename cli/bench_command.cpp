#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <memory>

#include "cli/bench_positions.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "search/getmove.h"
#include "search/search_state.h"
#include "search/table.h"

namespace {

constexpr double UNLIMITED = 1e9;  // seconds

struct BenchOptions {
    int depth = 13;
    int threads = 1;
};

// The node count is the signature of the search: it depends on the depth and the weights alone.
void run_bench(const BenchOptions& options) {
    set_search_threads(options.threads);
    if (!start_console_engine()) return;
    set_fixed_time(UNLIMITED);
    search_state.depth_limit = options.depth;
    uint64_t nodes = 0;
    const auto start = std::chrono::steady_clock::now();
    for (size_t i = 0; i < bench_positions.size(); ++i) {
        Position position;
        if (!read_position(bench_positions[i], position)) return;
        char text[SEARCH_TEXT_SIZE];
        Move best{};
        int32_t searched = 0;
        std::atomic<int32_t> never_stopped = 0;
        const int32_t value = getmove(position, position.side, text, never_stopped,
                                      SEARCH_FULL_DEPTH | SEARCH_QUIET, best, searched);
        nodes += searched_nodes();
        std::printf("%2zu/%zu value %5d nodes %10" PRIu64 "  %s\n", i + 1, bench_positions.size(), value,
                    searched_nodes(), bench_positions[i]);
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    std::printf("nodes %" PRIu64 ", %.2f sec, %.0f kN/s\n", nodes, elapsed.count(),
                static_cast<double>(nodes) / 1000.0 / elapsed.count());
}

}  // namespace

void add_bench_command(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "bench",
        "Search fixed positions to a fixed depth; the number of nodes is the signature of the search");
    const auto options = std::make_shared<BenchOptions>();
    command->add_option("--depth", options->depth, "Depth of each search")
        ->check(CLI::Range(1, MAX_DEPTH))
        ->capture_default_str();
    command->add_option("--threads", options->threads, "Search threads")->check(CLI::Range(1, 8));
    command->callback([options] { run_bench(*options); });
}
