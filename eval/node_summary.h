// What a search node knows about the pieces of its position, counted once and handed to the evaluation and
// the endgame databases.
#pragma once

#include <algorithm>
#include <cstdint>

#include "core/board.h"

// Mark of a summary whose position has not been evaluated yet.
constexpr int32_t NOT_EVALUATED = 0x7fffffff;

struct NodeSummary {
    int32_t black_men;
    int32_t black_kings;
    int32_t white_men;
    int32_t white_kings;
    int32_t black_total;
    int32_t white_total;
    int32_t total;
    int32_t larger_total;  // of the two sides' totals
    uint64_t black_men_set;
    uint64_t black_king_set;
    uint64_t white_men_set;
    uint64_t white_king_set;
    int32_t evaluation;  // for the side to move at the node; NOT_EVALUATED until `evaluate` stored it
};

inline void summarize(const Position& position, NodeSummary& summary) {
    summary.black_men_set = position.black & ~position.king;
    summary.black_king_set = position.black & position.king;
    summary.white_men_set = position.white & ~position.king;
    summary.white_king_set = position.white & position.king;
    summary.black_men = bit_count(summary.black_men_set);
    summary.white_men = bit_count(summary.white_men_set);
    summary.black_kings = summary.white_kings = 0;
    if (position.king) {
        summary.black_kings = bit_count(summary.black_king_set);
        summary.white_kings = bit_count(summary.white_king_set);
    }
    summary.black_total = summary.black_men + summary.black_kings;
    summary.white_total = summary.white_men + summary.white_kings;
    summary.total = summary.black_total + summary.white_total;
    summary.larger_total = std::max(summary.black_total, summary.white_total);
    summary.evaluation = NOT_EVALUATED;
}
