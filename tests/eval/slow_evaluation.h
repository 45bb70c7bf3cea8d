// The evaluation again, square by square as it is defined, for comparison. It shares the weights with the
// fast one and nothing else.
#pragma once

#include <cstdint>

#include "core/board.h"

int32_t slow_evaluate(const Position& position, int side);
int32_t slow_phase(const Position& position);
