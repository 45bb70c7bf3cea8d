// What `book dump` and `book check` tell of books that were made by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <vector>

#include "records/fen.h"
#include "tests/cli/program.h"
#include "tools/book_file.h"

namespace {

BookPosition book_position(const char* fen, int32_t best, int32_t second, int32_t value) {
    BookPosition made{{}, best, second, value};
    EXPECT_EQ(fen_to_position(fen, made.position, made.position.side), 0) << fen;
    return made;
}

std::string image_of(const std::vector<BookPosition>& positions) {
    BookFileFigures figures;
    return make_book(positions, 0, figures);
}

std::vector<std::string> sorted_lines(const std::string& text) {
    std::istringstream lines(text);
    std::vector<std::string> sorted;
    for (std::string line; std::getline(lines, line);) sorted.push_back(line);
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

const std::vector<BookPosition> MEN_AND_KINGS{
    book_position("W:W31,40:B1", 0, 3, 12), book_position("B:W31,40:B1", 1, NO_BOOK_MOVE, -2048),
    book_position("B:W31:BK1", 0, NO_BOOK_MOVE, 2047), book_position("B:WK31:B2", 0, NO_BOOK_MOVE, -7)};

TEST(CliBookContents, DumpTellsAllPositions) {
    const TemporaryFolder folder;
    folder.write("a.odb", image_of(MEN_AND_KINGS));
    const ProgramResult dump = run_program("book dump --book a.odb", "", folder.path);
    EXPECT_EQ(dump.status, 0) << dump.errors;
    EXPECT_EQ(sorted_lines(dump.output),
              (std::vector<std::string>{"B:W31,40:B1 1-6 - -2048", "B:W31:BK1 1-7 - 2047",
                                        "B:WK31:B2 2-8 - -7", "W:W31,40:B1 31-27 40-34 12"}));
    EXPECT_EQ(run_program("book dump a.odb", "", folder.path).output, dump.output);
}

TEST(CliBookContents, CheckCountsThem) {
    const TemporaryFolder folder;
    folder.write("a.odb", image_of(MEN_AND_KINGS));
    const ProgramResult check = run_program("book check --book a.odb --lines 0", "", folder.path);
    EXPECT_EQ(check.status, 0) << check.errors;
    EXPECT_EQ(
        check.output,
        "positions 4 with kings 2 with a second-best move 1, illegal positions 0 best moves 0 second-best "
        "moves 0, not found 0\n");
}

TEST(CliBookContents, WhatIsWrongInABookIsCountedAndLeftOut) {
    const TemporaryFolder folder;
    std::vector<BookPosition> positions = MEN_AND_KINGS;
    positions.push_back(book_position("W:W3:B20", 0, NO_BOOK_MOVE, 0));
    positions.push_back(book_position("W:W32:B2", 100, 101, 0));
    folder.write("a.odb", image_of(positions));
    const ProgramResult check = run_program("book check --book a.odb --lines 0", "", folder.path);
    EXPECT_EQ(check.status, 1);
    EXPECT_EQ(
        check.output,
        "positions 6 with kings 2 with a second-best move 2, illegal positions 1 best moves 1 second-best "
        "moves 1, not found 0\n");
    const std::vector<std::string> lines =
        sorted_lines(run_program("book dump --book a.odb", "", folder.path).output);
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines.back(), "W:W32:B2 - - 0");
}

TEST(CliBookContents, APositionWhoseKingsAreLostIsLeftOut) {
    const TemporaryFolder folder;
    std::string image = image_of(MEN_AND_KINGS);
    // The second set of kings is missing; they stand in front of the slots.
    image.erase(BOOK_HEADER_BYTES + BOOK_KING_SET_BYTES, BOOK_KING_SET_BYTES);
    ASSERT_EQ(image[28], 2);
    image[28] = 1;
    folder.write("a.odb", image);
    const ProgramResult dump = run_program("book dump --book a.odb", "", folder.path);
    EXPECT_EQ(dump.status, 0) << dump.errors;
    EXPECT_EQ(count_lines(dump.output), 3) << dump.output;
}

}  // namespace
