#include "search/database_opening.h"

#include <cstdio>

#include "egdb/egdb_state.h"
#include "egdb/engine_egdb.h"
#include "search/engine_settings.h"
#include "search/getmove.h"
#include "search/search_text.h"
#include "search/table.h"

namespace {

void release_table() { transposition_table = TranspositionTable{}; }

// The databases may have left less memory than the table had: a smaller one is better than none.
void allocate_table() {
    EngineSettings& engine = engine_settings;
    const int32_t wanted = engine.hash_size_mb;
    while (tt_allocate() != 0 && engine.hash_size_mb > 1) engine.hash_size_mb /= 2;
    engine.hash_size_mb = wanted;
}

void show_message(char* message, const char* text) {
    std::snprintf(message, SEARCH_TEXT_SIZE, "%s", text);
    tell_search_text(message);
}

void prepare_databases(char* message) {
    EngineSettings& engine = engine_settings;
    egdb_prepare_search(engine.database, engine.reopen_wld, engine.reopen_mtc,
                        {release_table, allocate_table, message, show_message});
}

}  // namespace

void use_databases() { egdb_engine.egdb_prepare = prepare_databases; }
