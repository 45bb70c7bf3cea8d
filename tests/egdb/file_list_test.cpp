#include "egdb/file_list.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace {

std::vector<std::string> names(EgdbType type, int pieces, int kings = -1, int only = 0) {
    EgdbFileList list;
    make_file_list(type, pieces, kings, list);
    std::vector<std::string> texts;
    for (int i = 0; i < list.count; ++i) {
        const EgdbFileName& name = list.names[static_cast<size_t>(i)];
        if (only == 0 || name.pieces == only) texts.emplace_back(name.text.data());
    }
    return texts;
}

using Texts = std::vector<std::string>;

TEST(FileList, SmallFilesHoldAllMaterialWhateverTheLimit) {
    EXPECT_EQ(names(EGDB_WLD, 2), (Texts{"db2", "db3", "db4", "db5"}));
    EXPECT_EQ(names(EGDB_WLD, 5), (Texts{"db2", "db3", "db4", "db5"}));
    EXPECT_EQ(names(EGDB_WLD_FIXED_CODES, 4), (Texts{"db2", "db3", "db4"}));
    EXPECT_EQ(names(EGDB_MTC, 3), (Texts{"db2", "db3", "db4"}));
}

TEST(FileList, SixPiecesInTheirOrder) {
    EXPECT_EQ(
        names(EGDB_WLD, 6, -1, 6),
        (Texts{"db6-3030", "db6-2130", "db6-2121", "db6-1230", "db6-1221", "db6-1212", "db6-0330", "db6-0321",
               "db6-0312", "db6-0303", "db6-4020", "db6-4011", "db6-4002", "db6-3120", "db6-3111", "db6-3102",
               "db6-2220", "db6-2211", "db6-2202", "db6-1320", "db6-1311", "db6-1302", "db6-0420", "db6-0411",
               "db6-0402", "db6-5010", "db6-5001", "db6-4110", "db6-4101", "db6-3210", "db6-3201", "db6-2310",
               "db6-2301", "db6-1410", "db6-1401", "db6-0510", "db6-0501"}));
}

TEST(FileList, NumbersOfFiles) {
    EXPECT_EQ(names(EGDB_WLD, 6).size(), 4u + 37);
    EXPECT_EQ(names(EGDB_WLD, 7, -1, 7).size(), 38u);
    EXPECT_EQ(names(EGDB_WLD, 8, -1, 8).size(), 39u);
    EXPECT_EQ(names(EGDB_WLD, 9, -1, 9).size(), 30u);
    EXPECT_EQ(names(EGDB_WLD, 8).size() + 1, 119u);
    EXPECT_EQ(names(EGDB_WLD_VALUE_LISTS, 8).size() + 1, 140u);
    EXPECT_EQ(names(EGDB_WLD_VALUE_LISTS, 9), names(EGDB_WLD_VALUE_LISTS, 8));  // the type ends there
    EXPECT_EQ(names(EGDB_MTC, 9), names(EGDB_MTC, 8));
    EXPECT_EQ(names(EGDB_WLD_FIXED_CODES, 5, -1, 5).size(), 22u);
    EXPECT_EQ(names(EGDB_WLD_FIXED_CODES, 9, -1, 9).size(), 30u);
    EXPECT_EQ(names(EGDB_WLD, 9, -1, 9).front(), "db9-5040");
    EXPECT_EQ(names(EGDB_WLD, 8, -1, 8).front(), "db8-4040");
}

TEST(FileList, NamesDiffer) {
    const Texts texts = names(EGDB_WLD_FIXED_CODES, 9);
    EXPECT_EQ(std::set<std::string>(texts.begin(), texts.end()).size(), texts.size());
}

TEST(FileList, TheLimitOfKingsIsForEightPiecesOnly) {
    const Texts all = names(EGDB_WLD, 9), few = names(EGDB_WLD, 9, 2);
    for (const std::string& name : all) {
        const bool too_many = name.size() > 4 && name[2] == '8' && (name[5] > '2' || name[7] > '2');
        EXPECT_EQ(std::count(few.begin(), few.end(), name), too_many ? 0 : 1) << name;
    }
    EXPECT_LT(few.size(), all.size());
    EXPECT_EQ(names(EGDB_WLD, 8, 0, 8), (Texts{"db8-4040", "db8-5030"}));
    EXPECT_EQ(names(EGDB_MTC, 8, 0), names(EGDB_MTC, 8));
}

TEST(FileList, TheSidesOfEachName) {
    EgdbFileList list;
    make_file_list(EGDB_WLD, 9, -1, list);
    for (int i = 0; i < list.count; ++i) {
        const EgdbFileName& name = list.names[static_cast<size_t>(i)];
        const std::string text = name.text.data();
        EXPECT_EQ(text[2] - '0', name.pieces);
        if (text.size() == 3) {
            EXPECT_EQ(name.max_one_side, std::min(name.pieces - 1, 5));
            continue;
        }
        const int black = text[4] - '0' + text[5] - '0', white = text[6] - '0' + text[7] - '0';
        EXPECT_EQ(black + white, name.pieces);
        EXPECT_EQ(black, name.max_one_side);
        EXPECT_GE(black, white);
    }
}

}  // namespace
