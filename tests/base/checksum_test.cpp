#include "base/checksum.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

// One bit at a time, by the definition.
uint32_t slow_crc32(const std::vector<unsigned char>& data) {
    uint32_t crc = 0xffffffff;
    for (const unsigned char byte : data)
        for (int bit = 0; bit < 8; ++bit) {
            const bool out = ((crc ^ static_cast<uint32_t>(byte >> bit)) & 1) != 0;
            crc >>= 1;
            if (out) crc ^= 0xedb88320;
        }
    return ~crc;
}

uint32_t crc32_of(const std::string& text) { return crc32(text.data(), text.size()); }

}  // namespace

TEST(Checksum, KnownValues) {
    EXPECT_EQ(crc32_of(""), 0u);
    EXPECT_EQ(crc32_of("a"), 0xe8b7be43u);
    EXPECT_EQ(crc32_of("123456789"), 0xcbf43926u);
    EXPECT_EQ(crc32_of(std::string(32, '\0')), 0x190a55adu);
    EXPECT_EQ(crc32_of(std::string(32, '\xff')), 0xff6cab0bu);
}

TEST(Checksum, EqualsTheSlowVersionAtAnyLengthAndAlignment) {
    std::mt19937 random(1);
    std::vector<unsigned char> data(400);
    for (unsigned char& byte : data) byte = static_cast<unsigned char>(random());
    for (size_t start = 0; start < 9; ++start)
        for (size_t bytes = 0; start + bytes <= data.size(); bytes += bytes < 40 ? 1 : 37) {
            const auto first = data.begin() + static_cast<std::ptrdiff_t>(start);
            const std::vector<unsigned char> part(first, first + static_cast<std::ptrdiff_t>(bytes));
            ASSERT_EQ(crc32(data.data() + start, bytes), slow_crc32(part)) << start << " " << bytes;
        }
}

TEST(Checksum, PartsGiveTheChecksumOfTheWhole) {
    std::mt19937 random(2);
    std::string data(1000, ' ');
    for (char& byte : data) byte = static_cast<char>(random());
    const uint32_t whole = crc32_of(data);
    for (int i = 0; i < 1000; ++i) {
        const size_t first = random() % (data.size() + 1);
        const size_t second = first + random() % (data.size() - first + 1);
        uint32_t crc = crc32(data.data(), first);
        crc = crc32(data.data() + first, second - first, crc);
        ASSERT_EQ(crc32(data.data() + second, data.size() - second, crc), whole);
    }
}
