// How a move is shown: the piece slides along its way, and what it takes fades as it passes. Times are in
// milliseconds from the start of the slide. Re-entrant.
#pragma once

#include <array>

#include "shell/board_move.h"

constexpr int FIRST_SLIDE_MS = 150;    // to the first square
constexpr int FURTHER_SLIDE_MS = 80;   // for each further jump
constexpr int LONGEST_SLIDE_MS = 470;  // for all of them
constexpr int FADE_MS = 200;

struct SlideFrame {
    // The place of the piece on the board that is not inverted, in squares.
    double column = 0;
    double row = 0;
    bool arrived = false;
    // How much is left of each piece taken, 1 for all of it.
    std::array<double, MAX_JUMPS> left{};
};

int slide_duration(const BoardMove& move);

SlideFrame slide_frame(const BoardMove& move, double elapsed_ms);
