// The paths of captures: a second generator that keeps, beside the moves of the search's generator and in the
// same order, what each capture passes and takes, for all code outside the search: display, game files,
// matching of moves that are given by squares. Everything here is re-entrant and allocates nothing.
#pragma once

#include <array>
#include <cstdint>

#include "core/board.h"
#include "core/movegen.h"

// A line has room for this many jumps; a set-up position can reach it. A capture that would need more is
// dropped.
constexpr int MAX_JUMPS = 19;

// The path of one capture.
struct CaptureLine {
    uint8_t length = 0;  // pieces captured
    // The position before the move, then after each jump, with the pieces jumped so far removed so that each
    // step can be drawn. The last step, with the promotion, equals the move.
    std::array<Move, MAX_JUMPS + 1> steps;

    // Left as it is on purpose: arrays of 128 lines are made for each generation.
    CaptureLine() {}  // NOLINT(cppcoreguidelines-pro-type-member-init)

    const Move& step(int i) const { return steps[static_cast<size_t>(i)]; }
};

// The line of the move at an index of the list stands at that index.
using CaptureLines = std::array<CaptureLine, MAX_MOVES>;

// As `generate_captures`, with the lines.
int generate_capture_lines(const Position& position, MoveList& list, int side, CaptureLines& lines);

// The legal moves with the lines of captures. `jumps` is the number of pieces that each takes, 0 for quiet
// moves. Returns the number of moves.
int generate_moves_with_lines(const Position& position, MoveList& list, int side, CaptureLines& lines,
                              int& jumps);

// From and to squares of a move of the list, as single-bit sets; empty where there is none. With `step` 0 the
// move is a quiet one; with `step` above 0, `from` is the square the piece left at the first jump and `to`
// the one it lands on at jump `step`.
void move_step_squares(int step, int index, int side, const Position& position, const MoveList& list,
                       const CaptureLines& lines, uint64_t& from, uint64_t& to);

// True if another move of the list has the same from and to squares, so that these two do not tell which it
// is; `jumps` is what each of the list takes.
bool shares_squares(int jumps, int index, int side, const Position& position, const MoveList& list,
                    const CaptureLines& lines);

// Number of the direction of the straight line between two squares, given by number from 1, in the
// generator's order: 0 left by 6, 1 left by 5, 2 right by 5, 3 right by 6.
int direction_of(int from_square, int to_square);

// The piece taken at jump number `jump`, from 0, as a set; `side` is the mover.
uint64_t captured_at(const CaptureLine& line, int jump, int side);

// True if one of the first `count` jumps takes the piece on `mask`.
bool capture_takes(int count, const CaptureLine& line, int side, uint64_t mask);

// True if `square`, a number from 1, is an acceptable end of jump number `jump`, from 0. A written path or a
// row of clicks may name any square on which a king could have stopped between two captures in one line; that
// wider test is made for jumps that start where the king stood before the move.
bool square_fits_jump(const CaptureLine& line, int jump, int side, int square);

// True if `square` fits one of the jumps 0 to `length` - 2: the last landing square is not asked for.
bool square_on_path(int length, const CaptureLine& line, int side, int square);
