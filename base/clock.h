// The program's one reading of time: the monotonic wall clock, counted from the start of the process.
// Safe from any thread.
#pragma once

#include <cstdint>

// Milliseconds since the start of the process.
int64_t clock_ms();
