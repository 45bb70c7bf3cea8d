#include "eval/regions.h"

DigitSums forward_sums;
DigitSums reverse_sums;

void build_digit_sums() {
    std::array<uint32_t, 12> powers_of_three{1};
    for (size_t i = 1; i < 12; ++i) powers_of_three[i] = powers_of_three[i - 1] * 3;
    for (size_t x = 0; x < forward_sums.size(); ++x) {
        forward_sums[x] = reverse_sums[x] = 0;
        for (size_t i = 0; i < 12; ++i) {
            if (!(x >> i & 1)) continue;
            forward_sums[x] += powers_of_three[11 - i];
            reverse_sums[x] += powers_of_three[i];
        }
    }
}
