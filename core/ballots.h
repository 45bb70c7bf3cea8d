// The start positions of matches: what stands on the board after the first two or three moves of a game,
// without the lines that give one side too much. Counting runs in the order of the move generator at every
// level, so the number of a ballot is the same everywhere.
//
// All functions here are re-entrant and allocate nothing.
#pragma once

#include <array>
#include <span>

#include "core/board.h"
#include "core/notation.h"

constexpr int TWO_MOVE_BALLOTS = 79;     // white to move
constexpr int THREE_MOVE_BALLOTS = 494;  // black to move

struct Ballot {
    Position position;
    // The moves that lead there: "32-28 19-23", or "32-28 19-23 28x19".
    std::array<char, 3 * MOVE_TEXT_SIZE> text;
};

// The number of ballots of two or three moves; 0 for any other number.
constexpr int ballot_count(int moves) {
    return moves == 2 ? TWO_MOVE_BALLOTS : moves == 3 ? THREE_MOVE_BALLOTS : 0;
}

// Fills in the ballot at an index from 0. False if there is none, and then nothing is changed.
bool find_ballot(int moves, int index, Ballot& ballot);

// A move as its square numbers, captures too.
struct BallotMove {
    uint8_t from;
    uint8_t to;

    bool operator==(const BallotMove&) const = default;
};

// The lines of three moves that are left out and share their first two moves. Unused third moves are zero.
struct LeftOutLines {
    BallotMove first;
    BallotMove second;
    std::array<BallotMove, 7> thirds;
};
extern const std::span<const LeftOutLines> left_out_lines;
