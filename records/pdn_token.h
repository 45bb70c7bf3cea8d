// The tokens of a game text. The reader knows no syntax error: what is not understood becomes a comment.
//
// A token owns its texts. Building one with its texts may throw std::bad_alloc; nothing else here fails.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

// The numbers are stored in the nodes of game lists.
enum PdnTokenKind : int32_t {
    PDN_HEADER = 0,        // [key "value"]
    PDN_COMMENT = 1,       // {...}, (...) or any text that is not understood
    PDN_MOVE_NUMBER = 2,   // digits and a full stop
    PDN_DRAW = 3,          // 1/2-1/2
    PDN_UNKNOWN = 4,       // *
    PDN_BLACK_WIN = 5,     // 0-1 or 0-2
    PDN_WHITE_WIN = 6,     // 1-0 or 2-0
    PDN_MOVE = 7,          // a move, with or without the squares between its ends
    PDN_END = 8,           // end of the text
    PDN_EMBEDDED_FEN = 9,  // /FEN "..."/
};

// A path is a record of bytes: the number of its squares, then the squares in order, from the start square to
// the end square. A written path that is longer is cut; no capture has as many squares as then remain, so it
// matches no move.
constexpr int MAX_PATH_SQUARES = 21;
constexpr size_t PATH_BYTES = MAX_PATH_SQUARES + 1;

struct PdnToken {
    std::unique_ptr<char[]> key;    // of a header, without white space at its end
    std::unique_ptr<char[]> value;  // of a header, with its two double quotes
    std::unique_ptr<char[]> text;   // a comment with its brackets, or what stands between the quotes of a FEN
    std::unique_ptr<uint8_t[]> path;  // of a move of three squares or more, otherwise null
    uint8_t from = 0;                 // squares of a move as written, modulo 256
    uint8_t to = 0;
    uint8_t is_capture = 0;
    uint8_t side = 0;  // of a move; known when the game is replayed
};

// A copy of the bytes, NUL-terminated.
std::unique_ptr<char[]> copy_text(const char* text, size_t length);

// Reads the token at the cursor, which stands in a NUL-terminated text, and moves the cursor behind it.
// Without `store` nothing is allocated and texts and paths are left out; everything else is the same.
PdnTokenKind pdn_next_token(const char*& text_cursor, PdnToken& token, bool store);
