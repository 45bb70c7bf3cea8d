// The checks of the table of search phases in control/search_thread.h.
#pragma once

#include <cstdint>

constexpr int32_t ANY_FLAG = -1;

// What a transition begins or ends with; ANY_FLAG where the other thread may have changed it already.
struct SearchPhase {
    int32_t searching;
    int32_t search_finished;
    int32_t done_signalled;
};

// Calls `phase_violation`, if there is one, unless the flags are as told.
void check_search_phase(const char* transition, const SearchPhase& expected);
