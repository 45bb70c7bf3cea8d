// Loading: what is accepted, what is refused and what is logged; and books that are damaged in every way.
#include <chrono>
#include <climits>
#include <cstring>
#include <filesystem>
#include <set>
#include <thread>

#include "base/log.h"
#include "book_fixture.h"
#include "core/notation.h"

namespace {

constexpr size_t POSITIONS_AT = 16, SLOTS_AT = 20, PROBES_AT = 24, KING_SETS_AT = 28;

std::string image_of(const std::vector<BookPosition>& positions, int32_t slots = 0) {
    BookFileFigures figures;
    return make_book(positions, slots, figures);
}

int32_t slots_of(const std::string& image) {
    const auto* const bytes = reinterpret_cast<const uint8_t*>(image.data());
    return read_book_header(std::span<const uint8_t, BOOK_HEADER_BYTES>(bytes, BOOK_HEADER_BYTES)).slots;
}

std::vector<BookPosition> start_book() { return {{START_POSITION, 4, 1, -3}}; }

std::string with_version(std::string image, const std::string& version) {
    std::memset(image.data(), 0, BOOK_VERSION_BYTES);
    std::memcpy(image.data(), version.data(), version.size());
    return image;
}

// Asks whatever is loaded about the positions: it must answer with legal moves or not at all.
void ask_about(const std::vector<BookPosition>& positions) {
    std::vector<std::byte> memory(1 << 16);
    for (const BookPosition& p : positions) {
        MoveList list;
        generate_moves(p.position, list, p.position.side);
        for (const int mode : {1, 2, 3}) {
            int index = -1, value = 0;
            char text[BOOK_TEXT_SIZE];
            if (book_move(p.position, p.position.side, list, {mode, memory}, index, value, text)) {
                ASSERT_GE(index, 0);
                ASSERT_LT(index, list.count);
            }
        }
    }
}

}  // namespace

using BookLoad = BookTest;

TEST_F(BookLoad, PutsTheBookAtTheEnginesSide) {
    EXPECT_FALSE(engine_book.loaded);
    EXPECT_EQ(load_positions(start_book()), 0);
    EXPECT_TRUE(engine_book.loaded);
    EXPECT_EQ(engine_book.book_move, book_move);
    EXPECT_EQ(logged, "Loading open book file " + path + ", version 3.00, 1 positions read\n");
    EXPECT_EQ(opening_book.file, path);
}

// With another seed each time, so that the engine does not open all its games alike.
TEST_F(BookLoad, SeedsTheChoiceByTheTime) {
    BookRandom unseeded;
    std::set<uint32_t> first_words = {draw_book_random(unseeded)};
    for (int i = 0; i < 1000 && first_words.size() < 5; ++i) {
        ASSERT_EQ(load_positions(start_book()), 0);
        first_words.insert(draw_book_random(opening_book.random));
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(first_words.size(), 5u);
}

TEST_F(BookLoad, ReportsThePositionsOfTheHeader) {
    std::string image = image_of(start_book());
    put_number(image, POSITIONS_AT, -17);
    EXPECT_EQ(load_image(image), 0);
    EXPECT_EQ(logged, "Loading open book file " + path + ", version 3.00, -17 positions read\n");
}

TEST_F(BookLoad, SaysNothingOfAMissingFileAndKeepsTheBook) {
    EXPECT_EQ(load_book_from(path), 1);
    EXPECT_FALSE(engine_book.loaded);
    ASSERT_EQ(load_positions(start_book()), 0);
    logged.clear();
    EXPECT_EQ(load_book_from(path + ".missing"), 1);
    EXPECT_TRUE(engine_book.loaded);
    EXPECT_EQ(logged, "");
    EXPECT_GE(book_probe(opening_book, START_POSITION, WHITE), 0);
}

TEST_F(BookLoad, TakesThePlainNameInTheCurrentFolder) {
    const auto before = std::filesystem::current_path();
    ASSERT_EQ(load_positions(start_book()), 0);
    std::filesystem::current_path(std::filesystem::path(path).parent_path());
    engine_book = no_book();
    EXPECT_EQ(load_book(), 1);
    std::filesystem::rename(path, "Tessarin.odb");
    logged.clear();
    EXPECT_EQ(load_book(), 0);
    EXPECT_EQ(logged, "Loading open book file Tessarin.odb, version 3.00, 1 positions read\n");
    std::filesystem::current_path(before);
}

TEST_F(BookLoad, RefusesLowerVersionsByTheOrderOfTheirBytes) {
    for (const std::string version : {"2.99", "", "3.0", "2", "+9.00", "1.2345678901234"}) {
        ASSERT_EQ(load_positions(start_book()), 0);
        logged.clear();
        EXPECT_EQ(load_image(with_version(image_of(start_book()), version)), 1) << version;
        EXPECT_EQ(logged, "Old version of Tessarin.odb incompatible with this engine\n");
        EXPECT_FALSE(engine_book.loaded);
    }
    for (const std::string version : {"3.00", "3.01", "3.000", "4", "x", "3.00abcdefghijkl"}) {
        logged.clear();
        EXPECT_EQ(load_image(with_version(image_of(start_book()), version)), 0) << version;
        EXPECT_TRUE(engine_book.loaded);
        EXPECT_EQ(logged, "Loading open book file " + path + ", version " + version + ", 1 positions read\n");
    }
}

TEST_F(BookLoad, ABookOverAnEarlierOneTakesItsPlace) {
    std::mt19937 random(3);
    const std::vector<BookPosition> first = random_book(random, 50, true);
    ASSERT_EQ(load_positions(first), 0);
    ASSERT_EQ(load_positions(start_book()), 0);
    EXPECT_GE(book_probe(opening_book, START_POSITION, WHITE), 0);
    for (const BookPosition& p : first) EXPECT_EQ(book_probe(opening_book, p.position, p.position.side), -1);
    EXPECT_TRUE(opening_book.king_sets.empty());
}

TEST_F(BookLoad, IsRefusedWhenItIsCutAnywhere) {
    std::mt19937 random(4);
    const std::vector<BookPosition> positions = random_book(random, 12, true);
    const std::string image = image_of(positions);
    for (size_t size = 0; size < image.size(); ++size) {
        ASSERT_EQ(load_positions(start_book()), 0);
        logged.clear();
        EXPECT_EQ(load_image(image.substr(0, size)), 1) << size;
        EXPECT_FALSE(engine_book.loaded);
        EXPECT_EQ(logged, "Open book file " + path + " is damaged and not used\n");
    }
    EXPECT_EQ(load_image(image), 0);
    // What stands behind the book is not looked at.
    EXPECT_EQ(load_image(image + "more"), 0);
    for (const BookPosition& p : positions)
        EXPECT_GE(book_probe(opening_book, p.position, p.position.side), 0);
}

TEST_F(BookLoad, ANumberOfSlotsBelowOneKnowsNoPosition) {
    for (const int32_t slots : {0, -1, INT_MIN}) {
        std::string image = image_of(start_book());
        put_number(image, SLOTS_AT, slots);
        load_image(image);
        EXPECT_EQ(book_probe(opening_book, START_POSITION, WHITE), -1);
        ask_about(start_book());
    }
}

TEST_F(BookLoad, ImpossibleNumbersAreRefusedBeforeTheirMemoryIsAskedFor) {
    const int32_t slots = slots_of(image_of(start_book()));
    for (const int32_t more : {1, 1000, INT_MAX - slots}) {
        std::string image = image_of(start_book());
        put_number(image, SLOTS_AT, slots + more);
        EXPECT_EQ(load_image(image), 1);
        EXPECT_FALSE(engine_book.loaded);
    }
    for (const int32_t king_sets : {1, 1000, INT_MAX}) {
        std::string image = image_of(start_book());
        put_number(image, KING_SETS_AT, king_sets);
        EXPECT_EQ(load_image(image), 1);
        EXPECT_FALSE(engine_book.loaded);
    }
    for (const int32_t king_sets : {-1, INT_MIN}) {
        std::string image = image_of(start_book());
        put_number(image, KING_SETS_AT, king_sets);
        EXPECT_EQ(load_image(image), 1);
        EXPECT_FALSE(engine_book.loaded);
    }
}

TEST_F(BookLoad, ProbesBelowOneFindNothingAndTooManyEnd) {
    std::mt19937 random(5);
    const std::vector<BookPosition> positions = random_book(random, 40, false);
    // A full table has no empty slot to end at.
    for (const int32_t slots : {0, 40})
        for (const int32_t probes : {0, -1, INT_MIN, INT_MAX}) {
            std::string image = image_of(positions, slots);
            put_number(image, PROBES_AT, probes);
            ASSERT_EQ(load_image(image), 0);
            for (const BookPosition& p : positions)
                EXPECT_EQ(book_probe(opening_book, p.position, p.position.side) >= 0, probes > 0);
            EXPECT_EQ(book_probe(opening_book, position_of("W:W31:B1"), WHITE), -1);
        }
}

TEST_F(BookLoad, LooksNoFurtherThanTheLongestProbe) {
    std::mt19937 random(6);
    const std::vector<BookPosition> positions = random_book(random, 60, false);
    BookFileFigures figures;
    std::string image = make_book(positions, 60, figures);
    ASSERT_GT(figures.max_probes, 1);
    put_number(image, PROBES_AT, figures.max_probes - 1);
    ASSERT_EQ(load_image(image), 0);
    int missed = 0;
    for (const BookPosition& p : positions)
        missed += book_probe(opening_book, p.position, p.position.side) < 0;
    EXPECT_GE(missed, 1);
    EXPECT_LT(missed, 60);
}

TEST_F(BookLoad, AKingSetBeyondTheArrayMatchesNothing) {
    const Position kings = position_of("W:WK46,31:B1,K5");
    std::string image = image_of({{kings, 0, 127, 5}});
    ASSERT_EQ(load_image(image), 0);
    ASSERT_GE(book_probe(opening_book, kings, WHITE), 0);
    // Without the array, and with the slots where it was.
    image.erase(BOOK_HEADER_BYTES, BOOK_KING_SET_BYTES);
    put_number(image, KING_SETS_AT, 0);
    ASSERT_EQ(load_image(image), 0);
    EXPECT_EQ(book_probe(opening_book, kings, WHITE), -1);
    ask_about({{kings, 0, 127, 5}});
}

TEST_F(BookLoad, MovesThatDoNotExistAreNeverPlayed) {
    // Neither best nor second: nothing is selected in mode 3.
    ASSERT_EQ(load_positions({{START_POSITION, 126, 125, 7}}), 0);
    bool found = false;
    const BookCandidates candidates = candidates_of(START_POSITION, 3, found);
    EXPECT_TRUE(found);
    EXPECT_EQ(candidates.chosen_from, 0u);
    ask_about(start_book());
    // A line through such an entry ends there.
    const Position next = after_moves(START_POSITION, "32-28");
    ASSERT_EQ(
        load_positions({{START_POSITION, move_index(START_POSITION, "32-28"), 127, 7}, {next, 99, 98, -9}}),
        0);
    const BookCandidates line = candidates_of(START_POSITION, 3, found);
    EXPECT_EQ(line.moves[0].value, -9);
    EXPECT_EQ(line.moves[0].depth, 1);
}

TEST_F(BookLoad, AnEntryWithoutALegalMoveIsNotInBook) {
    const Position stuck = position_of("W:W6:B1,11,17");
    ASSERT_EQ(load_positions({{stuck, 0, 1, 7}}), 0);
    ASSERT_GE(book_probe(opening_book, stuck, WHITE), 0);
    MoveList list;
    ASSERT_EQ(generate_moves(stuck, list, WHITE), 0);
    std::vector<std::byte> memory(1000);
    int index = 0, value = 0;
    char text[BOOK_TEXT_SIZE];
    for (const int mode : {1, 2, 3})
        EXPECT_EQ(book_move(stuck, WHITE, list, {mode, memory}, index, value, text), 0);
}

TEST_F(BookLoad, AnyBytesAreReadWithoutHarm) {
    std::mt19937 random(7);
    const std::vector<BookPosition> positions = random_book(random, 100, true);
    const std::string image = image_of(positions);
    for (int i = 0; i < 300; ++i) {
        std::string damaged = image;
        for (int n = 0; n < 40; ++n) {
            // The header in some rounds only, as most numbers there end it all.
            const bool header = i % 4 == 0 && n == 0;
            const size_t at = header ? 16 + random() % 16 : 32 + random() % (image.size() - 32);
            damaged[at] = static_cast<char>(random());
        }
        load_image(damaged);
        ask_about(positions);
    }
}

TEST_F(BookLoad, AFolderIsNoBook) {
    EXPECT_EQ(load_book_from("/"), 1);
    EXPECT_FALSE(engine_book.loaded);
}
