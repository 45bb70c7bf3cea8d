#include "control/engine_start.h"

#include <cstdio>

#include "base/files.h"
#include "base/log.h"
#include "eval/weights.h"
#include "records/fen.h"
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
    engine_settings.position_line = write_position_line;
    return load_weights() == 0 ? ENGINE_STARTED : ENGINE_NO_WEIGHTS;
}
