#include "control/apply_settings.h"

#include "control/database_settings.h"
#include "control/settings.h"
#include "search/engine_settings.h"
#include "search/table.h"
#include "search/thread_record.h"

namespace {

constexpr int32_t NO_LIMIT = -1;
constexpr int32_t MAX_BOOK_MODE = 3;
constexpr int32_t MIN_DATABASE_PIECES = 2;
constexpr int32_t MAX_DATABASE_PIECES = 9;
constexpr int32_t MAX_KINGS_LIMIT = 4;

// A limit that limits nothing is none.
int32_t limit_in(int32_t stored, int32_t low, int32_t high) {
    return stored < 0 || stored > high ? NO_LIMIT : setting_number(stored, low, high);
}

DatabaseOptions database_options(const Settings& record) {
    DatabaseOptions options;
    options.wld_enable = record.wld_enable != 0;
    options.wld_parallel_init = record.wld_parallel_init != 0;
    options.wld_max_pieces = limit_in(record.wld_max_pieces, MIN_DATABASE_PIECES, MAX_DATABASE_PIECES);
    options.wld_max_kings_8 = limit_in(record.wld_max_kings_8, 0, MAX_KINGS_LIMIT);
    options.wld_cache_mb = setting_number(record.wld_cache_mb, 0, INT32_MAX);
    options.wld_folder = setting_text(record.wld_folder);
    options.mtc_enable = record.mtc_enable != 0;
    options.mtc_folder = setting_text(record.mtc_folder);
    return options;
}

// Whether the databases have to be opened anew, by what the engine's copy says that they were opened with.
bool differs_for_wld(const DatabaseOptions& a, const DatabaseOptions& b) {
    return a.wld_enable != b.wld_enable || a.wld_max_pieces != b.wld_max_pieces ||
           a.wld_max_kings_8 != b.wld_max_kings_8 || a.wld_cache_mb != b.wld_cache_mb ||
           a.wld_folder != b.wld_folder;
}

bool differs_for_mtc(const DatabaseOptions& a, const DatabaseOptions& b) {
    return a.mtc_enable != b.mtc_enable || a.mtc_folder != b.mtc_folder;
}

}  // namespace

void apply_search_settings() {
    EngineSettings& engine = engine_settings;
    engine.search_threads = setting_number(settings.search_threads, 1, MAX_SEARCH_THREADS);
    engine.hash_size_mb = setting_number(settings.hash_mb, 1, MAX_TABLE_MB);
    engine.book_mode = setting_number(settings.book_mode, 0, MAX_BOOK_MODE);
    engine.database = database_options(settings);
    if (reinit_wld.exchange(false)) engine.reopen_wld = true;
    if (reinit_mtc.exchange(false)) engine.reopen_mtc = true;
}

int apply_settings() {
    EngineSettings& engine = engine_settings;
    const DatabaseOptions before = engine.database;
    apply_search_settings();
    const DatabaseOptions& now = engine.database;
    const bool new_table = !transposition_table.memory || transposition_table.size_mb != engine.hash_size_mb;
    // The databases share the memory with the table.
    if (differs_for_wld(before, now) || (new_table && now.wld_enable)) engine.reopen_wld = true;
    if (differs_for_mtc(before, now)) engine.reopen_mtc = true;
    return new_table ? tt_allocate() : 0;
}

void settings_from_engine() {
    const EngineSettings& engine = engine_settings;
    settings.search_threads = engine.search_threads;
    settings.hash_mb = engine.hash_size_mb;
    settings.book_mode = engine.book_mode;
    settings.wld_enable = engine.database.wld_enable;
    settings.wld_parallel_init = engine.database.wld_parallel_init;
    settings.wld_max_pieces = engine.database.wld_max_pieces;
    settings.wld_max_kings_8 = engine.database.wld_max_kings_8;
    settings.wld_cache_mb = engine.database.wld_cache_mb;
    store_setting_text(settings.wld_folder, engine.database.wld_folder);
    settings.mtc_enable = engine.database.mtc_enable;
    store_setting_text(settings.mtc_folder, engine.database.mtc_folder);
}
