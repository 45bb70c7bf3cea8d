// The random numbers of the book's choices: a Mersenne twister, seeded in the way of its first version, each
// word of the state 69069 times the one before.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

struct BookRandom {
    static constexpr size_t WORDS = 624;
    std::array<uint32_t, WORDS> state{};
    size_t next = WORDS + 1;  // word to draw; WORDS: the state is to be renewed; beyond: not seeded yet
};

void seed_book_random(BookRandom& random, uint32_t seed);

// The next number. A generator that was not seeded seeds itself with 4357.
uint32_t draw_book_random(BookRandom& random);
