#include "tools/pattern_model.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "eval/evaluation.h"
#include "eval/features.h"
#include "eval/node_summary.h"
#include "eval/regions.h"

namespace {

constexpr float POINT = 50;     // of the file's unit
constexpr float FIRST_SUM = 1;  // keeps the first steps of a rare pattern small
constexpr uint32_t ROW = 27;    // patterns of the three squares of a row

constexpr size_t TWO_ROWS = size_t{ROW} * ROW, THREE_ROWS = TWO_ROWS * ROW;
constexpr std::array<size_t, PATTERN_PARTS> PART_SIZES{PATTERN_ENTRIES, THREE_ROWS, THREE_ROWS,
                                                       TWO_ROWS,        TWO_ROWS,   TWO_ROWS};

// The places of the parts of a region's pattern. The first row is the most significant.
inline std::array<uint32_t, PATTERN_PARTS> part_places(uint32_t place) {
    const uint32_t first_three = place / ROW;
    const uint32_t last_three = place % (ROW * ROW * ROW);
    return {place, first_three, last_three, first_three / ROW, last_three / ROW, last_three % (ROW * ROW)};
}

inline void step(float& value, float& sum, float gradient, float rate) {
    sum += gradient * gradient;
    value -= rate * gradient / std::sqrt(sum);
}

inline void step(Cell& cell, float opening_gradient, float endgame_gradient, float rate) {
    step(cell.opening, cell.opening_sum, opening_gradient, rate);
    step(cell.endgame, cell.endgame_sum, endgame_gradient, rate);
}

// The members of EvalParams in their order.
constexpr std::array<int16_t EvalParams::*, SCALAR_TERMS> OPENING_PARAMS{
    &EvalParams::lr_bal_opening, &EvalParams::tempo_opening, &EvalParams::men_opening,
    &EvalParams::kings_opening, &EvalParams::has_kings_opening};
constexpr std::array<int16_t EvalParams::*, SCALAR_TERMS> ENDGAME_PARAMS{
    &EvalParams::lr_bal_endgame, &EvalParams::tempo_endgame, &EvalParams::men_endgame,
    &EvalParams::kings_endgame, &EvalParams::has_kings_endgame};

int16_t rounded(double value, int64_t& cut) {
    const double fitting = std::clamp(value, -32767.0, 32767.0);
    if (fitting != value) ++cut;
    return static_cast<int16_t>(std::lround(fitting));
}

}  // namespace

ModelInput model_input(uint64_t black, uint64_t white, uint64_t king) {
    const Position position{black, white, king, BLACK, 0, nullptr};
    NodeSummary summary;
    summarize(position, summary);
    const RegionPlaces places = places_by_rows(summary.black_men_set, summary.white_men_set);
    ModelInput input;
    input.forward = places.forward;
    input.turned = places.turned;
    input.scalars = {static_cast<float>(balance_difference<bit_count>(summary)),
                     static_cast<float>(tempo_difference<bit_count>(summary)),
                     static_cast<float>(summary.black_men - summary.white_men),
                     static_cast<float>(further_kings_difference(summary)),
                     static_cast<float>(has_king_difference(summary))};
    input.opening = static_cast<float>(phase_of<bit_count>(summary)) / static_cast<float>(FULL_PHASE);
    return input;
}

bool is_learnable(const GameRecord& record) {
    return (record.black & record.king) == 0 || (record.white & record.king) == 0;
}

std::unique_ptr<PatternModel> new_model(const EvalParams& params, float scale) {
    std::unique_ptr<PatternModel> model(new (std::nothrow) PatternModel);
    if (!model) return nullptr;
    try {
        for (auto& table : model->patterns)
            for (size_t part = 0; part < PATTERN_PARTS; ++part)
                table[part].assign(PART_SIZES[part], Cell{0, 0, FIRST_SUM, FIRST_SUM});
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    for (size_t i = 0; i < SCALAR_TERMS; ++i)
        model->scalars[i] =
            Cell{static_cast<float>(params.*OPENING_PARAMS[i]) / (POINT * scale),
                 static_cast<float>(params.*ENDGAME_PARAMS[i]) / (POINT * scale), FIRST_SUM, FIRST_SUM};
    return model;
}

float model_value(const PatternModel& model, const ModelInput& input) {
    float opening = 0, endgame = 0;
    for (size_t t = 0; t < PATTERN_TABLES; ++t) {
        const auto forward = part_places(input.forward[t]);
        const auto turned = part_places(input.turned[t]);
        for (size_t part = 0; part < PATTERN_PARTS; ++part) {
            const Cell& black = model.patterns[t][part][forward[part]];
            const Cell& white = model.patterns[t][part][turned[part]];
            opening += black.opening - white.opening;
            endgame += black.endgame - white.endgame;
        }
    }
    for (size_t i = 0; i < SCALAR_TERMS; ++i) {
        opening += input.scalars[i] * model.scalars[i].opening;
        endgame += input.scalars[i] * model.scalars[i].endgame;
    }
    return endgame + input.opening * (opening - endgame);
}

void model_step(PatternModel& model, const ModelInput& input, float slope, float rate) {
    const float opening = slope * input.opening;
    const float endgame = slope - opening;
    for (size_t t = 0; t < PATTERN_TABLES; ++t) {
        const auto forward = part_places(input.forward[t]);
        const auto turned = part_places(input.turned[t]);
        for (size_t part = 0; part < PATTERN_PARTS; ++part) {
            // A pattern that both sides have cancels out.
            if (forward[part] == turned[part]) continue;
            step(model.patterns[t][part][forward[part]], opening, endgame, rate);
            step(model.patterns[t][part][turned[part]], -opening, -endgame, rate);
        }
    }
    for (size_t i = 0; i < SCALAR_TERMS; ++i)
        if (input.scalars[i] != 0)
            step(model.scalars[i], opening * input.scalars[i], endgame * input.scalars[i], rate);
}

void model_decay(PatternModel& model, float decay, float rate) {
    const auto drawn = [&](float value, float sum) {
        return value * std::max(0.0F, 1 - rate * decay / std::sqrt(sum));
    };
    for (auto& table : model.patterns)
        for (auto& part : table)
            for (Cell& cell : part) {
                cell.opening = drawn(cell.opening, cell.opening_sum);
                cell.endgame = drawn(cell.endgame, cell.endgame_sum);
            }
}

int64_t fold_model(const PatternModel& model, float scale, Weights& record) {
    const double unit = static_cast<double>(POINT) * static_cast<double>(scale);
    int64_t cut = 0;
    for (size_t t = 0; t < PATTERN_TABLES; ++t)
        for (uint32_t place = 0; place < PATTERN_ENTRIES; ++place) {
            double opening = 0, endgame = 0;
            const auto places = part_places(place);
            for (size_t part = 0; part < PATTERN_PARTS; ++part) {
                opening += static_cast<double>(model.patterns[t][part][places[part]].opening);
                endgame += static_cast<double>(model.patterns[t][part][places[part]].endgame);
            }
            record.patterns[t][place] = {rounded(opening * unit, cut), rounded(endgame * unit, cut)};
        }
    for (size_t i = 0; i < SCALAR_TERMS; ++i) {
        record.params.*OPENING_PARAMS[i] = rounded(static_cast<double>(model.scalars[i].opening) * unit, cut);
        record.params.*ENDGAME_PARAMS[i] = rounded(static_cast<double>(model.scalars[i].endgame) * unit, cut);
    }
    return cut;
}
