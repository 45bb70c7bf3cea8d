#include "book/opening_book.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

#include "base/clock.h"
#include "base/files.h"
#include "base/log.h"
#include "book/book_move.h"
#include "book/engine_book.h"

OpeningBook opening_book;

namespace {

constexpr uint32_t SEED_BITS = 0xaaa;  // set in every seed, so that none is zero

const uint8_t* slot_bytes(const OpeningBook& book, int64_t slot) {
    return book.slots.data() + static_cast<size_t>(slot) * BOOK_SLOT_BYTES;
}

// The text may fill its field to the end.
std::string version_text(const BookHeader& header) {
    return {header.version.data(), strnlen(header.version.data(), header.version.size())};
}

int refuse() {
    engine_book.loaded = false;
    return 1;
}

int refuse_damaged(const std::string& path) {
    log_printf("Open book file %s is damaged and not used\n", path.c_str());
    return refuse();
}

int64_t slot_array_bytes(const BookHeader& header) {
    return int64_t{std::max(header.slots, 0)} * static_cast<int64_t>(BOOK_SLOT_BYTES);
}

// The file is as long as its header says, or longer.
bool is_whole(const BookHeader& header, int64_t bytes) {
    if (header.king_sets < 0) return false;
    const int64_t king_bytes = int64_t{header.king_sets} * static_cast<int64_t>(BOOK_KING_SET_BYTES);
    return bytes >= static_cast<int64_t>(BOOK_HEADER_BYTES) + king_bytes + slot_array_bytes(header);
}

bool read_bytes(std::FILE* file, std::vector<uint8_t>& bytes, size_t count) {
    bytes.resize(count);
    if (std::fread(bytes.data(), 1, count, file) != count) return false;
    unscramble_book(bytes);
    return true;
}

bool read_arrays(std::FILE* file, OpeningBook& book) {
    std::vector<uint8_t> bytes;
    const auto king_sets = static_cast<size_t>(book.header.king_sets);
    if (!read_bytes(file, bytes, king_sets * BOOK_KING_SET_BYTES)) return false;
    book.king_sets.resize(king_sets);
    for (size_t i = 0; i < king_sets; ++i)
        book.king_sets[i] = read_book_set(bytes.data() + i * BOOK_KING_SET_BYTES);
    return read_bytes(file, book.slots, static_cast<size_t>(slot_array_bytes(book.header)));
}

}  // namespace

int load_book() { return load_book_from(BOOK_FILE); }

int load_book_from(const std::string& path) {
    const OpenFile file(std::fopen(path.c_str(), "rb"));
    if (!file) return 1;
    std::array<uint8_t, BOOK_HEADER_BYTES> header_bytes{};
    if (std::fread(header_bytes.data(), 1, header_bytes.size(), file.get()) != header_bytes.size())
        return refuse_damaged(path);
    OpeningBook book;
    book.header = read_book_header(header_bytes);
    const std::string version = version_text(book.header);
    if (version < BOOK_VERSION) {
        log_text("Old version of Tessarin.odb incompatible with this engine\n");
        return refuse();
    }
    if (!is_whole(book.header, file_size(path))) return refuse_damaged(path);
    try {
        if (!read_arrays(file.get(), book)) return refuse_damaged(path);
    } catch (const std::bad_alloc&) {
        log_printf("There is no memory for the open book file %s\n", path.c_str());
        return refuse();
    }
    book.file = path;
    seed_book_random(book.random, static_cast<uint32_t>(clock_ms()) | SEED_BITS);
    opening_book = std::move(book);
    engine_book = {true, book_move};
    log_printf("Loading open book file %s, version %s, %d positions read\n", path.c_str(), version.c_str(),
               opening_book.header.positions);
    return 0;
}

int64_t book_slots(const OpeningBook& book) {
    return static_cast<int64_t>(book.slots.size() / BOOK_SLOT_BYTES);
}

BookEntry book_entry(const OpeningBook& book, int64_t slot) {
    return unpack_book_info(read_book_slot(slot_bytes(book, slot)).info);
}

int64_t book_probe(const OpeningBook& book, const Position& position, int side) {
    const int64_t slots = book_slots(book);
    if (slots < 1) return -1;
    // Looking further than once around finds nothing new.
    const int64_t probes = std::min<int64_t>(book.header.max_probes, slots);
    int64_t number = book_hash(position, side) % slots;
    for (int64_t i = 0; i < probes; ++i, ++number) {
        if (number >= slots) number -= slots;
        const BookSlot slot = read_book_slot(slot_bytes(book, number));
        if (slot.black == 0) return -1;
        if (slot.black != position.black || slot.white != position.white) continue;
        const BookEntry entry = unpack_book_info(slot.info);
        if (entry.side != side || (entry.king_set >= 0) != (position.king != 0)) continue;
        if (entry.king_set < 0) return number;
        const auto king_set = static_cast<size_t>(entry.king_set);
        if (king_set < book.king_sets.size() && book.king_sets[king_set] == position.king) return number;
    }
    return -1;
}
