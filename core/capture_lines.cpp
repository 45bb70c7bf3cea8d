#include "core/capture_lines.h"

#include "core/capture_search.h"

namespace {

// The line at index `count` is the working line. When a sequence is recorded its line is copied to the next
// index, so that a later branch finds the prefix it shares in place and rewrites only its own steps.
struct KeepLines {
    CaptureLines* lines;

    CaptureLine& working(int count) const { return (*lines)[static_cast<size_t>(count)]; }

    void begin(int count, const Position& position) const { working(count).steps[0] = move_to(position); }

    void reach(int count, int jumps, const Move& after) const {
        if (jumps <= MAX_JUMPS) working(count).steps[static_cast<size_t>(jumps)] = after;
    }

    void restart(int count) const {
        if (count > 0) working(0) = working(count);
    }

    bool finish(int count, int jumps, uint64_t promoted) const {
        if (jumps > MAX_JUMPS) return false;
        CaptureLine& line = working(count);
        line.length = static_cast<uint8_t>(jumps);
        line.steps[static_cast<size_t>(jumps)].king |= promoted;
        working(count + 1) = line;
        return true;
    }
};

uint64_t shift(uint64_t set, int direction) {
    switch (direction) {
        case 0:
            return step<0>(set);
        case 1:
            return step<1>(set);
        case 2:
            return step<2>(set);
        default:
            return step<3>(set);
    }
}

// The mover's square before and after one jump, as sets.
struct Jump {
    uint64_t from;
    uint64_t landing;
};

Jump jump_of(const CaptureLine& line, int jump, int side) {
    const uint64_t before = pieces_of(line.step(jump), side);
    const uint64_t after = pieces_of(line.step(jump + 1), side);
    return {lowest_set(before & ~after), lowest_set(after & ~before)};
}

int direction_of_jump(const Jump& jump) {
    return direction_of(square_number(jump.from), square_number(jump.landing));
}

}  // namespace

int generate_capture_lines(const Position& position, MoveList& list, int side, CaptureLines& lines) {
    const KeepLines keeper{&lines};
    return side == BLACK ? capture_tree::search_captures<BLACK>(position, list, keeper)
                         : capture_tree::search_captures<WHITE>(position, list, keeper);
}

int generate_moves_with_lines(const Position& position, MoveList& list, int side, CaptureLines& lines,
                              int& jumps) {
    const int captures = generate_capture_lines(position, list, side, lines);
    jumps = captures ? lines[0].length : 0;
    return captures ? captures : generate_noncaptures(position, list, side);
}

void move_step_squares(int step, int index, int side, const Position& position, const MoveList& list,
                       const CaptureLines& lines, uint64_t& from, uint64_t& to) {
    if (step <= 0) {
        const uint64_t before = pieces_of(position, side);
        const uint64_t after = pieces_of(list[index], side);
        from = before & ~after;
        to = after & ~before;
        return;
    }
    const CaptureLine& line = lines[static_cast<size_t>(index)];
    from = jump_of(line, 0, side).from;
    // Every step but the start has the piece on its landing square; what else the mover has stands still.
    const uint64_t others = pieces_of(line.step(0), side) & ~from;
    to = pieces_of(line.step(step), side) & ~others;
}

bool shares_squares(int jumps, int index, int side, const Position& position, const MoveList& list,
                    const CaptureLines& lines) {
    uint64_t from = 0, to = 0;
    move_step_squares(jumps, index, side, position, list, lines, from, to);
    for (int other = 0; other < list.count; ++other) {
        uint64_t other_from = 0, other_to = 0;
        move_step_squares(jumps, other, side, position, list, lines, other_from, other_to);
        if (other != index && other_from == from && other_to == to) return true;
    }
    return false;
}

int direction_of(int from_square, int to_square) {
    const bool higher = to_square > from_square;
    const uint64_t target = set_of_square(to_square);
    for (uint64_t at = set_of_square(from_square); at & BOARD_MASK; at = higher ? step<0>(at) : step<2>(at))
        if (at & target) return higher ? 0 : 2;
    return higher ? 1 : 3;
}

uint64_t captured_at(const CaptureLine& line, int jump, int side) {
    return pieces_of(line.step(jump), side ^ 1) & ~pieces_of(line.step(jump + 1), side ^ 1);
}

bool capture_takes(int count, const CaptureLine& line, int side, uint64_t mask) {
    for (int jump = 0; jump < count; ++jump)
        if (captured_at(line, jump, side) & mask) return true;
    return false;
}

bool square_fits_jump(const CaptureLine& line, int jump, int side, int square) {
    const Jump here = jump_of(line, jump, side);
    const uint64_t wanted = set_of_square(square);
    const bool exact = here.landing != 0 && here.landing == wanted;
    // There is no jump behind the last with which it could share a line. The set of kings is that of the
    // position before the move, so only a jump from the king's own square gets past the second test.
    if (jump + 1 >= line.length || !(here.from & line.step(0).king)) return exact;
    const int direction = direction_of_jump(here);
    if (direction != direction_of_jump(jump_of(line, jump + 1, side))) return exact;

    const Move& board = line.step(jump);
    const uint64_t empty = ~(board.black | board.white) & BOARD_MASK;
    uint64_t at = shift(here.from, direction);
    while (at & empty) at = shift(at, direction);
    if (!(at & (board.black | board.white))) return false;
    for (at = shift(at, direction); at & empty; at = shift(at, direction))
        if (at & wanted) return true;
    return false;
}

bool square_on_path(int length, const CaptureLine& line, int side, int square) {
    for (int jump = 0; jump + 1 < length; ++jump)
        if (square_fits_jump(line, jump, side, square)) return true;
    return false;
}
