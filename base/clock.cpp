#include "base/clock.h"

#include <chrono>

namespace {
const auto process_start = std::chrono::steady_clock::now();
}

int64_t clock_ms() {
    const auto elapsed = std::chrono::steady_clock::now() - process_start;
    return std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count();
}
