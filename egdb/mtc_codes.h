// The byte code of the data files that hold moves to conversion: a byte is one position with its number, or a
// run of positions of which nothing useful is told. Builder and reader share it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// What a lookup answers where there is no useful number: below the threshold, not won or lost, or not there.
constexpr int32_t NO_MTC = 1;
// Numbers are even; those below this one are not told.
constexpr int32_t MTC_THRESHOLD = 10;

// The bytes below this one are runs, this one and those above stand for 0, 2, 4 and so on.
constexpr int MTC_FIRST_NUMBER = 94;
constexpr int32_t MTC_LARGEST = (255 - MTC_FIRST_NUMBER) * 2;

// How many positions each run has. That of 84 stands where 80000 would be looked for; the files have it so.
constexpr std::array<uint32_t, MTC_FIRST_NUMBER> mtc_runs = [] {
    constexpr std::array<uint32_t, 16> LONGEST{20000,    30000,    40000,     50000,     60000,   70000,
                                               800000,   90000,    100000,    300000,    1000000, 3000000,
                                               10000000, 30000000, 100000000, 1000000000};
    std::array<uint32_t, MTC_FIRST_NUMBER> runs{};
    size_t i = 0;
    for (uint32_t n = 1; n <= 50; ++n) runs[i++] = n;
    for (uint32_t n = 100; n <= 1000; n += 50) runs[i++] = n;
    for (uint32_t n = 2000; n <= 10000; n += 1000) runs[i++] = n;
    for (const uint32_t n : LONGEST) runs[i++] = n;
    return runs;
}();
static_assert(mtc_runs[84] == 800000 && mtc_runs[MTC_FIRST_NUMBER - 1] == 1000000000);

// How many positions each byte stands for.
constexpr std::array<uint32_t, 256> mtc_totals = [] {
    std::array<uint32_t, 256> totals{};
    for (size_t byte = 0; byte < 256; ++byte) totals[byte] = byte < MTC_FIRST_NUMBER ? mtc_runs[byte] : 1;
    return totals;
}();

constexpr int32_t mtc_of_byte(uint8_t byte) {
    return byte < MTC_FIRST_NUMBER ? NO_MTC : (byte - MTC_FIRST_NUMBER) * 2;
}
