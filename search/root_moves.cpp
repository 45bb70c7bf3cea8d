#include "search/root_moves.h"

#include <algorithm>
#include <cstdio>

#include "core/notation.h"
#include "search/root_search.h"

RootMoves make_root_moves(const MoveList& list) {
    RootMoves moves(static_cast<size_t>(list.count));
    for (int i = 0; i < list.count; ++i) {
        moves[static_cast<size_t>(i)].move = list[i];
        moves[static_cast<size_t>(i)].index = i;
    }
    return moves;
}

void sort_root_moves(RootMoves& moves, int side) {
    std::stable_sort(moves.begin(), moves.end(), [side](const RootMove& a, const RootMove& b) {
        return side == BLACK ? a.value > b.value : a.value < b.value;
    });
}

void keep_root_values(RootMoves& moves) {
    for (RootMove& move : moves) move.previous_value = move.value;
}

void restore_root_values(RootMoves& moves) {
    for (RootMove& move : moves) move.value = move.previous_value;
}

int32_t search_root_move(const Position& root, const RootMove& move, int32_t alpha, int32_t beta) {
    MoveList list;
    list.count = 1;
    list[0] = move.move;
    int32_t index = 0;
    return root_search(root, list, alpha, beta, index);
}

void root_moves_text(const Position& root, const RootMoves& moves, int count, char* out, size_t size) {
    size_t used = 0;
    out[0] = '\0';
    for (int i = 0; i < count; ++i) {
        const RootMove& move = moves[static_cast<size_t>(i)];
        char one[MOVE_TEXT_SIZE + 20], text[MOVE_TEXT_SIZE];
        move_text(text, root, move.move);
        const int length = std::snprintf(one, sizeof one, "%s,%d  ", text, move.value);
        if (used + static_cast<size_t>(length) >= size) return;
        std::copy_n(one, length + 1, out + used);
        used += static_cast<size_t>(length);
    }
}
