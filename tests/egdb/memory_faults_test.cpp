// Memory that runs out while a database is opened.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "egdb/egdb_open.h"
#include "egdb/wld_open.h"
#include "tests/egdb/database_folder.h"
#include "tests/egdb/failing_new.h"

namespace {

// The log without allocations of its own.
char logged[4000];

void keep_in_place(const char* text) { std::snprintf(logged, sizeof logged, "%s", text); }

template <typename Open>
int fail_each_allocation(const Open& open) {
    int failed = 0;
    for (int allocation = 0;; ++allocation) {
        logged[0] = '\0';
        allocations_left = allocation;
        const OpenEgdb driver = open();
        const bool all_had = allocations_left > 0;
        allocations_left = -1;
        if (driver) {
            if (all_had) return failed;
            continue;
        }
        ++failed;
        EXPECT_TRUE(std::strstr(logged, "llocat") || std::strstr(logged, "malloc") ||
                    std::strstr(logged, "emory") || std::strstr(logged, "cannot open index file"))
            << allocation << ": " << logged;
    }
}

TEST(MemoryFaults, EachAllocationInTurn) {
    const std::string folder = shipped_database();
    EXPECT_GT(fail_each_allocation([&] { return egdb_open("", 64, folder, keep_in_place); }), 100);
    const EgdbOpenRequest by_blocks{folder, 4, -1, 64, keep_in_place, false, 0};
    EXPECT_GT(fail_each_allocation([&] { return open_wld(by_blocks); }), 100);
}

}  // namespace
