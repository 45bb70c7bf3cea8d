// The evaluation of mid-game positions, on each of its paths. The weights are random, so that the values look
// like learned ones; the positions are made by random play, so that they look like those of a game.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "base/cpu.h"
#include "core/movegen.h"
#include "eval/evaluation.h"
#include "eval/weights.h"

namespace {

constexpr int POSITIONS = 4096;

std::vector<Position> random_play(bool with_kings) {
    std::mt19937_64 random(1);
    std::vector<Position> positions;
    Position position = START_POSITION;
    for (int ply = 0; static_cast<int>(positions.size()) < POSITIONS; ++ply) {
        MoveList list;
        if (ply == 200 || generate_moves(position, list, position.side) == 0) {
            position = START_POSITION;
            ply = 0;
            continue;
        }
        position = position_after(list[static_cast<int>(random() % static_cast<uint64_t>(list.count))],
                                  position.side ^ 1);
        if (ply >= 10 && (position.king != 0) == with_kings && !has_capture(position, position.side))
            positions.push_back(position);
    }
    return positions;
}

void fill_weights() {
    std::mt19937_64 random(2);
    std::uniform_int_distribution<int> value(-300, 300);
    for (PatternTable& table : weights.patterns)
        for (PatternEntry& entry : table)
            entry = {static_cast<int16_t>(value(random)), static_cast<int16_t>(value(random))};
    weights.params = {2, 1, 5, 20, 5000, 5500, 9000, 9000, 15000, 15000};
    init_eval_tables();
}

void run(benchmark::State& state, bool pext, bool popcnt, bool with_kings) {
    if (pext && !have_bmi2()) return state.SkipWithError("this processor has no BMI2");
    fill_weights();
    const std::vector<Position> positions = random_play(with_kings);
    std::vector<NodeSummary> summaries(positions.size());
    for (size_t i = 0; i < positions.size(); ++i) summarize(positions[i], summaries[i]);
    const bool pext_before = use_pext;
    const bool popcnt_before = have_popcnt;
    use_pext = pext;
    have_popcnt = popcnt && popcnt_before;
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(evaluate(positions[i], positions[i].side, summaries[i]));
        i = (i + 1) % POSITIONS;
    }
    use_pext = pext_before;
    have_popcnt = popcnt_before;
}

BENCHMARK_CAPTURE(run, pext_popcnt, true, true, false);
BENCHMARK_CAPTURE(run, rows_popcnt, false, true, false);
BENCHMARK_CAPTURE(run, rows_table, false, false, false);
BENCHMARK_CAPTURE(run, pext_popcnt_kings, true, true, true);
BENCHMARK_CAPTURE(run, rows_popcnt_kings, false, true, true);

}  // namespace
