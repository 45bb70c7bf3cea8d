// The commands of the console program. Each adds its options to the program's parser and runs when it was
// chosen; a command that fails has said why on standard error and calls `set_exit_status`.
#pragma once

#include <CLI/CLI.hpp>

void add_perft_command(CLI::App& program);
void add_inspect_command(CLI::App& program);
void add_search_command(CLI::App& program);
void add_play_command(CLI::App& program);
void add_analyze_command(CLI::App& program);
void add_pdn_command(CLI::App& program);
void add_bench_command(CLI::App& program);
void add_weights_command(CLI::App& program);
void add_selfplay_command(CLI::App& program);
void add_train_command(CLI::App& program);
void add_ballots_command(CLI::App& program);
void add_match_command(CLI::App& program);
void add_player_command(CLI::App& program);
void add_egdb_command(CLI::App& program);
void add_dxp_command(CLI::App& program);
void add_book_command(CLI::App& program);
void add_book_worker_command(CLI::App& program);
