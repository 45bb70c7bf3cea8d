#include "tools/egdb_mtc_build.h"

#include <algorithm>
#include <map>
#include <new>

#include "base/files.h"
#include "egdb/egdb_format.h"
#include "egdb/identify.h"
#include "tools/egdb_mtc_blocks.h"
#include "tools/egdb_mtc_solver.h"
#include "tools/egdb_names.h"
#include "tools/egdb_solved_files.h"

namespace {

constexpr EgdbFormat FORMAT = egdb_format(EGDB_MTC);

// Distances take about this much more work than the first pass over the positions.
constexpr int64_t DISTANCE_PASSES = 5;

struct Build {
    const EgdbBuildOptions& options;
    const SolveControl control;
    EgdbBuildProgress& progress;
    EgdbBuildResult& result;
    std::string folder;
    SolvedSet set;
    std::map<size_t, SolvedDistances> distances;  // by material, until their file is written
};

std::string path_of(const Build& build, const EgdbFileName& name, const char* extension) {
    return build.folder + name.text.data() + extension;
}

// The index is written last, so it stands for both.
bool is_built(const Build& build, const EgdbFileName& name) {
    return file_size(path_of(build, name, FORMAT.index_extension)) > 0 &&
           file_size(path_of(build, name, FORMAT.data_extension)) > 0;
}

bool is_whole(const Build& build, int pieces) {
    const std::vector<EgdbFileName> names = egdb_names_of(EGDB_MTC, pieces);
    return std::all_of(names.begin(), names.end(),
                       [&](const EgdbFileName& name) { return is_built(build, name); });
}

int tables_of(const Material& m) { return is_symmetric(m) ? 1 : 2; }

int64_t distance_work(const Material& m) { return DISTANCE_PASSES * slice_size(m) * tables_of(m); }

EgdbBuildStatus cannot_write(Build& build, const std::string& file) {
    build.result.failed_file = file;
    return EGDB_BUILD_CANNOT_WRITE;
}

EgdbBuildStatus write_name(Build& build, const EgdbFileName& name) {
    MtcFilePair pair;
    for (const Material& m : materials_of(name)) {
        const auto found = build.distances.find(material_number(m));
        for (int side = 0; side < tables_of(m); ++side) {
            const std::vector<uint8_t>& all = found->second.distances[static_cast<size_t>(side)];
            for (int s = 0; s < subslice_count(m); ++s) {
                const int64_t first = s * SUBSLICE_POSITIONS;
                const int64_t count = std::min(SUBSLICE_POSITIONS, slice_size(m) - first);
                append_mtc_subslice(
                    pair, std::span(all).subspan(static_cast<size_t>(first), static_cast<size_t>(count)), m,
                    s, side);
            }
        }
        build.distances.erase(found);
    }
    const std::string data = path_of(build, name, FORMAT.data_extension);
    const std::string index = path_of(build, name, FORMAT.index_extension);
    if (replace_file(data, pair.data.data(), pair.data.size()) != 0) return cannot_write(build, data);
    if (replace_file(index, pair.index.data(), pair.index.size()) != 0) return cannot_write(build, index);
    build.result.files.push_back({name.text.data(), pair.positions, pair.positions - pair.told_positions,
                                  static_cast<int64_t>(pair.data.size()),
                                  static_cast<int64_t>(pair.index.size())});
    return EGDB_BUILT;
}

EgdbBuildStatus solve_one(Build& build, const Material& m, bool wanted) {
    const int64_t solved = build.progress.done + solving_work(m);
    const int64_t after = solved + (wanted ? distance_work(m) : 0);
    if (take_kept(build.folder, m, build.set)) {
        build.progress.kept += solving_work(m);
    } else {
        const EgdbBuildStatus status =
            solve_and_keep(build.folder, m, build.set, build.control, build.result);
        if (status != EGDB_BUILT) return status;
    }
    build.progress.done = solved;
    if (wanted) {
        const int status = solve_distances(m, build.set, build.control, build.distances[material_number(m)]);
        if (status == 3) return EGDB_BUILD_TOO_LONG;
        if (status != 0) return status == 2 ? EGDB_BUILD_NO_MEMORY : EGDB_BUILD_STOPPED;
    }
    build.progress.done = after;
    return EGDB_BUILT;
}

EgdbBuildStatus build_pieces(Build& build, int pieces) {
    std::vector<EgdbFileName> missing = egdb_names_of(EGDB_MTC, pieces);
    std::erase_if(missing, [&](const EgdbFileName& name) { return is_built(build, name); });
    for (const Material& m : solving_order(pieces)) {
        // The file that this material ends is written at once.
        const auto of_file = std::find_if(missing.begin(), missing.end(), [&](const EgdbFileName& name) {
            const std::vector<Material> held = materials_of(name);
            return std::find(held.begin(), held.end(), m) != held.end();
        });
        const bool wanted = of_file != missing.end();
        if (const EgdbBuildStatus status = solve_one(build, m, wanted); status != EGDB_BUILT) return status;
        if (!wanted || build.distances.size() < materials_of(*of_file).size()) continue;
        if (const EgdbBuildStatus status = write_name(build, *of_file); status != EGDB_BUILT) return status;
        missing.erase(of_file);
    }
    return EGDB_BUILT;
}

int64_t work_of(const Build& build, int pieces) {
    int64_t work = 0;
    for (const EgdbFileName& name : egdb_names_of(EGDB_MTC, pieces))
        for (const Material& m : materials_of(name))
            work += solving_work(m) + (is_built(build, name) ? 0 : distance_work(m));
    return work;
}

}  // namespace

int64_t mtc_build_memory(int pieces) {
    int64_t values = 0, largest = 0, one_file = 0;
    for (int n = 2; n <= pieces; ++n)
        for (const Material& m : solving_order(n)) values += packed_bytes(m);
    for (const EgdbFileName& name : egdb_names_of(EGDB_MTC, pieces)) {
        int64_t of_file = 0;
        for (const Material& m : materials_of(name)) {
            of_file += slice_size(m) * tables_of(m);
            largest = std::max(largest, slice_size(m) * tables_of(m));
        }
        one_file = std::max(one_file, of_file);
    }
    constexpr int64_t PROGRAM = int64_t{50} << 20;
    return values + largest + 2 * one_file + PROGRAM;  // the file as it is made, at most a byte a position
}

EgdbBuildStatus build_mtc_database(const EgdbBuildOptions& options, const std::atomic<bool>& stop,
                                   EgdbBuildProgress& progress, EgdbBuildResult& result) try {
    Build build{options,
                {options.threads, &stop, &progress.done},
                progress,
                result,
                folder_prefix(options.folder),
                {},
                {}};
    if (!build.folder.empty() && !make_folders(build.folder)) {
        result.failed_file = options.folder;
        return EGDB_BUILD_CANNOT_WRITE;
    }
    // What is missing rests on the values of all fewer pieces.
    int most = options.pieces;
    while (most >= 2 && is_whole(build, most)) --most;
    int64_t all = 0;
    for (int pieces = 2; pieces <= most; ++pieces) all += work_of(build, pieces);
    progress.all = all;
    for (int pieces = 2; pieces <= most; ++pieces)
        if (const EgdbBuildStatus status = build_pieces(build, pieces); status != EGDB_BUILT) return status;
    remove_kept(build.folder, options.pieces);
    return EGDB_BUILT;
} catch (const std::bad_alloc&) {
    return EGDB_BUILD_NO_MEMORY;
}
