#include "book/book_format.h"

#include <cstring>

namespace {

constexpr uint32_t RAISED_BY = 5;

template <typename Number>
Number read_number(const uint8_t* bytes) {
    Number number = 0;
    for (size_t i = sizeof(Number); i-- > 0;) number = static_cast<Number>(number << 8 | bytes[i]);
    return number;
}

template <typename Number>
void write_number(Number number, uint8_t* bytes) {
    for (size_t i = 0; i < sizeof(Number); ++i) bytes[i] = static_cast<uint8_t>(number >> 8 * i);
}

constexpr uint8_t scrambled(uint32_t byte) {
    const uint32_t high = (byte / 16 + RAISED_BY) % 16;
    const uint32_t low = (byte % 16 + RAISED_BY) % 16;
    return static_cast<uint8_t>(high * 16 + low);
}

using ByteTable = std::array<uint8_t, 256>;

constexpr ByteTable scrambled_byte = [] {
    ByteTable table{};
    for (uint32_t byte = 0; byte < 256; ++byte) table[byte] = scrambled(byte);
    return table;
}();
constexpr ByteTable unscrambled_byte = [] {
    ByteTable table{};
    for (uint32_t byte = 0; byte < 256; ++byte) table[scrambled(byte)] = static_cast<uint8_t>(byte);
    return table;
}();

void translate(std::span<uint8_t> bytes, const ByteTable& table) {
    for (uint8_t& byte : bytes) byte = table[byte];
}

// The three words of the hash, stirred.
struct HashWords {
    uint32_t a, b, c;

    void take_away(uint32_t& x, uint32_t y, uint32_t z) { x -= y, x -= z; }

    void mix() {
        take_away(a, b, c), a ^= c >> 13;
        take_away(b, c, a), b ^= a << 8;
        take_away(c, a, b), c ^= b >> 13;
        take_away(a, b, c), a ^= c >> 12;
        take_away(b, c, a), b ^= a << 16;
        take_away(c, a, b), c ^= b >> 5;
        take_away(a, b, c), a ^= c >> 3;
        take_away(b, c, a), b ^= a << 10;
        take_away(c, a, b), c ^= b >> 15;
    }
};

constexpr uint32_t low_half(uint64_t set) { return static_cast<uint32_t>(set); }
constexpr uint32_t high_half(uint64_t set) { return static_cast<uint32_t>(set >> 32); }

// `bits` bits of the word from bit `first` on.
constexpr int32_t field(uint32_t info, int first, int bits) {
    return static_cast<int32_t>(info >> first & ((1u << bits) - 1));
}
constexpr uint32_t as_field(int32_t number, int first, int bits) {
    return (static_cast<uint32_t>(number) & ((1u << bits) - 1)) << first;
}
constexpr int32_t with_sign(int32_t twelve_bits) {
    return twelve_bits > MAX_BOOK_VALUE ? twelve_bits - 4096 : twelve_bits;
}

}  // namespace

uint64_t read_book_set(const uint8_t* bytes) { return read_number<uint64_t>(bytes); }
void write_book_set(uint64_t set, uint8_t* bytes) { write_number(set, bytes); }

BookHeader read_book_header(std::span<const uint8_t, BOOK_HEADER_BYTES> bytes) {
    BookHeader header;
    std::memcpy(header.version.data(), bytes.data(), header.version.size());
    header.positions = static_cast<int32_t>(read_number<uint32_t>(&bytes[16]));
    header.slots = static_cast<int32_t>(read_number<uint32_t>(&bytes[20]));
    header.max_probes = static_cast<int32_t>(read_number<uint32_t>(&bytes[24]));
    header.king_sets = static_cast<int32_t>(read_number<uint32_t>(&bytes[28]));
    return header;
}

void write_book_header(const BookHeader& header, std::span<uint8_t, BOOK_HEADER_BYTES> bytes) {
    std::memcpy(bytes.data(), header.version.data(), header.version.size());
    write_number(static_cast<uint32_t>(header.positions), &bytes[16]);
    write_number(static_cast<uint32_t>(header.slots), &bytes[20]);
    write_number(static_cast<uint32_t>(header.max_probes), &bytes[24]);
    write_number(static_cast<uint32_t>(header.king_sets), &bytes[28]);
}

BookSlot read_book_slot(const uint8_t* bytes) {
    return {read_number<uint32_t>(bytes), read_book_set(bytes + 4), read_book_set(bytes + 12)};
}

void write_book_slot(const BookSlot& slot, uint8_t* bytes) {
    write_number(slot.info, bytes);
    write_book_set(slot.black, bytes + 4);
    write_book_set(slot.white, bytes + 12);
}

BookEntry unpack_book_info(uint32_t info) {
    BookEntry entry;
    entry.side = field(info, 1, 1);
    entry.best = field(info, 2, 7);
    if (info & 1) {
        entry.king_set = field(info, 9, 11);
        entry.value = with_sign(field(info, 20, 12));
    } else {
        entry.second = field(info, 9, 7);
        entry.value = with_sign(field(info, 16, 12));
    }
    return entry;
}

uint32_t pack_book_info(const BookEntry& entry) {
    const uint32_t common = as_field(entry.side, 1, 1) | as_field(entry.best, 2, 7);
    if (entry.king_set >= 0)
        return 1 | common | as_field(entry.king_set, 9, 11) | as_field(entry.value, 20, 12);
    return common | as_field(entry.second, 9, 7) | as_field(entry.value, 16, 12);
}

void scramble_book(std::span<uint8_t> bytes) { translate(bytes, scrambled_byte); }
void unscramble_book(std::span<uint8_t> bytes) { translate(bytes, unscrambled_byte); }

// Bob Jenkins's lookup2 over the 24 bytes of the three sets: two whole rounds and nothing left over.
uint32_t book_hash(const Position& position, int side) {
    constexpr uint32_t GOLDEN_RATIO = 0x9e3779b9;
    constexpr uint32_t KEY_BYTES = 24;
    HashWords words{GOLDEN_RATIO, GOLDEN_RATIO, static_cast<uint32_t>(side)};
    words.a += low_half(position.black);
    words.b += high_half(position.black);
    words.c += low_half(position.white);
    words.mix();
    words.a += high_half(position.white);
    words.b += low_half(position.king);
    words.c += high_half(position.king);
    words.mix();
    words.c += KEY_BYTES;
    words.mix();
    return words.c;
}
