// One game of a match: what the rules and the referee make of it. Positions are kept in one row and linked,
// so that repetitions can be found here and by the players.
#pragma once

#include <cstdint>
#include <vector>

#include "core/board.h"

constexpr int MATCH_MAX_PLIES = 300;
constexpr int MATCH_KING_PLIES = 50;          // 25 moves of each side, kings only and nothing taken
constexpr int MATCH_DECIDED_SCORE = 1000;     // both players see so much for one and the same side
constexpr int MATCH_DECIDED_PLIES = 6;        // for so many plies on end
constexpr int MATCH_TWO_PIECES_PLIES = 10;    // one king against one or two pieces: 5 moves of each side
constexpr int MATCH_THREE_PIECES_PLIES = 32;  // one king against three: 16 moves of each side

enum GameEnd {
    GAME_GOES_ON,
    GAME_NO_MOVES,          // lost by the side to move
    GAME_THIRD_OCCURRENCE,  // of one position with the same side to move
    GAME_KING_MOVES,
    GAME_SMALL_ENDING,
    GAME_TOO_LONG,
    GAME_ADJUDICATED,  // won, as both players have long agreed
    GAME_ENDS          // the number of these
};

struct MatchGame {
    std::vector<Position> line;  // the start position and those after each move; never reallocated
    int ending_limit = 0;        // plies after which the small ending on the board is drawn; 0 for none
    int ending_plies = 0;        // played in it
    int decided_plies = 0;       // for which the scores have been decided, positive for black
};

// Begins a game at the position.
void begin_game(MatchGame& game, const Position& start);

// Plays a legal move; `score` is what its player sees, positive when good for black. False if the move is not
// legal, and then nothing is changed.
bool play_move(MatchGame& game, const Move& move, int32_t score);

// Whether and how the game is over, and then in `result` 1 if black has won, 0 for a draw and -1 if white
// has.
GameEnd game_end(const MatchGame& game, bool adjudicate, int& result);

// How many plies the small ending may go on: MATCH_TWO_PIECES_PLIES, MATCH_THREE_PIECES_PLIES, or 0 if it is
// no such ending.
int small_ending_limit(const Position& position);
