// How the memory of a database is shared out.
#include "egdb/memory_division.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>

#include "egdb/wld_pieces.h"
#include "tests/egdb/database_folder.h"

namespace {

// A database whose files are there by name alone.
struct NamedFiles {
    EgdbDatabase database;
    EgdbFileList list;

    explicit NamedFiles(int max_pieces, int max_kings = -1) {
        database_log.clear();
        database.log = keep_log;
        database.max_pieces = max_pieces;
        database.cprsubdatabase = std::make_unique<Cprsubdatabase>();
        make_file_list(EGDB_WLD, max_pieces, max_kings, list);
        for (int32_t i = 0; i < list.count; ++i) {
            const EgdbFileName& name = list.names[static_cast<size_t>(i)];
            DbFile& file = database.files[static_cast<size_t>(i)];
            file.name = name.text;
            file.pieces = static_cast<uint8_t>(name.pieces);
            file.max_one_side = static_cast<uint8_t>(name.max_one_side);
            file.num_cache_blocks = 256;  // a megabyte
        }
        database.file_count = list.count;
    }

    DbFile& file(int32_t i) { return database.files[static_cast<size_t>(i)]; }

    // The file is there, its Slice for that side alone.
    void bring(int32_t i, int side = BLACK) {
        file(i).is_present = 1;
        if (file(i).pieces < 6) return;
        const char* const digits = file(i).name.data() + 4;
        const Material m{digits[0] - '0', digits[1] - '0', digits[2] - '0', digits[3] - '0'};
        SubdbSlot& slot = (*database.cprsubdatabase)[static_cast<size_t>(egdb_slot(m, side))];
        slot.count = 1;
        slot.subslices.reset(new Subslice[1]);
        slot.subslices[0].file = &file(i);
    }
};

int kings_of(const DbFile& file) { return file.name[5] - '0' + file.name[7] - '0'; }
bool is_small(const DbFile& file) { return file.pieces < 6; }

TEST(AutoloadBudget, ByWhatTheDatabaseLacks) {
    EXPECT_EQ(autoload_budget_mb(0, -5), 1);
    EXPECT_EQ(autoload_budget_mb(30, 11), 31);  // 19 megabytes are missing
    EXPECT_EQ(autoload_budget_mb(30, 10), 2);
    EXPECT_EQ(autoload_budget_mb(34, 14), 2);
    EXPECT_EQ(autoload_budget_mb(35, 15), 2);  // 15 * 0.18255
    EXPECT_EQ(autoload_budget_mb(500, 100), 19);
    EXPECT_EQ(autoload_budget_mb(5000, 500), 132);
    EXPECT_EQ(autoload_budget_mb(5000, 1001), 350);
    EXPECT_EQ(autoload_budget_mb(5000, 4000), 1400);
    EXPECT_EQ(autoload_budget_mb(5000, -100), 2);
    for (int64_t avail = 15; avail <= 1000; ++avail) {
        const double exact = static_cast<double>(avail) * (0.18 + 0.17 * static_cast<double>(avail) / 1000);
        EXPECT_NEAR(static_cast<double>(autoload_budget_mb(100000, avail)), std::floor(exact), 1) << avail;
    }
}

TEST(CacheSize, TheRestOfTheMemoryOrTheLeast) {
    const CacheRules& rules = cache_rules(EGDB_WLD);
    CacheSize size = cache_size(rules, 41472, 11, 1000000);
    EXPECT_FALSE(size.least);
    EXPECT_EQ(size.blocks, (11 * MEGABYTE - 41472) / 4384);
    size = cache_size(rules, 41472, 10, 1000000);
    EXPECT_TRUE(size.least);
    EXPECT_EQ(size.blocks, 2560);
    EXPECT_EQ(cache_size(rules, 41472, 0, 7).blocks, 7);
    EXPECT_EQ(cache_size(rules, 41472, 4000, 7).blocks, 7);
    EXPECT_TRUE(cache_size(rules, 500 * MEGABYTE, 100, 7).least);
    // Exactly enough is not enough, one megabyte more is.
    EXPECT_TRUE(cache_size(rules, 90 * MEGABYTE, 100, 5000).least);
    EXPECT_FALSE(cache_size(rules, 90 * MEGABYTE, 101, 5000).least);
    EXPECT_EQ(cache_size(rules, 0, 2'000'000, INT32_MAX).blocks, 2'000'000 * MEGABYTE / 4384);
}

TEST(CacheSize, OfEachType) {
    struct Row {
        EgdbType type;
        int64_t block;
        int32_t least;
    };
    for (const auto& [type, block, least] :
         {Row{EGDB_WLD, 4384, 2560}, Row{EGDB_WLD_FIXED_CODES, 4384, 2560},
          Row{EGDB_WLD_VALUE_LISTS, 4428, 2560}, Row{EGDB_MTC, 16416, 640}}) {
        const CacheRules rules = cache_rules(type);
        EXPECT_EQ(cache_size(rules, 41472, 64, 1000000).blocks, (64 * MEGABYTE - 41472) / block) << type;
        EXPECT_EQ(cache_size(rules, 41472, 10, 1000000).blocks, least) << type;
    }
}

// The older types hold files of up to four pieces whole, whatever they need.
TEST(ChooseAutoload, SmallFilesOfEachType) {
    for (const EgdbType type : {EGDB_WLD, EGDB_WLD_FIXED_CODES, EGDB_WLD_VALUE_LISTS}) {
        NamedFiles named(6);
        for (int32_t i = 0; i < named.list.count; ++i) {
            named.bring(i);
            named.file(i).num_cache_blocks = 10000 * 256;
        }
        order_files(named.database, cache_rules(type));
        choose_autoload(named.database, cache_rules(type), 2);
        for (int32_t i = 0; i < named.list.count; ++i)
            EXPECT_EQ(named.file(i).autoload != 0, named.file(i).pieces < (type == EGDB_WLD ? 6 : 5))
                << type << " " << named.file(i).name.data();
    }
}

TEST(FileOrder, SmallFilesThenFewKingsThenFewPieces) {
    NamedFiles named(8);
    for (int32_t i = 0; i < named.list.count; ++i) named.bring(i, i % 2 ? BLACK : WHITE);
    order_files(named.database, cache_rules(EGDB_WLD));
    const std::vector<DbFile*>& order = named.database.autoload_order;
    EXPECT_EQ(order.size(), static_cast<size_t>(named.list.count));  // each one, from either side's Slice
    EXPECT_EQ(std::set<DbFile*>(order.begin(), order.end()).size(), order.size());
    for (size_t i = 0; i < 4; ++i) EXPECT_EQ(order[i], &named.file(static_cast<int32_t>(i)));
    for (size_t i = 5; i < order.size(); ++i) {
        const DbFile &a = *order[i - 1], &b = *order[i];
        EXPECT_LE(std::make_pair(kings_of(a), a.pieces), std::make_pair(kings_of(b), b.pieces))
            << b.name.data();
    }
    EXPECT_STREQ(order[4]->name.data(), "db6-3030");
    EXPECT_STREQ(order[5]->name.data(), "db6-4020");
    EXPECT_STREQ(order[6]->name.data(), "db6-5010");
    EXPECT_STREQ(order[7]->name.data(), "db7-4030");
}

// Against the rule as it is told: all materials gone through in the order of its loops.
TEST(FileOrder, AgainstPlainLoops) {
    std::mt19937 random(8);
    for (int round = 0; round < 30; ++round) {
        NamedFiles named(6 + round % 4);
        for (int32_t i = 0; i < named.list.count; ++i)
            if (random() % 3) named.bring(i);
        order_files(named.database, cache_rules(EGDB_WLD));
        std::vector<std::string> expected, got;
        for (int32_t i = 0; i < 4; ++i)
            if (named.file(i).is_present) expected.push_back(named.file(i).name.data());
        for (int k = 0; k <= named.database.max_pieces; ++k)
            for (int n = 6; n <= named.database.max_pieces; ++n)
                for (int bk = 0; bk <= k; ++bk)
                    for (int nb = bk; nb <= 5; ++nb) {
                        const int wk = k - bk, nw = n - nb;
                        if (nb < 1 || nw < 1 || nw > nb || wk > nw || (nb == nw && wk > bk)) continue;
                        char name[64];
                        std::snprintf(name, sizeof name, "db%d-%d%d%d%d", n, nb - bk, bk, nw - wk, wk);
                        for (int32_t i = 0; i < named.list.count; ++i)
                            if (named.file(i).is_present && std::string(named.file(i).name.data()) == name)
                                expected.push_back(name);
                    }
        for (const DbFile* const file : named.database.autoload_order) got.push_back(file->name.data());
        EXPECT_EQ(got, expected);
    }
}

TEST(ChooseAutoload, TheSumIsNotReducedForAFileThatIsPassedOver) {
    NamedFiles named(6);
    for (int32_t i = 0; i < named.list.count; ++i) named.bring(i);
    order_files(named.database, cache_rules(EGDB_WLD));
    std::vector<DbFile*>& order = named.database.autoload_order;
    order[5]->num_cache_blocks = 100 * 256;
    choose_autoload(named.database, cache_rules(EGDB_WLD), 5);  // four small ones and one more
    for (size_t i = 0; i < order.size(); ++i) EXPECT_EQ(order[i]->autoload, i < 5) << i;
    EXPECT_EQ(database_log, "autoload db2\nautoload db3\nautoload db4\nautoload db5\nautoload db6-3030\n");
}

TEST(ChooseAutoload, SmallFilesAreHeldWholeWhateverTheyNeed) {
    NamedFiles named(6);
    for (int32_t i = 0; i < named.list.count; ++i) named.bring(i);
    order_files(named.database, cache_rules(EGDB_WLD));
    for (DbFile* const file : named.database.autoload_order) file->num_cache_blocks = 10000 * 256;
    choose_autoload(named.database, cache_rules(EGDB_WLD), 2);
    for (const DbFile* const file : named.database.autoload_order)
        EXPECT_EQ(file->autoload != 0, is_small(*file)) << file->name.data();
}

TEST(ChooseAutoload, PartsOfAMegabyteAreCut) {
    NamedFiles named(6);
    for (int32_t i = 0; i < named.list.count; ++i) named.bring(i);
    order_files(named.database, cache_rules(EGDB_WLD));
    std::vector<DbFile*>& order = named.database.autoload_order;
    for (DbFile* const file : order) file->num_cache_blocks = 10;
    order[4]->num_cache_blocks = 256 + 215;  // with 40 blocks of the small ones a block below two megabytes
    order[5]->num_cache_blocks = 1;
    choose_autoload(named.database, cache_rules(EGDB_WLD), 1);
    EXPECT_EQ(order[4]->autoload, 1);
    EXPECT_EQ(order[5]->autoload, 0);
}

struct Pieces {
    int32_t most = -3, one_side = -3, kings_of_nine = -3, kings_of_eight = -3;

    explicit Pieces(const EgdbDatabase& database) {
        wld_pieces(database, most, one_side, kings_of_nine, kings_of_eight);
    }
};

TEST(WldPieces, AreThoseOfTheFilesThatAreThere) {
    NamedFiles named(6);
    EXPECT_EQ(Pieces(named.database).most, 0);
    for (int32_t i = 0; i < 3; ++i) named.bring(i);
    const Pieces four(named.database);
    EXPECT_EQ(four.most, 4);
    EXPECT_EQ(four.one_side, 3);
    EXPECT_EQ(four.kings_of_nine, 0);
    EXPECT_EQ(four.kings_of_eight, -3);  // left as it was
    for (int32_t i = 3; i < named.list.count; ++i)
        if (std::string(named.file(i).name.data()) == "db6-3030") named.bring(i);
    EXPECT_EQ(Pieces(named.database).most, 6);
    EXPECT_EQ(Pieces(named.database).one_side, 3);
    named.bring(3);
    EXPECT_EQ(Pieces(named.database).one_side, 4);
}

// Something is known of that material.
void fill_slice(EgdbDatabase& database, const Material& m, int side) {
    SubdbSlot& slot = (*database.cprsubdatabase)[static_cast<size_t>(egdb_slot(m, side))];
    slot.count = 1;
    slot.subslices.reset(new Subslice[1]);
}

TEST(WldPieces, EitherMaterialOfNineHasAKing) {
    for (const Material& m : {Material{4, 1, 4, 0}, Material{5, 0, 3, 1}}) {
        NamedFiles named(9);
        for (int32_t i = 0; i < named.list.count; ++i) named.file(i).is_present = named.file(i).pieces == 9;
        EXPECT_EQ(Pieces(named.database).kings_of_nine, 0);
        fill_slice(named.database, m, BLACK);
        EXPECT_EQ(Pieces(named.database).kings_of_nine, 1);
    }
}

// Of the older types white to move tells nothing.
TEST(WldPieces, TheSideToMoveOfEightByType) {
    for (const EgdbType type : {EGDB_WLD, EGDB_WLD_FIXED_CODES, EGDB_WLD_VALUE_LISTS}) {
        NamedFiles named(8);
        named.database.type = type;
        for (int32_t i = 0; i < named.list.count; ++i) named.file(i).is_present = named.file(i).pieces == 8;
        fill_slice(named.database, {0, 4, 4, 0}, WHITE);
        EXPECT_EQ(Pieces(named.database).kings_of_eight, type == EGDB_WLD ? 4 : 0) << type;
        fill_slice(named.database, {2, 2, 4, 0}, BLACK);
        EXPECT_EQ(Pieces(named.database).kings_of_eight, type == EGDB_WLD ? 4 : 2) << type;
    }
}

TEST(WldPieces, KingsOfEightAndNine) {
    struct Row {
        const char* name;
        int side;
        int32_t eight, nine;
    };
    // In the order in which they decide, from the last to the first.
    const std::vector<Row> rows = {
        {"db8-4040", BLACK, 0, 0}, {"db9-5040", BLACK, 0, 0}, {"db8-3140", WHITE, 1, 0},
        {"db8-2240", BLACK, 2, 0}, {"db9-4140", WHITE, 2, 0}, {"db9-4140", BLACK, 2, 1},
        {"db8-1340", WHITE, 3, 1}, {"db8-0440", BLACK, 4, 1}, {"db8-0530", WHITE, 5, 1}};
    NamedFiles named(9);
    for (const Row& row : rows) {
        bool found = false;
        for (int32_t i = 0; i < named.list.count; ++i) {
            if (std::string(named.file(i).name.data()) != row.name) continue;
            named.bring(i, row.side);
            found = true;
        }
        // The list ends before the files with kings of nine pieces.
        if (!found && std::string(row.name) == "db9-4140")
            fill_slice(named.database, {4, 1, 4, 0}, row.side);
        else if (!found)
            ADD_FAILURE() << row.name;
        const Pieces pieces(named.database);
        EXPECT_EQ(pieces.kings_of_eight, row.eight) << row.name;
        EXPECT_EQ(pieces.kings_of_nine, row.nine) << row.name;
    }
}

}  // namespace
