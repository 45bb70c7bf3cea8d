// Eight bytes at a time: TABLES[k] holds what a byte does to the checksum when k more bytes follow it, so the
// bytes of a word are looked up independently of one another.
#include "base/checksum.h"

#include <array>
#include <bit>
#include <cstring>

namespace {

constexpr uint32_t REFLECTED_POLYNOMIAL = 0xedb88320;
constexpr size_t SLICES = 8;

using SliceTables = std::array<std::array<uint32_t, 256>, SLICES>;

constexpr SliceTables make_tables() {
    SliceTables tables{};
    for (uint32_t byte = 0; byte < 256; ++byte) {
        uint32_t crc = byte;
        for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? REFLECTED_POLYNOMIAL : 0);
        tables[0][byte] = crc;
    }
    for (size_t slice = 1; slice < SLICES; ++slice)
        for (size_t byte = 0; byte < 256; ++byte) {
            const uint32_t shorter = tables[slice - 1][byte];
            tables[slice][byte] = shorter >> 8 ^ tables[0][shorter & 0xff];
        }
    return tables;
}

constexpr SliceTables TABLES = make_tables();
static_assert(std::endian::native == std::endian::little);

uint32_t slice(uint32_t crc, uint64_t word) {
    word ^= crc;
    uint32_t result = 0;
    for (size_t i = 0; i < SLICES; ++i) result ^= TABLES[SLICES - 1 - i][word >> 8 * i & 0xff];
    return result;
}

}  // namespace

uint32_t crc32(const void* data, size_t bytes, uint32_t before) {
    const auto* next = static_cast<const unsigned char*>(data);
    uint32_t crc = ~before;
    for (; bytes >= SLICES; bytes -= SLICES, next += SLICES) {
        uint64_t word;
        std::memcpy(&word, next, sizeof word);
        crc = slice(crc, word);
    }
    for (; bytes > 0; --bytes, ++next) crc = crc >> 8 ^ TABLES[0][(crc ^ *next) & 0xff];
    return ~crc;
}
