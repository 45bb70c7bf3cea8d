// The random numbers of the book, against the standard library's generator put into the same state.
#include <gtest/gtest.h>

#include <random>
#include <sstream>

#include "book/book_random.h"

namespace {

// Each word 69069 times the one before, all of them still to be renewed.
std::mt19937 standard_generator(uint32_t seed) {
    std::stringstream state;
    uint32_t word = seed;
    for (size_t i = 0; i < BookRandom::WORDS; ++i, word *= 69069) state << word << ' ';
    state << BookRandom::WORDS;
    std::mt19937 generator;
    state >> generator;
    return generator;
}

}  // namespace

TEST(BookRandom, DrawsWhatTheStandardGeneratorDraws) {
    for (const uint32_t seed : {1u, 4357u, 0xaaau, 0xffffffffu, 123456789u}) {
        BookRandom random;
        seed_book_random(random, seed);
        std::mt19937 standard = standard_generator(seed);
        for (int i = 0; i < 5000; ++i) ASSERT_EQ(draw_book_random(random), standard()) << seed << ' ' << i;
    }
}

TEST(BookRandom, SeedsItselfIfNobodyDid) {
    BookRandom random;
    std::mt19937 standard = standard_generator(4357);
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(draw_book_random(random), standard());
}

TEST(BookRandom, BeginsAgainWhenSeededAgain) {
    BookRandom random;
    seed_book_random(random, 77);
    const uint32_t first = draw_book_random(random);
    for (int i = 0; i < 1000; ++i) draw_book_random(random);
    seed_book_random(random, 77);
    EXPECT_EQ(draw_book_random(random), first);
}
