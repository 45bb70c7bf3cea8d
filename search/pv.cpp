#include "search/pv.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "core/movegen.h"
#include "core/notation.h"
#include "search/table.h"

namespace {

constexpr int MAX_WALK = 63;
constexpr int MAX_TEXT_MOVES = 10;

// Walks the table's line from the position after the first move. For each entry on it `visit(position, move,
// slot, entry)` is called; the walk ends when it answers false, at a missing, unusable or already visited
// entry, or where the entry's index is not a move of the position.
template <typename Visit>
void walk_line(int side, const Move& first_move, int length, Visit visit) {
    std::array<const TTSlot*, MAX_WALK> visited{};
    Position position = position_after(first_move, side ^ 1);
    for (int i = 0; i < std::min(length, MAX_WALK); ++i) {
        const PositionHash hash = position_hash(position, position.side);
        TTEntry entry;
        TTSlot* const slot = tt_probe(hash.hash0, hash.hash1, entry);
        if (!slot || entry.depth_field() == 0) return;
        if (std::find(visited.begin(), visited.begin() + i, slot) != visited.begin() + i) return;
        visited[static_cast<size_t>(i)] = slot;
        MoveList list;
        generate_moves(position, list, position.side);
        const bool known = entry.move_index() < list.count;
        const Move* const move = known ? &list[entry.move_index()] : nullptr;
        if (!visit(position, move, *slot, entry) || !known) return;
        position = position_after(*move, position.side ^ 1);
    }
}

}  // namespace

void pv_text(int side, const Position& position, const Move& first_move, char* out, size_t size,
             bool exact_only, int length, const char* label) {
    char move[MOVE_TEXT_SIZE];
    move_text(move, position, first_move);
    size_t used = std::min(size - 1, static_cast<size_t>(std::snprintf(out, size, "%s %s", label, move)));
    const auto append = [&](const Position& at, const Move* next, TTSlot&, const TTEntry& entry) {
        if (!next || (exact_only && entry.type() != BOUND_EXACT)) return false;
        move_text(move, at, *next);
        const int written = std::snprintf(out + used, size - used, " %s", move);
        used = std::min(size - 1, used + static_cast<size_t>(written));
        return true;
    };
    walk_line(side, first_move, std::min(length, MAX_TEXT_MOVES - 1), append);
}

void tt_mark_pv(int side, const Move& first_move, int length) {
    walk_line(side, first_move, length, [](const Position&, const Move*, TTSlot& slot, const TTEntry& entry) {
        const uint64_t change = uint64_t{TTEntry::PV_MARK} & ~entry.info;
        // The same bit changes in the check, which keeps the key valid.
        slot.store(entry.word() ^ (change << 32 | change), std::memory_order_relaxed);
        return true;
    });
}
