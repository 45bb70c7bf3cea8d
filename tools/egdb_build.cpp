#include "tools/egdb_build.h"

#include <algorithm>
#include <new>

#include "base/files.h"
#include "egdb/identify.h"
#include "tools/egdb_names.h"
#include "tools/egdb_solved_files.h"
#include "tools/egdb_whole.h"

namespace {

struct Build {
    const EgdbBuildOptions& options;
    const std::atomic<bool>& stop;
    EgdbBuildProgress& progress;
    EgdbBuildResult& result;
    std::string folder;
    SolvedSet set;
    std::unique_ptr<EgdbDatabase> database;  // of earlier builds, opened when it is first needed
    Coders coders;
};

std::string data_path(const Build& build, const EgdbFileName& name) {
    return build.folder + name.text.data() + ".cpr1";
}
std::string index_path(const Build& build, const EgdbFileName& name) {
    return build.folder + name.text.data() + ".idx1";
}

// The index is written last, so it stands for both.
bool is_built(const Build& build, const EgdbFileName& name) {
    return file_size(index_path(build, name)) > 0 && file_size(data_path(build, name)) >= 0;
}

int64_t positions_of(const Material& m) { return slice_size(m) * (is_symmetric(m) ? 1 : 2); }

// Solving a position and coding it cost about the same; the first counts twice, as the solver goes over it
// twice.
int64_t coding_work(const Material& m) { return 2 * positions_of(m); }

EgdbBuildStatus fail(Build& build, EgdbBuildStatus status, const std::string& path) {
    build.result.failed_file = path;
    return status;
}

EgdbBuildStatus need_values(Build& build, const Material& m);

// The values from the files of an earlier build.
EgdbBuildStatus values_from_files(Build& build, const Material& m) {
    for (const Material& next : next_materials(m)) {
        if (piece_count(next) == piece_count(m)) continue;
        if (const EgdbBuildStatus status = need_values(build, next); status != EGDB_BUILT) return status;
    }
    if (!build.database) build.database = open_whole_database(build.folder, build.options.pieces, nullptr);
    if (!build.database) return fail(build, EGDB_BUILD_CANNOT_READ, build.folder);
    auto solved = std::make_unique<SolvedMaterial>();
    const int status = values_from_database(*build.database, build.set, m, build.options.threads, *solved);
    if (status == 2) return EGDB_BUILD_NO_MEMORY;
    if (status == 1) return fail(build, EGDB_BUILD_CANNOT_READ, build.folder);
    build.set.materials[material_number(m)] = std::move(solved);
    return EGDB_BUILT;
}

// Sees that the set holds the material, which was solved before.
EgdbBuildStatus need_values(Build& build, const Material& m) {
    if (find_solved(build.set, m) || take_kept(build.folder, m, build.set)) return EGDB_BUILT;
    return values_from_files(build, m);
}

// Of as many pieces only what the next material turns into is kept in memory.
void drop_unneeded(Build& build, const Material& m) {
    const std::vector<Material> needed = next_materials(m);
    for (auto& solved : build.set.materials) {
        if (!solved || piece_count(solved->material) != piece_count(m)) continue;
        if (std::find(needed.begin(), needed.end(), solved->material) == needed.end()) solved.reset();
    }
}

EgdbBuildStatus solve_one(Build& build, const Material& m) {
    const int64_t after = build.progress.done + solving_work(m);
    drop_unneeded(build, m);
    if (take_kept(build.folder, m, build.set)) {
        build.progress.kept += solving_work(m);
    } else {
        for (const Material& next : next_materials(m))
            if (const EgdbBuildStatus status = need_values(build, next); status != EGDB_BUILT) return status;
        const SolveControl control{build.options.threads, &build.stop, &build.progress.done};
        const EgdbBuildStatus status = solve_and_keep(build.folder, m, build.set, control, build.result);
        if (status != EGDB_BUILT) return status;
    }
    build.progress.done = after;
    return EGDB_BUILT;
}

void append_material(Build& build, EgdbFilePair& pair, const SolvedMaterial& solved) {
    const Material& m = solved.material;
    for (int side = 0; side < (is_symmetric(m) ? 1 : 2); ++side) {
        for (int s = 0; s < subslice_count(m) && !build.stop; ++s) {
            const int64_t first = s * SUBSLICE_POSITIONS;
            const int64_t count = std::min(SUBSLICE_POSITIONS, slice_size(m) - first);
            const ValuePlanes planes = planes_of(solved, side, first, count, build.options.threads);
            append_subslice(pair, build.coders, planes, m, s, side, build.options.threads);
            build.progress.done += 2 * count;
        }
    }
}

EgdbBuildStatus write_name(Build& build, const EgdbFileName& name) {
    EgdbFilePair pair;
    for (const Material& m : materials_of(name)) {
        drop_unneeded(build, m);
        if (const EgdbBuildStatus status = need_values(build, m); status != EGDB_BUILT) return status;
        append_material(build, pair, *find_solved(build.set, m));
        if (build.stop) return EGDB_BUILD_STOPPED;
    }
    const std::string data = data_path(build, name), index = index_path(build, name);
    if (replace_file(data, pair.data.data(), pair.data.size()) != 0)
        return fail(build, EGDB_BUILD_CANNOT_WRITE, data);
    if (replace_file(index, pair.index.data(), pair.index.size()) != 0)
        return fail(build, EGDB_BUILD_CANNOT_WRITE, index);
    build.result.files.push_back({name.text.data(), pair.positions, pair.free_positions,
                                  static_cast<int64_t>(pair.data.size()),
                                  static_cast<int64_t>(pair.index.size())});
    return EGDB_BUILT;
}

EgdbBuildStatus build_pieces(Build& build, int pieces) {
    std::vector<EgdbFileName> missing = egdb_names_of(EGDB_WLD, pieces);
    std::erase_if(missing, [&](const EgdbFileName& name) { return is_built(build, name); });
    if (missing.empty()) return EGDB_BUILT;
    std::vector<Material> wanted;
    for (const EgdbFileName& name : missing)
        for (const Material& m : materials_of(name)) wanted.push_back(m);
    for (const Material& m : solving_order(pieces)) {
        if (std::find(wanted.begin(), wanted.end(), m) == wanted.end()) continue;
        if (const EgdbBuildStatus status = solve_one(build, m); status != EGDB_BUILT) return status;
    }
    for (const EgdbFileName& name : missing)
        if (const EgdbBuildStatus status = write_name(build, name); status != EGDB_BUILT) return status;
    return EGDB_BUILT;
}

}  // namespace

int64_t build_memory(int pieces) {
    int64_t below = 0, most = 0;
    for (int n = 2; n < pieces; ++n)
        for (const Material& m : solving_order(n)) below += packed_bytes(m);
    for (const Material& m : solving_order(pieces)) {
        int64_t beside = 0;
        for (const Material& next : next_materials(m))
            if (piece_count(next) == pieces) beside += packed_bytes(next);
        const int64_t planes = slice_size(m) / 2;
        most = std::max(most, beside + std::max(solving_memory(m), packed_bytes(m) + planes) +
                                  2 * packed_bytes(m));  // a solved file as it is written or read
    }
    constexpr int64_t FILES_AND_PROGRAM = int64_t{100} << 20;
    return below + most + FILES_AND_PROGRAM;
}

EgdbBuildStatus build_database(const EgdbBuildOptions& options, const std::atomic<bool>& stop,
                               EgdbBuildProgress& progress, EgdbBuildResult& result) try {
    Build build{options, stop, progress, result, folder_prefix(options.folder), {}, nullptr, make_coders()};
    if (!build.folder.empty() && !make_folders(build.folder))
        return fail(build, EGDB_BUILD_CANNOT_WRITE, options.folder);
    int64_t all = 0;
    for (int pieces = 2; pieces <= options.pieces; ++pieces)
        for (const EgdbFileName& name : egdb_names_of(EGDB_WLD, pieces))
            if (!is_built(build, name))
                for (const Material& m : materials_of(name)) all += solving_work(m) + coding_work(m);
    progress.all = all;
    for (int pieces = 2; pieces <= options.pieces; ++pieces)
        if (const EgdbBuildStatus status = build_pieces(build, pieces); status != EGDB_BUILT) return status;
    remove_kept(build.folder, options.pieces);
    return EGDB_BUILT;
} catch (const std::bad_alloc&) {
    return EGDB_BUILD_NO_MEMORY;
}
