#include "tests/tools/egdb_forms.h"

#include "core/movegen.h"
#include "egdb/wld_open.h"
#include "tests/egdb/database_folder.h"
#include "tests/tools/egdb_fixture.h"

OpenEgdb open_form(const Way& way, const std::string& folder, int32_t pieces) {
    database_log.clear();
    EgdbOpenRequest request;
    request.folder = folder;
    request.pieces = pieces;
    request.cache_megabytes = 64;
    request.log = keep_log;
    request.autoload = way.autoload;
    request.cache_blocks = way.blocks;
    request.type = way.type;
    return open_wld(request);
}

void expect_as_solved(const EgdbDriver& driver, const Way& way, int pieces) {
    const SolvedSet& set = solved_up_to(pieces);
    const auto ask = [&](const Position& position, int side, bool conditional) {
        return driver.lookup(driver.handle, position, side, conditional);
    };
    driver.reset_stats(driver.handle);
    uint32_t not_in_cache = 0;
    for (const Material& m : solving_order(pieces)) {
        const auto check = [&](const Position& position, int side, int64_t index) {
            if (way.type == EGDB_WLD && has_capture(position, side)) return;
            const EgdbValue value = packed_value(values_of(set, m, side), index);
            const EgdbValue first = ask(position, side, true);
            not_in_cache += first == EGDB_NOT_IN_CACHE;
            ASSERT_TRUE(first == value || first == EGDB_NOT_IN_CACHE) << index;
            ASSERT_EQ(ask(mirror_position(position), side ^ 1, false), value) << index;
            ASSERT_EQ(ask(position, side, true), value) << index;
        };
        for_positions(m, check, way.stride);
    }
    const EgdbStatistics& s = *driver.get_stats(driver.handle);
    EXPECT_EQ(s.db_returns, s.db_requests - not_in_cache);
    EXPECT_TRUE(not_in_cache == 0 || !way.autoload);
    EXPECT_EQ(s.avg_ht_list_length >= 1, way.type == EGDB_WLD_VALUE_LISTS && !way.autoload);
}
