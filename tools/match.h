// Matches between two players, A and B: which games are played, and the playing of a pair of them. The
// players are asked through a record of functions; what stands behind it is not known here.
//
// A match is a row of pairs, and a pair is a start position that both players have with each colour once. The
// first start positions are the ballots, in an order drawn by the seed. Of ballots that lead to one position
// one is taken: players who always answer alike would play the same games again, which say nothing new. When
// all are used up the row goes round again, and from then on two random plies follow each ballot. What loses
// a piece at once or has been a start position before is thrown away, and drawn again with more plies if it
// must be. All of it is settled by the seed and the number of the pair, so that parts of a match can be
// played anywhere and in any order.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "tools/match_game.h"

constexpr int PLAYER_A = 0;
constexpr int PLAYER_B = 1;

// The start positions of so many pairs. With ballots of no moves all are the start position, for players that
// do not answer alike every time.
std::vector<Position> match_starts(int ballot_moves, uint64_t seed, int64_t pairs);

// The same from random endings with so many pieces, as many of each side and at least two. Half of them have
// a king on both sides. Neither side can capture, and none is reached twice.
std::vector<Position> ending_starts(int pieces, uint64_t seed, int64_t pairs);

// True if neither side is a piece ahead when all captures that must be made have been made.
bool is_even(const Position& position);

// What a player says to a position.
struct PlayerAnswer {
    Move move;
    int32_t score;  // positive when good for black
    int32_t depth;
    uint64_t nodes;
    double seconds;
};

struct MatchPlayers {
    void* context;
    // A new game begins: what is left of the last one is to be forgotten. False if the player fails.
    bool (*begin)(void* context, int player);
    // The player's move in a position that has one; the positions before it are linked. False if it fails.
    bool (*ask)(void* context, int player, const Position& position, PlayerAnswer& answer);
};

// What a player did, summed over its moves.
struct PlayerWork {
    int64_t moves = 0;
    int64_t depth = 0;
    uint64_t nodes = 0;
    double seconds = 0;
};
void add_work(PlayerWork& sum, const PlayerWork& more);

struct PairReport {
    std::array<int, 2> points{};  // of player A in both games: 2 won, 1 drawn, 0 lost
    std::array<GameEnd, 2> ends{};
    int plies = 0;  // of both games
    std::array<PlayerWork, 2> work{};
};

enum PairStatus { PAIR_PLAYED, PAIR_PLAYER_FAILED, PAIR_ILLEGAL_MOVE };

// Plays both games from the position: A has white in the first. If a player fails or makes a move that is not
// legal its number is in `culprit`, and the report is worth nothing.
PairStatus play_pair(const Position& start, const MatchPlayers& players, bool adjudicate, PairReport& report,
                     int& culprit);
