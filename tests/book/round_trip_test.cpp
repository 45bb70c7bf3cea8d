// What is written is what is read: every position of books of all sizes, with and without kings, in tables
// with room and in full ones.
#include <algorithm>

#include "book_fixture.h"

namespace {

constexpr size_t ASKED_IN_FULL = 1000;  // positions of a large book whose moves are looked at too

// The position is found and says what was meant.
void expect_entry(const BookPosition& p) {
    const int64_t slot = book_probe(opening_book, p.position, p.position.side);
    ASSERT_GE(slot, 0);
    const BookEntry entry = book_entry(opening_book, slot);
    ASSERT_EQ(entry.side, p.position.side);
    ASSERT_EQ(entry.best, p.best);
    ASSERT_EQ(entry.second, p.position.king ? NO_BOOK_MOVE : p.second);
    ASSERT_EQ(entry.value, p.value);
}

void expect_moves(SlowBook& slow, const BookPosition& p, std::span<std::byte> memory) {
    MoveList list;
    generate_moves(p.position, list, p.position.side);
    for (const int mode : {1, 2, 3}) {
        uint32_t count = 0;
        const auto moves = slow.moves(p.position, mode, count);
        int index = -1, value = 0;
        char text[BOOK_TEXT_SIZE];
        ASSERT_EQ(book_move(p.position, p.position.side, list, {mode, memory}, index, value, text), 1);
        const auto chosen = std::find_if(moves.begin(), moves.begin() + count,
                                         [&](const SlowBook::Move& move) { return move.index == index; });
        ASSERT_NE(chosen, moves.begin() + count);
        ASSERT_EQ(value, chosen->value);
    }
}

void expect_round_trip(const std::vector<BookPosition>& positions) {
    SlowBook slow(positions);
    std::vector<std::byte> memory(static_cast<size_t>(book_slots(opening_book)) * BOOK_MEMO_BYTES);
    const size_t step = std::max<size_t>(1, positions.size() / ASKED_IN_FULL);
    for (size_t i = 0; i < positions.size(); ++i) {
        ASSERT_NO_FATAL_FAILURE(expect_entry(positions[i]));
        Position other = positions[i].position;
        other.side ^= 1;
        ASSERT_EQ(book_probe(opening_book, other, other.side) >= 0, slow.find(other) != nullptr);
        if (i % step == 0) {
            ASSERT_NO_FATAL_FAILURE(expect_moves(slow, positions[i], memory));
        }
    }
}

}  // namespace

using BookRoundTrip = BookTest;

TEST_F(BookRoundTrip, OfNoPosition) {
    BookFileFigures figures;
    const std::string image = make_book({}, 0, figures);
    EXPECT_EQ(figures.positions, 0);
    EXPECT_EQ(load_image(image), 0);
    EXPECT_EQ(book_probe(opening_book, START_POSITION, WHITE), -1);
    EXPECT_EQ(opening_book.header.positions, 0);
}

TEST_F(BookRoundTrip, OfOnePosition) {
    for (const bool kings : {false, true}) {
        std::mt19937 random(21);
        const std::vector<BookPosition> positions = random_book(random, 1, kings);
        for (const int32_t slots : {0, 1, 2, 7}) {
            ASSERT_EQ(load_positions(positions, slots), 0);
            expect_round_trip(positions);
        }
    }
}

TEST_F(BookRoundTrip, OfAThousandPositionsInTablesWithRoomAndFullOnes) {
    for (const bool kings : {false, true}) {
        std::mt19937 random(22);
        const std::vector<BookPosition> positions = random_book(random, 1000, kings);
        for (const int32_t slots : {0, 1000, 1009, 1500}) {
            BookFileFigures figures;
            const std::string image = make_book(positions, slots, figures);
            ASSERT_EQ(figures.positions, 1000);
            ASSERT_EQ(load_image(image), 0);
            expect_round_trip(positions);
        }
    }
}

// Some of a full table stand before the place where their search begins.
TEST_F(BookRoundTrip, AFullTableWrapsAround) {
    std::mt19937 random(23);
    const std::vector<BookPosition> positions = random_book(random, 300, false);
    ASSERT_EQ(load_positions(positions, 300), 0);
    int wrapped = 0;
    for (const BookPosition& p : positions)
        wrapped += book_probe(opening_book, p.position, p.position.side) <
                   book_hash(p.position, p.position.side) % 300;
    EXPECT_GT(wrapped, 0);
}

TEST_F(BookRoundTrip, OfAHundredThousandPositions) {
    std::mt19937 random(24);
    std::vector<BookPosition> positions = random_book(random, 98000, false);
    const std::vector<BookPosition> kings = random_book(random, 2000, true);
    positions.insert(positions.end(), kings.begin(), kings.end());
    BookFileFigures figures;
    const std::string image = make_book(positions, 0, figures);
    EXPECT_EQ(figures.positions + figures.left_out, 100000);
    EXPECT_LE(figures.left_out, 5);  // met in both parts
    EXPECT_LE(figures.max_probes, 30);
    EXPECT_LE(image.size(), size_t{5000000});
    ASSERT_EQ(load_image(image), 0);
    positions.resize(98000);
    for (const BookPosition& p : kings)
        if (p.position.king) positions.push_back(p);
    expect_round_trip(positions);
}

TEST_F(BookRoundTrip, SetsOfKingsBeyondTheLimitAreLeftOut) {
    std::vector<BookPosition> positions;
    for (size_t a = 0; a < SQUARES; ++a)
        for (size_t b = 0; b < SQUARES && positions.size() < 2300; ++b) {
            if (a == b) continue;
            const uint64_t black = mask_of_square[a], white = mask_of_square[b];
            positions.push_back(
                {{black, white, black | white, a < b ? BLACK : WHITE, 0, nullptr}, 0, 127, 5});
        }
    // Each set twice, once for each colour of its squares: 1225 sets.
    BookFileFigures figures;
    make_book(positions, 0, figures);
    EXPECT_EQ(figures.left_out, 0);
    EXPECT_LE(figures.king_sets, 1225);
    for (size_t i = 0; i < 1500; ++i) {
        const uint64_t third = mask_of_square[i % SQUARES];
        Position p = positions[i].position;
        if ((p.black | p.white) & third) continue;
        p.white |= third;
        p.king |= third;
        positions.push_back({p, 0, 127, 5});
    }
    const std::string image = make_book(positions, 0, figures);
    EXPECT_EQ(figures.king_sets, MAX_BOOK_KING_SETS);
    EXPECT_GT(figures.left_out, 0);
    ASSERT_EQ(load_image(image), 0);
    int64_t found = 0;
    for (const BookPosition& p : positions)
        found += book_probe(opening_book, p.position, p.position.side) >= 0;
    EXPECT_EQ(found, figures.positions);
}

TEST_F(BookRoundTrip, APositionGivenTwiceStandsOnce) {
    BookFileFigures figures;
    const std::vector<BookPosition> positions = {{START_POSITION, 1, 127, 5}, {START_POSITION, 2, 127, 6}};
    ASSERT_EQ(load_image(make_book(positions, 0, figures)), 0);
    EXPECT_EQ(figures.positions, 1);
    EXPECT_EQ(figures.left_out, 1);
    expect_entry(positions[0]);
}

TEST_F(BookRoundTrip, AFileThatCannotBeWrittenLeavesTheOldOne) {
    ASSERT_EQ(load_positions({{START_POSITION, 1, 127, 5}}), 0);
    BookFileFigures figures;
    EXPECT_EQ(write_book(path + "/below", {}, figures), 1);
    EXPECT_EQ(load_book_from(path), 0);
    EXPECT_EQ(write_book(path, {}, figures), 0);
    EXPECT_EQ(load_book_from(path), 0);
    EXPECT_EQ(opening_book.header.positions, 0);
}
