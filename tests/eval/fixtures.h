// What the tests of the evaluation share.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/cpu.h"
#include "core/board.h"
#include "eval/evaluation.h"
#include "eval/weights.h"
#include "tests/eval/random_positions.h"

// Begins each test with zero weights and built tables, and puts the processor flags back after it.
class EvalTest : public testing::Test {
  protected:
    void SetUp() override {
        clear_weights();
        init_eval_tables();
    }
    void TearDown() override {
        use_pext = pext_before_;
        have_popcnt = popcnt_before_;
    }

  private:
    bool pext_before_ = use_pext;
    bool popcnt_before_ = have_popcnt;
};

// Fills all weights with random values from -limit - 1 to limit.
void randomize_weights(Random& random, int limit);

// A position of pieces given by square; kings are given apart from men.
struct Pieces {
    std::vector<int> black_men = {};
    std::vector<int> white_men = {};
    std::vector<int> black_kings = {};
    std::vector<int> white_kings = {};
};
Position position_of(const Pieces& pieces);

// `evaluate` with a summary made on the spot.
int32_t score_of(const Position& position, int side);

// The ways to count and to extract that this processor can take.
struct Path {
    std::string name;
    bool pext;
    bool popcnt;
};
std::vector<Path> available_paths();
