#include "shell/system_log.h"

#include <ctime>
#include <string_view>

#include "base/log.h"

namespace {

constexpr int64_t MEGABYTE = 1 << 20;

std::string line(const char* name, std::string_view text) {
    return std::string(name) + ": " + std::string(text) + "\n";
}

std::string line(const char* name, int64_t number) { return line(name, std::to_string(number)); }

}  // namespace

std::vector<std::string> system_info_lines(const std::string& time, const ProgramPaths& paths,
                                           const Settings& record, const MemoryFigures& memory) {
    return {
        time,
        line("engine", paths.window_title),
        line("program filename", paths.program_file),
        line("program path", paths.program_folder),
        line("program data path", paths.data_folder),
        line("search threads", record.search_threads),
        line("percent of memory in use", percent_in_use(memory)),
        line("total Mbytes of physical memory", memory.total_physical / MEGABYTE),
        line("free Mbytes of physical memory", memory.free_physical / MEGABYTE),
        line("total Mbytes of paging file", memory.total_page_file / MEGABYTE),
        line("free Mbytes of paging file", memory.free_page_file / MEGABYTE),
        line("total Mbytes of virtual memory", memory.total_virtual / MEGABYTE),
        line("free Mbytes of virtual memory", memory.free_virtual / MEGABYTE),
        line("hashtable size", record.hash_mb),
        line("WLD enable", record.wld_enable),
        line("WLD directory", setting_text(record.wld_folder)),
        line("WLD memory", record.wld_cache_mb),
        line("WLD max pieces", record.wld_max_pieces),
        line("WLD max kings 1 side 8 pieces", record.wld_max_kings_8),
        line("WLD parallel init", record.wld_parallel_init),
        line("MTC enable", record.mtc_enable),
        line("MTC directory", setting_text(record.mtc_folder)),
    };
}

void log_system_info() {
    const std::string now = time_text(std::time(nullptr));
    for (const std::string& text : system_info_lines(now, program_paths, settings, memory_figures()))
        log_text(text.c_str());
}
