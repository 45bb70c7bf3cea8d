#include "tests/eval/fixtures.h"

namespace {

uint64_t set_of(const std::vector<int>& squares) {
    uint64_t set = 0;
    for (const int square : squares) set |= set_of_square(square);
    return set;
}

}  // namespace

void randomize_weights(Random& random, int limit) {
    std::uniform_int_distribution<int> distribution(-limit - 1, limit);
    const auto value = [&] { return static_cast<int16_t>(distribution(random)); };
    for (PatternTable& table : weights.patterns)
        for (PatternEntry& entry : table) entry = {value(), value()};
    weights.params = {value(), value(), value(), value(), value(),
                      value(), value(), value(), value(), value()};
}

Position position_of(const Pieces& pieces) {
    Position position;
    position.king = set_of(pieces.black_kings) | set_of(pieces.white_kings);
    position.black = set_of(pieces.black_men) | set_of(pieces.black_kings);
    position.white = set_of(pieces.white_men) | set_of(pieces.white_kings);
    return position;
}

int32_t score_of(const Position& position, int side) {
    NodeSummary summary;
    summarize(position, summary);
    return evaluate(position, side, summary);
}

std::vector<Path> available_paths() {
    std::vector<Path> paths{{"rows and table", false, false}};
    // A test changes the flag only to false, so what it is at the start is what the processor has.
    static const bool popcnt = have_popcnt;
    if (popcnt) paths.push_back({"rows and popcnt", false, true});
    if (have_bmi2()) paths.push_back({"pext and table", true, false});
    if (have_bmi2() && popcnt) paths.push_back({"pext and popcnt", true, true});
    return paths;
}
