// tessarin-cli: the engine on a console.
#include <cstdio>
#include <exception>

#include "cli/commands.h"
#include "cli/console.h"

namespace {

int run(int argc, char** argv) {
    CLI::App program(
        "Tessarin International on the console: plays and analyses international draughts.\n"
        "Positions are FEN texts such as W:W31,32,K46:B1,K2: the side to move, then the squares of\n"
        "white's and black's pieces, kings with a K. Exit status: 0, 1 for bad input, 2 for bad usage.",
        "tessarin-cli");
    program.require_subcommand(1);
    add_perft_command(program);
    add_inspect_command(program);
    add_search_command(program);
    add_play_command(program);
    add_analyze_command(program);
    add_pdn_command(program);
    add_bench_command(program);
    add_weights_command(program);
    add_selfplay_command(program);
    add_train_command(program);
    add_ballots_command(program);
    add_match_command(program);
    add_player_command(program);
    add_egdb_command(program);
    add_dxp_command(program);
    add_book_command(program);
    add_book_worker_command(program);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return program.exit(error) == 0 ? 0 : EXIT_BAD_USAGE;
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) fail("cannot write to standard output");
    return exit_status();
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        // What is left here is that memory ran out.
        std::fprintf(stderr, "tessarin-cli: %s\n", error.what());
        return EXIT_BAD_INPUT;
    }
}
