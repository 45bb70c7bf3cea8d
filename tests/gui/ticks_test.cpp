// How punctual the ticks are while all processors search. Says something only on a machine that has nothing
// else to do, so the limit is measured against what this machine manages while nothing is searched.
#include <cstdio>

#include "search/threads.h"
#include "tests/gui/desktop_fixture.h"

namespace {

int64_t worst_late_over(int milliseconds) {
    tick_figures.worst_late_us = 0;
    const int64_t before = tick_figures.ticks;
    QTest::qWait(milliseconds);
    EXPECT_GT(tick_figures.ticks, before);
    return tick_figures.worst_late_us;
}

}  // namespace

TEST_F(DesktopTest, TicksArePunctualWhileAllThreadsSearch) {
    constexpr int64_t ALLOWED_US = 30000;
    constexpr int MEASURED_MS = 4000;
    open_small();
    const int64_t idle = worst_late_over(MEASURED_MS);
    settings.search_threads = created_threads();
    run_command(TIME_INFINITE);
    run_command(COMMAND_ANALYSIS);
    ASSERT_TRUE(wait_until([] { return real_search_runs(); }));
    const int64_t searching = worst_late_over(MEASURED_MS);
    EXPECT_TRUE(real_search_runs());
    std::printf("latest tick: %.1f ms idle, %.1f ms with %d search threads\n",
                static_cast<double>(idle) / 1000, static_cast<double>(searching) / 1000, wanted_threads());
    EXPECT_LT(searching, idle + ALLOWED_US);
}
