// Which database a folder holds.
#include "egdb/identify.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <random>

#include "base/file_calls.h"
#include "egdb/file_crc.h"
#include "tests/egdb/database_folder.h"

namespace {

constexpr int TOLD_ROWS = 32;
constexpr int32_t UNTOUCHED = -77;

struct Answer {
    int status = 0;
    EgdbType type = static_cast<EgdbType>(UNTOUCHED);
    int32_t pieces = UNTOUCHED;
};

Answer identify(const std::string& folder) {
    Answer answer;
    answer.status = identify_egdb(folder, answer.type, answer.pieces);
    return answer;
}

void expect_found(const std::string& folder, EgdbType type, int32_t pieces) {
    const Answer answer = identify(folder);
    EXPECT_EQ(answer.status, 0);
    EXPECT_EQ(answer.type, type);
    EXPECT_EQ(answer.pieces, pieces);
}

void expect_none(const std::string& folder) {
    const Answer answer = identify(folder);
    EXPECT_EQ(answer.status, 1);
    EXPECT_EQ(answer.type, static_cast<EgdbType>(UNTOUCHED));
    EXPECT_EQ(answer.pieces, UNTOUCHED);
}

// A folder with one file for each of the rows; of two rows of one name the last one stands.
struct Rows : ScratchFolder {
    void add(const EgdbIdentityRow& row) const {
        std::ofstream(file(row.file), std::ios::binary) << with_crc(std::string("row ") + row.file, row.crc);
    }
};

// The row that decides, found by going through all of them.
const EgdbIdentityRow& best_of(const std::vector<int>& rows) {
    const EgdbIdentityRow* best = nullptr;
    for (const int r : rows) {
        const EgdbIdentityRow& row = egdb_identities[static_cast<size_t>(r)];
        if (!best || row.pieces > best->pieces) best = &row;
    }
    return *best;
}

TEST(Identify, EachRowAloneIsFound) {
    for (const EgdbIdentityRow& row : egdb_identities) {
        const Rows folder;
        folder.add(row);
        SCOPED_TRACE(row.file);
        expect_found(folder.path, row.type, row.pieces);
        expect_found(folder.path.substr(0, folder.path.size() - 1), row.type, row.pieces);
    }
}

TEST(Identify, TheRowsToldStandBeforeOurOwn) {
    EXPECT_EQ(egdb_identities[0].crc, 0xef847fc5u);
    EXPECT_EQ(egdb_identities[17].crc, 0xc5912d8fu);
    EXPECT_STREQ(egdb_identities[TOLD_ROWS - 1].file, "db2.idx");
    EXPECT_EQ(egdb_identities[TOLD_ROWS - 1].crc, 0xa833eebfu);
    for (size_t i = TOLD_ROWS; i < egdb_identities.size(); ++i) {
        const EgdbType type = egdb_identities[i].type;
        EXPECT_TRUE(type == EGDB_WLD || type == EGDB_MTC);
    }
    for (size_t i = 1; i < TOLD_ROWS; ++i)
        EXPECT_LE(egdb_identities[i].pieces, egdb_identities[i - 1].pieces);
}

TEST(Identify, MorePiecesDecideThenTheEarlierRow) {
    std::mt19937 random(4);
    for (int i = 0; i < 60; ++i) {
        const Rows folder;
        std::map<std::string, int> by_name;
        for (int n = 0; n < 4; ++n) {
            const int r = static_cast<int>(random() % egdb_identities.size());
            const EgdbIdentityRow& row = egdb_identities[static_cast<size_t>(r)];
            folder.add(row);
            by_name[row.file] = r;
        }
        std::vector<int> rows;
        for (const auto& [name, row] : by_name) rows.push_back(row);
        std::sort(rows.begin(), rows.end());
        const EgdbIdentityRow& best = best_of(rows);
        expect_found(folder.path, best.type, best.pieces);
    }
}

TEST(Identify, WhatComesWithTheProgramIsFound) {
    expect_found(shipped_database(), EGDB_WLD, 4);
    expect_found(shipped_distances(), EGDB_MTC, 4);
    const DatabaseFolder folder;
    folder.remove("db4.idx1");
    expect_found(folder.path, EGDB_WLD, 3);
    folder.remove("db3.idx1");
    expect_found(folder.path, EGDB_WLD, 2);
    folder.remove("db2.idx1");
    expect_none(folder.path);
}

TEST(Identify, AKnownNameWithAnotherContentIsNoDatabase) {
    const DatabaseFolder folder;
    folder.remove("db3.idx1");
    folder.remove("db2.idx1");
    std::string index = folder.read("db4.idx1");
    index[index.size() / 2] = static_cast<char>(index[index.size() / 2] ^ 1);
    folder.write("db4.idx1", index);
    expect_none(folder.path);
    const ScratchFolder other;
    std::ofstream(other.file("db9-5040.idx")) << "BASE5,0,4,0,0,b:+\n";
    expect_none(other.path);
}

TEST(Identify, FoldersThatHoldNothing) {
    const ScratchFolder empty;
    expect_none(empty.path);
    expect_none(empty.path + "not-there");
    expect_none("/dev/null");
    // What has the name but is no file is neither read nor waited for.
    std::filesystem::create_directory(empty.file("db4.idx1"));
    ASSERT_EQ(mkfifo(empty.file("db5.idx1").c_str(), 0600), 0);
    expect_none(empty.path);
}

TEST(Identify, TheEmptyFolderIsTheCurrentOne) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(shipped_database());
    expect_found("", EGDB_WLD, 4);
    expect_found(".", EGDB_WLD, 4);
    std::filesystem::current_path(before);
}

TEST(FileCrc, OverPiecesAndStopped) {
    const ScratchFolder folder;
    for (const size_t size :
         {size_t{0}, size_t{1}, size_t{16383}, size_t{16384}, size_t{16385}, size_t{70000}}) {
        std::string text(size, '\0');
        for (size_t i = 0; i < size; ++i) text[i] = static_cast<char>(i * 7 + i / 1000);
        std::ofstream(folder.file("a"), std::ios::binary) << text;
        InputFile file;
        ASSERT_TRUE(open_input(folder.file("a"), file));
        // The sum bit by bit.
        uint32_t slow = 0xffffffff;
        for (const char c : text) {
            slow ^= static_cast<uint8_t>(c);
            for (int bit = 0; bit < 8; ++bit) slow = slow >> 1 ^ (slow & 1 ? 0xedb88320u : 0);
        }
        uint32_t crc = 1;
        EXPECT_EQ(file_crc(file, nullptr, crc), 0);
        EXPECT_EQ(crc, slow ^ 0xffffffff) << size;
        const std::atomic<bool> abort = true;
        EXPECT_EQ(file_crc(file, &abort, crc), 1);
        EXPECT_EQ(crc, 0u);
    }
}

std::atomic<bool> stopped_reading = false;
int pieces_read = 0;

// The wish comes while the second of ten pieces is read: no other is.
TEST(FileCrc, StopsWithinAFile) {
    const ScratchFolder folder;
    std::ofstream(folder.file("a"), std::ios::binary) << std::string(10 * 16384, 'a');
    InputFile file;
    ASSERT_TRUE(open_input(folder.file("a"), file));
    stopped_reading = false;
    pieces_read = 0;
    file_calls.read = [](int descriptor, void* data, size_t bytes) -> ssize_t {
        if (++pieces_read == 2) stopped_reading = true;
        return system_file_calls().read(descriptor, data, bytes);
    };
    uint32_t crc = 1;
    EXPECT_EQ(file_crc(file, &stopped_reading, crc), 1);
    file_calls = system_file_calls();
    EXPECT_EQ(crc, 0u);
    EXPECT_EQ(pieces_read, 2);
}

}  // namespace
