// Options that several commands have, so that they mean and allow the same everywhere.
#pragma once

#include <CLI/CLI.hpp>

// CLI::Range, which NaN passes, without it.
CLI::Validator number_within(double low, double high);

CLI::Option* add_seconds_option(CLI::App& command, double& seconds, const char* help);
CLI::Option* add_depth_option(CLI::App& command, int& depth, const char* help = "Depth of each search");
CLI::Option* add_hash_option(CLI::App& command, int& megabytes,
                             const char* help = "Size of the transposition table in megabytes");
CLI::Option* add_threads_option(CLI::App& command, int& threads);
