// Matches: games that this side requests one after the other, each start position twice with colours swapped.
// The plan is nothing but a number: game `match_games`, from 0, has start position match_games / 2 modulo
// their count, and this side has white in the even ones. So a match that was broken off goes on wherever its
// score says. Interface thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "records/pdn_replay.h"

// As the settings keep them.
enum MatchOpenings : uint8_t { TWO_MOVE_OPENINGS = 0, THREE_MOVE_OPENINGS = 1, FILE_OPENINGS = 2 };

// The start positions. Interface thread only.
struct MatchPlan {
    std::vector<ReplayState> start_positions;  // of FILE_OPENINGS, from the file that was read last
    std::string opening_text;                  // name of the one on the board
};
extern MatchPlan match_plan;

// Fills in what of `match_hooks` leads here. Before a connection.
void start_matches();

// The user's choices, as the dialog has them.
struct MatchFields {
    MatchOpenings openings = TWO_MOVE_OPENINGS;
    std::string ballot_file;   // of FILE_OPENINGS
    bool incremental = false;  // only where `program_flags.autoconnect_enabled`
    double minutes = 0;        // for so many moves; 0 or less: as many as a game takes
    int32_t moves = 0;
    double initial_seconds = 0;  // or with the increment for all of them
    double increment_seconds = 0;
    int32_t repeats = 1;
    bool resume = false;
};

// What the settings have; no resume.
MatchFields match_fields();

// The start positions of this kind, with those of the file that was read last.
int start_position_count(MatchOpenings openings);
int start_position_count();

// All games of the match that the settings tell.
int64_t match_total_games(MatchOpenings openings);
int64_t match_total_games();

// A match with these openings can go on where the statistics file says. That of a file can as soon as it is
// read, so it is not refused before.
bool match_can_resume(MatchOpenings openings);

// Puts the start position of a pair of games on the board as a game's beginning: 0. 1 if the match is over,
// or there is none.
int set_next_start_position(int32_t pair);

// Reads the file of the settings: its games' last positions become the start positions. 0; 1 if there are
// none to be had, which the user is told.
int read_ballots_file();

// Takes the choices over and starts, or resumes, the match on the connection that is there: 0. 1 if the file
// of start positions cannot be read; the mode then is as it was.
int begin_match(const MatchFields& fields);

// The same on a new connection to the remembered host and with the remembered settings, from the first game.
int begin_match_autoconnect();

// The minutes as the dialog shows them: whole if nothing above a tenth is lost, otherwise with one decimal.
// `size` at least 1.
void match_minutes_text(double minutes, char* buffer, size_t size);
