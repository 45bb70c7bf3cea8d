// Games of the engine against itself, as material for learning the weights.
//
// A file of games is a row of records of 32 bytes, one for each position that is worth learning from: quiet
// ones, in which neither side can capture, behind the random moves of the opening. Which of them are kept, if
// not all, does not change the games. The records of a game stand together and are appended at once when it
// is over, so what an interruption cuts off is at most the last game.
#pragma once

#include <cstdint>
#include <string>

// How a game begins: with random moves from the start of the game, or with a ballot of so many moves, drawn
// at random, and fewer random moves behind it.
enum SelfplayOpening { OPENING_RANDOM = 0, OPENING_TWO_MOVES = 2, OPENING_THREE_MOVES = 3 };

struct GameRecord {
    uint64_t black;
    uint64_t white;
    uint64_t king;
    uint32_t game;  // number of the game in its run, from 0
    int16_t score;  // of the search that chose the move, positive when good for black
    int8_t result;  // 1 black won, 0 draw, -1 white won
    uint8_t side;   // to move
};
static_assert(sizeof(GameRecord) == 32);

// What every record of a file of games keeps to.
bool is_sound_record(const GameRecord& record);

struct SelfplayOptions {
    std::string out;
    int64_t games = 1000;  // in the file at the end
    uint64_t seed = 1;     // two runs with the same seed and options play the same games
    int depth = 7;         // of each search
    SelfplayOpening opening = OPENING_THREE_MOVES;
    int keep = 1;   // of so many quiet positions one is kept, on average; at least 1
    int stray = 0;  // one move in so many is a random one, so that games leave the beaten track; 0: none
};

// Called after each game with the games in the file and the records written by this run; false ends the run.
using SelfplayProgress = bool (*)(int64_t games, int64_t records);

// Plays until the file holds `games` games, going on behind those it has, of which the last is played anew,
// as it may be cut short. One that holds more stays as it is. The engine must be started. 0; 1 if the file
// cannot be read or written; 2 if it holds something else, which it keeps; 3 if another run writes it.
int selfplay(const SelfplayOptions& options, SelfplayProgress progress);
