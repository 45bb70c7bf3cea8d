// Any text as a FEN: outputs stay untouched or become a position on the board that prints and reads back.
#include <cstring>
#include <string>

#include "check.h"
#include "records/fen.h"

namespace {

void check_print(const Position& position, int side) {
    char text[FEN_TEXT_SIZE];
    const int length = position_to_fen(position, side, text);
    FUZZ_CHECK(length >= 0 && static_cast<size_t>(length) == std::strlen(text));
    char tag[FEN_TAG_TEXT_SIZE];
    const int tag_length = fen_tag_text(position, side, tag, "\r\n");
    FUZZ_CHECK(tag_length > length && static_cast<size_t>(tag_length) == std::strlen(tag));
    if (position.black & position.white) return;  // such a text may be cut
    for (const char* const printed : {static_cast<const char*>(text), static_cast<const char*>(tag + 5)}) {
        Position read;
        int read_side = -1;
        FUZZ_CHECK(fen_to_position(printed, read, read_side) == 0);
        FUZZ_CHECK(read_side == side && same_pieces(read, position));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    Position position{1, 2, 3, 7, 5, nullptr};
    int side = 9;
    const int status = fen_to_position(text.c_str(), position, side);
    FUZZ_CHECK((status == 0) == begins_like_fen(text.c_str()));
    if (status != 0) {
        FUZZ_CHECK(status == 1 && side == 9);
        FUZZ_CHECK(position.black == 1 && position.white == 2 && position.king == 3);
        FUZZ_CHECK(position.side == 7 && position.reversible_plies == 5);
        return 0;
    }
    FUZZ_CHECK((side == WHITE || side == BLACK) && position.side == side);
    FUZZ_CHECK(((position.black | position.white) & ~BOARD_MASK) == 0);
    FUZZ_CHECK((position.king & ~(position.black | position.white)) == 0);
    FUZZ_CHECK(position.reversible_plies == 0 && position.previous == nullptr);
    check_print(position, side);
    return 0;
}
