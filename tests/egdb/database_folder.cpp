#include "tests/egdb/database_folder.h"

#include <array>
#include <filesystem>
#include <fstream>

#include "base/checksum.h"

std::string database_log;

void keep_log(const char* text) { database_log += text; }

std::string shipped_database() { return std::string(PROJECT_FOLDER) + "/data/wld_database/"; }
std::string shipped_distances() { return std::string(PROJECT_FOLDER) + "/data/mtc_database/"; }

DatabaseFolder::DatabaseFolder() {
    for (const auto& entry : std::filesystem::directory_iterator(shipped_database()))
        std::filesystem::copy_file(entry.path(), path + entry.path().filename().string());
}

void DatabaseFolder::remove(const std::string& name) const { std::filesystem::remove(file(name)); }

void DatabaseFolder::write(const std::string& name, const std::string& bytes) const {
    std::ofstream(file(name), std::ios::binary) << bytes;
}

std::string DatabaseFolder::read(const std::string& name) const { return content_of(file(name)); }

std::string with_crc(const std::string& text, uint32_t crc) {
    // The checksum is linear: each of the 32 bits behind the text changes it by a pattern of its own.
    const auto crc_with = [&](uint32_t tail) {
        const std::array<uint8_t, 4> bytes{static_cast<uint8_t>(tail), static_cast<uint8_t>(tail >> 8),
                                           static_cast<uint8_t>(tail >> 16),
                                           static_cast<uint8_t>(tail >> 24)};
        return crc32(bytes.data(), bytes.size(), crc32(text.data(), text.size()));
    };
    const uint32_t plain = crc_with(0);
    struct Row {
        uint32_t change, bits;
    };
    std::array<Row, 32> rows;
    for (uint32_t i = 0; i < 32; ++i) rows[i] = {crc_with(1u << i) ^ plain, 1u << i};
    uint32_t wanted = crc ^ plain, tail = 0;
    for (uint32_t bit = 0; bit < 32; ++bit) {
        size_t pivot = bit;
        while (pivot < 32 && !(rows[pivot].change >> bit & 1)) ++pivot;
        if (pivot == 32) continue;
        std::swap(rows[bit], rows[pivot]);
        for (size_t i = 0; i < 32; ++i) {
            if (i == bit || !(rows[i].change >> bit & 1)) continue;
            rows[i].change ^= rows[bit].change;
            rows[i].bits ^= rows[bit].bits;
        }
    }
    for (uint32_t bit = 0; bit < 32; ++bit)
        if (wanted >> bit & 1) tail ^= rows[bit].bits;
    std::string result = text;
    for (int i = 0; i < 4; ++i) result += static_cast<char>(tail >> 8 * i & 0xff);
    EXPECT_EQ(crc32(result.data(), result.size()), crc);
    return result;
}
