#include "core/board_text.h"

#include "base/log.h"

std::string board_diagram(const Position& position) {
    std::string text;
    for (size_t i = 0; i < SQUARES; ++i) {
        const bool indented = i / 5 % 2 == 0;  // row 0 starts on the second column
        if (i % 5 == 0 && indented) text += ' ';
        const uint64_t mask = mask_of_square[i];
        const bool king = (position.king & mask) != 0;
        char sign = '-';
        if (position.black & mask) sign = king ? 'B' : 'b';
        if (position.white & mask) sign = king ? 'W' : 'w';
        text += sign;
        text += ' ';
        if (i % 5 == 4) text += '\n';
    }
    return text;
}

void log_board(const Position& position) { log_text(("\n\n" + board_diagram(position)).c_str()); }
