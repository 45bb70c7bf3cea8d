#include "core/notation.h"

#include <cstdio>
#include <cstring>

#include "core/capture_lines.h"

namespace {

constexpr char NO_MOVE_TEXT[] = "???";

// A king that took pieces on a round trip: its own side's set shows nothing of the move.
void round_trip_text(char* text, const Position& position, const Move& move, int side) {
    MoveList list;
    CaptureLines lines;
    generate_capture_lines(position, list, side, lines);
    const int index = find_move(list, move);
    if (index < 0) {
        std::memcpy(text, NO_MOVE_TEXT, sizeof NO_MOVE_TEXT);
        return;
    }
    uint64_t from = 0, to = 0;
    move_step_squares(lines[static_cast<size_t>(index)].length, index, side, position, list, lines, from, to);
    std::snprintf(text, MOVE_TEXT_SIZE, "%dx%d", square_number(from), square_number(to));
}

}  // namespace

void move_text(char* text, const Position& position, const Move& move) {
    const int black_change = bit_count(move.black) - bit_count(position.black);
    const int white_change = bit_count(move.white) - bit_count(position.white);
    const bool capture = black_change < 0 || white_change < 0;
    if (black_change > 0 || white_change > 0) {
        std::memcpy(text, NO_MOVE_TEXT, sizeof NO_MOVE_TEXT);
        return;
    }
    int mover = move.black != position.black ? BLACK : WHITE;
    if (capture) mover = black_change < 0 ? WHITE : BLACK;
    const uint64_t difference = pieces_of(position, mover) ^ pieces_of(move, mover);
    if (difference == 0 && capture) {
        round_trip_text(text, position, move, mover);
        return;
    }
    int from = 0, to = 0;
    for (int square = 1; square <= SQUARES; ++square) {
        const uint64_t mask = set_of_square(square);
        if (!(difference & mask)) continue;
        if (mask & (move.black | move.white))
            to = square;
        else
            from = square;
    }
    if (from == 0 || to == 0)
        std::memcpy(text, NO_MOVE_TEXT, sizeof NO_MOVE_TEXT);
    else
        std::snprintf(text, MOVE_TEXT_SIZE, "%d%c%d", from, capture ? 'x' : '-', to);
}

int full_move_text(const Position& position, const Move& move, int side, char* text) {
    text[0] = '\0';
    MoveList list;
    CaptureLines lines;
    int jumps = 0;
    generate_moves_with_lines(position, list, side, lines, jumps);
    const int index = find_move(list, move);
    if (index < 0) return 0;
    uint64_t from = 0, to = 0;
    move_step_squares(jumps, index, side, position, list, lines, from, to);
    if (!shares_squares(jumps, index, side, position, list, lines))
        return std::snprintf(text, MOVE_TEXT_SIZE, "%d%c%d", square_number(from), jumps ? 'x' : '-',
                             square_number(to));
    int length = std::snprintf(text, MOVE_TEXT_SIZE, "%d", square_number(from));
    for (int step = 1; step <= jumps; ++step) {
        move_step_squares(step, index, side, position, list, lines, from, to);
        length += std::snprintf(text + length, MOVE_TEXT_SIZE - static_cast<size_t>(length), "x%d",
                                square_number(to));
    }
    return length;
}
