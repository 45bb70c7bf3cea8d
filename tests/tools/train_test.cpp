#include "tools/train.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <set>

#include "core/movegen.h"
#include "eval/evaluation.h"
#include "tools/pattern_model.h"
#include "tools/seed_weights.h"

namespace {

bool go_on(const TrainProgress&) { return true; }
bool stop_at_once(const TrainProgress&) { return false; }

Position position_of(const GameRecord& r) { return {r.black, r.white, r.king, r.side, 0, nullptr}; }

int32_t black_value(const GameRecord& r) {
    NodeSummary summary;
    const Position position = position_of(r);
    summarize(position, summary);
    return evaluate(position, BLACK, summary);
}

// The quiet positions of games of random moves, without kings of both sides.
std::vector<GameRecord> random_games(uint64_t seed, uint32_t games) {
    std::mt19937_64 random(seed);
    std::vector<GameRecord> records;
    for (uint32_t game = 0; game < games; ++game) {
        Position position = START_POSITION;
        MoveList list;
        for (int ply = 0; ply < 60 && generate_moves(position, list, position.side) > 0; ++ply) {
            Position child;
            make_child(position, child, list[static_cast<int>(random() % static_cast<uint64_t>(list.count))],
                       has_capture(position, position.side));
            position = child;
            if (has_capture(position, BLACK) || has_capture(position, WHITE)) continue;
            const GameRecord record{position.black,
                                    position.white,
                                    position.king,
                                    game,
                                    0,
                                    0,
                                    static_cast<uint8_t>(position.side)};
            if (ply >= 4 && is_learnable(record)) records.push_back(record);
        }
    }
    return records;
}

void write_records(const std::filesystem::path& path, const std::vector<GameRecord>& records) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(records.data()),
               static_cast<std::streamsize>(records.size() * sizeof(GameRecord)));
}

class Train : public testing::Test {
  protected:
    void SetUp() override {
        clear_weights();
        init_eval_tables();
        std::string name = (std::filesystem::temp_directory_path() / "tessarin-train-XXXXXX").string();
        folder = mkdtemp(name.data());
    }
    void TearDown() override {
        clear_weights();
        std::filesystem::remove_all(folder);
    }
    std::string path(const char* name) const { return folder / name; }

    // Labels the positions with the evaluation by the present weights, and with results that are the likelier
    // the higher it is.
    TrainingSet labelled_set(uint32_t games) {
        std::vector<GameRecord> records = random_games(5, games);
        std::mt19937_64 random(6);
        for (GameRecord& r : records) {
            r.score = static_cast<int16_t>(black_value(r));
            const double black_wins = 1 / (1 + std::exp(-r.score / 100.0));
            r.result = static_cast<double>(random() % 1000) < 1000 * black_wins ? 1 : -1;
        }
        write_records(path("labelled"), records);
        TrainingSet set;
        EXPECT_EQ(read_games(path("labelled"), {}, set), SET_READ);
        return set;
    }

    std::filesystem::path folder;
    std::unique_ptr<Weights> learned = std::make_unique<Weights>();
    TrainReport report;
};

TEST_F(Train, TheFoldedModelIsTheEvaluation) {
    const float scale = 150;
    const std::unique_ptr<PatternModel> model = new_model(SEED_PARAMS, scale);
    ASSERT_TRUE(model);
    std::mt19937_64 random(3);
    const std::vector<GameRecord> records = random_games(1, 60);
    for (const GameRecord& r : records) {
        const ModelInput input = model_input(r.black, r.white, r.king);
        model_step(*model, input, static_cast<float>(random() % 2001) / 1000 - 1, 0.05F);
    }
    ASSERT_EQ(fold_model(*model, scale, weights), 0);
    int checked = 0;
    for (const GameRecord& r : random_games(2, 60)) {
        const float value = scale * model_value(*model, model_input(r.black, r.white, r.king));
        if (std::abs(value) > 1450) continue;  // large values are compressed
        EXPECT_NEAR(static_cast<double>(value), black_value(r), 3);
        ++checked;
    }
    EXPECT_GT(checked, 500);
}

TEST_F(Train, APatternThatWasNeverSeenHasTheValueOfItsRows) {
    const std::unique_ptr<PatternModel> model = new_model({}, 100);
    ModelInput input{};
    input.forward = {5 * 27 + 3, 0, 0, 0};
    input.turned = {};
    input.opening = 1;
    model_step(*model, input, -1, 0.1F);
    ASSERT_EQ(fold_model(*model, 100, *learned), 0);
    const auto value = [&](uint32_t place) { return learned->patterns[0][place].opening; };
    constexpr uint32_t FIRST_ROW = 27 * 27 * 27;
    EXPECT_GT(value(5 * 27 + 3), value(FIRST_ROW + 5 * 27 + 3));
    EXPECT_GT(value(FIRST_ROW + 5 * 27 + 3), 0);
    EXPECT_EQ(value(FIRST_ROW + 6 * 27 + 4), 0);
    EXPECT_EQ(learned->patterns[1][5 * 27 + 3].opening, 0);
    EXPECT_EQ(learned->patterns[0][5 * 27 + 3].endgame, 0);
}

TEST_F(Train, DecayDrawsPatternsToZeroButNotTheScalars) {
    const std::unique_ptr<PatternModel> model = new_model(SEED_PARAMS, 100);
    const GameRecord r = random_games(1, 1).at(10);
    const ModelInput input = model_input(r.black, r.white, r.king);
    model_step(*model, input, 1, 0.1F);
    fold_model(*model, 100, weights);
    const EvalParams params = weights.params;
    const int16_t before = weights.patterns[0][input.forward[0]].opening;
    ASSERT_NE(before, 0);
    model_decay(*model, 0.5F, 0.5F);
    fold_model(*model, 100, weights);
    EXPECT_LT(std::abs(weights.patterns[0][input.forward[0]].opening), std::abs(before));
    EXPECT_EQ(std::memcmp(&weights.params, &params, sizeof params), 0);
    // A strong decay stops at zero and does not swing to the other side.
    model_decay(*model, 1000, 1);
    fold_model(*model, 100, weights);
    EXPECT_EQ(weights.patterns[0][input.forward[0]].opening, 0);
}

TEST_F(Train, WeightsThatDoNotFitAreCutAndCounted) {
    const std::unique_ptr<PatternModel> model = new_model(SEED_PARAMS, 100);
    EXPECT_EQ(fold_model(*model, 1000, *learned), 6);  // men, kings and first kings, twice each
    EXPECT_EQ(learned->params.has_kings_opening, 32767);
    EXPECT_EQ(learned->params.tempo_opening, 750);
}

// Root of the mean square of the differences between the known and the learned evaluation, and of the known.
struct Errors {
    double difference = 0;
    double value = 0;
};

Errors errors_of(const std::vector<GameRecord>& records, const Weights& known, const Weights& found) {
    Errors errors;
    std::vector<int32_t> values;
    weights = known;
    for (const GameRecord& r : records) values.push_back(black_value(r));
    weights = found;
    for (size_t i = 0; i < records.size(); ++i) {
        const double difference = black_value(records[i]) - values[i];
        errors.difference += difference * difference;
        errors.value += static_cast<double>(values[i]) * values[i];
    }
    const double count = static_cast<double>(records.size());
    return {std::sqrt(errors.difference / count), std::sqrt(errors.value / count)};
}

TEST_F(Train, RecoversKnownWeightsFromPositionsLabelledByThem) {
    // Values of rows, which random games show often enough, and scalars that differ from those at the start.
    const auto known = std::make_unique<Weights>();
    std::mt19937_64 random(11);
    std::array<int16_t, 27> row_values;
    for (int16_t& value : row_values) value = static_cast<int16_t>(static_cast<int>(random() % 1001) - 500);
    for (size_t t = 0; t < PATTERN_TABLES; ++t)
        for (uint32_t place = 0; place < PATTERN_ENTRIES; ++place) {
            const int16_t value = static_cast<int16_t>(row_values[place % 27] + row_values[place / 729 % 27]);
            known->patterns[t][place] = {value, static_cast<int16_t>(-value / 2)};
        }
    known->params = {.lr_bal_opening = 60,
                     .lr_bal_endgame = -30,
                     .tempo_opening = -100,
                     .tempo_endgame = 400,
                     .men_opening = 4000,
                     .men_endgame = 7000,
                     .kings_opening = 8000,
                     .kings_endgame = 9000,
                     .has_kings_opening = 12000,
                     .has_kings_endgame = 18000};
    weights = *known;
    TrainingSet set = labelled_set(4000);
    const std::vector<GameRecord> held_out = set.held_out;
    TrainOptions options;
    options.result_share = 0;
    options.decay = 0;
    options.epochs = 12;
    ASSERT_EQ(train(set, SEED_PARAMS, options, go_on, *learned, report), TRAINED);
    // The scale of the learned weights is free: put it to that of the known ones.
    const auto seed = std::make_unique<Weights>();
    seed->params = SEED_PARAMS;
    const Errors first = errors_of(held_out, *known, *seed);
    options.man *= report.score_scale / report.scale;
    weights = *known;
    TrainingSet again = labelled_set(4000);
    ASSERT_EQ(train(again, SEED_PARAMS, options, go_on, *learned, report), TRAINED);
    const Errors errors = errors_of(held_out, *known, *learned);
    EXPECT_LT(errors.difference, 0.08 * errors.value) << errors.value;
    EXPECT_LT(errors.difference, 0.2 * first.difference) << first.difference;
    EXPECT_LT(report.best.loss, report.first.loss);
}

TEST_F(Train, AManIsWorthWhatWasAskedFor) {
    weights.params = SEED_PARAMS;
    TrainingSet set = labelled_set(300);
    TrainOptions options;
    options.result_share = 0;
    options.epochs = 3;
    const auto other = std::make_unique<Weights>();
    TrainingSet copy = set;
    ASSERT_EQ(train(set, SEED_PARAMS, options, go_on, *learned, report), TRAINED);
    options.man = 200;
    ASSERT_EQ(train(copy, SEED_PARAMS, options, go_on, *other, report), TRAINED);
    EXPECT_NEAR(other->params.men_opening, 2 * learned->params.men_opening, 2);
    EXPECT_GT(learned->params.men_opening, 4000);
    EXPECT_LT(learned->params.men_opening, 6000);
}

TEST_F(Train, TheSeedDecidesTheWeights) {
    weights.params = SEED_PARAMS;
    const TrainingSet set = labelled_set(60);
    const auto trained = [&](uint64_t seed) {
        TrainingSet copy = set;
        TrainOptions options;
        options.epochs = 2;
        options.seed = seed;
        auto record = std::make_unique<Weights>();
        EXPECT_EQ(train(copy, SEED_PARAMS, options, go_on, *record, report), TRAINED);
        return record;
    };
    const auto first = trained(1), same = trained(1), other = trained(2);
    EXPECT_EQ(std::memcmp(first.get(), same.get(), sizeof(Weights)), 0);
    EXPECT_NE(std::memcmp(first.get(), other.get(), sizeof(Weights)), 0);
}

TEST_F(Train, WithoutPositionsOrWhenStoppedNothingIsWritten) {
    TrainingSet empty;
    TrainOptions options;
    learned->params.men_opening = 77;
    EXPECT_EQ(train(empty, SEED_PARAMS, options, go_on, *learned, report), TRAIN_NO_POSITIONS);
    TrainingSet set = labelled_set(60);
    EXPECT_EQ(train(set, SEED_PARAMS, options, stop_at_once, *learned, report), TRAIN_STOPPED);
    EXPECT_EQ(learned->params.men_opening, 77);
    EXPECT_EQ(report.best_epoch, 0);
}

using TrainingFiles = Train;

TEST_F(TrainingFiles, NoGameIsOnBothSidesOfTheSplit) {
    const std::vector<GameRecord> records = random_games(9, 800);
    write_records(path("games"), records);
    TrainingSet set;
    ASSERT_EQ(read_games(path("games"), {.held_out_share = 4}, set), SET_READ);
    std::set<uint32_t> learned_games, held_out_games;
    for (const GameRecord& r : set.learned) learned_games.insert(r.game);
    for (const GameRecord& r : set.held_out) held_out_games.insert(r.game);
    EXPECT_EQ(learned_games.size() + held_out_games.size(), static_cast<size_t>(set.games));
    for (const uint32_t game : held_out_games) EXPECT_FALSE(learned_games.contains(game));
    EXPECT_EQ(set.learned.size() + set.held_out.size(), records.size());
    EXPECT_NEAR(static_cast<double>(held_out_games.size()), 200, 50);

    TrainingSet some;
    ASSERT_EQ(read_games(path("games"), {.every = 3}, some), SET_READ);
    EXPECT_NEAR(static_cast<double>(some.learned.size() + some.held_out.size()),
                static_cast<double>(records.size()) / 3, 0.03 * static_cast<double>(records.size()));
}

TEST_F(TrainingFiles, ACutOffFileLosesOnlyItsLastRecord) {
    const std::vector<GameRecord> records = random_games(9, 5);
    write_records(path("games"), records);
    const auto size = std::filesystem::file_size(path("games"));
    for (const size_t cut : {size_t{1}, size_t{31}}) {
        std::filesystem::resize_file(path("games"), size - cut);
        TrainingSet set;
        ASSERT_EQ(read_games(path("games"), {}, set), SET_READ);
        EXPECT_EQ(set.learned.size() + set.held_out.size(), records.size() - 1);
        EXPECT_EQ(set.faulty, 0);
    }
}

TEST_F(TrainingFiles, RecordsWithoutAPositionAreLeftOutAndCounted) {
    const std::vector<GameRecord> sound = random_games(9, 2);
    std::vector<GameRecord> records = sound;
    const auto add_faulty = [&](auto damage) {
        records.push_back(sound[0]);
        damage(records.back());
    };
    add_faulty([](GameRecord& r) { r.side = 2; });
    add_faulty([](GameRecord& r) { r.result = 2; });
    add_faulty([](GameRecord& r) { r.result = -2; });
    add_faulty([](GameRecord& r) { r.white |= r.black; });
    add_faulty([](GameRecord& r) { r.black = r.white = r.king = 0; });
    add_faulty([](GameRecord& r) { r.king = ~(r.black | r.white) & BOARD_MASK; });
    add_faulty([](GameRecord& r) { r.black |= uint64_t{1} << 63; });
    add_faulty([](GameRecord& r) { r.black |= uint64_t{1} << 10; });  // between two rows of squares
    write_records(path("games"), records);
    TrainingSet set;
    ASSERT_EQ(read_games(path("games"), {}, set), SET_READ);
    EXPECT_EQ(set.faulty, 8);
    EXPECT_EQ(set.learned.size() + set.held_out.size(), sound.size());
}

TEST_F(TrainingFiles, AMissingFileIsTold) {
    TrainingSet set;
    EXPECT_EQ(read_games(path("nothing"), {}, set), SET_UNREADABLE);
    EXPECT_EQ(read_games(folder.string(), {}, set), SET_UNREADABLE);
}

}  // namespace
