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

// Without memory there is no table, which `getmove` tells.
void allocate_table() { tt_allocate(); }

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
