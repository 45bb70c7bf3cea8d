#include "base/system_info.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cinttypes>
#include <cstdio>
#include <system_error>

#include "base/files.h"

namespace {

// What a process of a 64-bit system can address if it has no limit of its own.
constexpr int64_t ADDRESS_SPACE = int64_t{1} << 47;

// The start of a file that the system makes up as it is read, so that it has no size.
std::string read_system_file(const char* path) {
    const OpenFile file(std::fopen(path, "r"));
    std::array<char, 8192> buffer;
    const size_t bytes = file ? std::fread(buffer.data(), 1, buffer.size(), file.get()) : 0;
    return {buffer.data(), bytes};
}

int64_t address_space_limit() {
    rlimit limit;
    if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return ADDRESS_SPACE;
    return static_cast<int64_t>(std::min<rlim_t>(limit.rlim_cur, ADDRESS_SPACE));
}

int64_t address_space_used() {
    int64_t pages = 0;
    if (std::sscanf(read_system_file("/proc/self/statm").c_str(), "%" SCNd64, &pages) != 1) return 0;
    return pages * sysconf(_SC_PAGESIZE);
}

std::string memory_info() { return read_system_file("/proc/meminfo"); }

// The figure of that name, or so many pages where the system does not tell it.
int64_t figure_or_pages(std::string_view info, std::string_view name, int pages) {
    const int64_t figure = memory_info_figure(info, name);
    return figure > 0 ? figure : std::max<int64_t>(0, int64_t{sysconf(pages)} * sysconf(_SC_PAGESIZE));
}

// The file cache, which the system would give back, counts in; among the free pages it would not.
int64_t available_memory(std::string_view info) {
    return figure_or_pages(info, "MemAvailable", _SC_AVPHYS_PAGES);
}

}  // namespace

int64_t memory_info_figure(std::string_view text, std::string_view name) {
    while (!text.empty()) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (!line.starts_with(name) || line.size() == name.size() || line[name.size()] != ':') continue;
        line.remove_prefix(name.size() + 1);
        line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
        int64_t kilobytes = -1;
        const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), kilobytes);
        if (error != std::errc() || kilobytes < 0 || kilobytes > INT64_MAX / 1024) return -1;
        return kilobytes * 1024;
    }
    return -1;
}

MemoryFigures memory_figures() {
    const std::string info = memory_info();
    MemoryFigures figures;
    figures.total_physical = figure_or_pages(info, "MemTotal", _SC_PHYS_PAGES);
    figures.free_physical = std::min(available_memory(info), figures.total_physical);
    figures.total_page_file = std::max<int64_t>(0, memory_info_figure(info, "SwapTotal"));
    figures.free_page_file = std::max<int64_t>(0, memory_info_figure(info, "SwapFree"));
    figures.total_virtual = address_space_limit();
    figures.free_virtual = std::max<int64_t>(0, figures.total_virtual - address_space_used());
    return figures;
}

int64_t available_physical_memory() { return available_memory(memory_info()); }

int percent_in_use(const MemoryFigures& figures) {
    if (figures.total_physical <= 0) return 0;
    const int64_t used =
        std::clamp<int64_t>(figures.total_physical - figures.free_physical, 0, figures.total_physical);
    return static_cast<int>(static_cast<double>(used) / static_cast<double>(figures.total_physical) * 100.0);
}

int processor_count() { return static_cast<int>(std::max(1l, sysconf(_SC_NPROCESSORS_ONLN))); }

std::string time_text(std::time_t moment) {
    std::tm parts{};
    char text[64];
    if (!localtime_r(&moment, &parts) || !asctime_r(&parts, text)) return "\n";
    return text;
}
