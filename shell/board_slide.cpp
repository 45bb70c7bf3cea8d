#include "shell/board_slide.h"

#include <algorithm>

#include "shell/board_geometry.h"

namespace {

int hops_of(const BoardMove& move) { return move.stops - 1; }

int way_duration(const BoardMove& move) {
    return std::min(FIRST_SLIDE_MS + FURTHER_SLIDE_MS * (hops_of(move) - 1), LONGEST_SLIDE_MS);
}

BoardPlace stop_place(const BoardMove& move, int stop) {
    return place_of_square(move.squares[static_cast<size_t>(stop)] - 1, false);
}

// Starts and ends gently.
double eased(double part) { return part * part * (3 - 2 * part); }

}  // namespace

int slide_duration(const BoardMove& move) { return way_duration(move) + (move.jumps ? FADE_MS : 0); }

SlideFrame slide_frame(const BoardMove& move, double elapsed_ms) {
    SlideFrame frame;
    const int hops = hops_of(move);
    const double gone = eased(std::clamp(elapsed_ms / way_duration(move), 0.0, 1.0)) * hops;
    const int hop = std::min(static_cast<int>(gone), hops - 1);
    const double part = gone - hop;
    const BoardPlace from = stop_place(move, hop);
    const BoardPlace to = stop_place(move, hop + 1);
    frame.column = from.column + (to.column - from.column) * part;
    frame.row = from.row + (to.row - from.row) * part;
    frame.arrived = elapsed_ms >= way_duration(move);
    for (int jump = 0; jump < move.jumps; ++jump) {
        const double passed = way_duration(move) * (jump + 0.5) / hops;
        frame.left[static_cast<size_t>(jump)] = 1 - std::clamp((elapsed_ms - passed) / FADE_MS, 0.0, 1.0);
    }
    return frame;
}
