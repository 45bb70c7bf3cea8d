#include "base/system_info.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/base/scratch_folder.h"

namespace {

constexpr const char* INFO =
    "MemTotal:       24683736 kB\n"
    "MemFree:        23301200 kB\n"
    "HugePages_Total:       0\n"
    "SwapTotal:             0 kB\n"
    "Broken:        x kB\n"
    "Short:\n"
    "Huge: 99999999999999999999 kB\n"
    "Large: 9223372036854775807 kB\n"
    "Last:   12 kB";

}  // namespace

TEST(MemoryInfo, FiguresAreFoundByTheirWholeName) {
    EXPECT_EQ(memory_info_figure(INFO, "MemTotal"), int64_t{24683736} * 1024);
    EXPECT_EQ(memory_info_figure(INFO, "MemFree"), int64_t{23301200} * 1024);
    EXPECT_EQ(memory_info_figure(INFO, "SwapTotal"), 0);
    EXPECT_EQ(memory_info_figure(INFO, "Last"), 12 * 1024);
    EXPECT_EQ(memory_info_figure(INFO, "Total"), -1);
    EXPECT_EQ(memory_info_figure(INFO, "Mem"), -1);
    EXPECT_EQ(memory_info_figure(INFO, "Missing"), -1);
    EXPECT_EQ(memory_info_figure("", "Mem"), -1);
}

TEST(MemoryInfo, WhatIsNoFigureIsNone) {
    for (const char* name : {"Broken", "Short", "Huge", "Large"})
        EXPECT_EQ(memory_info_figure(INFO, name), -1) << name;
}

TEST(MemoryInfo, PercentInUse) {
    MemoryFigures figures;
    EXPECT_EQ(percent_in_use(figures), 0);
    figures.total_physical = 1000;
    figures.free_physical = 1000;
    EXPECT_EQ(percent_in_use(figures), 0);
    figures.free_physical = 745;
    EXPECT_EQ(percent_in_use(figures), 25);
    figures.free_physical = 0;
    EXPECT_EQ(percent_in_use(figures), 100);
    figures.free_physical = 2000;
    EXPECT_EQ(percent_in_use(figures), 0);
}

TEST(MemoryInfo, TheMachineFitsTogether) {
    const MemoryFigures figures = memory_figures();
    EXPECT_EQ(figures.total_physical, memory_info_figure(content_of("/proc/meminfo"), "MemTotal"));
    EXPECT_EQ(figures.total_page_file, memory_info_figure(content_of("/proc/meminfo"), "SwapTotal"));
    EXPECT_GT(figures.free_physical, 0);
    // Other programs take and give back memory meanwhile.
    const double available =
        static_cast<double>(memory_info_figure(content_of("/proc/meminfo"), "MemAvailable"));
    EXPECT_NEAR(static_cast<double>(available_physical_memory()), available, 0.2 * available);
    EXPECT_LE(figures.free_physical, figures.total_physical);
    EXPECT_GE(figures.free_page_file, 0);
    EXPECT_LE(figures.free_page_file, figures.total_page_file);
    EXPECT_GT(figures.free_virtual, 0);
    EXPECT_LT(figures.free_virtual, figures.total_virtual);
    EXPECT_EQ(processor_count(), sysconf(_SC_NPROCESSORS_ONLN));
}

TEST(MemoryInfo, ALimitOfTheAddressSpaceIsSeen) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer needs more address space than the limit leaves";
#endif
    const pid_t child = fork();
    if (child == 0) {
        const rlimit limit{size_t{3} << 30, size_t{3} << 30};
        setrlimit(RLIMIT_AS, &limit);
        const MemoryFigures figures = memory_figures();
        const bool right = figures.total_virtual == int64_t{3} << 30 && figures.free_virtual > 0 &&
                           figures.free_virtual < figures.total_virtual;
        _exit(right ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

TEST(TimeText, HasTheFormOfTheLibrary) {
    ScratchEnvironment environment;
    environment.set("TZ", "UTC");
    tzset();
    EXPECT_EQ(time_text(0), "Thu Jan  1 00:00:00 1970\n");
    EXPECT_EQ(time_text(951827696), "Tue Feb 29 12:34:56 2000\n");
    environment.set("TZ", "UTC-2");
    tzset();
    EXPECT_EQ(time_text(0), "Thu Jan  1 02:00:00 1970\n");
    // A year that the form has no room for, or none at all.
    EXPECT_TRUE(time_text(INT64_MAX).ends_with('\n'));
    EXPECT_TRUE(time_text(INT64_MIN).ends_with('\n'));
}
