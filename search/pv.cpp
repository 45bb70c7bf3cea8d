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

// An entry on the table's line.
struct LineStep {
    const Position& position;
    PositionHash hash;
    const Move* move;  // null if the entry's index is not a move of the position
    TTSlot& slot;
    TTEntry entry;
};

// Walks the table's line from the position after the first move and calls `visit` for each entry on it. The
// walk ends when that answers false, at a missing, unusable or already visited entry, or where there is no
// move.
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
        if (!visit(LineStep{position, hash, move, *slot, entry}) || !known) return;
        position = position_after(*move, position.side ^ 1);
    }
}

// The same bit changes in the check, which keeps the key valid.
TTEntry with_mark(const TTEntry& entry, bool mark) {
    const uint32_t change = entry.pv_mark() == mark ? 0 : TTEntry::PV_MARK;
    return {entry.check ^ change, entry.info ^ change};
}

}  // namespace

void pv_text(int side, const Position& position, const Move& first_move, char* out, size_t size,
             bool exact_only, int length, const char* label) {
    char move[MOVE_TEXT_SIZE];
    move_text(move, position, first_move);
    size_t used = std::min(size - 1, static_cast<size_t>(std::snprintf(out, size, "%s %s", label, move)));
    const auto append = [&](const LineStep& step) {
        if (!step.move || (exact_only && step.entry.type() != BOUND_EXACT)) return false;
        move_text(move, step.position, *step.move);
        const int written = std::snprintf(out + used, size - used, " %s", move);
        used = std::min(size - 1, used + static_cast<size_t>(written));
        return true;
    };
    walk_line(side, first_move, std::min(length, MAX_TEXT_MOVES - 1), append);
}

void tt_mark_pv(int side, const Move& first_move, int length) {
    walk_line(side, first_move, length, [](const LineStep& step) {
        step.slot.store(with_mark(step.entry, true).word(), std::memory_order_relaxed);
        return true;
    });
}

void tt_save_line(int side, const Move& first_move, int length, std::vector<SavedEntry>& saved) {
    walk_line(side, first_move, length, [&](const LineStep& step) {
        const auto same = std::find_if(saved.begin(), saved.end(), [&](const SavedEntry& other) {
            return other.hash.hash1 == step.hash.hash1;
        });
        const SavedEntry marked{step.hash, with_mark(step.entry, true)};
        if (same != saved.end())
            *same = marked;
        else
            saved.push_back(marked);
        step.slot.store(with_mark(step.entry, false).word(), std::memory_order_relaxed);
        return true;
    });
}
