// Any bytes as weights: they only change what a position is worth. The input is a line of 50 letters, the
// pieces by square, and the bytes, which are repeated to fill the record, but for their last part when the
// first of them is odd. The value must be the same with and without the instructions of newer processors, and
// the same when the board is turned.
#include <algorithm>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "base/cpu.h"
#include "check.h"
#include "core/board.h"
#include "eval/evaluation.h"
#include "eval/weights.h"

namespace {

// One piece a letter: b, B, w, W on the squares in order, anything else an empty square.
Position position_from(std::string_view letters) {
    Position position{};
    for (size_t i = 0; i < std::min<size_t>(letters.size(), SQUARES); ++i) {
        const uint64_t mask = mask_of_square[i];
        const char c = letters[i];
        const bool king = c == 'B' || c == 'W' || (c == 'b' && (mask & BLACK_PROMOTION_ROW)) ||
                          (c == 'w' && (mask & WHITE_PROMOTION_ROW));
        if (c == 'b' || c == 'B') position.black |= mask;
        if (c == 'w' || c == 'W') position.white |= mask;
        if (king) position.king |= mask;
    }
    return position;
}

uint64_t turned(uint64_t set) {
    uint64_t result = 0;
    for (size_t i = 0; i < SQUARES; ++i)
        if (set & mask_of_square[i]) result |= mask_of_square[SQUARES - 1 - i];
    return result;
}

void fill_weights(std::span<const uint8_t> bytes) {
    static std::vector<uint8_t> image(WEIGHTS_BYTES);
    size_t filled = std::min(bytes.size(), image.size());
    if (filled == 0) return clear_weights();
    std::memcpy(image.data(), bytes.data(), filled);
    while (filled < image.size()) {
        const size_t more = std::min(filled, image.size() - filled);
        std::memcpy(image.data() + filled, image.data(), more);
        filled += more;
    }
    set_weights(std::span(image).first(bytes[0] % 2 ? image.size() - bytes.size() : image.size()));
}

int32_t value_of(const Position& position, int side) {
    NodeSummary summary;
    summarize(position, summary);
    return evaluate(position, side, summary);
}

void check_value(const Position& position, int side) {
    const int32_t value = value_of(position, side);
    FUZZ_CHECK(value % 2 == 0 || value == 1 || value == -1);
    const Position other{
        turned(position.white), turned(position.black), turned(position.king), 0, 0, nullptr};
    FUZZ_CHECK(value_of(other, side ^ 1) == value);
    const bool popcnt = have_popcnt, pext = use_pext;
    have_popcnt = use_pext = false;
    const int32_t plain = value_of(position, side);
    use_pext = have_bmi2();
    const int32_t extracted = value_of(position, side);
    have_popcnt = popcnt;
    use_pext = pext;
    FUZZ_CHECK(plain == value && extracted == value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const size_t line = std::min(text.find('\n'), size);
    const size_t start = std::min(line + 1, size);
    fill_weights({data + start, size - start});
    const Position position = position_from(text.substr(0, line));
    check_value(position, WHITE);
    check_value(position, BLACK);
    return 0;
}
