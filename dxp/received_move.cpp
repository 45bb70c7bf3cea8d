#include "dxp/received_move.h"

#include <algorithm>

#include "core/capture_lines.h"

namespace {

bool takes_the_same(const DxpMove& received, const CaptureLine& line, int side) {
    if (received.jumped_count != line.length) return false;
    const auto told = received.jumped.begin();
    for (int jump = 0; jump < line.length; ++jump) {
        const int square = square_number(captured_at(line, jump, side));
        if (std::find(told, told + line.length, square) == told + line.length) return false;
    }
    return true;
}

}  // namespace

MoveMatch match_received_move(const DxpMove& received, const Position& position, int side) {
    MoveList list;
    CaptureLines lines;
    int jumps = 0;
    MoveMatch match;
    match.moves = generate_moves_with_lines(position, list, side, lines, jumps);
    match.wrong_count = (jumps > 0) != (received.jumped_count != 0);
    for (int i = 0; i < match.moves && match.index < 0; ++i) {
        uint64_t from = 0, to = 0;
        move_step_squares(jumps, i, side, position, list, lines, from, to);
        if (square_number(from) != received.from || square_number(to) != received.to) continue;
        if (jumps == 0 || takes_the_same(received, lines[static_cast<size_t>(i)], side)) match.index = i;
    }
    if (match.moves > 0) match.move = list[std::max(match.index, 0)];
    return match;
}
