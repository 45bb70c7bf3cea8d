#include "records/pdn_replay.h"

#include <strings.h>

#include "core/capture_lines.h"
#include "records/fen.h"

namespace {

// The legal moves of a state.
struct LegalMoves {
    MoveList list;
    CaptureLines lines;
    int jumps = 0;
};

// The path as given by the record has the move at `index` on it.
bool path_fits(const uint8_t* path, const LegalMoves& moves, int index, int side) {
    const CaptureLine& line = moves.lines[static_cast<size_t>(index)];
    for (int jump = 0; jump + 1 < moves.jumps; ++jump)
        if (!square_fits_jump(line, jump, side, path[jump + 2])) return false;
    return true;
}

// Index of the move that the node writes, or -1.
int match_move(const PdnToken& token, const LegalMoves& moves, const ReplayState& state) {
    const uint8_t* const path = token.path.get();
    if (path && (moves.jumps == 0 || path[0] != moves.jumps + 1)) return -1;
    const int wanted_from = path ? path[1] : token.from;
    const int wanted_to = path ? path[path[0]] : token.to;
    for (int i = 0; i < moves.list.count; ++i) {
        uint64_t from = 0, to = 0;
        move_step_squares(moves.jumps, i, state.side, state.position, moves.list, moves.lines, from, to);
        if (square_number(from) != wanted_from || square_number(to) != wanted_to) continue;
        if (!path || path_fits(path, moves, i, state.side)) return i;
    }
    return -1;
}

int apply_embedded_fen(const PdnNode& node, ReplayState& state_out) {
    int side = WHITE;
    Position position;
    if (fen_to_position(node.token.text.get(), position, side) != 0) return 1;
    state_out = {1, side, position};
    return 0;
}

}  // namespace

bool pdn_is_step(const PdnNode& node) { return node.kind == PDN_MOVE || node.kind == PDN_EMBEDDED_FEN; }

bool is_initial_state(const ReplayState& state) {
    return state.side == WHITE && same_pieces(state.position, START_POSITION);
}

PdnNode* pdn_start_position(PdnNode* list, ReplayState& state) {
    if (!list) return nullptr;
    state = ReplayState{};
    PdnNode* node = list;
    for (; node && node->kind != PDN_MOVE; node = node->next) {
        int side = WHITE;
        const char* fen = nullptr;
        if (node->kind == PDN_EMBEDDED_FEN) fen = node->token.text.get();
        if (node->kind == PDN_HEADER && strcasecmp(node->token.key.get(), "fen") == 0)
            fen = node->token.value.get();
        if (fen && fen_to_position(fen, state.position, side) == 0) state.side = side;
    }
    state.setup_flag = is_initial_state(state) ? 0 : 1;
    if (node) node->token.side = static_cast<uint8_t>(state.side);
    return node;
}

PdnNode* pdn_next_move(PdnNode* node, ReplayState& state) {
    state.setup_flag = 0;
    if (!node || !pdn_is_step(*node)) return nullptr;
    const int32_t mover = state.side;
    if (pdn_apply_move(*node, state, state) != 0) return nullptr;
    if (node->kind == PDN_MOVE) node->token.side = static_cast<uint8_t>(mover);
    PdnNode* next = node->next;
    while (next && !pdn_is_step(*next)) next = next->next;
    if (next && next->kind == PDN_MOVE) next->token.side = static_cast<uint8_t>(state.side);
    return next;
}

int pdn_apply_move(PdnNode& node, const ReplayState& state_in, ReplayState& state_out) {
    if (node.kind == PDN_EMBEDDED_FEN) return apply_embedded_fen(node, state_out);
    // The generators need one piece a square.
    if (node.kind != PDN_MOVE || (state_in.position.black & state_in.position.white)) return 1;
    LegalMoves moves;
    generate_moves_with_lines(state_in.position, moves.list, state_in.side, moves.lines, moves.jumps);
    if (!node.token.path)
        node.token.is_capture = static_cast<uint8_t>(moves.jumps);
    else if (moves.jumps)
        node.token.is_capture = 1;
    const int index = match_move(node.token, moves, state_in);
    if (index < 0) return 1;
    const int side = state_in.side ^ 1;
    state_out = {0, side, position_after(moves.list[index], side)};
    return 0;
}
