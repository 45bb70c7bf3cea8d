#include "tests/egdb/database_folder.h"

#include <array>
#include <filesystem>
#include <fstream>

#include "base/checksum.h"
#include "egdb/block_cache.h"
#include "egdb/index_file.h"

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

std::unique_ptr<EgdbDatabase> database_by_blocks(EgdbType type, const std::string& folder, int pieces,
                                                 int32_t blocks) {
    auto database = std::make_unique<EgdbDatabase>();
    database_log.clear();
    database->type = type;
    database->folder = folder;
    database->log = keep_log;
    database->cprsubdatabase = std::make_unique<Cprsubdatabase>();
    EgdbFileList list;
    make_file_list(type, pieces, -1, list);
    int64_t memory = 0;
    for (int32_t i = 0; i < list.count && list.names[static_cast<size_t>(i)].pieces <= pieces; ++i) {
        const EgdbFileName& name = list.names[static_cast<size_t>(i)];
        DbFile& file = database->files[static_cast<size_t>(database->file_count++)];
        file.name = name.text;
        file.pieces = static_cast<uint8_t>(name.pieces);
        EXPECT_EQ(read_index_file(*database, file, memory), 0) << database_log;
        EXPECT_EQ(open_for_blocks(*database, file, memory), 0) << database_log;
    }
    EXPECT_EQ(allocate_cache(*database, blocks), 0);
    return database;
}

std::string with_crc(const std::string& text, uint32_t crc) {
    constexpr size_t BLANKS = 64;
    std::string whole = text + std::string(BLANKS, ' ');
    const auto sum = [&] { return crc32(whole.data(), whole.size()); };
    const uint32_t plain = sum();
    // The checksum is linear: what each tabulator in place of a blank changes, brought to a triangle.
    std::array<std::pair<uint32_t, uint64_t>, 32> rows{};
    const auto reduce = [&](uint32_t change, uint64_t set, bool add) {
        for (size_t bit = 0; bit < 32; ++bit) {
            if (!(change >> bit & 1)) continue;
            if (rows[bit].second == 0) {
                if (add) rows[bit] = {change, set};
                return uint64_t{0};
            }
            change ^= rows[bit].first;
            set ^= rows[bit].second;
        }
        return set;
    };
    for (size_t i = 0; i < BLANKS; ++i) {
        whole[text.size() + i] = '\t';
        const uint32_t change = sum() ^ plain;
        whole[text.size() + i] = ' ';
        reduce(change, uint64_t{1} << i, true);
    }
    const uint64_t chosen = reduce(crc ^ plain, 0, false);
    for (size_t i = 0; i < BLANKS; ++i)
        if (chosen >> i & 1) whole[text.size() + i] = '\t';
    EXPECT_EQ(sum(), crc);
    return whole;
}
