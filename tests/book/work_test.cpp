// The work file of a build, and the analysis of one position.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "book_fixture.h"
#include "search/engine_settings.h"
#include "search/search_state.h"
#include "search/table.h"
#include "tools/book_work.h"

namespace {

BookAnalysis analysis_of(const Position& position, std::mt19937& random) {
    MoveList list;
    const int count = generate_moves(position, list, position.side);
    const auto value = [&] { return static_cast<int>(random() % 4096) - 2048; };
    BookAnalysis analysis;
    analysis.value = value();
    analysis.best = static_cast<int>(random() % static_cast<uint32_t>(count));
    analysis.nodes = random();
    for (int i = 0; i < count; ++i) analysis.quick.push_back(static_cast<int16_t>(value()));
    return analysis;
}

void expect_equal(const BookAnalysis& a, const BookAnalysis& b) {
    EXPECT_EQ(a.value, b.value);
    EXPECT_EQ(a.best, b.best);
    EXPECT_EQ(a.nodes, b.nodes);
    EXPECT_EQ(a.quick, b.quick);
}

std::string content_of(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace

using BookWorkTest = BookTest;

TEST_F(BookWorkTest, LinesComeBackAsTheyWere) {
    std::mt19937 random(31);
    for (const BookPosition& p : random_book(random, 300, true)) {
        const BookAnalysis analysis = analysis_of(p.position, random);
        const std::string line = book_analysis_line(p.position, analysis);
        Position position;
        BookAnalysis read;
        ASSERT_TRUE(read_book_analysis_line(line, position, read));
        EXPECT_TRUE(same_pieces(position, p.position));
        EXPECT_EQ(position.side, p.position.side);
        expect_equal(read, analysis);
        ASSERT_TRUE(read_book_position_line(book_position_line(p.position), position));
        EXPECT_TRUE(same_pieces(position, p.position));
        for (size_t size = 0; size < line.size(); ++size)
            ASSERT_FALSE(read_book_analysis_line(line.substr(0, size), position, read))
                << line.substr(0, size);
        ASSERT_FALSE(read_book_analysis_line(line + " 5", position, read));
    }
}

TEST_F(BookWorkTest, LinesThatDoNotFitAreRefused) {
    Position position;
    BookAnalysis read;
    const std::string start = book_position_line(START_POSITION);
    ASSERT_TRUE(read_book_analysis_line(start + " 2047 8 7 1 2 3 4 5 6 7 8 -2048 .", position, read));
    for (const std::string rest :
         {" 2048 8 7 1 2 3 4 5 6 7 8 9 .", " 0 9 7 1 2 3 4 5 6 7 8 9 .", " 0 -1 7 1 2 3 4 5 6 7 8 9 .",
          " 0 0 7 1 2 3 4 5 6 7 8 .", " 0 0 7 1 2 3 4 5 6 7 8 9 10 .", " 0 0 7 1 2 3 4 5 6 7 8 -2049 .",
          " 0 0 x"})
        EXPECT_FALSE(read_book_analysis_line(start + rest, position, read)) << rest;
    // Both colours on a square, and no side.
    EXPECT_FALSE(read_book_position_line("1 1 0 1", position));
    EXPECT_FALSE(read_book_position_line("1 2 0 2", position));
    EXPECT_FALSE(read_book_position_line("1 20 0 1 5", position));
    EXPECT_FALSE(read_book_position_line("", position));
}

TEST_F(BookWorkTest, KeepsWhatWasFound) {
    std::mt19937 random(32);
    const std::vector<BookPosition> positions = random_book(random, 100, true);
    std::vector<BookAnalysis> analyses;
    for (const BookPosition& p : positions) analyses.push_back(analysis_of(p.position, random));
    for (size_t run = 0; run < 4; ++run) {
        BookWork work;
        ASSERT_EQ(open_book_work(path, "terms", work), BOOK_WORK_OPEN);
        ASSERT_EQ(work.known.size(), run * 25);
        for (size_t i = 0; i < run * 25; ++i) {
            const BookAnalysis* const known = find_book_work(work, positions[i].position);
            ASSERT_NE(known, nullptr);
            expect_equal(*known, analyses[i]);
        }
        EXPECT_EQ(find_book_work(work, positions[run * 25].position), nullptr);
        for (size_t i = run * 25; i < (run + 1) * 25; ++i) {
            ASSERT_EQ(keep_book_work(work, positions[i].position, analyses[i]), 0);
            expect_equal(*find_book_work(work, positions[i].position), analyses[i]);
        }
    }
}

TEST_F(BookWorkTest, WhatWasCutShortIsMadeAgainAndNothingElse) {
    std::mt19937 random(33);
    const std::vector<BookPosition> positions = random_book(random, 4, false);
    {
        BookWork work;
        ASSERT_EQ(open_book_work(path, "terms", work), BOOK_WORK_OPEN);
        for (int i = 0; i < 3; ++i)
            ASSERT_EQ(keep_book_work(work, positions[static_cast<size_t>(i)].position,
                                     analysis_of(positions[static_cast<size_t>(i)].position, random)),
                      0);
    }
    const std::string whole = content_of(path);
    const size_t last = whole.rfind('\n', whole.size() - 2) + 1;
    for (size_t size = last; size + 1 < whole.size(); ++size) {
        std::ofstream(path, std::ios::binary) << whole.substr(0, size);
        {
            BookWork work;
            ASSERT_EQ(open_book_work(path, "terms", work), BOOK_WORK_OPEN);
            // Without the newline alone the line is whole.
            ASSERT_EQ(work.known.size(), size + 1 == whole.size() ? 3u : 2u) << size;
            ASSERT_EQ(keep_book_work(work, positions[3].position, analysis_of(positions[3].position, random)),
                      0);
        }
        BookWork again;
        ASSERT_EQ(open_book_work(path, "terms", again), BOOK_WORK_OPEN);
        ASSERT_NE(find_book_work(again, positions[3].position), nullptr);
        ASSERT_NE(find_book_work(again, positions[1].position), nullptr);
    }
}

TEST_F(BookWorkTest, AFileOfOtherTermsIsLeftAlone) {
    {
        BookWork work;
        ASSERT_EQ(open_book_work(path, "terms", work), BOOK_WORK_OPEN);
    }
    BookWork work;
    EXPECT_EQ(open_book_work(path, "others", work), BOOK_WORK_OTHER_TERMS);
    EXPECT_EQ(content_of(path), "terms\n");
    EXPECT_EQ(open_book_work(path + "/below", "terms", work), BOOK_WORK_CANNOT_OPEN);
}

TEST_F(BookWorkTest, OfSeveralAnalysesTheDeepestCounts) {
    std::mt19937 random(34);
    BookAnalysis less = analysis_of(START_POSITION, random), more = analysis_of(START_POSITION, random);
    less.nodes = 1000;
    more.nodes = 2000;
    BookWork work;
    ASSERT_EQ(open_book_work(path, "terms", work), BOOK_WORK_OPEN);
    for (const BookAnalysis* analysis : {&less, &more, &less})
        ASSERT_EQ(keep_book_work(work, START_POSITION, *analysis), 0);
    expect_equal(*find_book_work(work, START_POSITION), more);
    ASSERT_EQ(open_book_work(path, "terms", work), BOOK_WORK_OPEN);
    expect_equal(*find_book_work(work, START_POSITION), more);
}

TEST_F(BookWorkTest, AnalysesAPositionTheSameWayEveryTime) {
    engine_settings = EngineSettings{};
    engine_settings.hash_size_mb = 1;
    ASSERT_EQ(tt_allocate(), 0);
    const BookEffort effort{20000, 2000};
    for (const char* fen : {"W:W31-50:B1-20", "B:W28,31,37,38:B8,12,19", "W:WK46,31:B1,K5"}) {
        const Position position = position_of(fen);
        MoveList list;
        generate_moves(position, list, position.side);
        const BookAnalysis first = analyse_book_position(position, effort);
        EXPECT_GE(first.nodes, effort.nodes);
        EXPECT_EQ(first.quick.size(), static_cast<size_t>(list.count));
        EXPECT_LT(first.best, list.count);
        analyse_book_position(START_POSITION, effort);
        expect_equal(analyse_book_position(position, effort), first);
    }
    EXPECT_EQ(search_state.node_limit, UINT64_MAX);
}
