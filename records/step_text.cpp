#include "records/step_text.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "core/notation.h"

void print(BoundedText& text, const char* format, ...) {
    if (text.length + 1 >= text.size) return;
    va_list arguments;
    va_start(arguments, format);
    const int wanted = std::vsnprintf(text.out + text.length, text.size - text.length, format, arguments);
    va_end(arguments);
    if (wanted > 0) text.length = std::min(text.length + static_cast<size_t>(wanted), text.size - 1);
}

void print_numbered_move(BoundedText& text, const ReplayState& before, const ReplayState& after,
                         int& move_number) {
    if (before.setup_flag && before.side == BLACK)
        print(text, "%d. ... ", ++move_number);
    else if (before.side == WHITE)
        print(text, "%d. ", ++move_number);
    // The generators need one piece a square, which a position that was set up may not have.
    if (before.position.black & before.position.white) return;
    char move[MOVE_TEXT_SIZE];
    full_move_text(before.position, move_to(after.position), before.side, move);
    print(text, "%s", move);
}
