#include "search/forced.h"

namespace {

// Follows all captures to their quiet ends and compares each end with the first. False on the first
// difference.
bool all_end_alike(const Position& position, Position& first_end, bool& have_end) {
    MoveList captures;
    if (generate_captures(position, captures, position.side) == 0) {
        if (have_end) return same_pieces(position, first_end);
        first_end = position;
        have_end = true;
        return true;
    }
    for (const Move& move : captures)
        if (!all_end_alike(position_after(move, position.side ^ 1), first_end, have_end)) return false;
    return true;
}

}  // namespace

bool is_forced(const Position& position, int side) {
    MoveList captures;
    const int count = generate_captures(position, captures, side);
    if (count <= 1) return count == 1;
    Position first_end;
    bool have_end = false;
    return all_end_alike(position_after(move_to(position), side), first_end, have_end);
}
