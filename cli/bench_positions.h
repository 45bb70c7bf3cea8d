// Positions of all phases for `bench`.
#pragma once

#include <span>

extern const std::span<const char* const> bench_positions;
