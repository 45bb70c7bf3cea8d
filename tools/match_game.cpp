#include "tools/match_game.h"

#include <cstdlib>

#include "core/movegen.h"

namespace {

constexpr int PIECES_AGAINST_KING = 3;

bool is_lone_king(const Position& position, int side) {
    const uint64_t pieces = pieces_of(position, side);
    return bit_count(pieces) == 1 && (pieces & position.king) != 0;
}

// The position has stood twice before with the same side to move.
bool is_third_occurrence(const Position& position) {
    int earlier = 0;
    const Position* before = &position;
    for (int plies = 2; plies <= position.reversible_plies; plies += 2) {
        before = before->previous->previous;
        if (same_pieces(*before, position)) ++earlier;
    }
    return earlier >= 2;
}

void count_decided(MatchGame& game, int32_t score) {
    if (std::abs(score) < MATCH_DECIDED_SCORE) {
        game.decided_plies = 0;
        return;
    }
    const int sign = score > 0 ? 1 : -1;
    game.decided_plies = game.decided_plies * sign > 0 ? game.decided_plies + sign : sign;
}

}  // namespace

int small_ending_limit(const Position& position) {
    for (const int side : {BLACK, WHITE}) {
        const uint64_t others = pieces_of(position, side ^ 1);
        const int count = bit_count(others);
        if (!is_lone_king(position, side) || count > PIECES_AGAINST_KING || !(others & position.king))
            continue;
        return count == PIECES_AGAINST_KING ? MATCH_THREE_PIECES_PLIES : MATCH_TWO_PIECES_PLIES;
    }
    return 0;
}

void begin_game(MatchGame& game, const Position& start) {
    game = MatchGame{};
    game.line.reserve(MATCH_MAX_PLIES + 1);
    game.line.push_back(start);
    game.line.back().previous = nullptr;
    game.line.back().reversible_plies = 0;
    game.ending_limit = small_ending_limit(start);
}

bool play_move(MatchGame& game, const Move& move, int32_t score) {
    const Position& position = game.line.back();
    MoveList list;
    generate_moves(position, list, position.side);
    if (find_move(list, move) < 0 || game.line.size() > MATCH_MAX_PLIES) return false;
    Position child;
    make_child(position, child, move, has_capture(position, position.side));
    game.line.push_back(child);
    const int limit = small_ending_limit(child);
    game.ending_plies = limit == game.ending_limit ? game.ending_plies + 1 : 0;
    game.ending_limit = limit;
    count_decided(game, score);
    return true;
}

GameEnd game_end(const MatchGame& game, bool adjudicate, int& result) {
    const Position& position = game.line.back();
    MoveList list;
    if (generate_moves(position, list, position.side) == 0) {
        result = position.side == WHITE ? 1 : -1;
        return GAME_NO_MOVES;
    }
    result = 0;
    if (is_third_occurrence(position)) return GAME_THIRD_OCCURRENCE;
    if (position.reversible_plies >= MATCH_KING_PLIES) return GAME_KING_MOVES;
    if (game.ending_limit != 0 && game.ending_plies >= game.ending_limit) return GAME_SMALL_ENDING;
    if (adjudicate && std::abs(game.decided_plies) >= MATCH_DECIDED_PLIES) {
        result = game.decided_plies > 0 ? 1 : -1;
        return GAME_ADJUDICATED;
    }
    return game.line.size() > MATCH_MAX_PLIES ? GAME_TOO_LONG : GAME_GOES_ON;
}
