#include "cli/options.h"

#include <cmath>
#include <cstdlib>
#include <string>

#include "search/search_state.h"
#include "search/table.h"
#include "search/thread_record.h"

CLI::Validator number_within(double low, double high) {
    const CLI::Range range(low, high);
    return {[range](std::string& text) {
                const bool is_number = !std::isnan(std::strtod(text.c_str(), nullptr));
                return is_number ? range(text) : text + " is not a number";
            },
            range.get_description()};
}

CLI::Option* add_seconds_option(CLI::App& command, double& seconds, const char* help) {
    return command.add_option("--time", seconds, help)->check(number_within(0.001, 1e6));
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
