#include "book_fixture.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "base/log.h"
#include "core/notation.h"
#include "records/fen.h"

std::string logged;

void BookTest::SetUp() {
    std::string name = (std::filesystem::temp_directory_path() / "tessarin-book-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder = name;
    path = folder + "/test.odb";
    opening_book = OpeningBook{};
    engine_book = no_book();
    logged.clear();
    log_listener = [](const char* text) { logged += text; };
}

void BookTest::TearDown() {
    log_listener = nullptr;
    engine_book = no_book();
    opening_book = OpeningBook{};
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

int BookTest::load_image(const std::string& image) {
    std::ofstream(path, std::ios::binary) << image;
    return load_book_from(path);
}

int BookTest::load_positions(const std::vector<BookPosition>& positions, int32_t slots) {
    BookFileFigures figures;
    return load_image(make_book(positions, slots, figures));
}

void put_number(std::string& image, size_t offset, int32_t number) {
    for (size_t i = 0; i < 4; ++i)
        image[offset + i] = static_cast<char>(static_cast<uint32_t>(number) >> 8 * i);
}

Position position_of(const std::string& fen) {
    Position position;
    int side = WHITE;
    EXPECT_EQ(fen_to_position(fen.c_str(), position, side), 0) << fen;
    position.side = side;
    return position;
}

int move_index(const Position& position, const std::string& text) {
    MoveList list;
    generate_moves(position, list, position.side);
    for (int i = 0; i < list.count; ++i) {
        char name[MOVE_TEXT_SIZE];
        move_text(name, position, list[i]);
        if (text == name) return i;
    }
    ADD_FAILURE() << "no move " << text;
    return 0;
}

Position after_moves(const Position& start, const std::string& moves) {
    Position position = start;
    std::istringstream in(moves);
    for (std::string move; in >> move;) {
        const int index = move_index(position, move);
        MoveList list;
        generate_moves(position, list, position.side);
        position = position_after(list[index], position.side ^ 1);
    }
    return position;
}

namespace {

int below(std::mt19937& random, int bound) {
    return static_cast<int>(random() % static_cast<uint32_t>(bound));
}

// A few pieces of each side, kings among them, on random squares.
Position random_ending(std::mt19937& random) {
    Position position{};
    const int pieces = 4 + below(random, 5);
    for (int i = 0; i < pieces; ++i) {
        const uint64_t square = mask_of_square[random() % SQUARES];
        if ((position.black | position.white) & square) continue;
        const bool black = i % 2 == 0;
        const bool last_row = (square & (black ? BLACK_PROMOTION_ROW : WHITE_PROMOTION_ROW)) != 0;
        (black ? position.black : position.white) |= square;
        if (last_row || i < 2) position.king |= square;
    }
    position.side = below(random, 2);
    return position;
}

// The kings of endings are few in number, as a book has room for so many sets only.
Position start_of_game(std::mt19937& random, bool with_kings) {
    return with_kings ? random_ending(random) : START_POSITION;
}

SlowBook::Key key_of(const Position& p) { return {p.black, p.white, p.king, p.side}; }

}  // namespace

std::vector<BookPosition> random_book(std::mt19937& random, size_t count, bool with_kings) {
    std::vector<BookPosition> positions;
    std::set<SlowBook::Key> seen;
    MoveList list;
    Position position{};
    while (positions.size() < count) {
        if (generate_moves(position, list, position.side) == 0 || below(random, 60) == 0) {
            position = start_of_game(random, with_kings);
            continue;
        }
        const int next = below(random, list.count);
        const bool wanted = position.black != 0 && (position.king == 0 || with_kings);
        if (wanted && seen.insert(key_of(position)).second) {
            // The way goes on along best moves now and then, so that lines are long.
            const int best = below(random, 2) ? next : below(random, list.count);
            BookPosition entry{position, best, below(random, list.count), below(random, 4096) - 2048};
            // Many values alike, so that moves are as good as each other.
            if (below(random, 2)) entry.value = below(random, 12) - 6;
            if (entry.second == entry.best || position.king != 0) entry.second = NO_BOOK_MOVE;
            positions.push_back(entry);
        }
        position = position_after(list[next], position.side ^ 1);
    }
    return positions;
}

SlowBook::SlowBook(const std::vector<BookPosition>& positions) {
    for (const BookPosition& p : positions)
        if (p.position.black != 0) entries.emplace(key_of(p.position), p);
}

const BookPosition* SlowBook::find(const Position& position) const {
    const auto found = entries.find(key_of(position));
    return found == entries.end() ? nullptr : &found->second;
}

const SlowBook::Line* SlowBook::line(const Position& position) {
    const BookPosition* const entry = find(position);
    if (!entry) return nullptr;
    const auto [place, is_new] = seen.emplace(key_of(position), Line{0, entry->value});
    Line& own = place->second;
    if (!is_new) return &own;
    MoveList list;
    generate_moves(position, list, position.side);
    if (entry->best >= list.count) return &own;
    if (const Line* next = line(position_after(list[entry->best], position.side ^ 1)))
        own = {(next->depth + 1) % 256, next->value};
    return &own;
}

std::vector<SlowBook::Move> SlowBook::moves(const Position& position, int mode, uint32_t& count) {
    std::vector<Move> result;
    const BookPosition& entry = *find(position);
    const int sign = position.side == BLACK ? 1 : -1;
    MoveList list;
    generate_moves(position, list, position.side);
    seen.clear();
    for (int i = 0; i < list.count; ++i) {
        const Line* const next = line(position_after(list[i], position.side ^ 1));
        Move move{i, i == entry.best, i != entry.best && i == entry.second, next != nullptr, 0, 0, false};
        if (next) {
            move.depth = (next->depth + 1) % 256;
            move.value = next->value;
        } else {
            move.value = move.best ? entry.value : -sign * 4001;
        }
        result.push_back(move);
    }
    std::stable_sort(result.begin(), result.end(), [sign](const Move& a, const Move& b) {
        return std::tuple(-sign * a.value, !a.best, !a.second, -a.depth) <
               std::tuple(-sign * b.value, !b.best, !b.second, -b.depth);
    });
    count = 0;
    for (Move& move : result) {
        const int behind = std::abs(move.value - result[0].value);
        move.selected = move.best || move.second ||
                        (move.in_book && ((mode == 1 && behind < 11) || (mode == 2 && behind == 0)));
        count += move.selected;
    }
    return result;
}

BookCandidates candidates_of(const Position& position, int mode, bool& found) {
    MoveList list;
    generate_moves(position, list, position.side);
    std::vector<std::byte> memory(static_cast<size_t>(book_slots(opening_book)) * BOOK_MEMO_BYTES);
    BookCandidates candidates;
    found = book_candidates(opening_book, memory, mode, position, position.side, list, candidates);
    return candidates;
}
