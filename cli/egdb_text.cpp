#include "cli/egdb_text.h"

#include "egdb/file_list.h"
#include "egdb/numbering.h"

const char* egdb_value_text(EgdbValue value) {
    switch (value) {
        case EGDB_WIN:
            return "win";
        case EGDB_LOSS:
            return "loss";
        case EGDB_DRAW:
            return "draw";
        case EGDB_DRAW_OR_LOSS:
            return "draw_or_loss";
        case EGDB_WIN_OR_DRAW:
            return "win_or_draw";
        case EGDB_UNKNOWN:
            return "unknown";
        default:
            return "unavailable";
    }
}

std::string egdb_file_of(const Material& m) {
    const int pieces = piece_count(m);
    std::string name = "db" + std::to_string(pieces);
    if (pieces <= egdb_type_rules(EGDB_WLD).single_limit) return name;
    return name + "-" + std::to_string(m.bm) + std::to_string(m.bk) + std::to_string(m.wm) +
           std::to_string(m.wk);
}
