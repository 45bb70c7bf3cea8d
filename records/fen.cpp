// The reader walks the text once, item by item. An item is an optional K, a number or a range of numbers, and
// one separator; any part may be missing. An item that is nothing at all ends the walk, quietly.
#include "records/fen.h"

#include <algorithm>
#include <cstdio>

#include "core/bits.h"

namespace {

constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }

const char* skip_space(const char* text) {
    while (is_record_space(*text)) ++text;
    return text;
}

// The side letter, behind white space and an opening quote; null if there is none.
const char* find_side_letter(const char* text) {
    text = skip_space(text);
    if (*text == '"') text = skip_space(text + 1);
    const char c = *text;
    return c == 'B' || c == 'b' || c == 'W' || c == 'w' ? text : nullptr;
}

constexpr bool is_white_letter(char c) { return c == 'W' || c == 'w'; }

// A decimal number, 0 if there are no digits. All numbers that are no squares become the first of them, so
// that no length of digits overflows.
int read_number(const char*& at) {
    int number = 0;
    for (; is_digit(*at); ++at) number = std::min(number * 10 + (*at - '0'), SQUARES + 1);
    return number;
}

bool skip_separator(const char*& at) {
    const bool separator = *at == ',' || *at == '.' || *at == ':' || is_record_space(*at);
    if (separator) ++at;
    return separator;
}

void place(Position& position, bool white, bool king, int first, int last) {
    if (first < 1) return;
    for (int square = first; square <= std::min(last, SQUARES); ++square) {
        const uint64_t mask = set_of_square(square);
        (white ? position.white : position.black) |= mask;
        if (king) position.king |= mask;
    }
}

void read_item(const char*& at, Position& position, bool white) {
    const bool king = *at == 'K' || *at == 'k';
    if (king) ++at;
    const int first = read_number(at);
    int last = first;
    if (!skip_separator(at) && *at == '-' && is_digit(at[1])) {
        ++at;
        last = read_number(at);
        skip_separator(at);
    }
    place(position, white, king, first, last);
}

struct FenText {
    char* out;
    int length;
};

void append(FenText& text, const char* piece) {
    const size_t room = FEN_TEXT_SIZE - static_cast<size_t>(text.length);
    const int wanted = std::snprintf(text.out + text.length, room, "%s", piece);
    text.length = std::min(text.length + wanted, static_cast<int>(FEN_TEXT_SIZE) - 1);
}

void append_pieces(FenText& text, uint64_t pieces, uint64_t kings) {
    const char* comma = "";
    for (pieces &= BOARD_MASK; pieces; pieces &= pieces - 1) {
        char piece[8];
        std::snprintf(piece, sizeof piece, "%s%s%d", comma, lowest_set(pieces) & kings ? "K" : "",
                      square_number(pieces));
        append(text, piece);
        comma = ",";
    }
}

}  // namespace

int position_to_fen(const Position& position, int side, char* out_text) {
    FenText text{out_text, 0};
    append(text, side ? "W:W" : "B:W");
    append_pieces(text, position.white, position.king);
    append(text, ":B");
    append_pieces(text, position.black, position.king);
    return text.length;
}

bool begins_like_fen(const char* text) { return find_side_letter(text) != nullptr; }

int fen_to_position(const char* text, Position& position_out, int& side_out) {
    const char* at = find_side_letter(text);
    if (!at) return 1;
    const int side = is_white_letter(*at) ? WHITE : BLACK;
    ++at;
    if (*at) ++at;  // the colon
    Position position{0, 0, 0, side, 0, nullptr};
    bool white = false;
    while (*at) {
        const char c = *at;
        if (c == '"') {
            ++at;
        } else if (is_white_letter(c) || c == 'B' || c == 'b') {
            white = is_white_letter(c);
            ++at;
        } else {
            const char* const item = at;
            read_item(at, position, white);
            if (at == item) break;
        }
    }
    position_out = position;
    side_out = side;
    return 0;
}

int fen_tag_text(const Position& position, int side, char* out_text, const char* line_end) {
    char fen[FEN_TEXT_SIZE];
    position_to_fen(position, side, fen);
    const int wanted = std::snprintf(out_text, FEN_TAG_TEXT_SIZE, "[FEN \"%s\"]%s", fen, line_end);
    return std::min(wanted, static_cast<int>(FEN_TAG_TEXT_SIZE) - 1);
}
