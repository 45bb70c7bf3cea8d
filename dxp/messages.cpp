#include "dxp/messages.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <system_error>

namespace {

// Widths and places of fields, from the letter on.
constexpr size_t NAME_AT = 3;
constexpr size_t FOLLOWER_COLOUR_AT = 35;
constexpr size_t TIME_AT = 36;
constexpr size_t TIME_WIDTH = 3;
constexpr size_t MOVES_AT = 39;
constexpr size_t POSITION_AT = 42;
constexpr size_t FISCHER_WIDTH = 6;
constexpr size_t INCREMENT_AT = 42;
constexpr size_t FISCHER_POSITION_AT = 48;
constexpr size_t ACCEPTED_NAME_AT = 1;
constexpr size_t ACCEPTANCE_CODE_AT = 33;
constexpr size_t JUMPED_AT = 11;
// As many captured squares as the longest text holds.
constexpr size_t MAX_WRITTEN_JUMPED = (DXP_MAX_TEXT - JUMPED_AT) / 2;

struct LetterRow {
    char letter;
    int32_t type;
};
constexpr LetterRow LETTERS[] = {
    {'R', DXP_GAMEREQ}, {'A', DXP_GAMEACC}, {'M', DXP_MOVE},    {'E', DXP_GAMEEND},
    {'C', DXP_CHAT},    {'B', DXP_BACKREQ}, {'K', DXP_BACKACC}, {'F', DXP_GAMEREQ_FISCHER},
};

// Writes fields one behind the other.
struct Writer {
    char* text;
    size_t length = 0;

    void put(char c) { text[length++] = c; }

    // What was printed, cut to the width.
    void put_cut(std::string_view printed, size_t width) {
        for (const char c : printed.substr(0, width)) put(c);
    }

    // At least `width` digits by zeros in front, and at most by cutting.
    void put_number(int32_t number, size_t width) {
        char digits[16];
        const uint32_t size = number < 0 ? 0u - static_cast<uint32_t>(number) : static_cast<uint32_t>(number);
        const auto end = std::to_chars(digits, digits + sizeof digits, size).ptr;
        char printed[32];
        size_t count = 0;
        if (number < 0) printed[count++] = '-';
        for (size_t i = static_cast<size_t>(end - digits) + count; i < width; ++i) printed[count++] = '0';
        std::memcpy(printed + count, digits, static_cast<size_t>(end - digits));
        put_cut({printed, count + static_cast<size_t>(end - digits)}, width);
    }

    // With so many decimals; blanks in front, cut behind. Not by the user's locale, which may have a comma.
    void put_decimal(double number, size_t width, int decimals) {
        char printed[400];
        const auto end =
            std::to_chars(printed, printed + sizeof printed, number, std::chars_format::fixed, decimals).ptr;
        const auto count = static_cast<size_t>(end - printed);
        for (size_t i = count; i < width; ++i) put(' ');
        put_cut({printed, count}, width);
    }

    void put_name(const char* name) {
        const size_t count = strnlen(name, DXP_NAME_LENGTH);
        put_cut({name, count}, DXP_NAME_LENGTH);
        for (size_t i = count; i < DXP_NAME_LENGTH; ++i) put(' ');
    }

    // A whole number of minutes has no decimals.
    void put_minutes(double minutes) {
        const bool whole = minutes - std::floor(minutes) < 0.01;
        if (whole && std::fabs(minutes) <= std::numeric_limits<int32_t>::max())
            put_number(static_cast<int32_t>(minutes), TIME_WIDTH);
        else
            put_decimal(minutes, TIME_WIDTH, 1);
    }

    // As many decimals as six characters hold.
    void put_six_wide(double number) {
        int decimals = 5;
        for (double limit = 1; decimals > 0 && number >= limit; limit *= 10) --decimals;
        put_decimal(number, FISCHER_WIDTH, decimals);
    }

    void put_position(const DxpGameRequest& request) {
        if (request.to_move == 'A') return put('A');
        put('B');
        put(request.to_move);
        for (const char square : request.squares) put(square);
    }

    void put_request(const DxpGameRequest& request, bool fischer) {
        put(fischer ? 'F' : 'R');
        put_number(request.version, 2);
        put_name(request.name);
        put(request.follower_colour);
        if (fischer) {
            put_six_wide(request.time);
            put_six_wide(request.increment);
        } else {
            put_minutes(request.time);
            put_number(request.moves, 3);
        }
        put_position(request);
    }

    void put_move(const DxpMove& move) {
        put('M');
        put_number(move.time, 4);
        put_number(move.from, 2);
        put_number(move.to, 2);
        const size_t count =
            std::min(static_cast<size_t>(std::max<int16_t>(move.jumped_count, 0)), MAX_WRITTEN_JUMPED);
        put_number(static_cast<int32_t>(count), 2);
        for (size_t i = 0; i < count; ++i) put_number(move.jumped[i], 2);
    }
};

// Reads fields by their places. A field beyond the text's end is empty.
struct Reader {
    std::string_view text;

    std::string_view field(size_t at, size_t width) const {
        return text.substr(std::min(at, text.size()), width);
    }

    void read_char(size_t at, char& out) const {
        if (at < text.size()) out = text[at];
    }

    // The characters from the place on that can begin a number, without blanks and a plus sign in front.
    std::string_view number_field(size_t at, size_t width) const {
        std::string_view rest = field(at, width);
        const size_t blanks = rest.find_first_not_of(" \t\n\v\f\r");
        rest.remove_prefix(std::min(blanks, rest.size()));
        if (rest.size() > 1 && rest[0] == '+' && rest[1] != '-') rest.remove_prefix(1);
        return rest;
    }

    // What is too large for the field is brought into its range.
    void read_number(size_t at, size_t width, int16_t& out) const {
        const std::string_view digits = number_field(at, width);
        int32_t number = 0;
        const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (result.ec == std::errc::invalid_argument) return;
        constexpr int32_t LOW = std::numeric_limits<int16_t>::min();
        constexpr int32_t HIGH = std::numeric_limits<int16_t>::max();
        if (result.ec == std::errc::result_out_of_range) number = digits[0] == '-' ? LOW : HIGH;
        out = static_cast<int16_t>(std::clamp(number, LOW, HIGH));
    }

    // Words for what is no number are none.
    void read_decimal(size_t at, size_t width, double& out) const {
        const std::string_view digits = number_field(at, width);
        double number = 0;
        const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (result.ec == std::errc() && std::isfinite(number)) out = number;
    }

    void read_name(size_t at, char (&name)[DXP_NAME_LENGTH + 1]) const {
        std::string_view read = field(at, DXP_NAME_LENGTH);
        read = read.substr(0, read.find_last_not_of(' ') + 1);
        std::memcpy(name, read.data(), read.size());
        name[read.size()] = '\0';
    }

    void read_position(size_t at, DxpGameRequest& request) const {
        if (field(at, 1) == "A") {
            request.to_move = 'A';
            return;
        }
        read_char(at + 1, request.to_move);
        const std::string_view squares = field(at + 2, SQUARES);
        std::copy(squares.begin(), squares.end(), request.squares.begin());
    }

    void read_request(DxpGameRequest& request, bool fischer) const {
        read_number(1, text.size(), request.version);
        read_name(NAME_AT, request.name);
        read_char(FOLLOWER_COLOUR_AT, request.follower_colour);
        if (fischer) {
            read_decimal(TIME_AT, FISCHER_WIDTH, request.time);
            read_decimal(INCREMENT_AT, FISCHER_WIDTH, request.increment);
            read_position(FISCHER_POSITION_AT, request);
        } else {
            read_decimal(TIME_AT, TIME_WIDTH, request.time);
            read_number(MOVES_AT, 3, request.moves);
            read_position(POSITION_AT, request);
        }
    }

    void read_move(DxpMove& move) const {
        read_number(1, 4, move.time);
        read_number(5, 2, move.from);
        read_number(7, 2, move.to);
        read_number(9, 2, move.jumped_count);
        const size_t count = static_cast<size_t>(std::max<int16_t>(move.jumped_count, 0));
        for (size_t i = 0; i < count; ++i) read_number(JUMPED_AT + 2 * i, 2, move.jumped[i]);
    }

    void read_digit(size_t at, int16_t& out) const {
        if (at < text.size()) out = static_cast<int16_t>(text[at] - '0');
    }

    void read_chat(DxpChat& chat) const {
        const std::string_view read = field(1, DXP_CHAT_LENGTH);
        std::memcpy(chat.text, read.data(), read.size());
        chat.text[read.size()] = '\0';
    }
};

}  // namespace

int32_t dxp_type_of_letter(char letter) {
    for (const LetterRow& row : LETTERS)
        if (row.letter == letter) return row.type;
    return DXP_NO_MESSAGE;
}

size_t dxp_format_message(const DxpMessage& message, char* text) {
    Writer out{text};
    switch (message.type) {
        case DXP_GAMEREQ:
        case DXP_GAMEREQ_FISCHER:
            out.put_request(message.request, message.type == DXP_GAMEREQ_FISCHER);
            break;
        case DXP_GAMEACC:
            out.put('A');
            out.put_name(message.acceptance.name);
            out.put_number(message.acceptance.code, 1);
            break;
        case DXP_MOVE:
            out.put_move(message.move);
            break;
        case DXP_GAMEEND:
            out.put('E');
            out.put_number(message.game_end.reason, 1);
            out.put_number(message.game_end.stop_code, 1);
            break;
        case DXP_CHAT:
            out.put('C');
            out.put_cut({message.chat.text, strnlen(message.chat.text, DXP_CHAT_LENGTH)}, DXP_CHAT_LENGTH);
            break;
        case DXP_BACKREQ:
            out.put('K');
            out.put_number(message.back_request.move_number, 1);
            break;
        case DXP_BACKACC:
            out.put('K');
            out.put_number(message.back_acceptance.code, 1);
            break;
        default:
            break;
    }
    text[out.length] = '\0';
    return out.length;
}

void dxp_parse_message(std::string_view text, DxpMessage& message) {
    const int32_t type = text.empty() ? int32_t{DXP_NO_MESSAGE} : dxp_type_of_letter(text[0]);
    if (type == DXP_NO_MESSAGE) return;
    const Reader in{text};
    message = DxpMessage{};
    message.type = type;
    switch (type) {
        case DXP_GAMEREQ:
        case DXP_GAMEREQ_FISCHER:
            return in.read_request(message.request, type == DXP_GAMEREQ_FISCHER);
        case DXP_GAMEACC:
            in.read_name(ACCEPTED_NAME_AT, message.acceptance.name);
            return in.read_number(ACCEPTANCE_CODE_AT, text.size(), message.acceptance.code);
        case DXP_MOVE:
            return in.read_move(message.move);
        case DXP_GAMEEND:
            in.read_digit(1, message.game_end.reason);
            return in.read_digit(2, message.game_end.stop_code);
        case DXP_CHAT:
            return in.read_chat(message.chat);
        case DXP_BACKREQ:
            in.read_number(1, text.size(), message.back_request.move_number);
            return in.read_char(4, message.back_request.colour);
        default:
            return in.read_number(1, text.size(), message.back_acceptance.code);
    }
}

DxpReason game_end_reason(int16_t reason) {
    return reason >= DXP_REASON_UNKNOWN && reason <= DXP_REASON_SENDER_WINS ? static_cast<DxpReason>(reason)
                                                                            : DXP_REASON_UNKNOWN;
}
