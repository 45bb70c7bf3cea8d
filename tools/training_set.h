// The positions to learn from, read from files of self-play games and split by game: what is held out to
// measure with shares no game with what is learned from, as the positions of a game resemble one another.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/selfplay.h"

struct TrainingSet {
    std::vector<GameRecord> learned;
    std::vector<GameRecord> held_out;
    int64_t games = 0;
    int64_t faulty = 0;  // records that hold no position; they are left out
};

struct TrainingSetOptions {
    int held_out_share = 16;  // one game in so many
    int every = 1;            // keeps one position in so many
};

enum TrainingSetStatus { SET_READ = 0, SET_UNREADABLE = 1, SET_NO_MEMORY = 2 };

// Adds the games of one file. What follows the last whole record is left out. On failure the set holds the
// games of the files before and a part of this one's.
int read_games(const std::string& path, const TrainingSetOptions& options, TrainingSet& set);
