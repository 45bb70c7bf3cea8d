#include "book/book_random.h"

namespace {

constexpr uint32_t DEFAULT_SEED = 4357;
constexpr uint32_t SEED_FACTOR = 69069;
constexpr size_t MIDDLE_WORD = 397;
constexpr uint32_t MATRIX = 0x9908b0df;
constexpr uint32_t UPPER_BIT = 0x80000000;

void renew(BookRandom& random) {
    auto& state = random.state;
    for (size_t i = 0; i < BookRandom::WORDS; ++i) {
        const uint32_t word = (state[i] & UPPER_BIT) | (state[(i + 1) % BookRandom::WORDS] & ~UPPER_BIT);
        state[i] = state[(i + MIDDLE_WORD) % BookRandom::WORDS] ^ word >> 1 ^ (word & 1 ? MATRIX : 0);
    }
    random.next = 0;
}

uint32_t tempered(uint32_t word) {
    word ^= word >> 11;
    word ^= word << 7 & 0x9d2c5680;
    word ^= word << 15 & 0xefc60000;
    return word ^ word >> 18;
}

}  // namespace

void seed_book_random(BookRandom& random, uint32_t seed) {
    random.state[0] = seed;
    for (size_t i = 1; i < BookRandom::WORDS; ++i) random.state[i] = random.state[i - 1] * SEED_FACTOR;
    random.next = BookRandom::WORDS;
}

uint32_t draw_book_random(BookRandom& random) {
    if (random.next > BookRandom::WORDS) seed_book_random(random, DEFAULT_SEED);
    if (random.next == BookRandom::WORDS) renew(random);
    return tempered(random.state[random.next++]);
}
