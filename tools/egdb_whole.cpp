#include "tools/egdb_whole.h"

#include <algorithm>
#include <new>

#include "base/files.h"
#include "egdb/block_cache.h"
#include "egdb/index_file.h"
#include "egdb/position_walk.h"
#include "egdb/wld_lookup.h"
#include "tools/egdb_solver.h"
#include "tools/parallel_chunks.h"

namespace {

constexpr int64_t CHUNK = 1 << 14;  // a multiple of 4: no byte belongs to two chunks

// Reads one name's files, if they are there. False on failure.
bool open_name(EgdbDatabase& database, const EgdbFileName& name) {
    DbFile& file = database.files[static_cast<size_t>(database.file_count)];
    file.name = name.text;
    file.pieces = static_cast<uint8_t>(name.pieces);
    file.max_one_side = static_cast<uint8_t>(name.max_one_side);
    // The index is written last: without it a file is not whole.
    const std::string path = database.folder + name.text.data();
    if (file_size(path + ".cpr1") < 0 || file_size(path + ".idx1") < 0) return true;
    int64_t memory = 0;
    if (read_index_file(database, file, memory) != 0) return false;
    ++database.file_count;
    return autoload_file(database, file, memory) == 0;
}

void take_chunk(EgdbDatabase& database, const SolvedSet& set, SolvedMaterial& solved, int side, int64_t first,
                int64_t last) {
    PackedValues& values = solved.values[static_cast<size_t>(side)];
    PositionWalk walk(solved.material, first);
    for (int64_t i = first; i < last; ++i) {
        const EgdbValue value = has_capture(walk.position, side)
                                    ? value_by_moves(set, walk.position, side)
                                    : wld_lookup(database, walk.position, side, false);
        uint8_t& byte = values[static_cast<size_t>(i / 4)];
        byte = static_cast<uint8_t>(byte | (value & 3) << (i % 4 * 2));
        if (i + 1 < last) walk.advance();
    }
}

}  // namespace

std::unique_ptr<EgdbDatabase> open_whole_database(const std::string& folder, int max_pieces,
                                                  void (*log)(const char* text)) {
    auto database = std::make_unique<EgdbDatabase>();
    database->folder = folder.empty() || folder.back() == '/' ? folder : folder + "/";
    database->max_pieces = max_pieces;
    database->log = log;
    database->cprsubdatabase = std::make_unique<Cprsubdatabase>();
    EgdbFileList list;
    make_file_list(EGDB_WLD, max_pieces, -1, list);
    for (int i = 0; i < list.count; ++i) {
        const EgdbFileName& name = list.names[static_cast<size_t>(i)];
        if (name.pieces <= max_pieces && !open_name(*database, name)) return nullptr;
    }
    return database->file_count ? std::move(database) : nullptr;
}

void use_in_engine(EgdbDatabase& database, EgdbDriver& driver) {
    driver.handle = &database;
    driver.lookup = [](void* handle, const Position& position, int side, bool conditional) {
        return wld_lookup(*static_cast<EgdbDatabase*>(handle), position, side, conditional);
    };
    EgdbEngine engine = no_egdb();
    engine.wld = &driver;
    engine.no_side_captures = true;
    for (int32_t i = 0; i < database.file_count; ++i) {
        const DbFile& file = database.files[static_cast<size_t>(i)];
        engine.maxpieces = std::max<int32_t>(engine.maxpieces, file.pieces);
        engine.maxpieces_1side = std::max<int32_t>(engine.maxpieces_1side, file.max_one_side);
    }
    egdb_engine = engine;
}

int values_from_database(EgdbDatabase& database, const SolvedSet& set, const Material& m, int threads,
                         SolvedMaterial& solved) {
    try {
        solved.material = m;
        for (int side = 0; side < (is_symmetric(m) ? 1 : 2); ++side) {
            if (!find_subslice(database, m, side, 0)) return 1;
            solved.values[static_cast<size_t>(side)].assign(static_cast<size_t>((slice_size(m) + 3) / 4), 0);
            for_chunks(slice_size(m), CHUNK, threads, [&](int64_t first, int64_t last) {
                take_chunk(database, set, solved, side, first, last);
            });
        }
        return 0;
    } catch (const std::bad_alloc&) {
        return 2;
    }
}
