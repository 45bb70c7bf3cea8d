// The lines of a book, and the choice among its moves.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <set>
#include <span>

#include "base/log.h"
#include "book_fixture.h"
#include "core/notation.h"

namespace {

struct Answer {
    bool found = false;
    int index = -1;
    int value = 0;
    std::string text;
};

Answer ask(const Position& position, int mode) {
    static std::vector<std::byte> memory(1 << 20);
    MoveList list;
    generate_moves(position, list, position.side);
    Answer answer;
    char text[BOOK_TEXT_SIZE] = "";
    answer.found = book_move(position, position.side, list, {mode, memory}, answer.index, answer.value, text);
    answer.text = text;
    return answer;
}

int start_move(const std::string& text) { return move_index(START_POSITION, text); }

// How often each move is chosen in so many draws.
std::map<int, int> draws(const Position& position, int mode, int count) {
    seed_book_random(opening_book.random, 12345);
    std::map<int, int> chosen;
    for (int i = 0; i < count; ++i) ++chosen[ask(position, mode).index];
    return chosen;
}

// Each of the moves is drawn about equally often and no other is.
void expect_even(const std::map<int, int>& chosen, const std::set<int>& moves, int count) {
    std::set<int> drawn;
    for (const auto& [index, times] : chosen) {
        drawn.insert(index);
        const double expected = static_cast<double>(count) / static_cast<double>(moves.size());
        EXPECT_NEAR(times, expected, 5 * std::sqrt(expected)) << index;
    }
    EXPECT_EQ(drawn, moves);
}

constexpr int DRAWS = 6000;

// The position behind a first move of white, with black's entry, which nothing follows.
BookPosition behind(const std::string& move, int value) {
    return {after_moves(START_POSITION, move), 0, 127, value};
}

}  // namespace

using BookMove = BookTest;

TEST_F(BookMove, APositionThatIsNotThereIsNotAnswered) {
    ASSERT_EQ(load_positions({{START_POSITION, 0, 1, 3}}), 0);
    EXPECT_FALSE(ask(after_moves(START_POSITION, "32-28"), 3).found);
    // Nor is the same one with the other side to move.
    Position other = START_POSITION;
    other.side = BLACK;
    EXPECT_FALSE(ask(other, 3).found);
    EXPECT_TRUE(ask(START_POSITION, 3).found);
}

TEST_F(BookMove, BothSidesToMoveAreTwoEntries) {
    Position other = START_POSITION;
    other.side = BLACK;
    ASSERT_EQ(load_positions({{START_POSITION, 3, 127, 5}, {other, 6, 127, -8}}), 0);
    EXPECT_EQ(ask(START_POSITION, 3).index, 3);
    EXPECT_EQ(ask(START_POSITION, 3).value, 5);
    EXPECT_EQ(ask(other, 3).index, 6);
    EXPECT_EQ(ask(other, 3).value, -8);
}

TEST_F(BookMove, TheOnlyMoveComesWithItsText) {
    const Position forced = position_of("W:W32:B28,1,2");
    MoveList list;
    ASSERT_EQ(generate_moves(forced, list, WHITE), 1);
    const Position next = position_after(list[0], BLACK);
    ASSERT_EQ(load_positions({{forced, 0, 127, 3}, {next, 0, 127, 44}}), 0);
    for (const int mode : {1, 2, 3}) {
        bool found = false;
        EXPECT_EQ(candidates_of(forced, mode, found).chosen_from, 1u);
        const Answer answer = ask(forced, mode);
        EXPECT_TRUE(answer.found);
        EXPECT_EQ(answer.index, 0);
        EXPECT_EQ(answer.value, 44);
        EXPECT_EQ(answer.text, "32x23(44/1)*");
    }
}

TEST_F(BookMove, ABestMoveOutOfTheBookHasTheValueOfTheEntry) {
    ASSERT_EQ(load_positions({{START_POSITION, start_move("32-28"), 127, -17}}), 0);
    const Answer answer = ask(START_POSITION, 3);
    EXPECT_EQ(answer.index, start_move("32-28"));
    EXPECT_EQ(answer.value, -17);
    EXPECT_EQ(answer.text, "32-28(-17/0)*");
}

TEST_F(BookMove, ALineHasTheValueAtItsEnd) {
    const Position one = after_moves(START_POSITION, "32-28");
    const Position two = after_moves(one, "19-23");
    const Position three = after_moves(two, "28x19");
    ASSERT_EQ(load_positions({{START_POSITION, start_move("32-28"), 127, 1},
                              {one, move_index(one, "19-23"), 127, 2},
                              {two, move_index(two, "28x19"), 127, 3},
                              {three, 1, 127, 4}}),
              0);
    EXPECT_EQ(ask(START_POSITION, 3).text, "32-28(4/3)*");
    EXPECT_EQ(ask(one, 3).text, "19-23(4/2)*");
    EXPECT_EQ(ask(two, 3).text, "28x19(4/1)*");
    MoveList list;
    generate_moves(three, list, BLACK);
    char last[MOVE_TEXT_SIZE];
    move_text(last, three, list[1]);
    EXPECT_EQ(ask(three, 3).text, std::string(last) + "(4/0)*");
}

TEST_F(BookMove, TheBookTextHasTheOtherMovesInTheirOrder) {
    ASSERT_EQ(load_positions({{START_POSITION, start_move("33-28"), start_move("31-27"), 0},
                              behind("33-28", 5),
                              behind("31-27", 9),
                              behind("32-28", -6),
                              behind("34-29", 5)}),
              0);
    // White likes low values.
    bool found = false;
    const BookCandidates c = candidates_of(START_POSITION, 3, found);
    std::vector<int> order;
    for (int i = 0; i < 4; ++i) order.push_back(c.moves[static_cast<size_t>(i)].index);
    EXPECT_EQ(order, (std::vector<int>{start_move("32-28"), start_move("33-28"), start_move("34-29"),
                                       start_move("31-27")}));
    MoveList list;
    generate_moves(START_POSITION, list, WHITE);
    EXPECT_EQ(book_text(START_POSITION, list, c, 1), "33-28(5/1)*  32-28(-6/1)?  34-29(5/1)?  31-27(9/1)*");
    // The chosen move has a star whatever it is.
    EXPECT_EQ(book_text(START_POSITION, list, c, 0), "32-28(-6/1)*  33-28(5/1)*  34-29(5/1)?  31-27(9/1)*");
}

TEST_F(BookMove, BlackLikesHighValues) {
    const Position black = after_moves(START_POSITION, "32-28");
    const Position a = after_moves(black, "19-23"), b = after_moves(black, "17-22"),
                   c = after_moves(black, "18-22");
    ASSERT_EQ(
        load_positions(
            {{black, move_index(black, "17-22"), 127, 0}, {a, 0, 127, 12}, {b, 0, 127, 3}, {c, 0, 127, -3}}),
        0);
    bool found = false;
    const BookCandidates row = candidates_of(black, 3, found);
    EXPECT_EQ(row.moves[0].index, move_index(black, "19-23"));
    EXPECT_EQ(row.moves[1].index, move_index(black, "17-22"));
    EXPECT_EQ(row.moves[2].index, move_index(black, "18-22"));
    EXPECT_EQ(row.moves[3].value, -4001);
    // White's moves out of the book are the worst for white.
    ASSERT_EQ(load_positions({{START_POSITION, 0, 127, 0}}), 0);
    EXPECT_EQ(candidates_of(START_POSITION, 3, found).moves[8].value, 4001);
}

TEST_F(BookMove, OfEqualValuesTheBestThenTheSecondThenTheLongerLineThenTheListComesFirst) {
    const Position next = after_moves(START_POSITION, "35-30");
    const Position beyond = after_moves(next, "19-23");
    ASSERT_EQ(load_positions({{START_POSITION, start_move("34-29"), start_move("33-28"), 0},
                              behind("31-26", 5),
                              behind("31-27", 5),
                              behind("33-28", 5),
                              behind("34-29", 5),
                              {next, move_index(next, "19-23"), 127, 0},
                              {beyond, 0, 127, 5}}),
              0);
    bool found = false;
    const BookCandidates c = candidates_of(START_POSITION, 3, found);
    const char* const expected[] = {"34-29", "33-28", "35-30", "31-27", "31-26"};
    for (size_t i = 0; i < 5; ++i) EXPECT_EQ(c.moves[i].index, start_move(expected[i])) << i;
    EXPECT_EQ(c.moves[2].depth, 2);
    // Those out of the book are equal in everything.
    for (size_t i = 6; i < 9; ++i) EXPECT_LT(c.moves[i - 1].index, c.moves[i].index);
}

TEST_F(BookMove, BestMovesAreTheBestAndTheSecond) {
    ASSERT_EQ(load_positions({{START_POSITION, start_move("32-28"), start_move("33-28"), 0},
                              behind("32-28", 0),
                              behind("33-28", 9),
                              behind("31-27", 12),
                              behind("34-29", 40)}),
              0);
    expect_even(draws(START_POSITION, 3, DRAWS), {start_move("32-28"), start_move("33-28")}, DRAWS);
}

TEST_F(BookMove, GoodMovesAreAlsoThoseOfTheTopValue) {
    ASSERT_EQ(load_positions({{START_POSITION, start_move("32-28"), 127, 0},
                              behind("32-28", -7),
                              behind("33-28", -7),
                              behind("31-27", -7),
                              behind("34-29", -6)}),
              0);
    expect_even(draws(START_POSITION, 3, DRAWS), {start_move("32-28")}, DRAWS);
    expect_even(draws(START_POSITION, 2, DRAWS),
                {start_move("32-28"), start_move("33-28"), start_move("31-27")}, DRAWS);
    // In this mode -6 is near enough.
    expect_even(draws(START_POSITION, 1, DRAWS),
                {start_move("32-28"), start_move("33-28"), start_move("31-27"), start_move("34-29")}, DRAWS);
}

TEST_F(BookMove, AllKindsOfMovesAreNearerThanEleven) {
    ASSERT_EQ(load_positions({{START_POSITION, start_move("32-28"), 127, 0},
                              behind("32-28", -5),
                              behind("33-28", 5),
                              behind("31-27", 6),
                              behind("34-29", 40)}),
              0);
    // Ten from the top is near enough, eleven is not.
    expect_even(draws(START_POSITION, 1, DRAWS), {start_move("32-28"), start_move("33-28")}, DRAWS);
    expect_even(draws(START_POSITION, 2, DRAWS), {start_move("32-28")}, DRAWS);
}

TEST_F(BookMove, TheChoiceIsByPlaceInTheRowWhicheverMovesAreSelected) {
    // Best and second stand at the end of the row: its first two are chosen in their place.
    ASSERT_EQ(load_positions({{START_POSITION, start_move("32-28"), start_move("33-28"), 0},
                              behind("32-28", 50),
                              behind("33-28", 60),
                              behind("31-27", 0),
                              behind("34-29", 20)}),
              0);
    for (const int mode : {2, 3}) {
        bool found = false;
        const BookCandidates c = candidates_of(START_POSITION, mode, found);
        EXPECT_EQ(c.chosen_from, mode == 3 ? 2u : 3u);
        EXPECT_EQ(c.moves[0].selected, mode == 2);
        EXPECT_FALSE(c.moves[1].selected);
        EXPECT_TRUE(c.moves[2].selected);
        EXPECT_TRUE(c.moves[3].selected);
    }
    expect_even(draws(START_POSITION, 3, DRAWS), {start_move("31-27"), start_move("34-29")}, DRAWS);
    expect_even(draws(START_POSITION, 2, DRAWS),
                {start_move("31-27"), start_move("34-29"), start_move("32-28")}, DRAWS);
}

TEST_F(BookMove, ASecondMoveWithoutAnEntryAddsToTheCountAndStandsAtTheEnd) {
    ASSERT_EQ(load_positions({{START_POSITION, start_move("32-28"), start_move("33-28"), 0},
                              behind("32-28", 0),
                              behind("31-27", 30),
                              behind("34-29", 40)}),
              0);
    bool found = false;
    const BookCandidates c = candidates_of(START_POSITION, 3, found);
    EXPECT_EQ(c.chosen_from, 2u);
    // First of those out of the book, being the second-best.
    EXPECT_EQ(c.moves[3].index, start_move("33-28"));
    EXPECT_EQ(c.moves[3].value, 4001);
    EXPECT_TRUE(c.moves[3].selected);
    expect_even(draws(START_POSITION, 3, DRAWS), {start_move("32-28"), start_move("31-27")}, DRAWS);
}

TEST_F(BookMove, ASecondMoveThatDoesNotExistAddsNothing) {
    ASSERT_EQ(load_positions({{START_POSITION, start_move("32-28"), 9, 0}, behind("33-28", 5)}), 0);
    expect_even(draws(START_POSITION, 3, 1000), {start_move("32-28")}, 1000);
}

TEST_F(BookMove, APositionWithKingsHasNoSecondMoveAndPlaysTheTopOfTheRow) {
    const Position kings = position_of("W:WK46,31,32:B1,2,K5");
    MoveList list;
    generate_moves(kings, list, WHITE);
    ASSERT_GT(list.count, 3);
    ASSERT_EQ(load_positions({{kings, 0, 1, 10},
                              {position_after(list[0], BLACK), 0, 127, 10},
                              {position_after(list[2], BLACK), 0, 127, -30}}),
              0);
    bool found = false;
    const BookCandidates c = candidates_of(kings, 3, found);
    EXPECT_EQ(c.chosen_from, 1u);
    for (const BookCandidate& move : c.moves) EXPECT_FALSE(move.is_second);
    // Not the best move of the entry, but one whose line is worth more.
    expect_even(draws(kings, 3, 1000), {2}, 1000);
    EXPECT_EQ(ask(kings, 3).value, -30);
}

TEST_F(BookMove, APositionReachedTwiceKeepsItsFirstResult) {
    const Position a = after_moves(START_POSITION, "32-28");
    const Position meet = after_moves(a, "19-23");
    ASSERT_EQ(load_positions({{START_POSITION, start_move("32-28"), 127, 0},
                              {a, move_index(a, "19-23"), 127, 1},
                              {meet, 0, 127, 8}}),
              0);
    std::vector<std::byte> memory(static_cast<size_t>(book_slots(opening_book)) * BOOK_MEMO_BYTES);
    LineMemo first, second;
    ASSERT_TRUE(book_line(opening_book, memory, a, BLACK, first));
    EXPECT_EQ(first.value, 8);
    EXPECT_EQ(first.depth, 1);
    // The memo answers from now on, whatever has become of the book.
    const auto slot = static_cast<size_t>(book_probe(opening_book, meet, WHITE));
    write_book_slot({pack_book_info({WHITE, 0, 127, 99, -1}), meet.black, meet.white},
                    &opening_book.slots[slot * BOOK_SLOT_BYTES]);
    ASSERT_TRUE(book_line(opening_book, memory, a, BLACK, second));
    EXPECT_EQ(second.value, 8);
    EXPECT_EQ(second.depth, 1);
    std::fill(memory.begin(), memory.end(), std::byte{0});
    ASSERT_TRUE(book_line(opening_book, memory, a, BLACK, second));
    EXPECT_EQ(second.value, 99);
}

TEST_F(BookMove, ALineThatComesBackToItselfEnds) {
    // Kings going to and fro.
    const Position p0 = position_of("W:WK45:BK6");
    const Position p1 = after_moves(p0, "45-40"), p2 = after_moves(p1, "6-1"), p3 = after_moves(p2, "40-45");
    ASSERT_TRUE(same_pieces(p0, after_moves(p3, "1-6")));
    ASSERT_EQ(load_positions({{p0, move_index(p0, "45-40"), 127, 1},
                              {p1, move_index(p1, "6-1"), 127, 2},
                              {p2, move_index(p2, "40-45"), 127, 3},
                              {p3, move_index(p3, "1-6"), 127, 4}}),
              0);
    std::vector<std::byte> memory(static_cast<size_t>(book_slots(opening_book)) * BOOK_MEMO_BYTES);
    LineMemo line;
    ASSERT_TRUE(book_line(opening_book, memory, p1, BLACK, line));
    // Round to itself, with the value that it had when it was met first.
    EXPECT_EQ(line.value, 2);
    EXPECT_EQ(line.depth, 4);
    ASSERT_TRUE(book_line(opening_book, memory, p3, BLACK, line));
    EXPECT_EQ(line.value, 2);
    EXPECT_EQ(line.depth, 2);
}

// Two moves lead to the same lines, which come back: what the first found holds for the second.
TEST_F(BookMove, LinesOfOnePositionShareWhatTheyFind) {
    const Position root = position_of("B:WK46:BK1");
    const Position a = after_moves(root, "1-6"), a1 = after_moves(a, "46-41"), a2 = after_moves(a1, "6-1");
    const Position b = after_moves(root, "1-7"), b1 = after_moves(b, "46-41");
    ASSERT_TRUE(same_pieces(a2, after_moves(b1, "7-1")));
    ASSERT_TRUE(same_pieces(root, after_moves(a2, "41-46")));
    ASSERT_EQ(load_positions({{root, move_index(root, "1-7"), 127, 1},
                              {a, move_index(a, "46-41"), 127, 2},
                              {a1, move_index(a1, "6-1"), 127, 3},
                              {a2, move_index(a2, "41-46"), 127, 4},
                              {b, move_index(b, "46-41"), 127, 5},
                              {b1, move_index(b1, "7-1"), 127, 6}}),
              0);
    bool found = false;
    const BookCandidates candidates = candidates_of(root, 3, found);
    ASSERT_TRUE(found);
    ASSERT_TRUE(candidates.moves[0].in_book && candidates.moves[1].in_book);
    EXPECT_EQ(candidates.moves[0].value, candidates.moves[1].value);
}

TEST_F(BookMove, APositionWithoutBlackPiecesIsNeverFound) {
    Position white = position_of("W:W31,32:B1");
    white.black = 0;
    BookFileFigures figures;
    make_book(std::vector<BookPosition>{{white, 0, 127, 0}}, 0, figures);
    EXPECT_EQ(figures.left_out, 1);
    // Not even if a slot says so: it is an empty one.
    ASSERT_EQ(load_positions({{START_POSITION, 0, 127, 0}}), 0);
    for (size_t at = 0; at < opening_book.slots.size(); at += BOOK_SLOT_BYTES)
        write_book_slot({pack_book_info({WHITE, 0, 127, 0, -1}), 0, white.white}, &opening_book.slots[at]);
    EXPECT_EQ(book_probe(opening_book, white, WHITE), -1);
}

TEST_F(BookMove, TheLentMemoryComesBackAsZeroes) {
    std::mt19937 random(9);
    const std::vector<BookPosition> positions = random_book(random, 200, false);
    ASSERT_EQ(load_positions(positions), 0);
    const size_t used = static_cast<size_t>(book_slots(opening_book)) * BOOK_MEMO_BYTES;
    MoveList list;
    const Position& p = positions[3].position;
    generate_moves(p, list, p.side);
    int index = 0, value = 0;
    char text[BOOK_TEXT_SIZE];
    std::vector<std::byte> memory(used + 100, std::byte{0xa5});
    // Whatever stood there before makes no difference.
    ASSERT_EQ(book_move(p, p.side, list, {1, memory}, index, value, text), 1);
    EXPECT_TRUE(std::all_of(memory.begin(), memory.begin() + static_cast<std::ptrdiff_t>(used),
                            [](std::byte b) { return b == std::byte{0}; }));
    EXPECT_TRUE(std::all_of(memory.begin() + static_cast<std::ptrdiff_t>(used), memory.end(),
                            [](std::byte b) { return b == std::byte{0xa5}; }));
    for (const BookPosition& one : positions) {
        const Position& q = one.position;
        generate_moves(q, list, q.side);
        std::vector<std::byte> filled(used, std::byte{0xa5}), empty(used);
        BookCandidates from_filled, from_empty;
        const std::span all(filled), none(empty);
        ASSERT_EQ(book_candidates(opening_book, all, 1, q, q.side, list, from_filled),
                  book_candidates(opening_book, none, 1, q, q.side, list, from_empty));
        for (size_t i = 0; i < static_cast<size_t>(list.count); ++i) {
            ASSERT_EQ(from_filled.moves[i].index, from_empty.moves[i].index);
            ASSERT_EQ(from_filled.moves[i].value, from_empty.moves[i].value);
            ASSERT_EQ(from_filled.moves[i].depth, from_empty.moves[i].depth);
        }
    }
}

TEST_F(BookMove, WithTooLittleMemoryRoomIsAllocatedAndTold) {
    std::mt19937 random(10);
    const std::vector<BookPosition> positions = random_book(random, 200, false);
    ASSERT_EQ(load_positions(positions), 0);
    const size_t needed = static_cast<size_t>(book_slots(opening_book)) * BOOK_MEMO_BYTES;
    logged.clear();
    const Position& p = positions[3].position;
    MoveList list;
    generate_moves(p, list, p.side);
    std::vector<std::byte> memory(needed - 1, std::byte{0xa5});
    int index = 0, value = 0;
    char text[BOOK_TEXT_SIZE];
    for (int i = 0; i < 3; ++i) ASSERT_EQ(book_move(p, p.side, list, {1, memory}, index, value, text), 1);
    EXPECT_TRUE(std::all_of(memory.begin(), memory.end(), [](std::byte b) { return b == std::byte{0xa5}; }));
    EXPECT_EQ(logged, "The open book needs " + std::to_string(needed) +
                          " bytes for its lines and the hashtable has " + std::to_string(needed - 1) +
                          ": room was allocated\n");
    uint32_t count = 0;
    SlowBook slow(positions);
    const auto moves = slow.moves(p, 1, count);
    EXPECT_TRUE(std::any_of(moves.begin(), moves.begin() + count,
                            [&](const SlowBook::Move& move) { return move.index == index; }));
}

TEST_F(BookMove, ALongTextIsCut) {
    MoveList list;
    generate_moves(START_POSITION, list, WHITE);
    // More moves than any position of play has.
    BookCandidates c;
    c.count = MAX_MOVES;
    for (BookCandidate& move : c.moves) {
        move.in_book = true;
        move.value = -2048;
        move.depth = 100;
    }
    const std::string part = "31-27(-2048/100)";
    ASSERT_GT(part.size() * MAX_MOVES, BOOK_TEXT_SIZE);
    const std::string text = book_text(START_POSITION, list, c, 0);
    EXPECT_EQ(text.size(), BOOK_TEXT_SIZE - 1);
    EXPECT_EQ(text.substr(0, 36), part + "*  " + part + "?");
}

TEST_F(BookMove, DrawsFollowTheGenerator) {
    ASSERT_EQ(load_positions({{START_POSITION, start_move("32-28"), 127, 0},
                              behind("32-28", -7),
                              behind("33-28", -7),
                              behind("31-27", -7)}),
              0);
    bool found = false;
    const BookCandidates c = candidates_of(START_POSITION, 2, found);
    ASSERT_EQ(c.chosen_from, 3u);
    BookRandom random;
    seed_book_random(random, 99);
    seed_book_random(opening_book.random, 99);
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(ask(START_POSITION, 2).index, c.moves[draw_book_random(random) % 3].index);
}

// Books at random, against the slow reader.
TEST_F(BookMove, AgreesWithTheSlowReader) {
    std::mt19937 random(11);
    for (int round = 0; round < 30; ++round) {
        const std::vector<BookPosition> positions = random_book(random, 10 + random() % 300, round % 2 == 1);
        ASSERT_EQ(load_positions(positions), 0);
        SlowBook slow(positions);
        for (const BookPosition& p : positions)
            for (const int mode : {1, 2, 3}) {
                uint32_t count = 0;
                const auto moves = slow.moves(p.position, mode, count);
                bool found = false;
                const BookCandidates c = candidates_of(p.position, mode, found);
                ASSERT_TRUE(found);
                ASSERT_EQ(c.chosen_from, count);
                ASSERT_EQ(static_cast<size_t>(c.count), moves.size());
                for (size_t i = 0; i < moves.size(); ++i) {
                    ASSERT_EQ(c.moves[i].index, moves[i].index);
                    ASSERT_EQ(c.moves[i].value, moves[i].value);
                    ASSERT_EQ(c.moves[i].depth, moves[i].depth);
                    ASSERT_EQ(c.moves[i].selected, moves[i].selected);
                    ASSERT_EQ(c.moves[i].in_book, moves[i].in_book);
                }
            }
    }
}
