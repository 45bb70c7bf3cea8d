#include "records/pdn_write.h"

#include <algorithm>
#include <new>
#include <string>
#include <string_view>

#include "base/files.h"
#include "core/capture_lines.h"
#include "records/fen.h"
#include "records/step_text.h"

namespace {

void print_step(BoundedText& text, const ReplayState& before, const ReplayState& after, int& move_number) {
    if (after.setup_flag) {
        char fen[FEN_TEXT_SIZE];
        position_to_fen(after.position, after.side, fen);
        print(text, "/FEN \"%s\"/", fen);
        return;
    }
    print_numbered_move(text, before, after, move_number);
}

// The value of a tag ends at the next quotation mark; within it there are apostrophes instead.
void print_tag(BoundedText& text, const char* key, const char* value, const char* line_end) {
    print(text, "[%s \"", key);
    const size_t begin = text.length;
    print(text, "%s", value);
    std::replace(text.out + begin, text.out + text.length, '"', '\'');
    print(text, "\"]%s", line_end);
}

// A list at whose end nodes are added.
struct ListBuilder {
    PdnGame list;
    PdnNode* tail = nullptr;

    void add(PdnGame node) { pdn_append(list, tail, std::move(node)); }
};

void add_header(ListBuilder& builder, std::string_view key, std::string_view value) {
    PdnToken token;
    token.key = copy_text(key.data(), key.size());
    std::string quoted(value);
    std::replace(quoted.begin(), quoted.end(), '"', '\'');
    quoted = '"' + quoted + '"';
    token.value = copy_text(quoted.data(), quoted.size());
    builder.add(pdn_make_node(PDN_HEADER, std::move(token)));
}

PdnGame make_embedded_fen(const ReplayState& state) {
    char fen[FEN_TEXT_SIZE];
    const int length = position_to_fen(state.position, state.side, fen);
    PdnToken token;
    token.text = copy_text(fen, static_cast<size_t>(length));
    return pdn_make_node(PDN_EMBEDDED_FEN, std::move(token));
}

void build_list(ListBuilder& builder, std::span<const ReplayState> history, const GameHeaders& headers) {
    add_header(builder, "Event", headers.event.data());
    add_header(builder, "Date", headers.date.data());
    add_header(builder, "White", headers.white.data());
    add_header(builder, "Black", headers.black.data());
    add_header(builder, "Result", result_string(headers.result));
    if (!history.empty() && !is_initial_state(history[0])) {
        char fen[FEN_TEXT_SIZE];
        position_to_fen(history[0].position, history[0].side, fen);
        add_header(builder, "FEN", fen);
    }
    for (size_t i = 0; i + 1 < history.size(); ++i) {
        const ReplayState& before = history[i];
        const ReplayState& after = history[i + 1];
        PdnGame node = after.setup_flag
                           ? make_embedded_fen(after)
                           : pdn_move_node_from_positions(before.position, after.position, before.side);
        if (!node) return;
        builder.add(std::move(node));
    }
}

// The move at `index` among the legal ones, with its path if another one has the same ends.
PdnGame make_move_node(const Position& before, int side, const MoveList& list, const CaptureLines& lines,
                       int jumps, int index) {
    uint64_t from = 0, to = 0;
    move_step_squares(jumps, index, side, before, list, lines, from, to);
    PdnToken token;
    token.from = static_cast<uint8_t>(square_number(from));
    token.to = static_cast<uint8_t>(square_number(to));
    token.is_capture = jumps != 0;
    token.side = static_cast<uint8_t>(side);
    if (shares_squares(jumps, index, side, before, list, lines)) {
        token.path = std::make_unique<uint8_t[]>(PATH_BYTES);
        token.path[0] = static_cast<uint8_t>(jumps + 1);
        token.path[1] = token.from;
        for (int jump = 1; jump <= jumps; ++jump) {
            move_step_squares(jump, index, side, before, list, lines, from, to);
            token.path[static_cast<size_t>(jump) + 1] = static_cast<uint8_t>(square_number(to));
        }
    }
    return pdn_make_node(PDN_MOVE, std::move(token));
}

// What the column form keeps from node to node.
struct ColumnState {
    std::FILE* file;
    uint32_t flags;
    bool at_line_start = true;
    bool first_move = true;
    int move_number = 1;
    int column = 0;
    int comment_column = 0;
};

void end_line(ColumnState& state) {
    if (!state.at_line_start) std::fputc('\n', state.file);
    state.at_line_start = true;
}

int print_blanks(std::FILE* file, int count) { return std::fprintf(file, "%*s", count, ""); }

// As wide as the number with its full stop and blank.
int print_indent(const ColumnState& state) {
    const int width = state.move_number < 10 ? 3 : state.move_number < 100 ? 4 : 5;
    return print_blanks(state.file, width);
}

void print_header_line(ColumnState& state, const PdnToken& token) {
    end_line(state);
    std::fprintf(state.file, "[%s %s]\n", token.key.get(), token.value.get());
    state.column = 0;
    state.comment_column = 0;
}

void print_embedded_fen_line(ColumnState& state, const PdnToken& token) {
    end_line(state);
    std::fprintf(state.file, "/FEN \"%s\"/\n", token.text.get());
    state.column = 0;
}

void print_move_line(ColumnState& state, const PdnNode& node) {
    end_line(state);
    if (state.first_move) {
        state.column = std::fprintf(state.file, "1. ");
        if (node.token.side == BLACK) {
            std::fprintf(state.file, "...\n");
            state.column = print_indent(state);
        }
    } else if (node.token.side == WHITE) {
        state.column = std::fprintf(state.file, "%d. ", ++state.move_number);
    } else {
        state.column = print_indent(state);
    }
    state.column += pdn_print_move(state.file, node);
    state.first_move = false;
    state.at_line_start = false;
}

void print_comment(ColumnState& state, const PdnToken& token) {
    if (state.column)
        state.comment_column = state.column;
    else
        print_blanks(state.file, state.comment_column);  // under the comment before it
    std::fprintf(state.file, " %s", token.text.get());
    if (state.flags & PDN_COMMENT_LINES) {
        std::fputc('\n', state.file);
        state.at_line_start = true;
        state.column = 0;
    }
}

}  // namespace

int game_to_pdn_text(char* out, size_t size, std::span<const ReplayState> history, const char* event,
                     const char* date, const char* black, const char* white, const char* result_text,
                     const char* line_end) {
    if (size == 0) return 0;
    out[0] = '\0';
    BoundedText text{out, size, 0};
    print_tag(text, "Event", event, line_end);
    print_tag(text, "Date", date, line_end);
    print_tag(text, "White", white, line_end);
    print_tag(text, "Black", black, line_end);
    print_tag(text, "Result", result_text, line_end);
    if (!history.empty() && !is_initial_state(history[0])) {
        char tag[FEN_TAG_TEXT_SIZE];
        fen_tag_text(history[0].position, history[0].side, tag, line_end);
        print(text, "%s", tag);
    }
    int move_number = 0;
    for (size_t i = 0; i + 1 < history.size(); ++i) {
        print_step(text, history[i], history[i + 1], move_number);
        if (i + 2 < history.size()) print(text, " ");
    }
    print(text, " *%s%s", line_end, line_end);
    return static_cast<int>(text.length);
}

int game_to_pdn_text(char* out, size_t size, std::span<const ReplayState> history, const GameHeaders& headers,
                     const char* line_end) {
    return game_to_pdn_text(out, size, history, headers.event.data(), headers.date.data(),
                            headers.black.data(), headers.white.data(), result_string(headers.result),
                            line_end);
}

PdnGame game_to_pdn_list(std::span<const ReplayState> history, const GameHeaders& headers) {
    ListBuilder builder;
    try {
        build_list(builder, history, headers);
    } catch (const std::bad_alloc&) {
        return std::move(builder.list);
    }
    return std::move(builder.list);
}

PdnGame pdn_move_node_from_positions(const Position& before, const Position& after, int side) {
    // The generators need one piece a square.
    if (before.black & before.white) return nullptr;
    MoveList list;
    CaptureLines lines;
    int jumps = 0;
    generate_moves_with_lines(before, list, side, lines, jumps);
    const int index = find_move(list, move_to(after));
    if (index < 0) return nullptr;
    try {
        return make_move_node(before, side, list, lines, jumps, index);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

int pdn_print_move(std::FILE* file, const PdnNode& node) {
    const PdnToken& token = node.token;
    if (!token.path) return std::fprintf(file, "%d%c%d", token.from, token.is_capture ? 'x' : '-', token.to);
    int length = std::fprintf(file, "%d", token.from);
    for (int i = 2; i <= token.path[0]; ++i)
        length += std::fprintf(file, "x%d", token.path[static_cast<size_t>(i)]);
    return length;
}

void pdn_print_game(std::FILE* file, const PdnNode* list, uint32_t flags) {
    ColumnState state{file, flags};
    for (; list; list = list->next) {
        switch (list->kind) {
            case PDN_HEADER:
                print_header_line(state, list->token);
                break;
            case PDN_EMBEDDED_FEN:
                print_embedded_fen_line(state, list->token);
                break;
            case PDN_MOVE:
                print_move_line(state, *list);
                break;
            case PDN_COMMENT:
                print_comment(state, list->token);
                break;
            default:
                break;
        }
    }
    end_line(state);
    std::fprintf(file, "*\n\n\n");
}

int pdn_write_games(const std::string& path, const PdnTable& table, uint32_t flags, int index) {
    OpenFile file(std::fopen(path.c_str(), flags & PDN_NEW_FILE ? "w" : "a"));
    if (!file) return 1;
    const int games = pdn_game_count(table);
    const bool all = (flags & PDN_ALL_GAMES) != 0;
    if (!all && (index < 0 || index >= games)) return 0;
    for (int i = all ? 0 : index; i < (all ? games : index + 1); ++i)
        pdn_print_game(file.get(), table[static_cast<size_t>(i)].get(), flags);
    const bool written = std::ferror(file.get()) == 0;
    return std::fclose(file.release()) == 0 && written ? 0 : 2;
}
