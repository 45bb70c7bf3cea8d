// The names of the files of a database, by its type and the number of pieces.
#pragma once

#include <array>
#include <cstdint>

// The numbers by which the types of databases are told.
enum EgdbType : int32_t {
    EGDB_WLD_FIXED_CODES = 0,  // .cpr, fixed byte codes
    EGDB_MTC = 1,              // .cpr_mtc, moves to conversion
    EGDB_WLD_VALUE_LISTS = 3,  // .cpr, catalogues and value lists
    EGDB_WLD = 4,              // .cpr1, the one that the builder makes
};

// What the names of a type follow from.
struct EgdbTypeRules {
    int32_t single_limit;  // up to that many pieces one file holds all material
    int32_t most_pieces;
    bool limits_kings_of_eight;  // with eight pieces, files of too many kings are left out on request
};
constexpr EgdbTypeRules egdb_type_rules(EgdbType type) {
    switch (type) {
        case EGDB_WLD_FIXED_CODES:
            return {4, 9, true};
        case EGDB_MTC:
            return {4, 8, false};
        case EGDB_WLD_VALUE_LISTS:
            return {4, 8, true};
        default:
            return {5, 9, true};
    }
}

constexpr int MAX_EGDB_FILES = 200;
constexpr int EGDB_NAME_SIZE = 16;

struct EgdbFileName {
    std::array<char, EGDB_NAME_SIZE> text{};  // without extension, such as "db3" or "db6-2130"
    int32_t pieces = 0;
    int32_t max_one_side = 0;  // most pieces of one side
};

struct EgdbFileList {
    int32_t count = 0;
    std::array<EgdbFileName, MAX_EGDB_FILES> names;
};

// The list for an opening of at most `max_pieces`: the files that hold all material of their number of
// pieces, whatever the limit, then one for each material. A name's digits are black men, black kings, white
// men and white kings. `max_kings_1side_8pcs` leaves out files of eight pieces with more kings on a side;
// negative for no limit.
void make_file_list(EgdbType type, int max_pieces, int max_kings_1side_8pcs, EgdbFileList& list);
