// Counting and finding bits in the 64-bit sets.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

#include "base/cpu.h"

// Entry w is the number of set bits of the 16-bit value w.
using BitCountTable = std::array<uint8_t, 65536>;
extern const BitCountTable bit_count_table;

// The number of set bits by four lookups, for processors without the instruction.
inline int32_t bit_count_by_table(uint64_t word) {
    return bit_count_table[word & 0xffff] + bit_count_table[word >> 16 & 0xffff] +
           bit_count_table[word >> 32 & 0xffff] + bit_count_table[word >> 48];
}

// The number of set bits by the processor's instruction, which must be there.
inline int32_t bit_count_by_instruction(uint64_t word) {
#if defined(__x86_64__)
    uint64_t count;
    __asm__("popcntq %1, %0" : "=r"(count) : "r"(word) : "cc");
    return static_cast<int32_t>(count);
#else
    return std::popcount(word);
#endif
}

// The number of set bits. The test is inline: it is the same every time, so the processor predicts it.
inline int32_t bit_count(uint64_t word) {
    return have_popcnt ? bit_count_by_instruction(word) : bit_count_by_table(word);
}

// Number of the lowest set bit; the word must not be 0.
constexpr int lowest_bit(uint64_t word) { return std::countr_zero(word); }

// The lowest set bit as a set; 0 of 0.
constexpr uint64_t lowest_set(uint64_t word) { return word & (~word + 1); }
