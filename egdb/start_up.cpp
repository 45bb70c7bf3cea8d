#include "egdb/start_up.h"

#include <algorithm>
#include <mutex>
#include <new>

#include "base/clock.h"
#include "base/system_info.h"
#include "egdb/block_cache.h"
#include "egdb/identify.h"
#include "egdb/index_file.h"
#include "egdb/memory_division.h"

namespace {

constexpr double MS_PER_SECOND = 1000;

EgdbStatistics* get_stats(void* handle) {
    EgdbDatabase& database = database_of(handle);
    if (database.hash.is_used()) {
        const std::lock_guard guard(database.lock);
        database.statistics.avg_ht_list_length = average_list_length(database.hash);
    }
    return &database.statistics;
}

void reset_stats(void* handle) {
    EgdbStatistics& s = database_of(handle).statistics;
    for (std::atomic<uint32_t>* const counter : {&s.lru_cache_hits, &s.lru_cache_loads, &s.autoload_hits,
                                                 &s.db_requests, &s.db_returns, &s.db_not_present_requests})
        counter->store(0, std::memory_order_relaxed);
    s.avg_ht_list_length.store(0, std::memory_order_relaxed);
}

int verify(void* handle, const VerifyListener& listener, const std::atomic<bool>* abort,
           const VerifyTexts& texts) {
    const EgdbDatabase& database = database_of(handle);
    return verify_files(
        {database.type, database.folder, database.max_pieces, database.maxkings_1side_8pcs, database.log},
        listener, abort, texts);
}

int close(void* handle) {
    delete static_cast<DatabaseDriver*>(handle);
    return 0;
}

double seconds_since(int64_t start_ms) { return static_cast<double>(clock_ms() - start_ms) / MS_PER_SECOND; }

int megabytes(int64_t bytes) { return static_cast<int>(bytes / MEGABYTE); }
int kilobytes(int64_t bytes) { return static_cast<int>(bytes / 1024); }

void log_memory(const EgdbDatabase& database) {
    egdb_log(database, "Available RAM: %dmb\n", megabytes(available_physical_memory()));
}

// One opening under way.
struct Opening {
    const EgdbOpenRequest& request;
    EgdbDatabase& database;
    int64_t start_ms = clock_ms();
    int64_t memory = CPRSUBDATABASE_BYTES;  // taken so far
    int64_t whole_files = 0;                // of that by files that are held whole
};

int read_indexes(Opening& opening) {
    EgdbDatabase& database = opening.database;
    const int64_t start = clock_ms();
    EgdbFileList list;
    make_file_list(database.type, database.max_pieces, database.maxkings_1side_8pcs, list);
    for (int32_t i = 0; i < list.count; ++i) {
        const EgdbFileName& name = list.names[static_cast<size_t>(i)];
        if (name.pieces > database.max_pieces) break;
        DbFile& file = database.files[static_cast<size_t>(i)];
        file.name = name.text;
        file.pieces = static_cast<uint8_t>(name.pieces);
        file.max_one_side = static_cast<uint8_t>(name.max_one_side);
        database.file_count = i + 1;
        if (read_index_file(database, file, opening.memory) != 0) return 1;
    }
    egdb_log(database, "Reading index files took %.0f secs\n", seconds_since(start));
    return 0;
}

template <typename Visit>
int for_present_files(EgdbDatabase& database, const Visit& visit) {
    for (int32_t i = 0; i < database.file_count; ++i) {
        DbFile& file = database.files[static_cast<size_t>(i)];
        if (file.is_present && visit(file) != 0) return 1;
    }
    return 0;
}

// Decides which files are held whole, by what the index files have left of the memory.
void share_memory(Opening& opening) {
    EgdbDatabase& database = opening.database;
    int64_t bytes = 0;
    for_present_files(database, [&](const DbFile& file) {
        bytes += int64_t{file.num_cache_blocks} * egdb_format(database.type).block_bytes;
        return 0;
    });
    const int64_t left = opening.request.cache_megabytes - opening.memory / MEGABYTE;
    const CacheRules rules = cache_rules(database.type);
    order_files(database, rules);
    if (opening.request.autoload && rules.autoload)
        choose_autoload(database, rules, autoload_budget_mb(bytes / MEGABYTE, left));
}

int open_data_files(Opening& opening) {
    const int64_t start = clock_ms();
    const int status = for_present_files(opening.database, [&](DbFile& file) {
        const int64_t before = opening.memory;
        if (!file.autoload) return open_for_blocks(opening.database, file, opening.memory);
        if (autoload_file(opening.database, file, opening.memory) != 0) return 1;
        opening.whole_files += opening.memory - before;
        return 0;
    });
    if (status != 0) return status;
    egdb_log(opening.database, "Allocated %dkb for indexing\n",
             kilobytes(opening.memory - opening.whole_files));
    egdb_log(opening.database, "Allocated %dkb for permanent slice caches\n", kilobytes(opening.whole_files));
    egdb_log(opening.database, "Autoload took %.0f secs\n", seconds_since(start));
    return 0;
}

// Makes the ring. The number of blocks that it could hold at most is above 0.
int make_cache(Opening& opening, int64_t cacheable) {
    const EgdbOpenRequest& request = opening.request;
    const CacheRules rules = cache_rules(request.type);
    CacheSize size = cache_size(rules, opening.memory, request.cache_megabytes, cacheable);
    if (request.cache_blocks > 0)
        size.blocks = static_cast<int32_t>(std::min<int64_t>(request.cache_blocks, cacheable));
    else if (size.least)
        egdb_log(opening.database, "Allocating the minimum %d cache buffers\n", size.blocks);
    return allocate_cache(opening.database, size.blocks);
}

// Fills the cache with what is likely to be asked for. A set whose blocks disagree with their index is
// refused.
int preload_file(EgdbDatabase& database, const DbFile& file, int32_t& blocks_read) {
    for (uint32_t block = 0; block < static_cast<uint32_t>(file.num_cache_blocks); ++block) {
        if (blocks_read >= database.numcacheblocks) return 0;
        if (cached_block(database, file, block) != -1) continue;
        const Subslice* const subslice = find_subdb_of_block(database, file, block);
        if (!subslice) continue;
        const int32_t cached = get_block_for(database, *subslice, block);
        if (!database.ccbs[static_cast<size_t>(cached)].is_sound) return 1;
        ++blocks_read;
    }
    return 0;
}

int preload(Opening& opening) {
    EgdbDatabase& database = opening.database;
    const int64_t start = clock_ms();
    int32_t blocks_read = 0;
    for (const DbFile* const file : database.autoload_order) {
        if (file->autoload) continue;
        egdb_log(database, "preload %s\n", file->name.data());
        if (preload_file(database, *file, blocks_read) != 0) return 1;
    }
    const double seconds = seconds_since(start);
    egdb_log(database, "Read %d buffers in %.0f sec, %.3f msec/buffer\n", blocks_read, seconds,
             seconds * MS_PER_SECOND / (blocks_read > 0 ? blocks_read : 1));
    egdb_log(database, "Egdb init took %.0f sec total\n", seconds_since(opening.start_ms));
    log_memory(database);
    return 0;
}

int start_up(Opening& opening) {
    EgdbDatabase& database = opening.database;
    database.folder = folder_prefix(opening.request.folder);
    log_memory(database);
    database.cprsubdatabase.reset(new (std::nothrow) Cprsubdatabase);
    if (!database.cprsubdatabase) {
        egdb_log(database, "Out of memory allocating cprsubdatabase.\n");
        return 1;
    }
    if (read_indexes(opening) != 0) return 1;
    share_memory(opening);
    if (open_data_files(opening) != 0) return 1;
    int64_t cacheable = 0;
    for_present_files(database, [&](const DbFile& file) {
        if (!file.autoload) cacheable += file.num_cache_blocks;
        return 0;
    });
    if (cacheable > 0) return make_cache(opening, cacheable) != 0 ? 1 : preload(opening);
    log_memory(database);
    return 0;
}

// Everything of the database is allocated here, so that what the memory does not hold is told here too.
int start_up_within_memory(Opening& opening) {
    try {
        return start_up(opening);
    } catch (const std::bad_alloc&) {
        egdb_log(opening.database, "Out of memory opening the database.\n");
        return 1;
    }
}

}  // namespace

OpenEgdb open_database(const EgdbOpenRequest& request, const DriverOperations& operations) {
    auto* const whole = new (std::nothrow) DatabaseDriver;
    if (!whole) {
        if (request.log) request.log("Cannot allocate memory for driver handle.\n");
        return nullptr;
    }
    whole->driver = {operations.lookup,     whole,       reset_stats, get_stats, verify, close,
                     operations.get_pieces, request.type};
    OpenEgdb owner(&whole->driver);
    EgdbDatabase& database = whole->database;
    database.type = request.type;
    database.log = request.log;
    database.max_pieces = request.pieces;
    database.maxkings_1side_8pcs = request.maxkings_1side_8pcs;
    Opening opening{request, database};
    if (start_up_within_memory(opening) != 0) return nullptr;
    return owner;
}
