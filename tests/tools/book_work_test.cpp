// The work file of a build, and the analysis of one position.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "search/engine_settings.h"
#include "search/search_state.h"
#include "search/table.h"
#include "tests/book/book_fixture.h"
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

void expect_same_task(const BookTask& a, const BookTask& b) {
    EXPECT_TRUE(same_pieces(a.position, b.position));
    EXPECT_EQ(a.position.side, b.position.side);
    EXPECT_EQ(a.nodes, b.nodes);
}

BookTask task_of(const Position& position) { return {position, 1000}; }

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
        const BookTask task{p.position, random()};
        const std::string line = book_analysis_line(task, analysis);
        BookTask answered;
        BookAnalysis read;
        ASSERT_TRUE(read_book_analysis_line(line, answered, read));
        expect_same_task(answered, task);
        expect_equal(read, analysis);
        ASSERT_TRUE(read_book_task_line(book_task_line(task), answered));
        expect_same_task(answered, task);
        for (size_t size = 0; size < line.size(); ++size)
            ASSERT_FALSE(read_book_analysis_line(line.substr(0, size), answered, read))
                << line.substr(0, size);
        ASSERT_FALSE(read_book_analysis_line(line + " 5", answered, read));
    }
}

TEST_F(BookWorkTest, LinesThatDoNotFitAreRefused) {
    BookTask task;
    BookAnalysis read;
    const std::string start = book_task_line({START_POSITION, 600000});
    ASSERT_TRUE(read_book_analysis_line(start + " 2047 8 7 1 2 3 4 5 6 7 8 -2048 .", task, read));
    for (const std::string rest :
         {" 2048 8 7 1 2 3 4 5 6 7 8 9 .", " 0 9 7 1 2 3 4 5 6 7 8 9 .", " 0 -1 7 1 2 3 4 5 6 7 8 9 .",
          " 0 0 7 1 2 3 4 5 6 7 8 .", " 0 0 7 1 2 3 4 5 6 7 8 9 10 .", " 0 0 7 1 2 3 4 5 6 7 8 -2049 .",
          " 0 0 x"})
        EXPECT_FALSE(read_book_analysis_line(start + rest, task, read)) << rest;
    // Both colours on a square, no side, more than there should be, no number of nodes.
    EXPECT_FALSE(read_book_task_line("1 1 0 1 7", task));
    EXPECT_FALSE(read_book_task_line("1 2 0 2 7", task));
    EXPECT_FALSE(read_book_task_line("1 20 0 1 5 7", task));
    EXPECT_FALSE(read_book_task_line("1 20 0 1", task));
    EXPECT_FALSE(read_book_task_line("", task));
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
            const BookAnalysis* const known = find_book_work(work, task_of(positions[i].position));
            ASSERT_NE(known, nullptr);
            expect_equal(*known, analyses[i]);
        }
        EXPECT_EQ(find_book_work(work, task_of(positions[run * 25].position)), nullptr);
        for (size_t i = run * 25; i < (run + 1) * 25; ++i) {
            ASSERT_EQ(keep_book_work(work, task_of(positions[i].position), analyses[i]), 0);
            expect_equal(*find_book_work(work, task_of(positions[i].position)), analyses[i]);
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
            ASSERT_EQ(keep_book_work(work, task_of(positions[static_cast<size_t>(i)].position),
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
            ASSERT_EQ(keep_book_work(work, task_of(positions[3].position),
                                     analysis_of(positions[3].position, random)),
                      0);
        }
        BookWork again;
        ASSERT_EQ(open_book_work(path, "terms", again), BOOK_WORK_OPEN);
        ASSERT_NE(find_book_work(again, task_of(positions[3].position)), nullptr);
        ASSERT_NE(find_book_work(again, task_of(positions[1].position)), nullptr);
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

TEST_F(BookWorkTest, EachNumberOfNodesHasItsAnalysis) {
    std::mt19937 random(34);
    const BookAnalysis less = analysis_of(START_POSITION, random), more = analysis_of(START_POSITION, random);
    const auto expect_both = [&](const BookWork& work) {
        expect_equal(*find_book_work(work, {START_POSITION, 1000}), less);
        expect_equal(*find_book_work(work, {START_POSITION, 2000}), more);
        EXPECT_EQ(find_book_work(work, {START_POSITION, 1500}), nullptr);
    };
    BookWork work;
    ASSERT_EQ(open_book_work(path, "terms", work), BOOK_WORK_OPEN);
    ASSERT_EQ(keep_book_work(work, {START_POSITION, 1000}, less), 0);
    ASSERT_EQ(keep_book_work(work, {START_POSITION, 2000}, more), 0);
    expect_both(work);
    ASSERT_EQ(open_book_work(path, "terms", work), BOOK_WORK_OPEN);
    expect_both(work);
}

TEST_F(BookWorkTest, AnalysesAPositionTheSameWayEveryTime) {
    engine_settings = EngineSettings{};
    engine_settings.hash_size_mb = 1;
    ASSERT_EQ(tt_allocate(), 0);
    constexpr uint64_t NODES = 20000, QUICK_NODES = 2000;
    for (const char* fen : {"W:W31-50:B1-20", "B:W28,31,37,38:B8,12,19", "W:WK46,31:B1,K5"}) {
        const Position position = position_of(fen);
        MoveList list;
        generate_moves(position, list, position.side);
        const BookAnalysis first = analyse_book_position({position, NODES}, QUICK_NODES);
        EXPECT_GE(first.nodes, NODES);
        EXPECT_EQ(first.quick.size(), static_cast<size_t>(list.count));
        EXPECT_LT(first.best, list.count);
        analyse_book_position({START_POSITION, NODES}, QUICK_NODES);
        expect_equal(analyse_book_position({position, NODES}, QUICK_NODES), first);
    }
    EXPECT_EQ(search_state.node_limit, UINT64_MAX);
}
