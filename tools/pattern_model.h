// The weights while they are learned: the evaluation as a sum of terms, each with a value for both ends of
// the game, in units of the logistic scale (a sum of 1 is an expected result of 73 %).
//
// A pattern of twelve squares is mostly too rare to be learned from its own games. So its value is a sum: of
// the pattern of all four rows of the region, of the two patterns of three rows and of the three patterns of
// two rows that it contains. The small ones are seen often and carry what is common; what a large one adds is
// drawn towards zero. The sums are folded into the four tables of the weights file at the end, where nothing
// of this is left.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "eval/weights.h"
#include "tools/selfplay.h"

// A value for each end of the game, with the sum of the squared gradients that it has seen.
struct Cell {
    float opening;
    float endgame;
    float opening_sum;
    float endgame_sum;
};

constexpr int SCALAR_TERMS = 5;   // in the order of EvalParams
constexpr int PATTERN_PARTS = 6;  // of a region: all rows, two of three rows, three of two rows

struct PatternModel {
    std::array<std::array<std::vector<Cell>, PATTERN_PARTS>, PATTERN_TABLES> patterns;
    std::array<Cell, SCALAR_TERMS> scalars;
};

// What the model looks at in a position.
struct ModelInput {
    std::array<uint32_t, PATTERN_TABLES> forward;
    std::array<uint32_t, PATTERN_TABLES> turned;
    std::array<float, SCALAR_TERMS> scalars;
    float opening;  // share of the opening in the blend; the endgame has the rest
};

ModelInput model_input(uint64_t black, uint64_t white, uint64_t king);

// True if the evaluation of the position is not damped as an ending with kings on both sides is, so that it
// is the sum that the model learns.
bool is_learnable(const GameRecord& record);

// A model without patterns and with these scalar weights; `scale` points are 1 of the model. Null if memory
// runs out.
std::unique_ptr<PatternModel> new_model(const EvalParams& params, float scale);

// The value of a position, positive when good for black.
float model_value(const PatternModel& model, const ModelInput& input);

// One step of AdaGrad (Duchi, Hazan, Singer 2011) down the gradient: `slope` is the derivative of the loss by
// the value.
void model_step(PatternModel& model, const ModelInput& input, float slope, float rate);

// Draws the patterns towards zero: the same steps down the gradient of `decay` / 2 times the square of each
// value.
void model_decay(PatternModel& model, float decay, float rate);

// The weights of the file, for `scale` points for 1 of the model. Returns how many did not fit their 16 bits
// and were cut.
int64_t fold_model(const PatternModel& model, float scale, Weights& record);
