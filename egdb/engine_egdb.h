// The engine's side of the endgame databases: which database is open, which positions it covers, and how its
// values become scores. Nothing is open until something fills in `egdb_engine`; every question is then
// answered "none".
#pragma once

#include <cstdint>

#include "core/movegen.h"
#include "egdb/driver.h"
#include "eval/node_summary.h"

// The open databases and their limits. Written at the start of a search, when no lookup runs; read by every
// search thread. The three operations are a table, so that the engine runs without what opens databases.
struct EgdbEngine {
    const EgdbDriver* wld;        // win/loss/draw; null if none is open
    const EgdbDriver* mtc;        // moves to conversion; null if none is open. For one thread at a time
    int32_t maxpieces;            // on the board
    int32_t maxpieces_1side;      // of one side
    int32_t maxkings_9pcs;        // of both sides, with nine pieces
    int32_t maxkings_1side_8pcs;  // of each side, with eight pieces
    bool no_side_captures;  // positions where the other side can capture are left out from seven pieces on
    int32_t lookup_depth;   // in plies: lookups nearer to the leaves never read the disk

    // At the start of each search: applies a change of settings or takes over a finished opening. May write a
    // message to the text that the user sees, a buffer of 2000 bytes.
    void (*egdb_prepare)(char* message);
    // 1 if a root move comes from the moves to conversion: its index, the number and a text; else 0. As long
    // as none is filled in that of egdb/mtc_choice.h, which needs nothing but the drivers.
    int (*mtc_choose_move)(const Position& position, int side, const MoveList& moves, int& best, int& mtc,
                           char* text);
    // 1 if `better` is to replace the searched move `chosen`, else 0. As long as none is filled in that of
    // egdb/resolver.h, which needs nothing but the driver.
    int (*egdb_move_check)(int side, const Position& position, const MoveList& moves, int chosen,
                           int& better);
};
extern EgdbEngine egdb_engine;

// The state without a database.
EgdbEngine no_egdb();

// The material is within the open database.
inline bool egdb_covers(const NodeSummary& summary) {
    const EgdbEngine& e = egdb_engine;
    if (summary.total > e.maxpieces || summary.larger_total > e.maxpieces_1side) return false;
    if (summary.total == 8)
        return summary.black_kings <= e.maxkings_1side_8pcs && summary.white_kings <= e.maxkings_1side_8pcs;
    if (summary.total == 9) return summary.black_kings + summary.white_kings <= e.maxkings_9pcs;
    return true;
}

// The value can be used even if the side not to move has a capture.
inline bool egdb_direct_ok(const NodeSummary& summary) {
    if (!egdb_engine.no_side_captures || summary.total < 7) return true;
    return summary.total < 9 && summary.black_kings + summary.white_kings < 2;
}

// The database can be asked about a position in which `side`, who is to move, has no capture.
inline bool egdb_probe_ok(const Position& position, int side, const NodeSummary& summary) {
    return egdb_covers(summary) && (egdb_direct_ok(summary) || !has_capture(position, side ^ 1));
}

// The score of a drawn position for black: small, by the difference in men, a king counting three.
int32_t egdb_draw_score(const NodeSummary& summary);

// The score of a value for `side`. A draw has the sign of black whoever is to move, and 1 where material is
// level. What the database does not know gets the static evaluation, capped at 0 where one side cannot win.
int32_t egdb_score(const Position& position, int side, EgdbValue value, NodeSummary& summary);

// Writes what the open database of values has counted to the log; nothing if none is open.
void log_egdb_statistics();

// Sets `lookup_depth` for a search from a root with that many pieces.
void set_egdb_lookup_depth(int pieces);
