// The score of a match, as the title shows it and as one line in a file in the data folder. From the file a
// match that was broken off can be resumed, so it is at every moment that of the game before or of the last
// one. Interface thread and connection thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// Results from this side's point of view.
struct MatchScore {
    int32_t wins = 0;
    int32_t losses = 0;
    int32_t draws = 0;
    int32_t unknowns = 0;

    bool operator==(const MatchScore&) const = default;
};

// "Tessarin vs Other:  3 wins, 1 losses, 4 draws, 0 unknowns", cut to `size`, at least 1.
void match_score_text(const char* own_name, const char* other_name, const MatchScore& score, char* buffer,
                      size_t size);

// Reads the score behind the first colon of a file's text: the number of games. 0 if there is none, and then
// `score` is untouched; so is it where the numbers cannot be those of games.
int32_t parse_match_score(const std::string& text, MatchScore& score);

// The file of this copy, in the data folder.
std::string match_stats_path();

// The score in the file and the number of games in it; 0 if it cannot be read, and then `score` is untouched.
int32_t read_match_stats(MatchScore& score);
