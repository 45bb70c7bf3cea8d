// Any bytes as a message of the network play: they are read into a record without a trace of what stood there
// before, what is made of the record is a text within its bounds, and a text of the program's own comes back
// the same. A move, whatever it says, means a legal one.
#include <cmath>
#include <cstring>
#include <string>
#include <string_view>

#include "check.h"
#include "control/game_clock.h"
#include "core/board.h"
#include "dxp/messages.h"
#include "dxp/received_move.h"

namespace {

void check_bounds(const DxpMessage& message) {
    FUZZ_CHECK(std::memchr(message.request.name, '\0', sizeof message.request.name));
    FUZZ_CHECK(std::memchr(message.acceptance.name, '\0', sizeof message.acceptance.name));
    FUZZ_CHECK(std::memchr(message.chat.text, '\0', sizeof message.chat.text));
    FUZZ_CHECK(std::isfinite(message.request.time) && std::isfinite(message.request.increment));
    FUZZ_CHECK(message.move.jumped_count >= -9 && message.move.jumped_count <= 99);
    for (const int16_t square : message.move.jumped) FUZZ_CHECK(square >= -9 && square <= 99);
}

std::string formatted(const DxpMessage& message) {
    char text[DXP_TEXT_SIZE];
    const size_t length = dxp_format_message(message, text);
    FUZZ_CHECK(length <= DXP_MAX_TEXT && text[length] == '\0');
    return {text, length};
}

// The squares are those of the position; some of them hold both colours or nothing at all.
Position position_of(std::string_view bytes) {
    Position position{};
    for (size_t i = 0; i < SQUARES && i < bytes.size(); ++i) {
        const uint64_t mask = mask_of_square[i];
        const auto kind = static_cast<unsigned char>(bytes[i]) % 6;
        if (kind == 0 || kind == 1) position.white |= mask;
        if (kind == 2 || kind == 3) position.black |= mask;
        if (kind == 1 || kind == 3) position.king |= mask;
    }
    return position;
}

void check_move(const DxpMove& move, const Position& position, int side) {
    const MoveMatch match = match_received_move(move, position, side);
    FUZZ_CHECK(match.index < match.moves);
    if (match.moves == 0) return;
    MoveList list;
    FUZZ_CHECK(generate_moves(position, list, side) == match.moves);
    const int played = match.index < 0 ? 0 : match.index;
    FUZZ_CHECK(match.move == list[played]);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const size_t end = input.find('\0');
    const std::string_view text = input.substr(0, end);
    DxpMessage message;
    dxp_parse_message(text, message);
    const bool known = !text.empty() && dxp_type_of_letter(text[0]) != DXP_NO_MESSAGE;
    FUZZ_CHECK((message.type != DXP_NO_MESSAGE) == known);
    check_bounds(message);

    // Read over another record, the same comes out.
    DxpMessage other;
    std::memset(static_cast<void*>(&other), 0x33, sizeof other);
    dxp_parse_message(text, other);
    if (known) FUZZ_CHECK(formatted(other) == formatted(message));

    // What the program has written it reads back as it was; a request to go back is never written.
    const std::string written = formatted(message);
    DxpMessage back;
    dxp_parse_message(std::string_view(written).substr(0, written.find('\0')), back);
    if (known && message.type != DXP_BACKREQ) {
        FUZZ_CHECK(back.type == message.type);
        if (message.type == DXP_CHAT) FUZZ_CHECK(formatted(back) == written);
    }
    const Position position = position_of(end == std::string_view::npos ? text : input.substr(end + 1));
    if (is_legal_setup(position))
        for (const int side : {BLACK, WHITE}) check_move(message.move, position, side);
    return 0;
}
