// How long a move stays in the program once its search has ended: a peer in this process plays games against
// the network play and takes the time from the search thread's last word to the arrival of the move.
#pragma once

#include <cstddef>
#include <thread>

#include "control/ui.h"

// To be called with each picture by the search thread, whatever else `post_search_picture` does.
void note_search_end(SearchPicture picture);

// Plays games on that port of this machine until so many moves have come.
std::jthread start_timing_peer(int port, size_t moves);
bool timing_is_done();

// The figures. The exit status: 1 if no move came.
int print_reply_times();
