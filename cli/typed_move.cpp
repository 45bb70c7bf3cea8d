#include "cli/typed_move.h"

#include <vector>

#include "core/board.h"
#include "core/capture_lines.h"
#include "core/notation.h"
#include "records/pdn_game.h"
#include "records/pdn_replay.h"

namespace {

constexpr size_t SHOWN_LENGTH = 50;  // of what was typed

std::string move_text_of(const Position& position, const Move& move, int side) {
    char text[MOVE_TEXT_SIZE];
    full_move_text(position, move, side, text);
    return text;
}

// The moves with the ends that were typed.
std::vector<int> moves_with_ends(const PdnToken& token, const Position& position, int side,
                                 const MoveList& list, const CaptureLines& lines, int jumps) {
    std::vector<int> found;
    for (int i = 0; i < list.count; ++i) {
        uint64_t from = 0, to = 0;
        move_step_squares(jumps, i, side, position, list, lines, from, to);
        if (square_number(from) == token.from && square_number(to) == token.to) found.push_back(i);
    }
    return found;
}

// The square beyond `at` where that step of a set leads, or 0.
uint64_t next_square(uint64_t at, int shift) { return (shift > 0 ? at << shift : at >> -shift) & BOARD_MASK; }

// The piece that a capture in one line from `at` to `to` takes; 0 if there is none.
uint64_t taken_between(uint64_t at, uint64_t to, bool king, uint64_t empty, uint64_t enemy) {
    for (const int shift : {6, 5, -5, -6}) {
        uint64_t taken = 0;
        int steps = 1;
        uint64_t square = next_square(at, shift);
        for (; square && square != to; square = next_square(square, shift), ++steps) {
            if (square & empty) continue;
            if (taken || !(square & enemy)) break;
            taken = square;
        }
        if (square == to && taken && (to & empty) && (king || steps == 2)) return taken;
    }
    return 0;
}

// Of several ways to one result the generator keeps one. This finds the capture that lands on all squares of
// the path, whatever way it is.
int find_walk(const uint8_t* path, const Position& position, int side, const MoveList& list) {
    uint64_t at = set_of_square(path[1]);
    const uint64_t enemy = pieces_of(position, side ^ 1);
    if (!(pieces_of(position, side) & at)) return -1;
    const bool king = (position.king & at) != 0;
    const uint64_t empty = (BOARD_MASK & ~(position.black | position.white)) | at;
    const uint64_t own_left = pieces_of(position, side) & ~at;
    uint64_t taken = 0;
    for (int i = 2; i <= path[0]; ++i) {
        const uint64_t to = set_of_square(path[i]);
        // A piece stays in the way until the capture ends, and is taken once.
        const uint64_t piece = taken_between(at, to, king, empty, enemy & ~taken);
        if (!piece) return -1;
        taken |= piece;
        at = to;
    }
    for (int i = 0; i < list.count; ++i)
        if (pieces_of(list[i], side) == (own_left | at) && pieces_of(list[i], side ^ 1) == (enemy & ~taken))
            return i;
    return -1;
}

}  // namespace

int find_typed_move(const std::string& text, const Position& position, int side, std::string& problem) {
    problem = "not a move: ";
    problem.append(text, 0, SHOWN_LENGTH);
    const char* cursor = text.c_str();
    PdnToken token;
    if (pdn_next_token(cursor, token, true) != PDN_MOVE) return -1;
    PdnToken behind;
    if (pdn_next_token(cursor, behind, true) != PDN_END) return -1;
    problem = "not a legal move: ";
    problem.append(text, 0, SHOWN_LENGTH);
    if (!is_legal_setup(position)) return -1;
    MoveList list;
    CaptureLines lines;
    int jumps = 0;
    generate_moves_with_lines(position, list, side, lines, jumps);
    if (token.path) {
        const PdnGame node = pdn_make_node(PDN_MOVE, std::move(token));
        ReplayState state{0, side, position};
        if (pdn_apply_move(*node, state, state) == 0) return find_move(list, move_to(state.position));
        return find_walk(node->token.path.get(), position, side, list);
    }
    const std::vector<int> found = moves_with_ends(token, position, side, list, lines, jumps);
    if (found.size() == 1) return found[0];
    if (found.empty()) return -1;
    problem = "more than one capture:";
    for (const int index : found) problem.append(" ").append(move_text_of(position, list[index], side));
    return -1;
}
