#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <memory>
#include <string>

#include "base/clock.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "core/movegen.h"
#include "core/perft.h"

namespace {

struct PerftOptions {
    int depth = 0;
    std::string fen;
};

// Counts a first move after the other, to tell how far it is.
uint64_t perft_with_progress(const Position& position, int depth) {
    if (depth < 2) return perft(position, depth);
    MoveList list;
    generate_moves(position, list, position.side);
    uint64_t nodes = 0;
    const int64_t start = clock_ms();
    for (int i = 0; i < list.count; ++i) {
        show_progress("perft(" + std::to_string(depth) + "): " + std::to_string(i) + " of " +
                      std::to_string(list.count) + " first moves" + time_left_text(start, i, list.count - i));
        nodes += perft(position_after(list[i], position.side ^ 1), depth - 1);
    }
    show_progress("");
    return nodes;
}

void run_perft(const PerftOptions& options) {
    Position position = START_POSITION;
    if (!options.fen.empty() && !read_position(options.fen, position)) return;
    if (!is_legal_setup(position)) return fail("Illegal position");
    for (int depth = 1; depth <= options.depth; ++depth) {
        const auto start = std::chrono::steady_clock::now();
        const uint64_t nodes = perft_with_progress(position, depth);
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        std::printf("perft(%d) %" PRIu64 " nodes, %.2f sec, %.0f kN/s\n", depth, nodes, elapsed.count(),
                    static_cast<double>(nodes) / 1000.0 / std::max(elapsed.count(), 1e-9));
        std::fflush(stdout);
    }
}

}  // namespace

void add_perft_command(CLI::App& program) {
    CLI::App* const command = program.add_subcommand("perft", "Count the positions that legal moves lead to");
    const auto options = std::make_shared<PerftOptions>();
    command->add_option("DEPTH", options->depth, "Plies; each depth up to it is counted and printed")
        ->required()
        ->check(CLI::Range(1, 60));
    command->add_option("FEN", options->fen, "Position to start from, the start of the game by default");
    command->callback([options] { run_perft(*options); });
}
