#include "egdb/identify.h"

#include "base/input_file.h"
#include "egdb/file_crc.h"
#include "egdb/numbering.h"

namespace {
constexpr int LEAST_PIECES = 2;
}

const std::array<EgdbIdentityRow, EGDB_IDENTITY_ROWS> egdb_identities{{
    {EGDB_WLD, 9, "db9-5040.idx1", 0xef847fc5},
    {EGDB_WLD_FIXED_CODES, 9, "db9-5040.idx", 0xa6c3208e},
    {EGDB_WLD_FIXED_CODES, 9, "db9-5040.idx", 0xa473f0eb},
    {EGDB_WLD, 8, "db8-4040.idx1", 0x40993827},
    {EGDB_WLD_VALUE_LISTS, 8, "db8-4040.idx", 0x97ed951e},
    {EGDB_WLD_VALUE_LISTS, 8, "db8-4040.idx", 0xad6ccff2},
    {EGDB_WLD_FIXED_CODES, 8, "db8-4040.idx", 0x9a9df5bc},
    {EGDB_MTC, 8, "db8-0503.idx_mtc", 0x7493956f},
    {EGDB_WLD, 7, "db7-4030.idx1", 0x713fa989},
    {EGDB_WLD_VALUE_LISTS, 7, "db7-4030.idx", 0xa1067e2b},
    {EGDB_WLD_FIXED_CODES, 7, "db7-4030.idx", 0x68913d08},
    {EGDB_MTC, 7, "db7-0412.idx_mtc", 0xb4c92c3e},
    {EGDB_WLD, 6, "db6-3030.idx1", 0xc07467f2},
    {EGDB_WLD_VALUE_LISTS, 6, "db6-3030.idx", 0xf3693c6c},
    {EGDB_WLD_FIXED_CODES, 6, "db6-3030.idx", 0xd661d188},
    {EGDB_MTC, 6, "db6-0312.idx_mtc", 0xd764c8ec},
    {EGDB_WLD_FIXED_CODES, 6, "db6-3030.idx", 0x947dff31},
    {EGDB_WLD, 5, "db5.idx1", 0xc5912d8f},
    {EGDB_WLD_VALUE_LISTS, 5, "db5-3020.idx", 0xc008c727},
    {EGDB_WLD_FIXED_CODES, 5, "db5-3020.idx", 0xeee459ed},
    {EGDB_MTC, 5, "db5-0311.idx_mtc", 0x582faed7},
    {EGDB_WLD, 4, "db4.idx1", 0xc3a84295},
    {EGDB_WLD_VALUE_LISTS, 4, "db4.idx", 0x66389130},
    {EGDB_WLD_FIXED_CODES, 4, "db4.idx", 0xc5f47d67},
    {EGDB_MTC, 4, "db4.idx_mtc", 0x2d675cd2},
    {EGDB_WLD, 3, "db3.idx1", 0x8e96b77d},
    {EGDB_WLD_VALUE_LISTS, 3, "db3.idx", 0x85aade3a},
    {EGDB_WLD_FIXED_CODES, 3, "db3.idx", 0x82f1a44e},
    {EGDB_MTC, 3, "db3.idx_mtc", 0x2aebac80},
    {EGDB_WLD, 2, "db2.idx1", 0x07a9f0f3},
    {EGDB_WLD_VALUE_LISTS, 2, "db2.idx", 0x1b731f71},
    {EGDB_WLD_FIXED_CODES, 2, "db2.idx", 0xa833eebf},
    // Our own.
    {EGDB_WLD, 5, "db5.idx1", 0x81779289},
    {EGDB_WLD, 4, "db4.idx1", 0xe298d6cf},
    {EGDB_MTC, 4, "db4.idx_mtc", 0x6c8775a5},
    {EGDB_WLD, 3, "db3.idx1", 0x24d14419},
    {EGDB_MTC, 3, "db3.idx_mtc", 0x61b8de41},
    {EGDB_WLD, 2, "db2.idx1", 0x9173eb21},
    {EGDB_MTC, 2, "db2.idx_mtc", 0x87f2f650},
}};

std::string folder_prefix(const std::string& folder) {
    return folder.empty() || folder.back() == '/' ? folder : folder + "/";
}

int identify_egdb(const std::string& folder, EgdbType& type, int32_t& pieces) {
    const std::string prefix = folder_prefix(folder);
    for (int32_t n = EGDB_MAX_PIECES; n >= LEAST_PIECES; --n) {
        for (const EgdbIdentityRow& row : egdb_identities) {
            if (row.pieces != n) continue;
            InputFile file;
            uint32_t crc = 0;
            if (!open_input(prefix + row.file, file) || file_crc(file, nullptr, crc) != 0) continue;
            if (crc != row.crc) continue;
            type = row.type;
            pieces = row.pieces;
            return 0;
        }
    }
    return 1;
}
