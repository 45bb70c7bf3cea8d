#include "control/search_phase.h"

#include "control/search_thread.h"

void (*phase_violation)(const char* transition) = nullptr;

namespace {

bool fits(int32_t expected, int32_t actual) { return expected == ANY_FLAG || expected == actual; }

}  // namespace

void check_search_phase(const char* transition, const SearchPhase& expected) {
    if (!phase_violation) return;
    SearchThread& t = search_thread;
    if (!fits(expected.searching, t.searching.load(std::memory_order_acquire)) ||
        !fits(expected.search_finished, t.search_finished.load(std::memory_order_acquire)) ||
        !fits(expected.done_signalled, t.search_done_event.is_signalled()))
        phase_violation(transition);
}
