// A root move by the moves to conversion: a won position makes progress with every move, and a lost one lasts
// as long as it can. In any doubt there is none, and the search decides.
//
// On the search thread, before the part of a search that other threads share, or while no search runs.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/movegen.h"

constexpr int32_t MTC_CHOICE_NODES = 1000000;
constexpr size_t MTC_TEXT_SIZE = 2000;

// What a move changed cannot be taken back: it captures, or moves a man.
bool is_conversion(const Position& from, const Position& to);

// 1 if the databases know a move for `side`: its place in the list of all legal ones, how many moves the next
// conversion is away behind it, and a text that lists the moves in question with their numbers, the best ones
// with an asterisk. 0 if not; nothing is written then. `text` has MTC_TEXT_SIZE bytes.
int mtc_choose_move(const Position& position, int side, const MoveList& moves, int& best, int& mtc,
                    char* text);
