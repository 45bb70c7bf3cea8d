// Opening, reopening and closing of the databases that the engine uses: a machine of states that is driven at
// the start of each search, on the search thread. An opening may run beside searches on a thread of its own;
// it touches nothing of the engine's, and what it has opened is taken over by the first search that begins
// when it is done. Nothing else closes a database, so none is closed while lookups run.
//
//   EGDB_NOT_OPENED --reopen--> EGDB_OPENING --> EGDB_OPENED --next search--> EGDB_IN_USE
//                                            \-> EGDB_FAILED
//
// From any state but EGDB_OPENING and EGDB_OPENED a search that finds the wish to reopen closes what is open
// and starts over, or ends in EGDB_SWITCHED_OFF. While an opening is under way the wish waits.
#pragma once

#include <atomic>
#include <cstdint>

#include "egdb/database_options.h"
#include "egdb/verify.h"

enum EgdbState : int32_t {
    EGDB_NOT_OPENED = 0,
    EGDB_OPENING = 1,
    EGDB_OPENED = 2,  // not yet taken over by the engine
    EGDB_IN_USE = 3,
    EGDB_SWITCHED_OFF = 4,
    EGDB_FAILED = 5,
};

// Read by any thread; written by the search thread, and by the opening thread from EGDB_OPENING on.
extern std::atomic<int32_t> egdb_state;

// What the machine asks of the engine's other side. The transposition table is given up before an opening and
// had anew before the databases look what memory is left.
struct EgdbSurroundings {
    void (*release_table)();
    void (*allocate_table)();
    char* message;                                          // of the search's text, 2000 bytes
    void (*show_message)(char* message, const char* text);  // what the search waits for, on its own thread
};

// Before each search, on the search thread, while no lookup runs. Takes over what has been opened, and lowers
// the wishes `reopen_wld` and `reopen_mtc` when it follows them.
void egdb_prepare_search(const DatabaseOptions& options, bool& reopen_wld, bool& reopen_mtc,
                         const EgdbSurroundings& surroundings);

// Checks the files of the database of values that is open or has been opened, as its driver's `verify` does;
// -1 if there is none. On any thread but the search thread. Meanwhile nothing is closed: the wish to reopen
// waits for the end of the check.
int verify_open_egdb(const VerifyListener& listener, const std::atomic<bool>* abort,
                     const VerifyTexts& texts);

// Waits for an opening under way. False if it takes longer than that.
bool wait_for_egdb_opening(int milliseconds);

// Back to EGDB_NOT_OPENED, with everything closed, when an opening and checks under way have ended. While no
// search runs.
void reset_egdb();
