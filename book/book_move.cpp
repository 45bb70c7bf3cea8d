#include "book/book_move.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "base/log.h"
#include "core/notation.h"

namespace {

static_assert(sizeof(LineMemo) == BOOK_MEMO_BYTES && sizeof(BookCandidate) == 8);

LineMemo read_memo(std::span<const std::byte> memory, int64_t slot) {
    LineMemo memo;
    std::memcpy(&memo, memory.data() + static_cast<size_t>(slot) * BOOK_MEMO_BYTES, sizeof memo);
    return memo;
}

void write_memo(std::span<std::byte> memory, int64_t slot, const LineMemo& memo) {
    std::memcpy(memory.data() + static_cast<size_t>(slot) * BOOK_MEMO_BYTES, &memo, sizeof memo);
}

// The position behind the entry's best move. False if there is no such move.
bool follow_best(const Position& position, int side, const BookEntry& entry, Position& next) {
    MoveList list;
    generate_moves(position, list, side);
    if (entry.best >= list.count) return false;
    next = position_after(list[entry.best], side ^ 1);
    return true;
}

// The better one for the mover first; of moves equal in all, the first of the list.
bool comes_before(const BookCandidate& a, const BookCandidate& b, int side) {
    if (a.value != b.value) return side == BLACK ? a.value > b.value : a.value < b.value;
    if (a.is_best != b.is_best) return a.is_best;
    if (a.is_second != b.is_second) return a.is_second;
    if (a.depth != b.depth) return a.depth > b.depth;
    return a.index < b.index;
}

// Whether the mode selects a move that is neither best nor second.
bool is_selected(const BookCandidate& move, int mode, int top_value) {
    if (!move.in_book) return false;
    if (mode == BOOK_ALL_KINDS) return std::abs(move.value - top_value) < BOOK_WIDTH;
    return mode == BOOK_GOOD_MOVES && move.value == top_value;
}

BookCandidate candidate_of(const BookEntry& entry, int index, int side, const LineMemo* line) {
    BookCandidate move;
    move.index = static_cast<uint8_t>(index);
    move.is_best = index == entry.best;
    move.is_second = !move.is_best && index == entry.second;
    move.in_book = line != nullptr;
    if (line) {
        move.depth = static_cast<uint8_t>(line->depth + 1);
        move.value = line->value;
    } else if (move.is_best) {
        move.value = static_cast<int16_t>(entry.value);
    } else {
        move.value = side == BLACK ? -NO_LINE_VALUE : NO_LINE_VALUE;
    }
    return move;
}

void append(std::string& text, const char* before, const Position& position, const MoveList& list,
            const BookCandidate& move, char mark) {
    char name[MOVE_TEXT_SIZE];
    move_text(name, position, list[move.index]);
    char part[MOVE_TEXT_SIZE + 40];
    std::snprintf(part, sizeof part, "%s%s(%d/%d)%c", before, name, move.value, move.depth, mark);
    text += part;
}

// Where the lines of this question are kept: in the memory that is lent if it is large enough.
std::span<std::byte> line_memory(OpeningBook& book, std::span<std::byte> lent) {
    const size_t bytes = static_cast<size_t>(book_slots(book)) * BOOK_MEMO_BYTES;
    if (lent.size() >= bytes) return lent.first(bytes);
    if (book.line_room_bytes < bytes) {
        book.line_room = allocate_large(bytes);
        book.line_room_bytes = book.line_room ? bytes : 0;
        log_printf("The open book needs %zu bytes for its lines and the hashtable has %zu: %s\n", bytes,
                   lent.size(), book.line_room ? "room was allocated" : "there is no memory, it is not used");
    }
    return {static_cast<std::byte*>(book.line_room.get()), book.line_room_bytes};
}

}  // namespace

// The walk along the best moves is a loop, as a line can be longer than the stack is deep. Memos are set on
// the way there, which ends it where it comes back to itself, and completed on the way back.
bool book_line(const OpeningBook& book, std::span<std::byte> memory, const Position& position, int side,
               LineMemo& line) {
    std::vector<int64_t> path;  // slots met for the first time
    Position next = position;
    bool found = false;  // `line` is that of the position behind the path
    for (bool more = true; more; side ^= 1) {
        const int64_t slot = book_probe(book, next, side);
        if (slot < 0) break;
        line = read_memo(memory, slot);
        if (line.seen) {
            found = true;
            break;
        }
        const BookEntry entry = book_entry(book, slot);
        write_memo(memory, slot, {1, 0, static_cast<int16_t>(entry.value)});
        path.push_back(slot);
        const Position here = next;
        more = follow_best(here, side, entry, next);
    }
    for (size_t i = path.size(); i-- > 0; found = true) {
        LineMemo memo = read_memo(memory, path[i]);
        if (found) {
            memo.depth = static_cast<uint8_t>(line.depth + 1);
            memo.value = line.value;
            write_memo(memory, path[i], memo);
        }
        line = memo;
    }
    return found;
}

bool book_candidates(const OpeningBook& book, std::span<std::byte> memory, int mode, const Position& position,
                     int side, const MoveList& list, BookCandidates& candidates) {
    const int64_t slot = book_probe(book, position, side);
    if (slot < 0) return false;
    const BookEntry entry = book_entry(book, slot);
    candidates = BookCandidates{};
    candidates.count = list.count;
    std::memset(memory.data(), 0, memory.size());
    for (int i = 0; i < list.count; ++i) {
        LineMemo line;
        const bool in_book = book_line(book, memory, position_after(list[i], side ^ 1), side ^ 1, line);
        candidates.moves[static_cast<size_t>(i)] = candidate_of(entry, i, side, in_book ? &line : nullptr);
    }
    std::memset(memory.data(), 0, memory.size());
    const std::span moves = std::span(candidates.moves).first(static_cast<size_t>(list.count));
    std::sort(moves.begin(), moves.end(),
              [side](const BookCandidate& a, const BookCandidate& b) { return comes_before(a, b, side); });
    for (BookCandidate& move : moves) {
        move.selected = move.is_best || move.is_second || is_selected(move, mode, moves[0].value);
        candidates.chosen_from += move.selected;
    }
    return true;
}

std::string book_text(const Position& position, const MoveList& list, const BookCandidates& candidates,
                      size_t chosen) {
    std::string text;
    append(text, "", position, list, candidates.moves[chosen], '*');
    for (size_t i = 0; i < static_cast<size_t>(candidates.count); ++i) {
        const BookCandidate& move = candidates.moves[i];
        if (i != chosen && move.in_book) append(text, "  ", position, list, move, move.selected ? '*' : '?');
    }
    if (text.size() >= BOOK_TEXT_SIZE) text.resize(BOOK_TEXT_SIZE - 1);
    return text;
}

// The choice is by place in the row: the first of it can be chosen, as many as are selected, whether these
// or others. A move without a line of its own stands at the end, so that where the second-best move is one,
// the row's second can be chosen in its place.
int book_move(const Position& position, int side, const MoveList& list, const BookTerms& terms, int& index,
              int& value, char* text) {
    OpeningBook& book = opening_book;
    if (book_probe(book, position, side) < 0) return 0;
    const std::span<std::byte> memory = line_memory(book, terms.memory);
    if (memory.empty()) return 0;
    BookCandidates candidates;
    if (!book_candidates(book, memory, terms.mode, position, side, list, candidates)) return 0;
    if (candidates.chosen_from == 0) return 0;
    const size_t chosen = draw_book_random(book.random) % candidates.chosen_from;
    index = candidates.moves[chosen].index;
    value = candidates.moves[chosen].value;
    std::snprintf(text, BOOK_TEXT_SIZE, "%s", book_text(position, list, candidates, chosen).c_str());
    return 1;
}
