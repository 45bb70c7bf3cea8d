#include "bench/egdb_solved.h"

#include <cstdio>
#include <filesystem>

#include "base/system_info.h"
#include "tools/egdb_solver.h"

namespace {

std::string solved_path(const std::string& folder, const Material& m) {
    char name[40];
    std::snprintf(name, sizeof name, "%d%d%d%d.solved", m.bm, m.bk, m.wm, m.wk);
    return (std::filesystem::path(folder) / name).string();
}

}  // namespace

bool have_solved(SolvedSet& set, const std::string& folder, int pieces) {
    for (int n = 2; n <= pieces; ++n) {
        for (const Material& m : solving_order(n)) {
            auto solved = std::make_unique<SolvedMaterial>();
            if (read_solved(solved_path(folder, m), m, *solved) == 0) {
                set.materials[material_number(m)] = std::move(solved);
            } else if (solve_material(m, set, {processor_count()}) != 0 ||
                       write_solved(solved_path(folder, m), *find_solved(set, m)) != 0) {
                return false;
            }
        }
    }
    return true;
}
