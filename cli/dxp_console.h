// DamExchange on a console: game control and the network play without a window, told in lines of text.
#pragma once

#include <cstdint>
#include <string>

#include "cli/egdb_options.h"
#include "cli/match_report.h"
#include "dxp/match.h"

struct DxpConsoleOptions {
    int port = 0;  // 0 for the usual one
    int threads = 1;
    int hash_mb = 64;
    std::string book = "off";
    EgdbChoice egdb;
    bool ponder = false;
    bool server = false;   // listens again behind each connection, and sends its thoughts
    bool verbose = false;  // the messages too
    bool quiet = false;    // no line for each game
    bool json = false;     // the summary as one line of JSON
};

// What has been seen of the games.
struct DxpConsole {
    DxpConsoleOptions options;
    bool match = false;            // this side asks for the games
    bool over = false;             // the match has come to its end
    bool boxes_told = true;        // what would be a message box is printed
    bool taken_port_told = false;  // of the wait that goes on
    int64_t total_games = 0;
    MatchScore score;
    int32_t seen_state = 0;  // of the connection

    int32_t games = 0;           // finished since the start
    int64_t first_game_ms = -1;  // readings of `clock_ms`: the first game began, the last one ended
    int64_t last_end_ms = -1;
    double thought = 0;  // seconds of the engine in them
};
extern DxpConsole dxp_console;

// Starts game control and the network play. False if it cannot run, which has been told.
bool start_dxp_console(const DxpConsoleOptions& options);

// The games that the counters tell of. `match_games` counts the last only once the other side has agreed that
// it has ended.
int32_t counted_games();

// Runs until the interrupt key, the end of the match, or, without a server's patience, the end of the
// connection. Afterwards there is no connection and no search.
void run_dxp_console();

// The last lines.
void print_dxp_summary();
