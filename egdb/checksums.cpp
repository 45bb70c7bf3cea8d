#include "egdb/checksums.h"

#include <algorithm>
#include <array>

#include "egdb/egdb_format.h"
#include "egdb/identify.h"

namespace {

// What is listed, by pieces: the digits of the names that have some.
constexpr std::array<std::string_view, 22> LISTED_5{
    "0302", "0311", "0320", "0401", "0410", "1202", "1211", "1220", "1301", "1310", "2102",
    "2111", "2120", "2201", "2210", "3002", "3011", "3020", "3101", "3110", "4001", "4010"};
constexpr std::array<std::string_view, 37> LISTED_6{
    "0303", "0312", "0321", "0330", "0402", "0411", "0420", "0501", "0510", "1212", "1221", "1230", "1302",
    "1311", "1320", "1401", "1410", "2121", "2130", "2202", "2211", "2220", "2301", "2310", "3030", "3102",
    "3111", "3120", "3201", "3210", "4002", "4011", "4020", "4101", "4110", "5001", "5010"};
constexpr std::array<std::string_view, 38> LISTED_7{
    "0403", "0412", "0421", "0430", "0502", "0511", "0520", "1303", "1312", "1321", "1330", "1402", "1411",
    "1420", "2203", "2212", "2221", "2230", "2302", "2311", "2320", "3103", "3112", "3121", "3130", "3202",
    "3211", "3220", "4003", "4012", "4021", "4030", "4102", "4111", "4120", "5002", "5011", "5020"};
constexpr std::array<std::string_view, 39> LISTED_8{
    "0404", "0413", "0422", "0431", "0440", "0503", "0512", "0521", "0530", "1313", "1322", "1331", "1340",
    "1403", "1412", "1421", "1430", "2222", "2231", "2240", "2303", "2312", "2321", "2330", "3131", "3140",
    "3203", "3212", "3221", "3230", "4040", "4103", "4112", "4121", "4130", "5003", "5012", "5021", "5030"};
constexpr std::array<std::string_view, 1> LISTED_9{"5040"};

struct ChecksumRow {
    EgdbType type;
    std::string_view file;
    uint32_t crc;
};

constexpr std::array<ChecksumRow, 27> ROWS{{
    {EGDB_WLD, "db2.cpr1", 0x0319ba8c},
    {EGDB_WLD, "db2.idx1", 0x07a9f0f3},
    {EGDB_WLD, "db3.cpr1", 0x098b476b},
    {EGDB_WLD, "db3.idx1", 0x8e96b77d},
    {EGDB_WLD, "db4.cpr1", 0x08b0249a},
    {EGDB_WLD, "db4.idx1", 0xc3a84295},
    {EGDB_WLD, "db9-5040.cpr1", 0xa1391053},
    {EGDB_WLD, "db9-5040.idx1", 0xef847fc5},
    {EGDB_WLD_VALUE_LISTS, "db2.cpr", 0xc8d8bd1b},
    {EGDB_WLD_VALUE_LISTS, "db2.idx", 0x1b731f71},
    {EGDB_WLD_VALUE_LISTS, "db3.cpr", 0xa851b439},
    {EGDB_WLD_VALUE_LISTS, "db3.idx", 0x85aade3a},
    {EGDB_WLD_VALUE_LISTS, "db9-5040.cpr", 0x83e06934},
    {EGDB_WLD_VALUE_LISTS, "db9-5040.idx", 0x1f866ec6},
    {EGDB_WLD_FIXED_CODES, "db2.idx", 0xa833eebf},
    {EGDB_WLD_FIXED_CODES, "db3.idx", 0x82f1a44e},
    {EGDB_WLD_FIXED_CODES, "db4.idx", 0xc5f47d67},
    {EGDB_WLD_FIXED_CODES, "db5-0302.idx", 0xedd66a70},
    {EGDB_WLD_FIXED_CODES, "db5-3020.idx", 0xeee459ed},
    // Our own.
    {EGDB_WLD, "db2.cpr1", 0x98df4c19},
    {EGDB_WLD, "db2.idx1", 0x9173eb21},
    {EGDB_WLD, "db3.cpr1", 0xd2e617a3},
    {EGDB_WLD, "db3.idx1", 0x24d14419},
    {EGDB_WLD, "db4.cpr1", 0x190dc6f8},
    {EGDB_WLD, "db4.idx1", 0xe298d6cf},
    {EGDB_WLD, "db5.cpr1", 0x2e524b7f},
    {EGDB_WLD, "db5.idx1", 0x81779289},
}};

template <size_t N>
bool has(const std::array<std::string_view, N>& listed, std::string_view digits) {
    return std::find(listed.begin(), listed.end(), digits) != listed.end();
}

// "db2", or "db6-0303" by its digits. Five pieces are one file in one form, one for each material in the
// other.
bool is_listed_name(EgdbType type, std::string_view name) {
    if (name.size() < 3) return false;
    const std::string_view digits = name.size() > 4 && name[3] == '-' ? name.substr(4) : std::string_view();
    if (name.size() == 3) return name[2] >= '2' && name[2] <= (type == EGDB_WLD ? '5' : '4');
    switch (name[2]) {
        case '5':
            return type == EGDB_WLD_VALUE_LISTS && has(LISTED_5, digits);
        case '6':
            return has(LISTED_6, digits);
        case '7':
            return has(LISTED_7, digits);
        case '8':
            return has(LISTED_8, digits);
        case '9':
            return has(LISTED_9, digits);
        default:
            return false;
    }
}

// The forms whose whole lists are known by name.
bool is_in_list_of_names(EgdbType type, std::string_view file) {
    if (type != EGDB_WLD && type != EGDB_WLD_VALUE_LISTS) return false;
    const EgdbFormat format = egdb_format(type);
    for (const std::string_view extension : {format.data_extension, format.index_extension}) {
        if (file.size() <= extension.size() || file.substr(file.size() - extension.size()) != extension)
            continue;
        return is_listed_name(type, file.substr(0, file.size() - extension.size()));
    }
    return false;
}

}  // namespace

FileChecksums checksums_of(EgdbType type, std::string_view file) {
    FileChecksums found;
    const auto add = [&](uint32_t crc) {
        const auto end = found.crcs.begin() + found.count;
        if (std::find(found.crcs.begin(), end, crc) == end)
            found.crcs[static_cast<size_t>(found.count++)] = crc;
    };
    for (const ChecksumRow& row : ROWS)
        if (row.type == type && row.file == file) add(row.crc);
    found.listed = found.count > 0 || is_in_list_of_names(type, file);
    // The index files by which folders are told are the same files.
    if (is_in_list_of_names(type, file))
        for (const EgdbIdentityRow& row : egdb_identities)
            if (row.type == type && row.file == file) add(row.crc);
    return found;
}
