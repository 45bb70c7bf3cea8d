// The value of a position from the files of an open database of values, of any form.
#pragma once

#include "egdb/database.h"

// The value for `side`. A conditional lookup never reads the disk. A position in which `side` can capture
// gets a value that means nothing, as does, from seven pieces on, one in which the other side could. Any
// thread may call it; the statistics count it.
EgdbValue wld_lookup(EgdbDatabase& database, const Position& position, int side, bool conditional);

// The greatest number of a sorted array that is not above the key, by place, among `low` to `high` - 1; `low`
// if all others are above.
template <typename Number>
uint32_t greatest_not_above(uint32_t low, uint32_t high, const Number* numbers, uint32_t key) {
    // Which half it is in is a toss of a coin: a conditional move costs less than a branch.
    for (uint32_t places = high > low ? high - low : 1; places > 1;) {
        const uint32_t half = places / 2;
        low += numbers[low + half] <= key ? half : 0;
        places -= half;
    }
    return low;
}
