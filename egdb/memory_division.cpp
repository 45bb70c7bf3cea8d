#include "egdb/memory_division.h"

#include <algorithm>

namespace {

constexpr int64_t NEARLY_ALL_MB = 20;  // what lacks less than this is held whole
constexpr int64_t LITTLE_MB = 15;
constexpr int64_t LITTLE_BUDGET_MB = 2;
constexpr int64_t MUCH_MB = 1000;
constexpr float LEAST_SHARE = 0.18f;
constexpr float MOST_SHARE = 0.35f;
constexpr int64_t RESERVE_BYTES = 10 * MEGABYTE;

// The file of a material, or null.
DbFile* file_of(const EgdbDatabase& database, const Material& m) {
    for (const int side : {BLACK, WHITE}) {
        const SubdbSlot& slot = (*database.cprsubdatabase)[static_cast<size_t>(egdb_slot(m, side))];
        for (int32_t i = 0; slot.subslices && i < slot.count; ++i)
            if (DbFile* const file = slot.subslices[static_cast<size_t>(i)].file) return file;
    }
    return nullptr;
}

bool has_file_of_its_own(const Material& m) {
    const int nb = black_count(m), nw = white_count(m);
    if (m.bm < 0 || m.wm < 0 || nb < 1 || nb > EGDB_MAX_SIDE || nw < 1 || nw > nb) return false;
    return nb > nw || m.wk <= m.bk;
}

void add_materials(EgdbDatabase& database, int pieces, int kings) {
    for (int bk = 0; bk <= kings; ++bk) {
        const int wk = kings - bk;
        for (int nb = bk; nb <= EGDB_MAX_SIDE; ++nb) {
            const Material m{nb - bk, bk, pieces - nb - wk, wk};
            if (!has_file_of_its_own(m)) continue;
            DbFile* const file = file_of(database, m);
            if (file && file->is_present) database.autoload_order.push_back(file);
        }
    }
}

}  // namespace

int64_t autoload_budget_mb(int64_t db_mb, int64_t avail_mb) {
    if (db_mb - avail_mb < NEARLY_ALL_MB) return db_mb + 1;
    if (avail_mb < LITTLE_MB) return LITTLE_BUDGET_MB;
    if (avail_mb > MUCH_MB) return static_cast<int64_t>(static_cast<double>(avail_mb) * 0.35);
    const auto avail = static_cast<float>(avail_mb);
    const float share = LEAST_SHARE + (MOST_SHARE - LEAST_SHARE) * avail / 1000;
    return static_cast<int64_t>(avail * share);
}

void order_files(EgdbDatabase& database, const CacheRules& rules) {
    database.autoload_order.clear();
    for (int32_t i = 0; i < database.file_count; ++i) {
        DbFile& file = database.files[static_cast<size_t>(i)];
        if (file.is_present && (!rules.autoload || file.pieces < rules.always_autoload_below))
            database.autoload_order.push_back(&file);
    }
    if (!rules.autoload) return;
    for (int kings = 0; kings <= database.max_pieces; ++kings)
        for (int pieces = rules.always_autoload_below; pieces <= database.max_pieces; ++pieces)
            add_materials(database, pieces, kings);
}

void choose_autoload(EgdbDatabase& database, const CacheRules& rules, int64_t budget_mb) {
    int64_t blocks = 0;
    for (DbFile* const file : database.autoload_order) {
        if (file->autoload) continue;
        // Not taken back for a file that is passed over: one beyond the budget mostly ends the choice.
        blocks += file->num_cache_blocks;
        if (file->pieces >= rules.always_autoload_below && blocks * WLD_BLOCK_BYTES / MEGABYTE > budget_mb)
            continue;
        file->autoload = 1;
        egdb_log(database, "autoload %s\n", file->name.data());
    }
}

CacheSize cache_size(const CacheRules& rules, int64_t memory, int64_t cache_megabytes, int64_t cacheable) {
    CacheSize size;
    size.least = (memory + RESERVE_BYTES) / MEGABYTE >= cache_megabytes;
    const int64_t blocks =
        size.least ? rules.least_blocks : (cache_megabytes * MEGABYTE - memory) / rules.bytes_per_block;
    const bool limited = size.least || rules.limited;
    size.blocks = static_cast<int32_t>(limited ? std::min(cacheable, blocks) : blocks);
    return size;
}
