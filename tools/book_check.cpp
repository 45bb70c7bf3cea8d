#include "tools/book_check.h"

#include <random>
#include <set>
#include <tuple>

#include "book/book_move.h"
#include "core/ballots.h"

namespace {

constexpr int BALLOT_MOVES = 2;
constexpr size_t TRIES_A_LINE = 100;
constexpr int MOST_PLIES = 200;  // kings may go to and fro

using Random = std::mt19937;

size_t below(Random& random, size_t limit) { return random() % limit; }

// Counts one slot that is not empty.
void count_slot(const OpeningBook& book, int64_t number, const BookSlot& slot, BookCounts& counts) {
    const BookEntry entry = book_entry(book, number);
    Position position{slot.black, slot.white, 0, entry.side, 0, nullptr};
    const auto king_set = static_cast<size_t>(entry.king_set);
    if (entry.king_set >= 0 && king_set < book.king_sets.size()) position.king = book.king_sets[king_set];
    ++counts.positions;
    if (!is_legal_setup(position)) {
        ++counts.illegal;
        return;
    }
    MoveList list;
    generate_moves(position, list, position.side);
    counts.with_kings += position.king != 0;
    counts.second += entry.second != NO_BOOK_MOVE;
    counts.illegal_best += entry.best >= list.count;
    counts.illegal_second += entry.second != NO_BOOK_MOVE && entry.second >= list.count;
    counts.unreachable += book_probe(book, position, position.side) != number;
}

// One of the row's first, or of those that lead on in the book. False if there is none.
bool choose(Random& random, const BookCandidates& candidates, bool by_book, BookCandidate& chosen) {
    std::vector<BookCandidate> open;
    for (size_t i = 0; i < static_cast<size_t>(candidates.count); ++i)
        if (by_book ? i < candidates.chosen_from : candidates.moves[i].in_book)
            open.push_back(candidates.moves[i]);
    if (open.empty()) return false;
    chosen = open[below(random, open.size())];
    return true;
}

BookLineEnd play_line(const OpeningBook& book, std::span<std::byte> memory, Random& random,
                      const Position& root) {
    BookLineEnd end{root, static_cast<int32_t>(below(random, 2)), 0, 0};
    for (; end.plies < MOST_PLIES; ++end.plies) {
        const Position& position = end.position;
        MoveList list;
        generate_moves(position, list, position.side);
        BookCandidates candidates;
        BookCandidate move;
        if (!book_candidates(book, memory, BOOK_BEST_MOVES, position, position.side, list, candidates) ||
            !choose(random, candidates, position.side == end.book_side, move))
            break;
        end.value = move.value;
        end.position = position_after(list[move.index], position.side ^ 1);
    }
    return end;
}

}  // namespace

BookCounts count_book(const OpeningBook& book) {
    BookCounts counts;
    for (int64_t i = 0; i < book_slots(book); ++i) {
        const BookSlot slot = read_book_slot(book.slots.data() + static_cast<size_t>(i) * BOOK_SLOT_BYTES);
        if (slot.black != 0) count_slot(book, i, slot, counts);
    }
    return counts;
}

std::vector<BookLineEnd> book_line_ends(const OpeningBook& book, size_t count, uint32_t seed) {
    Random random(seed);
    std::vector<std::byte> memory(static_cast<size_t>(book_slots(book)) * BOOK_MEMO_BYTES);
    std::set<std::tuple<uint64_t, uint64_t, uint64_t, int32_t, int32_t>> seen;
    std::vector<BookLineEnd> ends;
    for (size_t tries = 0; ends.size() < count && tries < count * TRIES_A_LINE; ++tries) {
        Position root = START_POSITION;
        Ballot ballot{};
        const size_t drawn = below(random, TWO_MOVE_BALLOTS + 1);
        if (find_ballot(BALLOT_MOVES, static_cast<int>(drawn), ballot)) root = ballot.position;
        const BookLineEnd end = play_line(book, memory, random, root);
        const Position& p = end.position;
        const bool is_new = seen.emplace(p.black, p.white, p.king, p.side, end.book_side).second;
        if (end.plies > 0 && is_new) ends.push_back(end);
    }
    return ends;
}
