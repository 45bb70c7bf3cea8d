#include "book/engine_book.h"

namespace {
int no_book_move(const Position&, int, const MoveList&, const BookTerms&, int&, int&, char*) { return 0; }
}  // namespace

EngineBook no_book() { return {false, no_book_move}; }

EngineBook engine_book = no_book();
