// The unit in which processors hand memory to each other. Words that different threads write all the time are
// kept this far apart, so that none waits for the other's.
#pragma once

#include <cstddef>

constexpr size_t CACHE_LINE = 64;
