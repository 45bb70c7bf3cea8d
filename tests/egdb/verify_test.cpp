// The check of files against the known checksums.
#include "egdb/verify.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "egdb/checksums.h"
#include "egdb/egdb_format.h"
#include "egdb/egdb_open.h"
#include "tests/egdb/database_folder.h"

namespace {

using Files = std::vector<std::string>;

// What was told, and when the check is to be broken off: with the text of that number, counted from 1.
struct Told {
    std::string text;
    int count = 0;
    int abort_at = 0;
    std::atomic<bool> abort = false;
};

void hear(void* context, const char* text) {
    Told& told = *static_cast<Told*>(context);
    told.text += text;
    if (++told.count == told.abort_at) told.abort = true;
}

int verify(Told& told, EgdbType type, const std::string& folder, int pieces) {
    database_log.clear();
    return verify_files({type, folder, pieces, -1, keep_log}, {hear, &told}, &told.abort, {});
}

struct Result {
    int errors = 0;
    std::string text;
};

Result verify(EgdbType type, const std::string& folder, int pieces) {
    Told told;
    const int errors = verify(told, type, folder, pieces);
    return {errors, told.text};
}

// The pairs of these names, index first, each with its word.
std::string lines(const std::string& folder, const Files& names, const std::string& word = "OK") {
    std::string text;
    for (const std::string& name : names)
        for (const char* const extension : {".idx1", ".cpr1"})
            text += folder + name + extension + "  " + word + "\n";
    return text;
}

TEST(Verify, WhatComesWithTheProgramIsGood) {
    const std::string folder = shipped_database();
    const Result all = verify(EGDB_WLD, folder, 9);
    EXPECT_EQ(all.errors, 0);
    EXPECT_EQ(all.text, lines(folder, {"db2", "db3", "db4"}) + "No errors");
    EXPECT_EQ(database_log, "");
    // A lower limit of the opening leaves out what is above it.
    EXPECT_EQ(verify(EGDB_WLD, folder, 3).text, lines(folder, {"db2", "db3"}) + "No errors");
    // With or without the slash.
    EXPECT_EQ(verify(EGDB_WLD, folder.substr(0, folder.size() - 1), 9).text, all.text);
    const OpenEgdb driver = egdb_open("maxpieces = 3;", 64, folder, nullptr);
    ASSERT_TRUE(driver);
    Told told;
    EXPECT_EQ(driver->verify(driver->handle, {hear, &told}, nullptr, {}), 0);
    EXPECT_EQ(told.text, lines(folder, {"db2", "db3"}) + "No errors");
}

TEST(Verify, DamagedFilesFail) {
    for (const char* const extension : {".idx1", ".cpr1"}) {
        for (int damage = 0; damage < 3; ++damage) {
            const DatabaseFolder folder;
            const std::string name = std::string("db3") + extension;
            std::string bytes = folder.read(name);
            if (damage == 0) bytes[bytes.size() / 3] = static_cast<char>(bytes[bytes.size() / 3] ^ 4);
            if (damage == 1) bytes.pop_back();
            if (damage == 2) bytes.clear();  // its checksum is 0
            folder.write(name, bytes);
            const Result result = verify(EGDB_WLD, folder.path, 4);
            EXPECT_EQ(result.errors, 1);
            std::string expected = lines(folder.path, {"db2", "db3", "db4"}) + "1 errors\n";
            expected.replace(expected.find(name) + name.size() + 2, 2, "CRC failed");
            EXPECT_EQ(result.text, expected);
        }
    }
}

TEST(Verify, WhatIsNotThereIsPassedOver) {
    const DatabaseFolder folder;
    folder.remove("db3.cpr1");
    EXPECT_EQ(verify(EGDB_WLD, folder.path, 4).text, lines(folder.path, {"db2"}) + folder.path +
                                                         "db3.idx1  OK\n" + lines(folder.path, {"db4"}) +
                                                         "No errors");
    // The data file goes with its index.
    folder.remove("db4.idx1");
    EXPECT_EQ(verify(EGDB_WLD, folder.path, 4).text,
              lines(folder.path, {"db2"}) + folder.path + "db3.idx1  OK\nNo errors");
    const ScratchFolder empty;
    EXPECT_EQ(verify(EGDB_WLD, empty.path, 9).text, "No errors");
    std::filesystem::create_directory(empty.file("db2.idx1"));
    EXPECT_EQ(verify(EGDB_WLD, empty.path, 9).text, "No errors");
}

TEST(Verify, NamesThatAreNotListedAreNotMentionedAndThoseWithoutAChecksumAreNotChecked) {
    const DatabaseFolder folder;
    folder.write("db9-4140.idx1", "anything");  // of the names for nine pieces, but not of the list
    folder.write("db9-4140.cpr1", "anything");
    folder.write("db6-0303.idx1", "anything");
    folder.write("db6-0303.cpr1", "anything");
    const Result result = verify(EGDB_WLD, folder.path, 9);
    EXPECT_EQ(result.errors, 0);
    EXPECT_EQ(result.text, lines(folder.path, {"db2", "db3", "db4"}) +
                               lines(folder.path, {"db6-0303"}, "not checked, no checksum is known") +
                               "No errors");
}

TEST(Verify, TheChecksumsToldStandBesideOurOwn) {
    const DatabaseFolder folder;
    folder.write("db2.cpr1", with_crc("one", 0x0319ba8c));
    folder.write("db2.idx1", with_crc("two", 0x07a9f0f3));
    folder.write("db9-5040.idx1", with_crc("three", 0xef847fc5));
    folder.write("db9-5040.cpr1", with_crc("four", 0xa1391053 ^ 1));
    const Result result = verify(EGDB_WLD, folder.path, 9);
    EXPECT_EQ(result.errors, 1);
    EXPECT_EQ(result.text, lines(folder.path, {"db2", "db3", "db4"}) + folder.path + "db9-5040.idx1  OK\n" +
                               folder.path + "db9-5040.cpr1  CRC failed\n1 errors\n");
    // An index by which folders are told has that checksum.
    folder.write("db8-4040.idx1", with_crc("five", 0x40993827));
    EXPECT_NE(verify(EGDB_WLD, folder.path, 9).text.find("db8-4040.idx1  OK\n"), std::string::npos);
}

TEST(Verify, TheFormWithValueLists) {
    const ScratchFolder folder;
    const auto write = [&](const char* name, uint32_t crc) {
        std::ofstream(folder.file(name), std::ios::binary) << with_crc(name, crc);
    };
    write("db2.idx", 0x1b731f71);
    write("db2.cpr", 0xc8d8bd1b);
    write("db3.idx", 0x85aade3a);
    write("db3.cpr", 0xa851b439 ^ 1);
    write("db5-3020.idx", 0xc008c727);
    write("db5.idx", 1);  // of no name of this form
    const Result result = verify(EGDB_WLD_VALUE_LISTS, folder.path, 9);
    EXPECT_EQ(result.errors, 1);
    const std::string& f = folder.path;
    EXPECT_EQ(result.text, f + "db2.idx  OK\n" + f + "db2.cpr  OK\n" + f + "db3.idx  OK\n" + f +
                               "db3.cpr  CRC failed\n" + f + "db5-3020.idx  OK\n1 errors\n");
}

TEST(Verify, TheFormWithFixedCodesOnlyWritesToTheLog) {
    const ScratchFolder folder;
    const std::string& f = folder.path;
    const auto write = [&](const char* name, uint32_t crc) {
        std::ofstream(folder.file(name), std::ios::binary) << with_crc(name, crc);
    };
    write("db2.idx", 0xa833eebf);
    write("db3.idx", 0x12345678);
    const Result result = verify(EGDB_WLD_FIXED_CODES, folder.path, 4);
    EXPECT_EQ(result.errors, 1);
    EXPECT_EQ(result.text, "");
    EXPECT_EQ(database_log, f + "db2.idx\nNo crc value known for file db2.cpr\n" + f + "db3.idx\nfile " + f +
                                "db3.idx failed crc check, expected 82f1a44e, got 12345678\n"
                                "No crc value known for file db3.cpr\nCannot open file " +
                                f + "db4.idx for crc check.\nNo crc value known for file db4.cpr\n");
}

TEST(Verify, OfMovesToConversionNoFileIsKnown) {
    const Result result = verify(EGDB_MTC, shipped_distances(), 3);
    EXPECT_EQ(result.errors, 1);
    EXPECT_EQ(result.text, "");
    EXPECT_EQ(database_log,
              "No crc value known for file db2.idx\nNo crc value known for file db2.cpr\n"
              "No crc value known for file db3.idx\nNo crc value known for file db3.cpr\n");
}

TEST(Verify, BrokenOffAtAnyPoint) {
    const std::string folder = shipped_database();
    const std::string whole = lines(folder, {"db2", "db3", "db4"});
    // Each file has two texts: its path, then its word.
    for (int at = 0; at <= 12; ++at) {
        Told told;
        told.abort_at = at;
        told.abort = at == 0;
        const int errors = verify(told, EGDB_WLD, folder, 4);
        const int good = at / 2;
        EXPECT_EQ(errors, 6 - good) << at;
        std::string expected;
        size_t place = 0;
        for (int file = 0; file < 6; ++file) {
            const size_t end = whole.find('\n', place) + 1;
            const std::string line = whole.substr(place, end - place);
            expected += file < good ? line : line.substr(0, line.size() - 3) + "CRC failed\n";
            place = end;
        }
        EXPECT_EQ(told.text, expected + (errors ? std::to_string(errors) + " errors\n" : "No errors")) << at;
    }
}

TEST(Verify, TheWordsAreThoseAskedFor) {
    const DatabaseFolder folder;
    folder.write("db2.cpr1", "");
    folder.write("db6-0303.idx1", "");
    Told told;
    verify_files({EGDB_WLD, folder.path, 6, -1, nullptr}, {hear, &told}, nullptr,
                 {"bad", "fine", "wrong", "x", "?"});
    EXPECT_EQ(told.text, folder.path + "db2.idx1  fine\n" + folder.path + "db2.cpr1  bad\n" +
                             lines(folder.path, {"db3", "db4"}, "fine") + folder.path +
                             "db6-0303.idx1  ?\n1 wrong\n");
    // With nobody to hear it the errors are counted all the same.
    EXPECT_EQ(verify_files({EGDB_WLD, folder.path, 6, -1, nullptr}, {}, nullptr, {}), 1);
}

int listed_names(EgdbType type) {
    EgdbFileList list;
    make_file_list(type, 9, -1, list);
    const EgdbFormat format = egdb_format(type);
    int listed = 0;
    for (int i = 0; i < list.count; ++i) {
        const std::string name = list.names[static_cast<size_t>(i)].text.data();
        const bool index = checksums_of(type, name + format.index_extension).listed;
        EXPECT_EQ(checksums_of(type, name + format.data_extension).listed, index) << name;
        listed += index;
    }
    return listed;
}

TEST(Checksums, TheListsHaveAllTheirNames) {
    EXPECT_EQ(listed_names(EGDB_WLD), 119);
    EXPECT_EQ(listed_names(EGDB_WLD_VALUE_LISTS), 139);  // and one of nine pieces, which are not opened
    EXPECT_TRUE(checksums_of(EGDB_WLD_VALUE_LISTS, "db9-5040.cpr").listed);
    int fixed = 0;
    for (const char* const name : {"db2.idx", "db3.idx", "db4.idx", "db5-0302.idx", "db5-3020.idx"})
        fixed += checksums_of(EGDB_WLD_FIXED_CODES, name).count;
    EXPECT_EQ(fixed, 5);
    EXPECT_FALSE(checksums_of(EGDB_WLD_FIXED_CODES, "db2.cpr").listed);
    EXPECT_FALSE(checksums_of(EGDB_MTC, "db2.idx_mtc").listed);
    for (const char* const name : {"", "db", "db2", "db1.idx1", "db6.idx1", "db5-3020.idx1", "db6-9999.idx1",
                                   "db6-.idx1", ".idx1", "db2.idx1x", "db6-0303.idx"})
        EXPECT_FALSE(checksums_of(EGDB_WLD, name).listed) << name;
}

}  // namespace
