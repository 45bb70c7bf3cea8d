// Any bytes as a book file: it is refused, or every position that stands in it and its neighbours are
// answered with legal moves or not at all, and what was lent comes back as zeroes.
#include <stdlib.h>  // mkstemp

#include <algorithm>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "book/book_move.h"
#include "check.h"

namespace {

constexpr size_t MOST_SLOTS = 64;  // that are asked about

// A file of this process, gone with it.
struct BookPath {
    std::string path = "/tmp/tessarin-fuzz-book-XXXXXX";
    BookPath() {
        const int descriptor = mkstemp(path.data());
        FUZZ_CHECK(descriptor >= 0);
        std::fclose(fdopen(descriptor, "r"));
    }
    ~BookPath() { std::remove(path.c_str()); }
    BookPath(const BookPath&) = delete;
    BookPath& operator=(const BookPath&) = delete;
};

void ask(const Position& position, int mode) {
    MoveList list;
    generate_moves(position, list, position.side);
    // To the byte what is needed, so that a step beyond it is seen.
    std::vector<std::byte> memory(static_cast<size_t>(book_slots(opening_book)) * BOOK_MEMO_BYTES,
                                  std::byte{0x5a});
    std::vector<char> text(BOOK_TEXT_SIZE, '?');
    int index = -1, value = 0;
    const int answered = book_move(position, position.side, list, {mode, memory}, index, value, text.data());
    if (!answered) return;
    FUZZ_CHECK(index >= 0 && index < list.count);
    FUZZ_CHECK(std::abs(value) <= NO_LINE_VALUE);
    FUZZ_CHECK(std::memchr(text.data(), 0, text.size()));
    FUZZ_CHECK(std::all_of(memory.begin(), memory.end(), [](std::byte b) { return b == std::byte{0}; }));
}

void ask_about_slot(const uint8_t* bytes) {
    const BookSlot slot = read_book_slot(bytes);
    const BookEntry entry = unpack_book_info(slot.info);
    Position position{slot.black, slot.white, 0, entry.side, 0, nullptr};
    if (entry.king_set >= 0 && static_cast<size_t>(entry.king_set) < opening_book.king_sets.size())
        position.king = opening_book.king_sets[static_cast<size_t>(entry.king_set)];
    // The program asks about legal positions only.
    if (!is_legal_setup(position)) return;
    for (const int mode : {BOOK_ALL_KINDS, BOOK_GOOD_MOVES, BOOK_BEST_MOVES}) ask(position, mode);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const BookPath file;
    std::ofstream(file.path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    const int status = load_book_from(file.path);
    FUZZ_CHECK((status == 0) == engine_book.loaded);
    if (status != 0) return 0;
    for (const int mode : {BOOK_ALL_KINDS, BOOK_GOOD_MOVES, BOOK_BEST_MOVES}) ask(START_POSITION, mode);
    const std::vector<uint8_t>& slots = opening_book.slots;
    for (size_t i = 0; i < std::min(MOST_SLOTS, slots.size() / BOOK_SLOT_BYTES); ++i)
        ask_about_slot(slots.data() + i * BOOK_SLOT_BYTES);
    return 0;
}
