// How punctual the ticks are while all processors search. What the system makes this thread wait for a
// processor, as it must on a busy machine, is not counted, nor are a few stretches in which the whole process
// stands still: a program that holds its own interface up shows in most of them.
#include <cstdio>

#include "search/threads.h"
#include "tests/gui/desktop_fixture.h"

namespace {

constexpr int SLICES = 25;
constexpr int SLICE_MS = 200;
constexpr int64_t ALLOWED_US = 30000;
constexpr int ALLOWED_LATE_SLICES = 3;

// Microseconds that this thread has been ready to run and has not run; 0 if the system does not tell.
int64_t waited_for_processor() {
    long long waited_ns = 0;
    if (std::FILE* const file = std::fopen("/proc/thread-self/schedstat", "r")) {
        if (std::fscanf(file, "%*d %lld", &waited_ns) != 1) waited_ns = 0;
        std::fclose(file);
    }
    return waited_ns / 1000;
}

struct Lateness {
    int64_t whole = 0;  // microseconds
    int64_t own = 0;    // without the wait for a processor
};

Lateness latest_tick() {
    tick_figures.worst_late_us = 0;
    const int64_t before = waited_for_processor();
    QTest::qWait(SLICE_MS);
    const int64_t late = tick_figures.worst_late_us;
    return {late, late - (waited_for_processor() - before)};
}

}  // namespace

TEST_F(DesktopTest, TicksArePunctualWhileAllThreadsSearch) {
    open_small();
    settings.search_threads = created_threads();
    run_command(TIME_INFINITE);
    run_command(COMMAND_ANALYSIS);
    ASSERT_TRUE(wait_until([] { return real_search_runs(); }));
    const int64_t ticks = tick_figures.ticks;
    Lateness worst;
    int late_slices = 0;
    for (int slice = 0; slice < SLICES; ++slice) {
        const Lateness latest = latest_tick();
        late_slices += latest.own > ALLOWED_US;
        worst = {std::max(worst.whole, latest.whole), std::max(worst.own, latest.own)};
    }
    std::printf("%lld ticks with %d search threads, the latest %.1f ms late, %.1f ms by its own doing\n",
                static_cast<long long>(tick_figures.ticks - ticks), wanted_threads(),
                static_cast<double>(worst.whole) / 1000, static_cast<double>(worst.own) / 1000);
    EXPECT_TRUE(real_search_runs());
    EXPECT_GT(tick_figures.ticks, ticks + SLICES);
    EXPECT_LE(late_slices, ALLOWED_LATE_SLICES);
}

// The measure itself: what holds up the interface thread is seen.
TEST_F(DesktopTest, AHeldUpTickIsSeen) {
    open_small();
    ASSERT_TRUE(wait_until([] { return tick_figures.ticks > 1; }));
    QTimer::singleShot(10, main_window, [] { QTest::qSleep(150); });
    EXPECT_GT(latest_tick().whole, 2 * ALLOWED_US);
}
