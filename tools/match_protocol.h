// The lines in which a match and its players speak. A player is a process of its own, as an engine has its
// weights, its table and its history once a process. Sets are in hexadecimal, all other numbers in decimal.
//
//     new                                            a game begins; answered by "ready"
//     go SIDE BLACK WHITE KING [BLACK WHITE KING]... the positions since the last move that cannot be taken
//                                                    back, oldest first; SIDE, 0 black or 1 white, is to move
//                                                    in the last, which is the one to search
//     move BLACK WHITE KING SCORE DEPTH NODES MICROSECONDS
//                                                    the answer; the score is positive when good for black
#pragma once

#include <string>
#include <vector>

#include "core/board.h"
#include "tools/match.h"

constexpr char PLAYER_NEW_GAME[] = "new";
constexpr char PLAYER_READY[] = "ready";

// The line that asks for a move; the position's `previous` links must reach as far as its `reversible_plies`
// tell.
std::string go_line(const Position& position);

// Reads such a line into the positions, linked, the last being the one to search. False if it is none, and
// then `positions` is of no use.
bool read_go_line(const std::string& line, std::vector<Position>& positions);

std::string move_line(const PlayerAnswer& answer);
bool read_move_line(const std::string& line, PlayerAnswer& answer);
