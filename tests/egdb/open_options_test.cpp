// The options of an opening as text.
#include "egdb/open_options.h"

#include <gtest/gtest.h>

namespace {

void expect_options(const char* text, int32_t pieces, int32_t kings) {
    int32_t maxpieces = 55, maxkings = 55;
    parse_options(text, maxpieces, maxkings);
    EXPECT_EQ(maxpieces, pieces) << text;
    EXPECT_EQ(maxkings, kings) << text;
}

TEST(OpenOptions, AreFoundBehindTheirWords) {
    expect_options("", 0, -1);
    expect_options("maxpieces = 6;", 6, -1);
    expect_options("maxkings_1side_8pcs = 2;", 0, 2);
    expect_options("maxkings_1side_8pcs = 0;maxpieces = 8;", 8, 0);
    expect_options("maxpieces=7;maxkings_1side_8pcs=  3", 7, 3);
    expect_options("cache = 4; maxpieces \t =\n 5 ;", 5, -1);
    expect_options("maxkings_1side_8pcs = -1;", 0, -1);
    // Without a number, and without the "=".
    expect_options("maxpieces = ;", 0, -1);
    expect_options("maxpieces", 0, -1);
    expect_options("pieces = 4;", 0, -1);
}

TEST(OpenOptions, RoundTrip) {
    for (int32_t pieces = 0; pieces <= 9; ++pieces)
        for (int32_t kings = -1; kings <= 5; ++kings)
            expect_options(options_text({pieces, kings}).c_str(), pieces, kings);
    EXPECT_EQ(options_text({}), "");
    EXPECT_EQ(options_text({8, 2}), "maxpieces = 8;maxkings_1side_8pcs = 2;");
}

}  // namespace
