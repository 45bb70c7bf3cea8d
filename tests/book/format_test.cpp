// The bytes of a book: header, slots, scrambling and hash.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "book/book_format.h"

namespace {

// The hash over any number of bytes, byte by byte, as its author tells it.
uint32_t slow_hash(const std::vector<uint8_t>& key, uint32_t start) {
    uint32_t a = 0x9e3779b9, b = 0x9e3779b9, c = start;
    const auto mix = [&] {
        a -= b;
        a -= c;
        a ^= c >> 13;
        b -= c;
        b -= a;
        b ^= a << 8;
        c -= a;
        c -= b;
        c ^= b >> 13;
        a -= b;
        a -= c;
        a ^= c >> 12;
        b -= c;
        b -= a;
        b ^= a << 16;
        c -= a;
        c -= b;
        c ^= b >> 5;
        a -= b;
        a -= c;
        a ^= c >> 3;
        b -= c;
        b -= a;
        b ^= a << 10;
        c -= a;
        c -= b;
        c ^= b >> 15;
    };
    size_t at = 0;
    for (; key.size() - at >= 12; at += 12) {
        for (size_t i = 0; i < 4; ++i) {
            a += static_cast<uint32_t>(key[at + i]) << 8 * i;
            b += static_cast<uint32_t>(key[at + 4 + i]) << 8 * i;
            c += static_cast<uint32_t>(key[at + 8 + i]) << 8 * i;
        }
        mix();
    }
    EXPECT_EQ(at, key.size());
    c += static_cast<uint32_t>(key.size());
    mix();
    return c;
}

std::vector<uint8_t> key_bytes(const Position& position) {
    std::vector<uint8_t> bytes(24);
    write_book_set(position.black, &bytes[0]);
    write_book_set(position.white, &bytes[8]);
    write_book_set(position.king, &bytes[16]);
    return bytes;
}

}  // namespace

TEST(BookFormat, HashesThePositionWithTheSide) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 10000; ++i) {
        const Position position{random(), random(), random(), 0, 0, nullptr};
        EXPECT_EQ(book_hash(position, BLACK), slow_hash(key_bytes(position), 0));
        EXPECT_EQ(book_hash(position, WHITE), slow_hash(key_bytes(position), 1));
        EXPECT_NE(book_hash(position, WHITE), book_hash(position, BLACK));
    }
}

TEST(BookFormat, RaisesBothHalvesOfEachByteByFive) {
    std::vector<uint8_t> bytes = {0x00, 0x0a, 0x0b, 0xa0, 0xb0, 0xff, 0x12, 0xbf};
    scramble_book(bytes);
    EXPECT_EQ(bytes, (std::vector<uint8_t>{0x55, 0x5f, 0x50, 0xf5, 0x05, 0x44, 0x67, 0x04}));
    unscramble_book(bytes);
    EXPECT_EQ(bytes, (std::vector<uint8_t>{0x00, 0x0a, 0x0b, 0xa0, 0xb0, 0xff, 0x12, 0xbf}));
    std::vector<uint8_t> all(256);
    for (size_t i = 0; i < all.size(); ++i) all[i] = static_cast<uint8_t>(i);
    std::vector<uint8_t> turned = all;
    scramble_book(turned);
    for (size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(turned[i] & 15, (i + 5) % 16);
        EXPECT_EQ(turned[i] >> 4, (i / 16 + 5) % 16);
    }
    unscramble_book(turned);
    EXPECT_EQ(turned, all);
}

TEST(BookFormat, HeaderStandsAtItsOffsets) {
    BookHeader header;
    header.version = {'3', '.', '0', '0'};
    header.positions = 0x01020304;
    header.slots = 0x11121314;
    header.max_probes = 0x21222324;
    header.king_sets = -2;
    std::array<uint8_t, BOOK_HEADER_BYTES> bytes{};
    write_book_header(header, bytes);
    const std::array<uint8_t, BOOK_HEADER_BYTES> expected = {
        '3',  '.',  '0',  '0',  0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,
        0x04, 0x03, 0x02, 0x01, 0x14, 0x13, 0x12, 0x11, 0x24, 0x23, 0x22, 0x21, 0xfe, 0xff, 0xff, 0xff};
    EXPECT_EQ(bytes, expected);
    const BookHeader read = read_book_header(bytes);
    EXPECT_EQ(read.version, header.version);
    EXPECT_EQ(read.positions, header.positions);
    EXPECT_EQ(read.slots, header.slots);
    EXPECT_EQ(read.max_probes, header.max_probes);
    EXPECT_EQ(read.king_sets, -2);
}

TEST(BookFormat, SlotStandsAtItsOffsets) {
    std::array<uint8_t, BOOK_SLOT_BYTES> bytes{};
    write_book_slot({0x04030201, 0x0807060504030211, 0x1817161514131221}, bytes.data());
    const std::array<uint8_t, BOOK_SLOT_BYTES> expected = {
        1, 2, 3, 4, 0x11, 2, 3, 4, 5, 6, 7, 8, 0x21, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18};
    EXPECT_EQ(bytes, expected);
    const BookSlot slot = read_book_slot(bytes.data());
    EXPECT_EQ(slot.info, 0x04030201u);
    EXPECT_EQ(slot.black, 0x0807060504030211u);
    EXPECT_EQ(slot.white, 0x1817161514131221u);
}

TEST(BookFormat, InfoOfAPositionWithoutKings) {
    const uint32_t info = pack_book_info({WHITE, 3, 17, -5, -1});
    EXPECT_EQ(info, 2u | 3u << 2 | 17u << 9 | 0xffbu << 16);
    for (const int32_t side : {BLACK, WHITE})
        for (const int32_t value : {-2048, -1, 0, 1, 2047})
            for (const int32_t index : {0, 1, 63, 64, 126, 127}) {
                const BookEntry entry =
                    unpack_book_info(pack_book_info({side, index, 127 - index, value, -1}));
                EXPECT_EQ(entry.side, side);
                EXPECT_EQ(entry.best, index);
                EXPECT_EQ(entry.second, 127 - index);
                EXPECT_EQ(entry.value, value);
                EXPECT_EQ(entry.king_set, -1);
            }
    // The bits above the value say nothing.
    EXPECT_EQ(unpack_book_info(info | 0xf0000000).value, -5);
}

TEST(BookFormat, InfoOfAPositionWithKingsHasNoSecondMove) {
    const uint32_t info = pack_book_info({WHITE, 3, 17, -5, 1025});
    EXPECT_EQ(info, 3u | 3u << 2 | 1025u << 9 | 0xffbu << 20);
    for (const int32_t value : {-2048, -1, 0, 1, 2047})
        for (const int32_t king_set : {0, 1, 1024, 2047}) {
            const BookEntry entry = unpack_book_info(pack_book_info({BLACK, 100, 5, value, king_set}));
            EXPECT_EQ(entry.side, BLACK);
            EXPECT_EQ(entry.best, 100);
            EXPECT_EQ(entry.second, NO_BOOK_MOVE);
            EXPECT_EQ(entry.value, value);
            EXPECT_EQ(entry.king_set, king_set);
        }
}
