#include "tools/egdb_solved_files.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

std::string kept_path(const std::string& folder, const Material& m) {
    char text[48];
    std::snprintf(text, sizeof text, "solved%d-%d%d%d%d.part", piece_count(m), m.bm, m.bk, m.wm, m.wk);
    return folder + text;
}

// A file of a build that was being written when its process was killed, as base/files.h names it.
bool was_left_aside(const std::string& name) {
    constexpr std::string_view MARK = ".new";
    const size_t mark = name.rfind(MARK);
    return (name.starts_with("solved") || name.starts_with("db")) && mark != std::string::npos &&
           mark + MARK.size() < name.size() &&
           name.find_first_not_of("0123456789-", mark + MARK.size()) == std::string::npos;
}

}  // namespace

bool take_kept(const std::string& folder, const Material& m, SolvedSet& set) {
    auto solved = std::make_unique<SolvedMaterial>();
    if (read_solved(kept_path(folder, m), m, *solved) != 0) return false;
    set.materials[material_number(m)] = std::move(solved);
    return true;
}

EgdbBuildStatus solve_and_keep(const std::string& folder, const Material& m, SolvedSet& set,
                               const SolveControl& control, EgdbBuildResult& result) {
    const int status = solve_material(m, set, control);
    if (status != 0) return status == 1 ? EGDB_BUILD_STOPPED : EGDB_BUILD_NO_MEMORY;
    const std::string path = kept_path(folder, m);
    if (write_solved(path, *find_solved(set, m)) == 0) return EGDB_BUILT;
    result.failed_file = path;
    return EGDB_BUILD_CANNOT_WRITE;
}

void remove_kept(const std::string& folder, int pieces) {
    for (int n = 2; n <= pieces; ++n)
        for (const Material& m : solving_order(n)) std::remove(kept_path(folder, m).c_str());
    std::error_code error;
    std::vector<std::filesystem::path> left;
    std::filesystem::directory_iterator entry(folder.empty() ? "." : folder, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
        if (was_left_aside(entry->path().filename().string())) left.push_back(entry->path());
    for (const std::filesystem::path& path : left) std::filesystem::remove(path, error);
}
