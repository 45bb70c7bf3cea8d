#include "shell/board_move.h"

bool move_between(const Position& before, const Position& after, int side, BoardMove& move) {
    // Most positions that are compared are the same one, or far apart.
    const uint64_t arrived = pieces_of(after, side) & ~pieces_of(before, side);
    if (bit_count(arrived) > 1 || (pieces_of(after, side ^ 1) & ~pieces_of(before, side ^ 1))) return false;
    MoveList list;
    CaptureLines lines;
    BoardMove found;
    generate_moves_with_lines(before, list, side, lines, found.jumps);
    const int index = find_move(list, move_to(after));
    if (index < 0) return false;
    found.side = side;
    uint64_t from = 0, to = 0;
    move_step_squares(found.jumps ? 1 : 0, index, side, before, list, lines, from, to);
    if (!from || !to) return false;
    found.squares[0] = square_number(from);
    found.squares[1] = square_number(to);
    found.stops = 2;
    for (int jump = 0; jump < found.jumps; ++jump) {
        move_step_squares(jump + 1, index, side, before, list, lines, from, to);
        found.squares[static_cast<size_t>(jump + 1)] = square_number(to);
        found.taken[static_cast<size_t>(jump)] =
            square_number(captured_at(lines[static_cast<size_t>(index)], jump, side));
    }
    if (found.jumps) found.stops = found.jumps + 1;
    move = found;
    return true;
}
