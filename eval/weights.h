// Everything learned that the evaluation uses, and the file it comes from.
//
// The file is a plain memory image of the record `Weights`: signed 16-bit little-endian numbers with no
// header, version or checksum, 8503076 bytes long. All tables are in black's point of view; white's values
// are had by turning the board.
//
// The storage is written before the search threads run (at start-up, or by a tool between searches) and only
// read from then on, by any thread.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

constexpr size_t PATTERN_TABLES = 4;
constexpr size_t PATTERN_ENTRIES = 531441;  // 3^12: a region of twelve squares with a ternary digit each

// The values of one pattern of men, for the two ends of the game. Read with one four-byte access.
struct PatternEntry {
    int16_t opening;
    int16_t endgame;
};
using PatternTable = std::array<PatternEntry, PATTERN_ENTRIES>;

// The weights of the scalar terms.
struct EvalParams {
    int16_t lr_bal_opening;
    int16_t lr_bal_endgame;
    int16_t tempo_opening;
    int16_t tempo_endgame;
    int16_t men_opening;
    int16_t men_endgame;
    int16_t kings_opening;
    int16_t kings_endgame;
    int16_t has_kings_opening;
    int16_t has_kings_endgame;
};

struct Weights {
    std::array<PatternTable, PATTERN_TABLES> patterns;
    EvalParams params;
};

constexpr size_t WEIGHTS_BYTES = 8503076;
static_assert(sizeof(PatternTable) == 2125764 && sizeof(EvalParams) == 20);
static_assert(offsetof(Weights, params) == 8503056 && sizeof(Weights) == WEIGHTS_BYTES);
static_assert(std::endian::native == std::endian::little, "the weights file is read as it lies in memory");

constexpr char WEIGHTS_FILE[] = "weights.bin";

// The weights that `evaluate` uses: zero at the start of the program, and there until its end. Tools and
// tests may write it directly while nobody evaluates.
extern Weights& weights;

// Reads WEIGHTS_FILE of the current folder into the storage and builds the tables of the evaluation. Nothing
// is checked: what a short file lacks keeps its value, and what a long one has behind the end is not read. 0;
// 1 if the file cannot be opened, which is logged and changes nothing.
int load_weights();

// The same with a file of any path.
int load_weights_from(const std::string& path);

// Makes the storage what it would be after the start of a program whose weights file has these bytes.
void set_weights(std::span<const uint8_t> image);

// Puts the storage back to zero.
void clear_weights();

// Writes the record as a weights file, whole or not at all. 0, or 1 if it could not be written.
int write_weights(const std::string& path, const Weights& record);
