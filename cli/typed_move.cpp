#include "cli/typed_move.h"

#include <vector>

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
        return pdn_apply_move(*node, state, state) == 0 ? find_move(list, move_to(state.position)) : -1;
    }
    const std::vector<int> found = moves_with_ends(token, position, side, list, lines, jumps);
    if (found.size() == 1) return found[0];
    if (found.empty()) return -1;
    problem = "more than one capture:";
    for (const int index : found) problem.append(" ").append(move_text_of(position, list[index], side));
    return -1;
}
