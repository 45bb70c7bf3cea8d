#include "tools/train.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <memory>
#include <new>
#include <random>

#include "eval/evaluation.h"
#include "tools/pattern_model.h"

namespace {

constexpr int ROUNDS = 20;  // an epoch
constexpr size_t SCALE_SAMPLE = 200000;
constexpr size_t MAN_SAMPLE = 20000;
constexpr double MIN_SCALE = 10, MAX_SCALE = 5000;
constexpr double MAN_TOO_SMALL = 1e-6;  // logistic units; of a model that has learned nothing

double expected(double value) { return 1 / (1 + std::exp(-value)); }

// For an expectation and a target between 0 and 1.
double cross_entropy(double value, double target) {
    // log(1 + exp(x)) without overflow.
    const double softplus = std::max(value, 0.0) + std::log1p(std::exp(-std::abs(value)));
    return softplus - target * value;
}

double result_target(const GameRecord& record) { return (record.result + 1) / 2.0; }

struct Target {
    double result_share;
    double score_scale;

    double of(const GameRecord& record) const {
        return result_share * result_target(record) +
               (1 - result_share) * expected(record.score / score_scale);
    }
};

// The scale on which the values tell the results best, by golden-section search on its logarithm.
double fitted_scale(const std::vector<double>& values, const std::vector<double>& targets) {
    const auto loss = [&](double log_scale) {
        const double scale = std::exp(log_scale);
        double sum = 0;
        for (size_t i = 0; i < values.size(); ++i) sum += cross_entropy(values[i] / scale, targets[i]);
        return sum;
    };
    constexpr double GOLDEN = 0.6180339887498949;
    double low = std::log(MIN_SCALE), high = std::log(MAX_SCALE);
    for (int i = 0; i < 40; ++i) {
        const double left = high - GOLDEN * (high - low);
        const double right = low + GOLDEN * (high - low);
        if (loss(left) < loss(right))
            high = right;
        else
            low = left;
    }
    return std::exp((low + high) / 2);
}

ModelInput input_of(const GameRecord& record) { return model_input(record.black, record.white, record.king); }

// Puts the positions into an order that the seed decides (Fisher and Yates).
void shuffle(std::vector<GameRecord>& records, std::mt19937_64& random) {
    for (size_t i = records.size(); i > 1; --i) std::swap(records[i - 1], records[random() % i]);
}

void drop_damped(std::vector<GameRecord>& records) {
    std::erase_if(records, [](const GameRecord& record) { return !is_learnable(record); });
}

// False if memory ran out.
bool fit_scales(const std::vector<GameRecord>& records, const EvalParams& first, TrainReport& report) {
    const std::unique_ptr<PatternModel> model = new_model(first, 1);
    if (!model) return false;
    std::vector<double> scores, values, targets;
    for (size_t i = 0; i < std::min(records.size(), SCALE_SAMPLE); ++i) {
        scores.push_back(records[i].score);
        values.push_back(static_cast<double>(model_value(*model, input_of(records[i]))));
        targets.push_back(result_target(records[i]));
    }
    report.score_scale = fitted_scale(scores, targets);
    report.first_scale = fitted_scale(values, targets);
    return true;
}

void count(Fit& fit, const GameRecord& record, double value, double loss) {
    ++fit.positions;
    fit.loss += loss;
    if (record.result == 0) return;
    ++fit.decided;
    fit.right += value * record.result > 0;
}

void finish(Fit& fit) {
    if (fit.positions > 0) fit.loss /= static_cast<double>(fit.positions);
}

GamePhase phase_of_input(const ModelInput& input) {
    const long phase = std::lround(input.opening * static_cast<float>(FULL_PHASE));
    return phase >= OPENING_PHASE ? PHASE_OPENING : phase >= MIDDLE_PHASE ? PHASE_MIDDLE : PHASE_END;
}

Fit measure(const PatternModel& model, const std::vector<GameRecord>& records, const Target& target,
            std::array<Fit, GAME_PHASES>& phases) {
    Fit all;
    phases = {};
    for (const GameRecord& record : records) {
        const ModelInput input = input_of(record);
        const double value = static_cast<double>(model_value(model, input));
        const double loss = cross_entropy(value, target.of(record));
        count(all, record, value, loss);
        count(phases[phase_of_input(input)], record, value, loss);
    }
    finish(all);
    for (Fit& fit : phases) finish(fit);
    return all;
}

// What a man is worth on average in positions without kings, on the model's scale: the mean loss of its owner
// when one is taken off the board.
double mean_man(const PatternModel& model, const std::vector<GameRecord>& records, std::mt19937_64& random) {
    double sum = 0;
    size_t men = 0;
    for (const GameRecord& r : records) {
        if (r.king != 0) continue;
        uint64_t pieces = r.black | r.white;
        for (uint64_t skip = random() % static_cast<uint64_t>(std::popcount(pieces)); skip > 0; --skip)
            pieces &= pieces - 1;
        const uint64_t man = pieces & (~pieces + 1);
        const float before = model_value(model, input_of(r));
        const float after = model_value(model, model_input(r.black & ~man, r.white & ~man, 0));
        sum += static_cast<double>(r.black & man ? before - after : after - before);
        if (++men == MAN_SAMPLE) break;
    }
    return men > 0 ? sum / static_cast<double>(men) : 0;
}

struct Run {
    const TrainOptions& options;
    const std::vector<GameRecord>& records;
    Target target;
    PatternModel& model;
    TrainCallback callback;
};

// One pass over the positions, with its loss. False if the caller ends the run.
bool run_epoch(const Run& run, int epoch, double& learned_loss) {
    const size_t size = run.records.size();
    double loss = 0;
    for (size_t round = 0; round < ROUNDS; ++round) {
        const size_t begin = size * round / ROUNDS, end = size * (round + 1) / ROUNDS;
        const double done =
            (epoch - 1 + static_cast<double>(round) / ROUNDS) / static_cast<double>(run.options.epochs);
        const float rate = static_cast<float>(run.options.rate * (1 - done));
        for (size_t i = begin; i < end; ++i) {
            const ModelInput input = input_of(run.records[i]);
            const double value = static_cast<double>(model_value(run.model, input));
            const double target = run.target.of(run.records[i]);
            loss += cross_entropy(value, target);
            model_step(run.model, input, static_cast<float>(expected(value) - target), rate);
        }
        model_decay(run.model, static_cast<float>(run.options.decay / ROUNDS), rate);
        if (!run.callback({epoch, done, 0, nullptr})) return false;
    }
    learned_loss = loss / static_cast<double>(size);
    return true;
}

}  // namespace

int train(TrainingSet& set, const EvalParams& first, const TrainOptions& options, TrainCallback callback,
          Weights& record, TrainReport& report) try {
    drop_damped(set.learned);
    drop_damped(set.held_out);
    if (set.learned.empty() || set.held_out.empty()) return TRAIN_NO_POSITIONS;
    std::mt19937_64 random(options.seed);
    shuffle(set.learned, random);
    TrainReport found;
    if (!fit_scales(set.learned, first, found)) return TRAIN_NO_MEMORY;
    const std::unique_ptr<PatternModel> model = new_model(first, static_cast<float>(found.first_scale));
    if (!model) return TRAIN_NO_MEMORY;
    const Target target{options.result_share, found.score_scale};
    found.first = measure(*model, set.held_out, target, found.phases);

    std::unique_ptr<PatternModel> best;
    for (int epoch = 1; epoch <= options.epochs; ++epoch) {
        if (epoch > 1) shuffle(set.learned, random);
        double loss = 0;
        if (!run_epoch({options, set.learned, target, *model, callback}, epoch, loss)) return TRAIN_STOPPED;
        std::array<Fit, GAME_PHASES> phases;
        const Fit fit = measure(*model, set.held_out, target, phases);
        if (!callback({epoch, epoch / static_cast<double>(options.epochs), loss, &fit})) return TRAIN_STOPPED;
        if (best && fit.loss >= found.best.loss) continue;
        found.best = fit;
        found.best_epoch = epoch;
        found.phases = phases;
        best = std::make_unique<PatternModel>(*model);
    }
    if (!best) return TRAIN_NO_POSITIONS;
    const double man = mean_man(*best, set.held_out, random);
    found.scale = man > MAN_TOO_SMALL ? options.man / man : found.first_scale;
    found.cut = fold_model(*best, static_cast<float>(found.scale), record);
    report = found;
    return TRAINED;
} catch (const std::bad_alloc&) {
    return TRAIN_NO_MEMORY;
}
