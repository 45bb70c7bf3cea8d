// What follows from a move of the user's, and from the end of a search. Interface thread only.
#pragma once

// After a legal move was made on the board: `game.board` has its result and `game.board_side` was flipped.
// Records it and, in the modes with an engine, has the engine go on.
void user_move_made();

// Makes a legal move of the user's on the board and calls `user_move_made`: 0. 1 if the list of legal moves
// has no such index, and nothing changes. Whether the user may move now is for the front end to ask.
int make_user_move(int index);
// The user may move on the board now: not while the engine has the move, and not in modes in which it plays
// by itself.
bool user_may_move();

// After a search has ended: makes its move and starts what comes next, as the mode has it. `caller` is 3 from
// the timer and 4 from a user's move; it changes nothing.
void search_done(int caller);
