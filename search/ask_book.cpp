#include "search/ask_book.h"

#include "book/book_move.h"
#include "book/engine_book.h"
#include "search/engine_settings.h"
#include "search/table.h"

bool ask_book(const Position& position, int side, const MoveList& list, int& index, int& value, char* text) {
    if (engine_settings.book_mode == BOOK_OFF || !engine_book.loaded) return false;
    const LargeMemory& memory = transposition_table.memory;
    const size_t bytes = memory ? memory.get_deleter().bytes : 0;
    const BookTerms terms{engine_settings.book_mode, {static_cast<std::byte*>(memory.get()), bytes}};
    return engine_book.book_move(position, side, list, terms, index, value, text) != 0;
}
