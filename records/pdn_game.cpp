// Both the index and the lists of all games follow one table of what a token means outside a game, among its
// headers and among its moves, so they agree on what is a game. The reader of a single game follows a leaner
// rule that drops comments.
#include "records/pdn_game.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "base/files.h"
#include "records/fen.h"

namespace {

// Room at the start; from there a table grows by half or more, as a fixed step would copy a long table too
// often.
constexpr size_t FIRST_TABLE_ENTRIES = 1000;

constexpr char TEXT_END_MARK = '\x1a';

enum GameState { OUTSIDE, HEADERS, MOVES };

// What a token does: it may begin a game, and it may belong to the game that is open then.
struct TokenEffect {
    bool new_game;
    bool belongs;
};

TokenEffect enter_token(GameState& state, PdnTokenKind kind) {
    const GameState before = state;
    switch (kind) {
        case PDN_HEADER:
            state = HEADERS;
            return {before != HEADERS, true};
        case PDN_COMMENT:
            if (before == OUTSIDE) state = HEADERS;
            return {before == OUTSIDE, true};
        case PDN_MOVE:
        case PDN_EMBEDDED_FEN:
            state = MOVES;
            return {before == OUTSIDE, true};
        case PDN_DRAW:
        case PDN_UNKNOWN:
        case PDN_BLACK_WIN:
        case PDN_WHITE_WIN:
            state = OUTSIDE;
            return {false, before != OUTSIDE};
        default:
            return {false, false};
    }
}

bool is_terminator(PdnTokenKind kind) {
    return kind == PDN_DRAW || kind == PDN_UNKNOWN || kind == PDN_BLACK_WIN || kind == PDN_WHITE_WIN;
}

PdnTable build_games(const char* text) {
    PdnTable table;
    table.reserve(FIRST_TABLE_ENTRIES);
    GameState state = OUTSIDE;
    PdnToken token;
    PdnNode* tail = nullptr;
    for (;;) {
        const PdnTokenKind kind = pdn_next_token(text, token, true);
        if (kind == PDN_END) break;
        const TokenEffect effect = enter_token(state, kind);
        if (effect.new_game) {
            table.emplace_back();
            tail = nullptr;
        }
        if (effect.belongs) pdn_append(table.back(), tail, pdn_make_node(kind, std::move(token)));
    }
    table.emplace_back();
    return table;
}

// Leaves out those that stand in front of a newline.
void drop_carriage_returns(std::string& text) {
    char* out = text.data();
    const char* at = out;
    const char* const end = at + text.size();
    while (at < end) {
        const char* const found =
            static_cast<const char*>(std::memchr(at, '\r', static_cast<size_t>(end - at)));
        const char* const stop = found ? found : end;
        std::memmove(out, at, static_cast<size_t>(stop - at));
        out += stop - at;
        at = stop;
        if (found && (++at == end || *at != '\n')) *out++ = '\r';
    }
    text.resize(static_cast<size_t>(out - text.data()));
}

}  // namespace

void pdn_free_game(PdnNode* list) {
    while (list) {
        PdnNode* const next = list->next;
        delete list;
        list = next;
    }
}

void pdn_free_games(PdnTable& table) { PdnTable{}.swap(table); }

int pdn_game_count(const PdnTable& table) { return static_cast<int>(std::max<size_t>(table.size(), 1) - 1); }

int pdn_game_count(const PdnOffsets& offsets) {
    return static_cast<int>(std::max<size_t>(offsets.size(), 1) - 1);
}

PdnGame pdn_make_node(PdnTokenKind kind, PdnToken token) {
    return PdnGame(new PdnNode{kind, std::move(token), nullptr});
}

PdnGame pdn_make_comment(const char* text) {
    PdnToken token;
    token.text = copy_text(text, std::strlen(text));
    return pdn_make_node(PDN_COMMENT, std::move(token));
}

PdnNode* pdn_insert_after(PdnNode* node, PdnGame inserted) {
    inserted->next = node->next;
    node->next = inserted.release();
    return node->next;
}

void pdn_append(PdnGame& list, PdnNode*& tail, PdnGame node) {
    if (tail) {
        tail = pdn_insert_after(tail, std::move(node));
    } else {
        list = std::move(node);
        tail = list.get();
    }
}

int pdn_index_games(const char* text, PdnOffsets& offsets_out) {
    try {
        PdnOffsets offsets;
        offsets.reserve(FIRST_TABLE_ENTRIES);
        GameState state = OUTSIDE;
        PdnToken token;
        const char* at = text;
        for (;;) {
            const ptrdiff_t offset = at - text;
            const PdnTokenKind kind = pdn_next_token(at, token, false);
            if (kind == PDN_END) break;
            if (!enter_token(state, kind).new_game) continue;
            if (offset > INT32_MAX) return 1;
            offsets.push_back(static_cast<int32_t>(offset));
        }
        offsets.push_back(-1);
        offsets_out = std::move(offsets);
        return 0;
    } catch (const std::bad_alloc&) {
        return 1;
    }
}

int pdn_parse_games(const char* text, PdnTable& table_out) {
    try {
        table_out = build_games(text);
        return 0;
    } catch (const std::bad_alloc&) {
        return 1;
    }
}

PdnGame pdn_parse_game(const char* text) {
    PdnGame list;
    PdnNode* tail = nullptr;
    try {
        bool moves = false;
        PdnToken token;
        for (;;) {
            const PdnTokenKind kind = pdn_next_token(text, token, true);
            if (kind == PDN_END || (kind == PDN_HEADER && moves)) break;
            const bool is_move = kind == PDN_MOVE || kind == PDN_EMBEDDED_FEN;
            const bool ends_game = is_terminator(kind) && list;
            if (kind == PDN_HEADER || is_move || ends_game)
                pdn_append(list, tail, pdn_make_node(kind, std::move(token)));
            if (ends_game) break;
            moves = moves || is_move;
        }
    } catch (const std::bad_alloc&) {
        return list;
    }
    return list;
}

int pdn_read_text(const std::string& path, std::string& text_out) {
    std::string text;
    const int status = read_file(path, text);
    if (status) return status;
    text.resize(std::min(text.find(TEXT_END_MARK), text.size()));
    drop_carriage_returns(text);
    text_out = std::move(text);
    return 0;
}

int pdn_read_file(const std::string& path, PdnTable& table_out) {
    std::string text;
    const int status = pdn_read_text(path, text);
    return status ? status : pdn_parse_games(text.c_str(), table_out);
}

void pdn_game_headers(const PdnNode* list, GameHeaders& headers) {
    headers = GameHeaders{};
    for (; list; list = list->next)
        if (list->kind == PDN_HEADER)
            set_game_header(headers, list->token.key.get(), list->token.value.get());
}

void pdn_game_line(const char* text, const PdnOffsets& offsets, int index, char* out_line) {
    const int32_t begin = offsets[static_cast<size_t>(index)];
    const int32_t end = offsets[static_cast<size_t>(index) + 1];
    size_t bytes = strnlen(text + begin, GAME_LINE_SIZE - 1);
    if (end >= 0) bytes = std::min(bytes, static_cast<size_t>(end - begin));
    const char* at = text + begin;
    const char* const stop = at + bytes;
    while (at < stop && is_record_space(*at)) ++at;
    for (; at < stop; ++at)
        if (*at != '\r') *out_line++ = *at == '\n' ? ' ' : *at;
    *out_line = '\0';
}
