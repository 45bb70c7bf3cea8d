// What is kept about the current game beside its moves.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// Room for a header text of up to 79 characters.
constexpr size_t HEADER_TEXT_SIZE = 80;

constexpr int32_t RESULT_UNKNOWN = 0;
constexpr int32_t RESULT_WHITE_WINS = 1;
constexpr int32_t RESULT_BLACK_WINS = 2;
constexpr int32_t RESULT_DRAW = 3;

// The texts are NUL-terminated and without double quotes when they come from a file.
struct GameHeaders {
    std::array<char, HEADER_TEXT_SIZE> event{};
    std::array<char, HEADER_TEXT_SIZE> date{};
    std::array<char, HEADER_TEXT_SIZE> white{};
    std::array<char, HEADER_TEXT_SIZE> black{};
    int32_t result = RESULT_UNKNOWN;
};

// The result as it is printed, in the scoring of two points a game.
const char* result_string(int32_t code);

// The result code of a header value with its double quotes; both scorings are read. RESULT_UNKNOWN for
// anything else.
int32_t pdn_result_code(const char* quoted_value);

// Takes one header of a game over into `headers`: keys in any case, values without their double quotes, cut
// to what there is room for. Keys other than Event, Date, White, Black and Result are dropped: false.
bool set_game_header(GameHeaders& headers, const char* key, const char* quoted_value);
