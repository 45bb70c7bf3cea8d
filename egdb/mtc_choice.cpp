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
    // Files may tell anything there; the capture itself is the conversion.
    if (has_capture(position, position.side)) return NO_MTC;
    const EgdbDriver& mtc = *egdb_engine.mtc;
    return static_cast<int32_t>(mtc.lookup(mtc.handle, position, position.side, false));
}

// A root move that comes into question.
struct Choice {
    int index = 0;
    bool converts = false;
    int32_t mtc = 0;  // of the position reached
};

// The moves that come into question, which are all moves of a lost position; in the end the best first, as
// the numbers tell them apart.
struct Choices {
    int count = 0;
    std::array<Choice, MAX_MOVES> list;

    Choice* begin() { return list.data(); }
    Choice* end() { return list.data() + count; }
};

// True, with the winning moves, if all of them are known.
bool winners_choices(const MoveList& moves, int side, Choices& choices) {
    for (int i = 0; i < moves.count; ++i) {
        const Position reached = position_after(moves[i], side ^ 1);
        const EgdbValue value = resolve_value(reached, side ^ 1, WINNERS_DEPTH);
        if (!is_decided(value)) return false;
        if (value != EGDB_LOSS) continue;
        const int32_t mtc = number_of(reached);
        if (mtc == NO_MTC) return false;
        choices.list[static_cast<size_t>(choices.count++)] = {i, false, mtc};
    }
    std::stable_sort(choices.begin(), choices.end(),
                     [](const Choice& a, const Choice& b) { return a.mtc < b.mtc; });
    return choices.count > 0;
}

// True if the best move lasts long enough to have a number.
bool losers_choices(const Position& position, const MoveList& moves, int side, Choices& choices) {
    for (int i = 0; i < moves.count; ++i) {
        const Position reached = position_after(moves[i], side ^ 1);
        const bool won = resolve_value(reached, side ^ 1, LOSERS_DEPTH) == EGDB_WIN;
        choices.list[static_cast<size_t>(choices.count++)] = {i, is_conversion(position, reached),
                                                              won ? number_of(reached) : 0};
    }
    std::stable_sort(choices.begin(), choices.end(), [](const Choice& a, const Choice& b) {
        return a.converts != b.converts ? b.converts : a.mtc > b.mtc;
    });
    return choices.list[0].mtc >= MTC_THRESHOLD;
}

// In a won position every move of the choices has a number.
void write_choices(const Position& position, const MoveList& moves, Choices& choices, bool won,
                   int32_t correction, char* text) {
    text[0] = '\0';
    size_t length = 0;
    for (const Choice& choice : choices) {
        char move[MOVE_TEXT_SIZE];
        move_text(move, position, moves[choice.index]);
        char item[MOVE_TEXT_SIZE + 32];
        const int bytes = !won && choice.mtc < MTC_THRESHOLD
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
    write_choices(root, moves, choices, value == EGDB_WIN, correction, text);
    return 1;
}
