// The messages of DamExchange: the record that the program uses, the text that travels, and the way from one
// to the other. A text is a letter and fields of fixed width, in ASCII; on the wire a NUL ends it. Everything
// here is plain and re-entrant.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/board.h"

// Numbers of the program's own; none of them travels.
enum DxpMessageType : int32_t {
    DXP_NO_MESSAGE = 0,
    DXP_GAMEREQ = 1,
    DXP_GAMEACC = 2,
    DXP_MOVE = 3,
    DXP_GAMEEND = 4,
    DXP_CHAT = 5,
    DXP_BACKREQ = 6,
    DXP_BACKACC = 7,
    DXP_GAMEREQ_FISCHER =
        8,  // as DXP_GAMEREQ, with time and increment; between two copies of the program only
    DXP_CONNECTIONLOST = 100,  // not a message: the connection tells that it has ended
};

// The longest text that is taken, without its NUL.
constexpr size_t DXP_MAX_TEXT = 132;
// Room for any text, sent or received.
constexpr size_t DXP_TEXT_SIZE = 152;

constexpr size_t DXP_NAME_LENGTH = 32;
constexpr size_t DXP_CHAT_LENGTH = 126;
// As many as two digits can tell.
constexpr size_t DXP_MAX_JUMPED = 99;

// How a game ends, told by the side that sends it.
enum DxpReason : int16_t {
    DXP_REASON_UNKNOWN = 0,
    DXP_REASON_SENDER_LOSES = 1,
    DXP_REASON_DRAW = 2,
    DXP_REASON_SENDER_WINS = 3,
};

// Colours are 'W' and, for black, 'Z'. Squares are 'e' empty, 'w' and 'z' men, 'W' and 'Z' kings.
struct DxpGameRequest {
    int16_t version = 0;
    char name[DXP_NAME_LENGTH + 1] = "";  // without blanks at the end
    char follower_colour = '\0';
    double time = 0;       // minutes; seconds to begin with in DXP_GAMEREQ_FISCHER
    double increment = 0;  // seconds; DXP_GAMEREQ_FISCHER only
    int16_t moves = 0;     // DXP_GAMEREQ only
    char to_move = '\0';   // 'A' for the initial position, which has no squares
    std::array<char, SQUARES> squares{};
};

struct DxpAcceptance {
    char name[DXP_NAME_LENGTH + 1] = "";
    int16_t code = 0;  // 0 accepts
};

struct DxpMove {
    int16_t time = 0;
    int16_t from = 0;
    int16_t to = 0;
    int16_t jumped_count = 0;  // as the text tells it: anything from -9 to 99
    std::array<int16_t, DXP_MAX_JUMPED> jumped{};
};

struct DxpGameEnd {
    int16_t reason = 0;  // whatever its character is behind '0'; `game_end_reason` makes it one of four
    int16_t stop_code = 0;
};

struct DxpChat {
    char text[DXP_CHAT_LENGTH + 1] = "";
};

struct DxpBackRequest {
    int16_t move_number = 0;
    char colour = '\0';
};

struct DxpBackAcceptance {
    int16_t code = 0;  // 0 accepts
};

// One message: `type` tells which of the others is filled in.
struct DxpMessage {
    int32_t type = DXP_NO_MESSAGE;
    DxpGameRequest request;  // of both kinds
    DxpAcceptance acceptance;
    DxpMove move;
    DxpGameEnd game_end;
    DxpChat chat;
    DxpBackRequest back_request;
    DxpBackAcceptance back_acceptance;
};

// The type that a letter stands for; DXP_NO_MESSAGE for an unknown one.
int32_t dxp_type_of_letter(char letter);

// Writes the text of a message and a NUL into DXP_TEXT_SIZE bytes. Returns its length; 0 and an empty text
// for a type that has none. Each field fills its width exactly: what is printed longer is cut. Of the jumped
// squares as many are written as a text of DXP_MAX_TEXT bytes holds. A DXP_BACKREQ, which the program never
// sends, comes out as a DXP_BACKACC made of its move number.
size_t dxp_format_message(const DxpMessage& message, char* text);

// Reads a text, without its NUL, into a cleared record. Any bytes may come. A field that the text does not
// hold, or that holds no number, is left cleared. A text with an unknown letter leaves the record untouched.
void dxp_parse_message(std::string_view text, DxpMessage& message);

// The reason as one of the four; any other counts as DXP_REASON_UNKNOWN.
DxpReason game_end_reason(int16_t reason);
