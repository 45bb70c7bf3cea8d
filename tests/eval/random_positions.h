// Random set-up positions for the tests of the evaluation.
#pragma once

#include <random>

#include "core/board.h"

using Random = std::mt19937_64;

// What a position is made of: how many pieces at most, and how many of a hundred pieces are kings.
struct PositionKind {
    int most_pieces;
    int king_percentage;
};

// No man stands on his promotion row and no square holds both colours.
Position random_position(Random& random, const PositionKind& kind);

// One of a mixture of kinds: openings, small endings, many kings, kings only, nearly full boards.
Position random_position(Random& random);

// The board turned by 180 degrees with the colours swapped.
Position turned_and_swapped(const Position& position);
