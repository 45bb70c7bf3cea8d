#include "tools/egdb_design.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>

#include "egdb/catalogues.h"
#include "tests/tools/egdb_fixture.h"
#include "tests/tools/egdb_sequences.h"
#include "tools/egdb_blocks.h"
#include "tools/egdb_catalogue_design.h"

namespace {

constexpr int64_t EVERYTHING = INT64_MAX / 2;

bool has_row(const Catalogue256& made, const CodeRow& row) {
    return std::find(made.begin(), made.end(), row) != made.end();
}

// What stands in a sequence whose positions are free or have one value.
std::vector<int> sequence_of(const ValuePlanes& planes) {
    std::vector<int> sequence;
    for (int64_t i = 0; i < planes.size; ++i) {
        int fits = 0, value = -1;
        for (int v = 0; v < 4; ++v) {
            if (planes.unfit[static_cast<size_t>(v)][static_cast<size_t>(i >> 6)] >> (i & 63) & 1) continue;
            ++fits;
            value = v;
        }
        sequence.push_back(fits == 1 ? value : -1);
    }
    return sequence;
}

// Samples of all materials of two and three pieces, one of so many.
std::vector<DesignSample> small_samples(int64_t stride) {
    const SolvedSet& set = solved_up_to(3);
    std::vector<DesignSample> samples;
    int64_t passed = 0;
    for (int pieces = 2; pieces <= 3; ++pieces)
        for (const Material& m : solving_order(pieces))
            add_design_samples(*find_solved(set, m), stride, passed, samples);
    return samples;
}

// A sample in which the pattern comes again and again.
DesignSample repeated(const std::vector<int>& pattern, int times) {
    std::vector<int> sequence;
    for (int i = 0; i < times; ++i) sequence.insert(sequence.end(), pattern.begin(), pattern.end());
    DesignSample sample;
    sample.planes = planes_of_sequence(sequence);
    sample.values = {1, 2, 3, 0};
    return sample;
}

std::vector<int> pattern_of(const std::vector<std::pair<int, int>>& runs) {
    std::vector<int> pattern;
    for (const auto& [value, length] : runs)
        pattern.insert(pattern.end(), static_cast<size_t>(length), value);
    return pattern;
}

CatalogueRules rules_of(int symbols, uint16_t longest) {
    CatalogueRules rules;
    rules.symbols = symbols;
    rules.longest = longest;
    return rules;
}

// All 50 for a few samples, made once.
struct Designed {
    std::vector<DesignSample> samples = small_samples(3);  // as they were taken
    std::vector<DesignSample> chosen = samples;            // with catalogues and values
    std::vector<int64_t> reported;
    std::vector<Catalogue256> made =
        design_all_catalogues(chosen, 2, 2, [this](int, int64_t bytes) { reported.push_back(bytes); });
};

const Designed& designed() {
    static const Designed all;
    return all;
}

// The fewest bytes that the catalogues take for the planes, with the values in any order that they allow.
int64_t fewest_bytes(const ValuePlanes& planes, const std::vector<CodeTree>& trees, int symbols) {
    int64_t fewest = INT64_MAX;
    for (const CodeTree& tree : trees) {
        SymbolValues values{0, 1, 2, 3};
        do {
            int64_t used = 0;
            if ((symbols == 4 || values[3] == EGDB_UNKNOWN) &&
                code_quickly(planes, tree, values, 0, EVERYTHING, used) >= 0)
                fewest = std::min(fewest, used);
        } while (std::next_permutation(values.begin(), values.end()));
    }
    return fewest;
}

TEST(EgdbDesign, WhatTheFormatTellsOfTheCatalogues) {
    const std::vector<CatalogueRules> rules = catalogue_rules();
    ASSERT_EQ(rules.size(), 50u);
    for (size_t c = 0; c < rules.size(); ++c) {
        EXPECT_EQ(rules[c].symbols, c < 30 ? 3 : 4);
        EXPECT_EQ(rules[c].fixed, c == 0);
        if (c > 1) {
            EXPECT_TRUE(rules[c].fixed_rows.empty());
        }
        if (c > 0 && c != 30) {
            EXPECT_LT(rules[c].longest, rules[c - 1].longest);
        }
    }
    EXPECT_EQ(rules[0].fixed_rows, catalogue_rows(0));
    EXPECT_EQ(rules[1].fixed_rows, (std::vector<CodeRow>{{{0, 90}, {1, 1}}}));
    EXPECT_EQ(rules[1].longest, 15127);
    EXPECT_EQ(rules[4].longest, 7303);
    EXPECT_EQ(rules[29].longest, 1259);
    EXPECT_EQ(rules[30].longest, 6971);
    EXPECT_EQ(rules[49].longest, 1287);
    // By the same factor from one to the next.
    EXPECT_NEAR(rules[16].longest, 1259 * std::pow(7303.0 / 1259, 13.0 / 25), 1);
}

TEST(EgdbDesign, SamplesAreStretchesThatTakeCatalogueZero512Bytes) {
    const std::vector<DesignSample> samples = small_samples(1);
    const CodeTree tree = code_tree(catalogue_rows(0));
    const auto furthest = [&](const ValuePlanes& planes, int64_t start) {
        int64_t end = start;
        for (const SymbolValues& values : {SymbolValues{1, 2, 3, 0}, {2, 1, 3, 0}, {3, 1, 2, 0}}) {
            int64_t used = 0;
            end = std::max(end, code_quickly(planes, tree, values, start, 512, used));
        }
        return std::min(end, planes.size);
    };
    const SolvedSet& set = solved_up_to(3);
    size_t next = 0;
    for (int pieces = 2; pieces <= 3; ++pieces)
        for (const Material& m : solving_order(pieces))
            for (int side = 0; side < (is_symmetric(m) ? 1 : 2); ++side) {
                const ValuePlanes whole = planes_of(*find_solved(set, m), side, 0, slice_size(m), 1);
                std::vector<int> joined;
                while (static_cast<int64_t>(joined.size()) < whole.size) {
                    ASSERT_LT(next, samples.size());
                    const int64_t end = furthest(whole, static_cast<int64_t>(joined.size()));
                    const ValuePlanes& planes = samples[next++].planes;
                    const std::vector<int> part = sequence_of(planes);
                    ASSERT_EQ(planes.unfit, planes_of_sequence(part).unfit) << "and nothing behind the end";
                    joined.insert(joined.end(), part.begin(), part.end());
                    ASSERT_EQ(static_cast<int64_t>(joined.size()), end);
                }
                ASSERT_EQ(joined, sequence_of(whole));
            }
    EXPECT_EQ(next, samples.size());
    const std::vector<DesignSample> some = small_samples(5);
    ASSERT_EQ(some.size(), (samples.size() + 4) / 5);
    for (size_t i = 0; i < some.size(); ++i) EXPECT_EQ(some[i].planes.unfit, samples[5 * i].planes.unfit);
}

TEST(EgdbDesign, ARowThatComesAgainAndAgainTakesOneByte) {
    for (const int symbols : {3, 4}) {
        const std::vector<int> pattern =
            pattern_of({{1, 7}, {2, 1}, {1, 13}, {symbols == 3 ? 3 : 0, 2}, {1, 4}});
        const DesignSample sample = repeated(pattern, 300);
        const Catalogue256 made = design_catalogue({&sample}, rules_of(symbols, 1259));
        std::vector<int32_t> coded;
        ASSERT_GE(code_well(sample.planes, code_tree(made), sample.values, 0, EVERYTHING, coded),
                  sample.planes.size);
        EXPECT_LE(coded.size(), 300u);
    }
}

TEST(EgdbDesign, FreePositionsMakeTheRarerRunsShort) {
    const struct {
        std::vector<int> pattern;
        CodeRow expected, other;
    } cases[] = {
        // The same on both sides.
        {pattern_of({{2, 2}, {-1, 3}, {2, 2}, {1, 30}}),
         {{1, 7}, {0, 30}, {1, 7}, {0, 30}, {1, 7}},
         {{1, 2}, {0, 3}, {1, 2}, {0, 30}, {1, 2}}},
        // Symbol 0 in front of them, and behind them.
        {pattern_of({{1, 30}, {-1, 3}, {2, 2}}),
         {{0, 33}, {1, 2}, {0, 33}, {1, 2}, {0, 33}},
         {{0, 30}, {1, 5}, {0, 30}, {1, 5}, {0, 30}}},
        {pattern_of({{2, 2}, {-1, 3}, {1, 30}}),
         {{0, 33}, {1, 2}, {0, 33}, {1, 2}, {0, 33}},
         {{0, 30}, {1, 5}, {0, 30}, {1, 5}, {0, 30}}},
        // Neither is symbol 0.
        {pattern_of({{2, 3}, {-1, 5}, {3, 2}, {1, 40}}),
         {{0, 40}, {1, 8}, {2, 2}, {0, 40}, {1, 8}},
         {{0, 40}, {1, 3}, {2, 7}, {0, 40}, {1, 3}}},
    };
    for (const auto& c : cases) {
        const DesignSample sample = repeated(c.pattern, 100);
        const Catalogue256 made = design_catalogue({&sample}, rules_of(3, 1259));
        EXPECT_TRUE(has_row(made, c.expected));
        EXPECT_FALSE(has_row(made, c.other));
    }
}

TEST(EgdbDesign, RunsThatNoRowHolds) {
    // Longer than a row's runs may be.
    const DesignSample sample = repeated({1}, 200000);
    const Catalogue256 made = design_catalogue({&sample}, rules_of(3, LONGEST_RUN));
    std::vector<int32_t> coded;
    code_well(sample.planes, code_tree(made), sample.values, 0, EVERYTHING, coded);
    EXPECT_EQ(coded.size(), 4u);
    for (const CodeRow& row : made) EXPECT_LE(row_length(row), LONGEST_RUN);
}

TEST(EgdbDesign, WithoutSamplesThereAreRunsOfAllLengths) {
    const Catalogue256 made = design_catalogue({}, rules_of(4, 1287));
    ASSERT_EQ(made.size(), 256u);
    for (uint16_t length = 1; length < 24; ++length)
        for (uint8_t symbol = 0; symbol < 4; ++symbol)
            EXPECT_TRUE(has_row(made, {{symbol, length}})) << +symbol << " " << length;
    EXPECT_TRUE(has_row(made, {{0, 1287}}));
}

TEST(EgdbDesign, TheCataloguesKeepToTheirRules) {
    const std::vector<CatalogueRules> rules = catalogue_rules();
    const std::vector<Catalogue256>& made = designed().made;
    ASSERT_EQ(made.size(), 50u);
    EXPECT_EQ(made[0], catalogue_rows(0));
    EXPECT_EQ(made[1][0], (CodeRow{{0, 90}, {1, 1}}));
    for (size_t c = 0; c < made.size(); ++c) {
        ASSERT_EQ(made[c].size(), 256u) << c;
        for (const CodeRow& row : made[c]) {
            ASSERT_GE(row.size(), 1u);
            ASSERT_LE(row.size(), 5u);
            ASSERT_LE(row_length(row), rules[c].longest);
            for (size_t i = 0; i < row.size(); ++i) {
                ASSERT_LT(row[i].symbol, rules[c].symbols);
                ASSERT_GE(row[i].length, 1);
                ASSERT_TRUE(i == 0 || row[i].symbol != row[i - 1].symbol);
            }
        }
        EXPECT_TRUE(has_row(made[c], {{0, rules[c].longest}})) << c;
        for (uint8_t symbol = 0; c > 0 && symbol < rules[c].symbols; ++symbol)
            EXPECT_TRUE(has_row(made[c], {{symbol, 1}})) << c << " " << +symbol;
        Catalogue256 sorted = made[c];
        std::sort(sorted.begin(), sorted.end());
        EXPECT_EQ(std::unique(sorted.begin(), sorted.end()), sorted.end()) << c;
    }
    // Each is made from samples of its own.
    for (size_t c = 2; c < 5; ++c) EXPECT_NE(made[c], made[c - 1]);
}

TEST(EgdbDesign, SamplesAreCodedByTheCatalogueThatTakesTheFewestBytes) {
    const Designed& all = designed();
    ASSERT_GT(all.samples.size(), 20u);
    std::vector<CodeTree> trees;
    for (size_t c = 0; c < FIRST_FOUR_SYMBOL_CATALOGUE; ++c) trees.push_back(code_tree(all.made[c]));
    int64_t sum = 0, by_catalogue_0 = 0;
    for (size_t i = 0; i < all.samples.size(); ++i) {
        const ValuePlanes& planes = all.samples[i].planes;
        const DesignSample& chosen = all.chosen[i];
        int64_t used = 0;
        ASSERT_LT(chosen.catalogue, trees.size());
        ASSERT_GE(code_quickly(planes, trees[chosen.catalogue], chosen.values, 0, EVERYTHING, used),
                  planes.size);
        EXPECT_EQ(chosen.bytes, used);
        EXPECT_EQ(chosen.bytes, fewest_bytes(planes, trees, 3));
        sum += chosen.bytes;
        by_catalogue_0 += fewest_bytes(planes, {trees[0]}, 3);
        // There and back.
        const std::vector<int> sequence = sequence_of(planes);
        const Catalogue256& rows = all.made[chosen.catalogue];
        std::vector<int32_t> coded;
        code_well(planes, trees[chosen.catalogue], chosen.values, 0, EVERYTHING, coded);
        size_t at = 0;
        for (const int32_t row : coded) {
            ASSERT_TRUE(row_fits(sequence, rows[static_cast<size_t>(row)], chosen.values, at));
            at += static_cast<size_t>(row_length(rows[static_cast<size_t>(row)]));
        }
        EXPECT_GE(at, sequence.size());
    }
    ASSERT_EQ(all.reported.size(), 3u);
    EXPECT_EQ(all.reported[1], sum);
    EXPECT_LT(sum, by_catalogue_0 / 2);
}

// Behind the first thirty the positions that are never looked up have a value of their own, of every third
// sample.
TEST(EgdbDesign, TheCataloguesOfFourSymbolsTellWhatIsFree) {
    const Designed& all = designed();
    std::vector<CodeTree> trees;
    for (size_t c = FIRST_FOUR_SYMBOL_CATALOGUE; c < CATALOGUES; ++c) trees.push_back(code_tree(all.made[c]));
    int64_t sum = 0;
    for (size_t i = 0; i < all.samples.size(); i += 3) {
        std::vector<int> marked = sequence_of(all.samples[i].planes);
        std::replace(marked.begin(), marked.end(), -1, static_cast<int>(EGDB_UNKNOWN));
        sum += fewest_bytes(planes_of_sequence(marked), trees, 4);
    }
    EXPECT_EQ(all.reported.back(), sum);
}

TEST(EgdbDesign, AFurtherTurnTakesFewerBytes) {
    std::vector<DesignSample> samples = small_samples(2);
    std::vector<int64_t> bytes;
    design_catalogues(samples, {rules_of(3, 7303), rules_of(3, 3000), rules_of(3, 1259)}, 2, 2,
                      [&](int turn, int64_t now) {
                          EXPECT_EQ(turn, static_cast<int>(bytes.size()));
                          bytes.push_back(now);
                      });
    ASSERT_EQ(bytes.size(), 2u);
    EXPECT_LT(bytes[1], bytes[0]);
}

TEST(EgdbDesign, TheNumberOfThreadsDoesNotMatter) {
    const auto design = [](int threads) {
        std::vector<DesignSample> samples = small_samples(12);
        return design_all_catalogues(samples, 2, threads, [](int, int64_t) {});
    };
    const std::vector<Catalogue256> one = design(1);
    EXPECT_EQ(design(2), one);
    EXPECT_EQ(design(5), one);
}

// The numbers between two texts of the source, without comments.
std::vector<uint32_t> numbers_between(const std::string& source, size_t& at, const std::string& first,
                                      const std::string& last) {
    at = source.find(first, at);
    EXPECT_NE(at, std::string::npos);
    const size_t begin = at + first.size();
    at = source.find(last, begin);
    EXPECT_NE(at, std::string::npos);
    std::istringstream lines(source.substr(begin, at - begin));
    std::vector<uint32_t> numbers;
    for (std::string line; std::getline(lines, line);) {
        if (line.find("//") != std::string::npos) continue;
        std::replace(line.begin(), line.end(), ',', ' ');
        std::istringstream words(line);
        for (uint32_t number = 0; words >> number;) numbers.push_back(number);
        EXPECT_TRUE(words.eof()) << line;
    }
    return numbers;
}

TEST(EgdbDesign, TheSourceHasTheSameRows) {
    const std::vector<Catalogue256>& made = designed().made;
    const std::string source = catalogue_source(made);
    size_t at = 0;
    const std::vector<uint32_t> entries = numbers_between(source, at, "catalogue_entries[] = {", "};");
    for (const Catalogue256& rows : made) {
        const std::vector<uint32_t> totals = numbers_between(source, at, "{{{", "}}, {{");
        const std::vector<uint32_t> offsets = numbers_between(source, at, "}}, {{", "}}},");
        ASSERT_EQ(totals.size(), 256u);
        ASSERT_EQ(offsets.size(), 256u);
        for (size_t b = 0; b < 256; ++b) {
            ASSERT_EQ(totals[b], row_length(rows[b]));
            size_t entry = offsets[b];
            for (const SymbolRun& run : rows[b]) {
                ASSERT_LT(entry + 3, entries.size());
                ASSERT_EQ(entries[entry], run.symbol);
                ASSERT_EQ(entries[entry + 1] + 256 * entries[entry + 2], run.length);
                entry += 3;
            }
            ASSERT_EQ(entries[entry], END_OF_ROW);
        }
    }
}

TEST(EgdbDesign, TheTableOfTheFormatIsSuchASource) {
    std::vector<Catalogue256> rows(CATALOGUES);
    for (int c = 0; c < CATALOGUES; ++c) rows[static_cast<size_t>(c)] = catalogue_rows(c);
    std::ostringstream table;
    table << std::ifstream(PROJECT_FOLDER "/egdb/catalogues_table.cpp", std::ios::binary).rdbuf();
    EXPECT_EQ(catalogue_source(rows), table.str());
}

}  // namespace
