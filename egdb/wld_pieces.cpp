#include "egdb/wld_pieces.h"

#include <algorithm>

namespace {

// Materials of eight pieces, the number of kings of a side falling.
constexpr std::array<Material, 5> KINGS_OF_EIGHT{
    {{0, 5, 3, 0}, {0, 4, 4, 0}, {1, 3, 4, 0}, {2, 2, 4, 0}, {3, 1, 4, 0}}};

// Of nine pieces, with one king.
constexpr std::array<Material, 2> KING_OF_NINE{{{4, 1, 4, 0}, {5, 0, 3, 1}}};

bool is_filled(const EgdbDatabase& database, const Material& m, int side) {
    return (*database.cprsubdatabase)[static_cast<size_t>(egdb_slot(m, side))].subslices != nullptr;
}

int32_t kings_of_eight(const EgdbDatabase& database) {
    for (const Material& m : KINGS_OF_EIGHT)
        if (is_filled(database, m, BLACK) || (database.type == EGDB_WLD && is_filled(database, m, WHITE)))
            return m.bk;
    return 0;
}

}  // namespace

void wld_pieces(const EgdbDatabase& database, int32_t& maxpieces, int32_t& maxpieces_1side,
                int32_t& maxkings_9pcs, int32_t& maxkings_1side_8pcs) {
    maxpieces = maxpieces_1side = maxkings_9pcs = 0;
    for (int32_t i = 0; i < database.file_count; ++i) {
        const DbFile& file = database.files[static_cast<size_t>(i)];
        if (!file.is_present) continue;
        maxpieces = std::max<int32_t>(maxpieces, file.pieces);
        maxpieces_1side = std::max<int32_t>(maxpieces_1side, file.max_one_side);
    }
    if (maxpieces >= 9) {
        const bool king = std::any_of(KING_OF_NINE.begin(), KING_OF_NINE.end(),
                                      [&](const Material& m) { return is_filled(database, m, BLACK); });
        maxkings_9pcs = king ? 1 : 0;
    }
    if (maxpieces >= 8) maxkings_1side_8pcs = kings_of_eight(database);
}
