#include "control/game_line.h"

namespace {

// A king left his square and nothing was taken: the only step that can be taken back.
bool is_reversible(const Position& before, const Position& after) {
    const uint64_t pieces_before = before.black | before.white;
    const uint64_t pieces_after = after.black | after.white;
    return bit_count(pieces_after) >= bit_count(pieces_before) && (before.king & ~pieces_after) != 0;
}

}  // namespace

void build_game_line(std::span<const ReplayState> history, std::vector<Position>& line) {
    line.clear();
    for (size_t i = history.size(); i-- > 0;) {
        line.push_back(history[i].position);
        line.back().side = history[i].side;
        if (i == 0 || !is_reversible(history[i - 1].position, history[i].position)) break;
    }
    for (size_t i = 0; i < line.size(); ++i) {
        line[i].reversible_plies = static_cast<int32_t>(line.size() - 1 - i);
        line[i].previous = i + 1 < line.size() ? &line[i + 1] : nullptr;
    }
}
