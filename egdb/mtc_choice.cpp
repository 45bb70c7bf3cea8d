#include "egdb/mtc_choice.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "core/notation.h"
#include "egdb/engine_egdb.h"
#include "egdb/mtc_codes.h"
#include "egdb/resolver.h"
#include "egdb/value_order.h"

namespace {

constexpr int MTC_MAX_PIECES = 8;
// Limits of the small searches behind a root move.
constexpr int WINNERS_DEPTH = 16;
constexpr int LOSERS_DEPTH = 9;

int32_t number_of(const Position& position) {
    const EgdbDriver& mtc = *egdb_engine.mtc;
    return static_cast<int32_t>(mtc.lookup(mtc.handle, position, position.side, false));
}

// A root move that comes into question.
struct Choice {
    int index = 0;
    Position reached;
    bool converts = false;
    int32_t mtc = 0;      // of the position reached
    int32_t further = 0;  // of what the opponent makes of it: tells moves apart that rounding makes equal
};

// The moves that come into question, which are all moves of a lost position.
struct Choices {
    int count = 0;
    std::array<Choice, MAX_MOVES> list;

    Choice* begin() { return list.data(); }
    Choice* end() { return list.data() + count; }
};

// What the opponent, whose best replies keep him from converting if he has lost and from letting us last if
// he has won, leaves us with: the number of the longest, or shortest, way on.
int32_t number_behind(const Position& position, bool opponent_wins) {
    const int us = position.side ^ 1;
    MoveList replies;
    generate_moves(position, replies, position.side);
    int32_t found = opponent_wins ? INT32_MAX : 0;
    for (const Move& reply : replies) {
        const Position child = position_after(reply, us);
        // A conversion that wins would have made the distance one.
        if (is_conversion(position, child)) continue;
        if (!opponent_wins)
            found = std::max(found, number_of(child));
        else if (resolve_value(child, us, LOSERS_DEPTH) == EGDB_LOSS)
            found = std::min(found, number_of(child));
    }
    return found;
}

// Moves that rounding makes as good as the best one are looked into further.
void look_further(Choices& choices, bool we_win, int32_t best) {
    for (Choice& choice : choices)
        if (choice.mtc == best && !choice.converts) choice.further = number_behind(choice.reached, !we_win);
}

// True, with the winning moves, if all of them are known.
bool winners_choices(const MoveList& moves, int side, Choices& choices) {
    for (int i = 0; i < moves.count; ++i) {
        const Position reached = position_after(moves[i], side ^ 1);
        const EgdbValue value = resolve_value(reached, side ^ 1, WINNERS_DEPTH);
        if (!is_decided(value)) return false;
        if (value != EGDB_LOSS) continue;
        const int32_t mtc = number_of(reached);
        if (mtc == NO_MTC) return false;
        choices.list[static_cast<size_t>(choices.count++)] = {i, reached, false, mtc, 0};
    }
    if (choices.count == 0) return false;
    const auto nearer = [](const Choice& a, const Choice& b) {
        return a.mtc != b.mtc ? a.mtc < b.mtc : a.further < b.further;
    };
    look_further(choices, true, std::min_element(choices.begin(), choices.end(), nearer)->mtc);
    std::stable_sort(choices.begin(), choices.end(), nearer);
    return true;
}

// True if the best move lasts long enough to have a number.
bool losers_choices(const Position& position, const MoveList& moves, int side, Choices& choices) {
    for (int i = 0; i < moves.count; ++i) {
        const Position reached = position_after(moves[i], side ^ 1);
        const bool won = resolve_value(reached, side ^ 1, LOSERS_DEPTH) == EGDB_WIN;
        choices.list[static_cast<size_t>(choices.count++)] = {i, reached, is_conversion(position, reached),
                                                              won ? number_of(reached) : 0, 0};
    }
    const auto lasts_longer = [](const Choice& a, const Choice& b) {
        if (a.converts != b.converts) return b.converts;
        return a.mtc != b.mtc ? a.mtc > b.mtc : a.further > b.further;
    };
    const Choice best = *std::min_element(choices.begin(), choices.end(), lasts_longer);
    if (best.mtc < MTC_THRESHOLD) return false;
    look_further(choices, false, best.mtc);
    std::stable_sort(choices.begin(), choices.end(), lasts_longer);
    return true;
}

void write_choices(const Position& position, const MoveList& moves, Choices& choices, int32_t correction,
                   char* text) {
    text[0] = '\0';
    size_t length = 0;
    for (const Choice& choice : choices) {
        char move[MOVE_TEXT_SIZE];
        move_text(move, position, moves[choice.index]);
        char item[MOVE_TEXT_SIZE + 32];
        const int bytes = choice.mtc < MTC_THRESHOLD
                              ? std::snprintf(item, sizeof item, "%s(?)  ", move)
                              : std::snprintf(item, sizeof item, "%s(%d)%s  ", move, choice.mtc + correction,
                                              choice.mtc == choices.list[0].mtc ? "*" : "");
        if (length + static_cast<size_t>(bytes) >= MTC_TEXT_SIZE) return;
        std::snprintf(text + length, MTC_TEXT_SIZE - length, "%s", item);
        length += static_cast<size_t>(bytes);
    }
}

}  // namespace

bool is_conversion(const Position& from, const Position& to) {
    if (bit_count(to.black | to.white) < bit_count(from.black | from.white)) return true;
    const uint64_t left = (from.black | from.white) & ~(to.black | to.white);
    return !(left & from.king);
}

int mtc_choose_move(const Position& position, int side, const MoveList& moves, int& best, int& mtc,
                    char* text) {
    const EgdbEngine& engine = egdb_engine;
    const int pieces = bit_count(position.black | position.white);
    if (!engine.mtc || !engine.wld || pieces > engine.maxpieces || pieces > MTC_MAX_PIECES) return 0;
    const Position root = position_after(move_to(position), side);
    const int32_t root_mtc = number_of(root);
    if (root_mtc == NO_MTC) return 0;
    egdb_resolver.max_nodes = MTC_CHOICE_NODES;
    const EgdbValue value = resolve_value(root, side, RESOLVER_MAX_DEPTH);
    Choices choices;
    if (value == EGDB_WIN ? !winners_choices(moves, side, choices)
                          : value != EGDB_LOSS || !losers_choices(root, moves, side, choices))
        return 0;
    const Choice& first = choices.list[0];
    const int32_t correction = root_mtc == first.mtc ? -1 : 0;
    best = first.index;
    mtc = first.mtc + correction;
    write_choices(root, moves, choices, correction, text);
    return 1;
}
