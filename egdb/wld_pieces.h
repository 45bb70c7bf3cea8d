// Which material an open database of values holds.
#pragma once

#include <cstdint>

#include "egdb/database.h"

// Most pieces and most of one side by the files that are present; most kings of both sides with nine pieces;
// and of each side with eight, which is left as it was where there are fewer.
void wld_pieces(const EgdbDatabase& database, int32_t& maxpieces, int32_t& maxpieces_1side,
                int32_t& maxkings_9pcs, int32_t& maxkings_1side_8pcs);
