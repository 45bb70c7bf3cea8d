// Learns the weights of the evaluation from games of self-play: logistic regression of the expected result on
// the evaluation of quiet positions. The result of a game is mixed with what the search of the position said.
//
// The method is stochastic gradient descent with a step size for each weight (AdaGrad) that falls to zero
// over the run. It is one thread's work in a fixed order, so the same games, options and program give the
// same file.
#pragma once

#include <array>
#include <cstdint>

#include "eval/weights.h"
#include "tools/training_set.h"

struct TrainOptions {
    int epochs = 10;
    double rate = 0.1;
    double decay = 30;           // of patterns: how many positions' worth of doubt they have to overcome
    double result_share = 0.75;  // of the game's result in the target; the search's score has the rest
    double man = 100;            // points that taking a man off the board is to be worth on average
    uint64_t seed = 1;           // of the order of the positions
};

// What the model says of positions that it did not learn from.
struct Fit {
    int64_t positions = 0;
    double loss = 0;      // mean cross-entropy of the target, in nats
    int64_t decided = 0;  // positions of games that were not drawn
    int64_t right = 0;    // those of them in which the winner stands better
};

enum GamePhase { PHASE_OPENING, PHASE_MIDDLE, PHASE_END, GAME_PHASES };
// The least phase of the evaluation that counts as the opening and as the middle of the game.
constexpr int OPENING_PHASE = 54;
constexpr int MIDDLE_PHASE = 27;

struct TrainProgress {
    int epoch;            // from 1
    double done;          // of the whole run, 0 to 1
    double learned_loss;  // at the end of an epoch: of its positions, each before its step
    const Fit* held_out;  // at the end of an epoch, otherwise null
};

struct TrainReport {
    double score_scale = 0;  // points of a search's score that are 1 on the logistic scale
    double first_scale = 0;  // the same of the first weights' evaluation
    Fit first;               // of the first weights, held out
    Fit best;                // of the epoch that was kept, held out
    int best_epoch = 0;
    std::array<Fit, GAME_PHASES> phases{};  // of the epoch that was kept, held out
    double scale = 0;  // points of the learned evaluation that are 1 on the logistic scale
    int64_t cut = 0;   // weights that did not fit their 16 bits
};

enum TrainStatus { TRAINED = 0, TRAIN_NO_MEMORY = 1, TRAIN_NO_POSITIONS = 2, TRAIN_STOPPED = 3 };

// Called some times an epoch; false ends the run.
using TrainCallback = bool (*)(const TrainProgress& progress);

// Learns from the set, beginning with `first`. `record` and `report` are left as they were unless it returns
// TRAINED. The set's learned positions are put into another order.
int train(TrainingSet& set, const EvalParams& first, const TrainOptions& options, TrainCallback callback,
          Weights& record, TrainReport& report);
