// Replaying games of files for the console.
#pragma once

#include <vector>

#include "records/pdn_game.h"
#include "records/pdn_replay.h"

// The positions of a game, its start first, as far as it can be replayed. False if it breaks at a move that
// is not legal; a draw that is written "1-1" at the end of the moves is none.
bool replay_game(PdnNode* game, std::vector<ReplayState>& history);

// Tells the user of games of the file that are broken, on standard error; nothing if none is.
void tell_broken_games(const char* file, int broken, int games);
