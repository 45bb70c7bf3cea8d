#include "cli/options.h"

#include "search/search_state.h"
#include "search/table.h"
#include "search/thread_record.h"

CLI::Option* add_seconds_option(CLI::App& command, double& seconds, const char* help) {
    return command.add_option("--time", seconds, help)->check(CLI::Range(0.001, 1e6));
}

CLI::Option* add_depth_option(CLI::App& command, int& depth, const char* help) {
    return command.add_option("--depth", depth, help)->check(CLI::Range(1, MAX_DEPTH));
}

CLI::Option* add_hash_option(CLI::App& command, int& megabytes, const char* help) {
    return command.add_option("--hash", megabytes, help)->check(CLI::Range(1, MAX_TABLE_MB));
}

CLI::Option* add_threads_option(CLI::App& command, int& threads) {
    return command.add_option("--threads", threads, "Search threads")
        ->check(CLI::Range(1, MAX_SEARCH_THREADS));
}
