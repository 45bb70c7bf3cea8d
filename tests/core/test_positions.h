// Positions for the tests of the core.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "core/board.h"
#include "core/movegen.h"

// The position of a text such as "W:W31,K32:B1,K2": side to move, then the pieces of each side by square, K
// before a king. A text that is anything else stops the test program.
Position position_of(std::string_view text);

// The reverse, for the messages of failing tests.
std::string letters_of(const Position& position);

// How random positions are made up.
struct RandomShape {
    int least_own, most_own;  // pieces of the side to move
    int least_enemy, most_enemy;
    int king_percent;        // of the pieces of either side
    int inner_percent = 50;  // of the enemies: how many at least stand off the edge, where they can be taken
};

// A legal position with either side to move.
Position random_position(std::mt19937_64& random, const RandomShape& shape);

// The positions of one game of random moves from the start, at most `plies` + 1 of them.
std::vector<Position> random_game(std::mt19937_64& random, int plies);

// A number from `least` to `most`.
int random_between(std::mt19937_64& random, int least, int most);

// Every short move text of a list, in its order.
std::vector<std::string> texts_of(const Position& position, const MoveList& list);
