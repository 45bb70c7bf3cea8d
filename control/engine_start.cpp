#include "control/engine_start.h"

#include <cstdio>

#include "base/files.h"
#include "base/log.h"
#include "book/opening_book.h"
#include "control/mode_hooks.h"
#include "egdb/egdb_state.h"
#include "eval/weights.h"
#include "records/fen.h"
#include "search/database_opening.h"
#include "search/engine_settings.h"

namespace {

void write_position_line(const Position& position, int side, char* text) {
    fen_tag_text(position, side, text, "");
}

void empty_log() {
    if (log_path.empty()) return;
    const OpenFile emptied(std::fopen(log_path.c_str(), "w"));
}

}  // namespace

EngineStartStatus start_engine() {
    empty_log();
    use_databases();
    mode_hooks.egdb_state = [] { return egdb_state.load(std::memory_order_acquire); };
    engine_settings.position_line = write_position_line;
    if (load_weights() != 0) return ENGINE_NO_WEIGHTS;
    load_book();  // without one the engine searches
    return ENGINE_STARTED;
}
