// The first weights file: a few plain values for men, kings, tempo and balance, with empty pattern tables.
// Enough to play with and to begin learning from.
#pragma once

#include <string>

#include "eval/weights.h"

// A weight of 50 is one point of a score, and a man is about 100 points.
constexpr EvalParams SEED_PARAMS{
    .lr_bal_opening = 20,  // 0.4 points a step of lean; a man at the edge weighs 9 steps
    .lr_bal_endgame = 10,
    .tempo_opening = 75,  // 1.5 points a row
    .tempo_endgame = 150,
    .men_opening = 5000,
    .men_endgame = 5500,
    .kings_opening = 10000,  // a second king is worth two men
    .kings_endgame = 10000,
    .has_kings_opening = 15000,  // a first king is worth three
    .has_kings_endgame = 15000,
};

// Writes the file. 0; 1 if it could not be written; 2 if memory ran out.
int seed_weights(const std::string& path);
