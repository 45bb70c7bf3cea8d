// The tokenizer is a state machine of one pass. Each state that reads on is a function or a loop here, and
// its comment is its name: number, after-first, after-separator, second, after-second, path-separator for
// moves, results and move numbers; comment; junk; and four states for a tag. The only way back is from a
// separator or white space behind a move that no further square follows; the cursor returns to where the move
// ended, and what was looked at is white space and one separator, so the whole text is read in linear time.
#include "records/pdn_token.h"

#include <array>
#include <cstring>

#include "records/fen.h"

namespace {

// An embedded FEN has its quote at most this far from its start, and its closing slash this far from the
// quote.
constexpr size_t EMBEDDED_REACH = 200;
constexpr int MAX_COMMENT_DEPTH = 49;

// Classes of characters, one bit each.
constexpr uint8_t SPACE = 1;
constexpr uint8_t DIGIT = 2;
constexpr uint8_t SEPARATOR = 4;  // between the squares of a move
constexpr uint8_t JUNK_STOP =
    8;  // may end junk: the first character of something else, or the end of the text
constexpr uint8_t BRACKET = 16;  // opens or closes a comment, or ends the text

constexpr std::array<uint8_t, 256> character_classes = [] {
    std::array<uint8_t, 256> table{};
    const auto add = [&table](const char* characters, uint8_t character_class) {
        for (; *characters; ++characters) table[static_cast<uint8_t>(*characters)] |= character_class;
    };
    add("\t\n\r ", SPACE);
    add("0123456789", DIGIT | JUNK_STOP);
    add("-xX", SEPARATOR);
    add("(*[{/", JUNK_STOP);
    add("(){}", BRACKET);
    table[0] = JUNK_STOP | BRACKET;
    return table;
}();

inline bool is(char c, uint8_t classes) {
    return (character_classes[static_cast<uint8_t>(c)] & classes) != 0;
}

inline const char* skip_space(const char* at) {
    while (is(*at, SPACE)) ++at;
    return at;
}

inline bool begins(const char* text, const char* word, size_t length) {
    return std::strncmp(text, word, length) == 0;
}

inline bool begins_embedded_fen(const char* text) { return *text == '/' && begins(text, "/FEN", 4); }

// One token being read.
struct Reading {
    const char* at;  // the next character
    const char* const token_start;
    PdnToken& token;
    const bool store;
    std::array<uint8_t, PATH_BYTES> path;  // filled as the squares are read
    char separator;                        // the first one of a move
};

void append_square(Reading& r, uint8_t square) {
    if (r.path[0] < MAX_PATH_SQUARES) r.path[++r.path[0]] = square;
}

PdnTokenKind finish_comment(Reading& r) {
    if (r.store) r.token.text = copy_text(r.token_start, static_cast<size_t>(r.at - r.token_start));
    return PDN_COMMENT;
}

// The text ended inside the token: all of it is one comment, without the white space at its end.
PdnTokenKind finish_at_end(Reading& r) {
    if (!r.store) return PDN_COMMENT;
    const char* end = r.at;
    while (end > r.token_start && is(end[-1], SPACE)) --end;
    r.token.text = copy_text(r.token_start, static_cast<size_t>(end - r.token_start));
    return PDN_COMMENT;
}

PdnTokenKind read_junk(Reading& r) {
    for (;; ++r.at) {
        while (!is(*r.at, JUNK_STOP)) ++r.at;
        if (!*r.at) return finish_at_end(r);
        if (*r.at != '/' || begins_embedded_fen(r.at)) return finish_comment(r);
    }
}

PdnTokenKind read_comment(Reading& r) {
    std::array<char, MAX_COMMENT_DEPTH + 1> closers;
    int depth = -1;
    for (;; ++r.at) {
        while (!is(*r.at, BRACKET)) ++r.at;
        const char c = *r.at;
        if (!c) return finish_at_end(r);
        if (depth >= 0 && c == closers[static_cast<size_t>(depth)]) {
            if (--depth >= 0) continue;
            ++r.at;
            return finish_comment(r);
        }
        if ((c == '{' || c == '(') && depth < MAX_COMMENT_DEPTH)
            closers[static_cast<size_t>(++depth)] = c == '{' ? '}' : ')';
    }
}

PdnTokenKind read_tag(Reading& r) {
    const char* const key = skip_space(r.at);  // tag-open
    r.at = key;
    if (!*r.at) return finish_at_end(r);
    ++r.at;
    while (*r.at && *r.at != '"') ++r.at;  // tag-key
    if (!*r.at) return finish_at_end(r);
    const char* const value = r.at++;
    while (*r.at && *r.at != '"') ++r.at;  // tag-value
    if (!*r.at) return finish_at_end(r);
    const char* const value_end = ++r.at;
    while (*r.at && *r.at != ']') ++r.at;  // tag-close
    if (!*r.at) return finish_at_end(r);
    ++r.at;
    if (r.store) {
        const char* key_end = value;
        while (key_end > key && is(key_end[-1], SPACE)) --key_end;
        r.token.key = copy_text(key, static_cast<size_t>(key_end - key));
        r.token.value = copy_text(value, static_cast<size_t>(value_end - value));
    }
    return PDN_HEADER;
}

// The character within reach of `from`, or null. Never looks behind the end of the text.
const char* find_within_reach(const char* from, char wanted) {
    return static_cast<const char*>(std::memchr(from, wanted, strnlen(from, EMBEDDED_REACH + 1)));
}

PdnTokenKind read_embedded_fen(Reading& r) {
    const char* const quote = find_within_reach(r.at, '"');
    const char* const slash = quote ? find_within_reach(quote, '/') : nullptr;
    // The closing quote is looked for without `store` too, so that both ways of reading find the same games.
    const char* const closing = slash ? find_within_reach(quote + 1, '"') : nullptr;
    if (!closing || !begins_like_fen(quote)) {
        ++r.at;
        return read_junk(r);
    }
    r.at = slash + 1;
    if (r.store) r.token.text = copy_text(quote + 1, static_cast<size_t>(closing - quote - 1));
    return PDN_EMBEDDED_FEN;
}

// Results are told from moves by the two numbers alone.
PdnTokenKind finish_move(Reading& r) {
    PdnToken& token = r.token;
    if (token.from == 0 && (token.to == 1 || token.to == 2)) return PDN_BLACK_WIN;
    if (token.to == 0 && (token.from == 1 || token.from == 2)) return PDN_WHITE_WIN;
    token.is_capture = r.separator != '-';
    const uint8_t squares = r.path[0];
    if (r.store && squares >= 3) {
        token.path = std::make_unique<uint8_t[]>(PATH_BYTES);
        std::memcpy(token.path.get(), r.path.data(), squares + size_t{1});
    }
    return PDN_MOVE;
}

// Reads the squares of a move from the first digit of the second on.
PdnTokenKind read_squares(Reading& r) {
    for (;;) {
        uint32_t square = 0;  // second
        for (; is(*r.at, DIGIT); ++r.at) square = square * 10 + static_cast<uint32_t>(*r.at - '0');
        r.token.to = static_cast<uint8_t>(square);
        append_square(r, r.token.to);
        const char* const move_end = r.at;
        const char* next = skip_space(move_end);  // after-second
        if (is(*next, SEPARATOR)) {
            next = skip_space(next + 1);  // path-separator
            if (is(*next, DIGIT)) {
                r.at = next;
                continue;
            }
        }
        // A move that is followed by nothing but white space and a separator ends before them.
        r.at = move_end;
        return finish_move(r);
    }
}

PdnTokenKind read_number(Reading& r) {
    uint32_t square = 0;  // number
    for (; is(*r.at, DIGIT); ++r.at) square = square * 10 + static_cast<uint32_t>(*r.at - '0');
    r.token.from = static_cast<uint8_t>(square);
    if (*r.at == '/' && begins(r.at - 1, "1/2-1/2", 7)) {
        r.at += 6;
        return PDN_DRAW;
    }
    if (*r.at == '.') {
        ++r.at;
        return PDN_MOVE_NUMBER;
    }
    append_square(r, r.token.from);
    r.at = skip_space(r.at);  // after-first
    if (is(*r.at, SEPARATOR)) {
        r.separator = *r.at;
        r.at = skip_space(r.at + 1);  // after-separator
        if (is(*r.at, DIGIT)) return read_squares(r);
    }
    return *r.at ? read_junk(r) : finish_at_end(r);
}

PdnTokenKind read_token(Reading& r) {
    const char c = *r.at;
    if (is(c, DIGIT)) return read_number(r);
    if (c == '{' || c == '(') return read_comment(r);
    if (begins_embedded_fen(r.at)) return read_embedded_fen(r);
    ++r.at;
    if (c == '[') return read_tag(r);
    if (c == '*') return PDN_UNKNOWN;
    return read_junk(r);
}

}  // namespace

std::unique_ptr<char[]> copy_text(const char* text, size_t length) {
    std::unique_ptr<char[]> copy(new char[length + 1]);
    std::memcpy(copy.get(), text, length);
    copy[length] = '\0';
    return copy;
}

PdnTokenKind pdn_next_token(const char*& text_cursor, PdnToken& token, bool store) {
    token = PdnToken{};
    text_cursor = skip_space(text_cursor);
    if (!*text_cursor) return PDN_END;
    Reading reading{text_cursor, text_cursor, token, store, {}, '\0'};
    const PdnTokenKind kind = read_token(reading);
    text_cursor = reading.at;
    return kind;
}
